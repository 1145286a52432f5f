// Folders that claim to be a recording: damaged pictures, odd names, missing parts, wild times.

#include "fuzz_input.h"
#include "recording_source.h"

#include <opencv2/imgcodecs.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using virtual_kinect::FrameSet;
using virtual_kinect::FrameSource;

/// A folder that is empty at the begin of each input and gone at the end of the process.
class Place {
public:
    Place() {
        std::string pattern = (fs::temp_directory_path() / "recording-fuzz-XXXXXX").string();
        require(mkdtemp(pattern.data()) != nullptr, "a temporary folder can be made");
        root = pattern;
    }
    ~Place() {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    fs::path empty() const {
        fs::remove_all(root / "walk");
        for (const char* part : {"color", "depth"})
            fs::create_directories(root / "walk" / part);
        return root / "walk";
    }

private:
    fs::path root;
};

/// A picture of a few pixels as its file's bytes, whole or with a byte changed or cut off.
std::vector<uchar> pictureBytes(FuzzInput& input, const std::string& extension, bool grey16) {
    const std::uint8_t shape = input.byte();
    const cv::Mat picture(1 + shape % 4, 1 + shape / 4 % 4, grey16 ? CV_16UC1 : CV_8UC3,
                          cv::Scalar::all(input.number<std::uint16_t>()));
    std::vector<uchar> bytes;
    cv::imencode(extension, picture, bytes);
    switch (input.byte() % 4) {
    case 0:
        bytes[input.number<std::uint16_t>() % bytes.size()] = input.byte();
        break;
    case 1:
        bytes.resize(input.number<std::uint16_t>() % bytes.size());
        break;
    default:
        break;
    }
    return bytes;
}

void writeFile(const fs::path& path, const char* bytes, std::size_t count) {
    std::error_code ignored;
    fs::create_directories(path.parent_path(), ignored);
    std::ofstream(path, std::ios::binary).write(bytes, static_cast<std::streamsize>(count));
}

void addPicture(FuzzInput& input, const fs::path& folder, const char* part) {
    const bool grey16 = std::string_view(part) != "color" && input.byte() % 8 != 0;
    const char* const extensions[] = {".png", ".png", ".jpg", ".PNG"};
    const std::string extension = grey16 ? ".png" : extensions[input.byte() % 4];
    const std::string name = input.byte() % 8 == 0 ? input.bytes(6).toHex().toStdString()
                                                   : std::to_string(input.byte() % 3);
    const fs::path path = folder / part / (name + extension);
    if (input.byte() % 8 == 0) {
        const QByteArray raw = input.bytes(input.byte());
        writeFile(path, raw.constData(), static_cast<std::size_t>(raw.size()));
        return;
    }
    const std::vector<uchar> bytes = pictureBytes(input, extension, grey16);
    writeFile(path, reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

void fill(FuzzInput& input, const fs::path& folder) {
    const char* const parts[] = {"color", "depth", "ir"};
    const std::uint8_t moments = input.byte() % 4;
    for (int files = moments * 2 + input.byte() % 3; files > 0; --files)
        addPicture(input, folder, parts[input.byte() % 5 % 3]);
    // A whole recording beside it, so that the rest is reached as well.
    if (input.flag()) {
        const std::vector<uchar> color = pictureBytes(input, ".png", false);
        const std::vector<uchar> depth = pictureBytes(input, ".png", true);
        for (int number = 0; number <= moments; ++number) {
            const std::string name = std::to_string(number) + ".png";
            writeFile(folder / "color" / name, reinterpret_cast<const char*>(color.data()),
                      color.size());
            writeFile(folder / "depth" / name, reinterpret_cast<const char*>(depth.data()),
                      depth.size());
        }
    }
    if (input.flag()) {
        const QByteArray times = input.rest();
        writeFile(folder / "timestamps.csv", times.constData(),
                  static_cast<std::size_t>(times.size()));
    }
}

void play(FrameSource& source) {
    FrameSet set;
    std::chrono::microseconds before{-1};
    for (std::uint64_t number = 0; number < 8; ++number) {
        require(source.timeOf(number) > before, "times rise");
        before = source.timeOf(number);
        try {
            source.render(number, set);
        } catch (const std::exception&) {
            continue; // damaged further on
        }
        require(set.colorWidth > 0 && set.colorHeight > 0 &&
                    set.bgrx.size() ==
                        std::size_t(set.colorWidth) * std::size_t(set.colorHeight) * 4,
                "the colour picture has its size");
        require(set.depth.size() == std::size_t(set.depthWidth) * std::size_t(set.depthHeight) &&
                    set.infrared.size() == set.depth.size(),
                "depth and infrared have one size");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Place place;
    FuzzInput input(data, size);
    const fs::path folder = place.empty();
    fill(input, folder);
    std::unique_ptr<FrameSource> source;
    try {
        source = virtual_kinect::makeRecordingSource(folder);
    } catch (const std::exception&) {
        return 0; // said why
    }
    play(*source);
    return 0;
}
