#include "attached_source.h"

#include "log.h"
#include "recording_source.h"

#include <exception>

namespace virtual_kinect {

std::unique_ptr<FrameSource> makeAttachedSource(const std::string& wanted, const Replay& replay) {
    try {
        if (wanted.empty())
            return nullptr;
        if (wanted == "room")
            return makeReplayedSource(makeRoomSource(), replay);
        return makeReplayedSource(makeRecordingSource(wanted), replay);
    } catch (const std::exception& error) {
        log(libfreenect2::Logger::Error,
            "\"" + wanted + "\" cannot be shown: " + std::string(error.what()));
    }
    return nullptr;
}

} // namespace virtual_kinect
