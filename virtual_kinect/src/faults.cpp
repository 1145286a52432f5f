#include "faults.h"

#include <libfreenect2/frame_listener.hpp>

#include <algorithm>
#include <array>
#include <charconv>

namespace virtual_kinect {

namespace {

using libfreenect2::Frame;

constexpr unsigned int allStreams = Frame::Color | Frame::Ir | Frame::Depth;
/// A step that takes longer is a typing error.
constexpr std::uint64_t maxStepMs = 60'000;
/// Two seconds of frames; depth that is later than that is a typing error.
constexpr std::uint64_t maxDepthLate = 60;
/// A day; recordings of one are rare, and numbers beyond it typing errors.
constexpr double maxStart_s = 86'400;
constexpr double minSpeed = 0.01;
constexpr double maxSpeed = 100;

/// One entry of the list, "name", "name=value", "name@first" or "name=value@first-last".
struct Entry {
    std::string_view name;
    std::optional<std::string_view> value;
    std::optional<std::string_view> frames;
};

std::string_view trimmed(std::string_view text) {
    const auto from = text.find_first_not_of(" \t");
    if (from == std::string_view::npos)
        return {};
    return text.substr(from, text.find_last_not_of(" \t") - from + 1);
}

Entry splitEntry(std::string_view text) {
    Entry entry;
    if (const auto at = text.find('@'); at != std::string_view::npos) {
        entry.frames = text.substr(at + 1);
        text = text.substr(0, at);
    }
    if (const auto equals = text.find('='); equals != std::string_view::npos) {
        entry.value = text.substr(equals + 1);
        text = text.substr(0, equals);
    }
    entry.name = text;
    return entry;
}

std::optional<std::uint64_t> readNumber(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

/// A number with or without a fraction between two limits.
std::optional<double> readFraction(const std::optional<std::string_view>& text, double min,
                                   double max) {
    double number = 0;
    if (!text)
        return std::nullopt;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
    if (error != std::errc() || end != text->data() + text->size() || !(number >= min) ||
        !(number <= max))
        return std::nullopt;
    return number;
}

/// "N" leaves the range open, "N-M" closes it; M is the last frame of the range.
bool readFrames(std::string_view text, FrameFault& fault) {
    const auto dash = text.find('-');
    const auto first = readNumber(text.substr(0, dash));
    if (!first)
        return false;
    fault.first = *first;
    if (dash == std::string_view::npos)
        return true;
    const auto last = readNumber(text.substr(dash + 1));
    if (!last || *last < *first)
        return false;
    fault.last = *last;
    return true;
}

bool readStreams(std::string_view text, unsigned int& streams) {
    if (text == "color")
        streams = Frame::Color;
    else if (text == "ir")
        streams = Frame::Ir;
    else if (text == "depth")
        streams = Frame::Depth;
    else
        return false;
    return true;
}

/// A fault that is there or not. Returns false when the entry is none of them.
bool addPlainFault(const Entry& entry, Faults& faults) {
    struct Word {
        std::string_view name;
        bool Faults::*fault;
    };
    static constexpr std::array words = {
        Word{"no-permission", &Faults::noPermission}, Word{"busy", &Faults::busy},
        Word{"throws", &Faults::throwsAtOpen}, Word{"start-fails", &Faults::startFails}};
    const auto word = std::find_if(words.begin(), words.end(),
                                   [&](const Word& known) { return known.name == entry.name; });
    if (word == words.end() || entry.value || entry.frames)
        return false;
    faults.*word->fault = true;
    return true;
}

/// A step of the device that takes longer. Returns false when the entry is none of them.
bool addSlowStep(const Entry& entry, Faults& faults) {
    struct Word {
        std::string_view name;
        std::chrono::milliseconds Faults::*time;
    };
    static constexpr std::array words = {Word{"slow-start", &Faults::slowStart},
                                         Word{"slow-stop", &Faults::slowStop},
                                         Word{"slow-close", &Faults::slowClose}};
    const auto word = std::find_if(words.begin(), words.end(),
                                   [&](const Word& known) { return known.name == entry.name; });
    if (word == words.end() || !entry.value || entry.frames)
        return false;
    const auto time = readNumber(*entry.value);
    if (!time || *time > maxStepMs)
        return false;
    faults.*word->time = std::chrono::milliseconds(*time);
    return true;
}

/// The faults of the device itself. Returns false when the entry is none of them.
bool addDeviceFault(const Entry& entry, Faults& faults) {
    if (addPlainFault(entry, faults) || addSlowStep(entry, faults))
        return true;
    if (entry.name == "throws" && entry.value == "start" && !entry.frames) {
        faults.throwsAtStart = true;
        return true;
    }
    if (entry.name == "unplugged" && !entry.value && entry.frames) {
        faults.unpluggedAt = readNumber(*entry.frames);
        return faults.unpluggedAt.has_value();
    }
    if (entry.name == "depth-late" && entry.value && !entry.frames) {
        const auto frames = readNumber(*entry.value);
        if (!frames || *frames > maxDepthLate)
            return false;
        faults.depthLate = *frames;
        return true;
    }
    return false;
}

/// The faults of frames. Returns false when the entry is none of them.
bool addFrameFault(const Entry& entry, Faults& faults) {
    struct Word {
        std::string_view name;
        FrameFault::Kind kind;
        enum { NoStream, AnyStream, OneStream } stream;
    };
    static constexpr std::array words = {
        Word{"silent", FrameFault::Missing, Word::NoStream},
        Word{"missing", FrameFault::Missing, Word::OneStream},
        Word{"null-data", FrameFault::NullData, Word::AnyStream},
        Word{"wrong-bytes", FrameFault::WrongBytes, Word::AnyStream},
        Word{"zero-size", FrameFault::ZeroSize, Word::AnyStream},
        Word{"rgbx", FrameFault::Rgbx, Word::NoStream},
    };
    const auto word = std::find_if(words.begin(), words.end(),
                                   [&](const Word& known) { return known.name == entry.name; });
    if (word == words.end() || (word->stream == Word::NoStream && entry.value) ||
        (word->stream == Word::OneStream && !entry.value))
        return false;
    FrameFault fault;
    fault.kind = word->kind;
    fault.streams = allStreams;
    if ((entry.value && !readStreams(*entry.value, fault.streams)) ||
        (entry.frames && !readFrames(*entry.frames, fault)))
        return false;
    faults.frames.push_back(fault);
    return true;
}

/// How frames are played. Returns false when the entry is no word for that.
bool addReplayWord(const Entry& entry, Replay& replay) {
    if (entry.frames)
        return false;
    if (entry.name == "once" && !entry.value) {
        replay.once = true;
        return true;
    }
    if (entry.name == "start") {
        const auto seconds = readFraction(entry.value, 0, maxStart_s);
        replay.start_s = seconds.value_or(replay.start_s);
        return seconds.has_value();
    }
    if (entry.name == "speed") {
        const auto speed = readFraction(entry.value, minSpeed, maxSpeed);
        replay.speed = speed.value_or(replay.speed);
        return speed.has_value();
    }
    return false;
}

} // namespace

bool Faults::holds(FrameFault::Kind kind, unsigned int stream, std::uint64_t number) const {
    return std::any_of(frames.begin(), frames.end(), [&](const FrameFault& fault) {
        return fault.kind == kind && (fault.streams & stream) != 0 && fault.first <= number &&
               number <= fault.last;
    });
}

Faults parseFaults(std::string_view list, std::vector<std::string>& complaints) {
    Faults faults;
    while (!list.empty()) {
        const auto comma = list.find(',');
        const std::string text(trimmed(list.substr(0, comma)));
        list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
        const Entry entry = splitEntry(text);
        if (!text.empty() && !addDeviceFault(entry, faults) && !addFrameFault(entry, faults) &&
            !addReplayWord(entry, faults.replay))
            complaints.push_back("\"" + text + "\" is not a fault and is left out");
    }
    return faults;
}

} // namespace virtual_kinect
