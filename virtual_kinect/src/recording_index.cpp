#include "recording_index.h"

#include "image_header.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace virtual_kinect {

namespace {

namespace fs = std::filesystem;
using std::chrono::microseconds;
using Numbered = std::map<std::uint64_t, fs::path>;

constexpr std::int64_t framesPerSecond = 30;
constexpr int sensorColorWidth = 1920;
constexpr int sensorColorHeight = 1080;
/// Some four months: far beyond any recording, far below where clocks overflow.
constexpr double longestMs = 1e10;
constexpr std::uintmax_t largestTimesFile = 64 << 20;

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what);
}

template <typename Number>
std::optional<Number> readNumber(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

/// The images of a folder by the numbers that are their names. Other files do not matter.
Numbered listImages(const fs::path& folder) {
    Numbered images;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        std::string kind = entry.path().extension().string();
        std::transform(kind.begin(), kind.end(), kind.begin(), [](unsigned char letter) {
            return static_cast<char>(std::tolower(letter));
        });
        if (kind != ".png" && kind != ".jpg" && kind != ".jpeg")
            continue;
        const auto number = readNumber<std::uint64_t>(entry.path().stem().string());
        if (!number)
            fail(entry.path().string() + " has no number as its name");
        if (!images.emplace(*number, entry.path()).second)
            fail(folder.string() + " has two images with the number " + std::to_string(*number));
    }
    if (images.empty())
        fail(folder.string() + " has no images");
    return images;
}

void requireSameNumbers(const Numbered& some, const Numbered& others, const fs::path& folder) {
    for (const auto& [number, path] : some)
        if (!others.contains(number))
            fail(folder.string() + " has no image for " + path.string());
}

/// The images of a folder beside the depth images, with the same numbers; none without the folder.
Numbered listImagesBeside(const Numbered& depths, const fs::path& place, const char* name) {
    const fs::path folder = place / name;
    if (!fs::exists(folder))
        return {};
    Numbered images = listImages(folder);
    requireSameNumbers(depths, images, folder);
    requireSameNumbers(images, depths, place / "depth");
    return images;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto from = text.find_first_not_of(blanks);
    if (from == std::string_view::npos)
        return {};
    return text.substr(from, text.find_last_not_of(blanks) - from + 1);
}

/// "number, milliseconds" in each line, perhaps followed by more; a first line that begins with a
/// letter is a heading.
std::map<std::uint64_t, double> readTimes(const fs::path& file) {
    if (!fs::is_regular_file(file) || fs::file_size(file) > largestTimesFile)
        fail(file.string() + " cannot be read");
    std::ifstream stream(file);
    std::map<std::uint64_t, double> times;
    std::string text;
    for (int lineNumber = 1; std::getline(stream, text); ++lineNumber) {
        const std::string_view line = trimmed(text);
        if (line.empty() ||
            (lineNumber == 1 && std::isalpha(static_cast<unsigned char>(line.front())) != 0))
            continue;
        const auto comma = line.find(',');
        const auto number = readNumber<std::uint64_t>(trimmed(line.substr(0, comma)));
        const std::string_view rest =
            comma == std::string_view::npos ? std::string_view() : line.substr(comma + 1);
        const auto time = readNumber<double>(trimmed(rest.substr(0, rest.find(','))));
        if (!number || !time || !std::isfinite(*time) || !times.emplace(*number, *time).second)
            fail(file.string() + " has no usable number and time in line " +
                 std::to_string(lineNumber));
    }
    if (!stream.eof())
        fail(file.string() + " cannot be read");
    return times;
}

void setTimesFromFile(RecordingIndex& index, const Numbered& depths, const fs::path& file) {
    const auto times = readTimes(file);
    if (times.size() != depths.size())
        fail(file.string() + " does not have one time for each image");
    const double first = times.begin()->second;
    auto time = times.begin();
    for (std::size_t at = 0; at < index.moments.size(); ++at, ++time) {
        const double sinceFirst = time->second - first;
        if (!depths.contains(time->first))
            fail(file.string() + " has a time without an image: " + std::to_string(time->first));
        if (sinceFirst > longestMs)
            fail(file.string() + " spans more than four months");
        index.moments[at].time = microseconds(std::llround(sinceFirst * 1000.0));
        if (at > 0 && index.moments[at].time <= index.moments[at - 1].time)
            fail(file.string() + " has times that do not rise, at " + std::to_string(time->first));
    }
    // The way back to the first moment takes as long as a step takes on average.
    const auto steps = static_cast<std::int64_t>(index.moments.size()) - 1;
    const microseconds span = index.moments.back().time;
    index.period = steps > 0 ? span + std::max(span / steps, microseconds(1))
                             : microseconds(1'000'000 / framesPerSecond);
}

void setSteadyTimes(RecordingIndex& index) {
    const auto timeOf = [](std::size_t at) {
        return microseconds(static_cast<std::int64_t>(at) * 1'000'000 / framesPerSecond);
    };
    for (std::size_t at = 0; at < index.moments.size(); ++at)
        index.moments[at].time = timeOf(at);
    index.period = timeOf(index.moments.size());
}

/// The common size of some images. `grey16`: they must be PNG with one channel of 16 bits.
void requireSize(const fs::path& file, bool gray16, int& width, int& height) {
    const ImageHeader header = readImageHeader(file);
    if (gray16 && !header.gray16)
        fail(file.string() + " is not a PNG with one channel of 16 bits");
    if (width == 0) {
        width = header.width;
        height = header.height;
    }
    if (header.width != width || header.height != height)
        fail(file.string() + " has another size than the images before");
}

std::string folderName(const fs::path& folder) {
    const fs::path plain = fs::canonical(folder);
    const fs::path given =
        folder.has_filename() ? folder.filename() : folder.parent_path().filename();
    return given.empty() || given == "." || given == ".." ? plain.filename().string()
                                                          : given.string();
}

} // namespace

RecordingIndex readRecordingIndex(const fs::path& folder) {
    if (!fs::is_directory(folder))
        fail("there is no such folder");
    RecordingIndex index;
    index.name = folderName(folder);
    // Pictures are read while the recording plays, when the working folder may be another.
    const fs::path place = fs::absolute(folder);
    if (!fs::is_directory(place / "depth"))
        fail((place / "depth").string() + " is missing");
    const Numbered depths = listImages(place / "depth");
    const Numbered colors = listImagesBeside(depths, place, "color");
    const Numbered infrareds = listImagesBeside(depths, place, "ir");
    for (const auto& [number, depth] : depths) {
        RecordedMoment moment;
        moment.depth = depth;
        requireSize(moment.depth, true, index.depthWidth, index.depthHeight);
        if (!colors.empty()) {
            moment.color = colors.at(number);
            requireSize(moment.color, false, index.colorWidth, index.colorHeight);
        }
        if (!infrareds.empty()) {
            moment.infrared = infrareds.at(number);
            requireSize(moment.infrared, true, index.depthWidth, index.depthHeight);
        }
        index.moments.push_back(std::move(moment));
    }
    if (colors.empty()) {
        index.colorWidth = sensorColorWidth;
        index.colorHeight = sensorColorHeight;
    }
    const fs::path calibration = place / "calibration.json";
    index.calibration =
        fs::exists(calibration) ? readCalibration(calibration) : typicalCalibration();
    if (fs::exists(place / "timestamps.csv"))
        setTimesFromFile(index, depths, place / "timestamps.csv");
    else
        setSteadyTimes(index);
    return index;
}

} // namespace virtual_kinect
