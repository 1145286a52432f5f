#include "image_header.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace virtual_kinect {

namespace {

constexpr std::uint32_t largestSide = 8192;

class Reader {
public:
    explicit Reader(const std::filesystem::path& path) : name(path.string()) {
        stream.open(path, std::ios::binary | std::ios::ate);
        if (!stream)
            fail("cannot be read");
        size = stream.tellg();
        stream.seekg(0);
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw std::runtime_error(name + " " + what);
    }

    std::string read(std::size_t count) {
        std::string bytes(count, '\0');
        if (!stream.read(bytes.data(), static_cast<std::streamsize>(count)))
            fail("is cut off");
        return bytes;
    }

    /// Reads the last bytes of the file, at most `count`.
    std::string readTail(std::streamoff count) {
        const auto length = std::min(count, size);
        stream.seekg(size - length);
        return read(static_cast<std::size_t>(length));
    }

    void skip(std::uint32_t count) {
        const auto target = stream.tellg() + static_cast<std::streamoff>(count);
        if (target > size)
            fail("is cut off");
        stream.seekg(target);
    }

    /// Reads a number of `count` bytes, the highest first.
    std::uint32_t readNumber(std::size_t count) {
        std::uint32_t number = 0;
        for (const char byte : read(count))
            number = (number << 8) | static_cast<unsigned char>(byte);
        return number;
    }

    void setSize(ImageHeader& header, std::uint32_t width, std::uint32_t height) const {
        if (width == 0 || height == 0)
            fail("has no pixels");
        if (width > largestSide || height > largestSide)
            fail("is larger than 8192 pixels");
        header.width = static_cast<int>(width);
        header.height = static_cast<int>(height);
    }

private:
    std::string name;
    std::ifstream stream;
    std::streamoff size = 0;
};

constexpr std::string_view pngSignature = "\x89PNG\r\n\x1a\n";
constexpr std::string_view jpegStart = "\xff\xd8";
constexpr std::string_view jpegEnd = "\xff\xd9";

/// Chunks of "length, kind, that many bytes, checksum", from IHDR to IEND.
ImageHeader readPng(Reader& reader) {
    reader.skip(pngSignature.size());
    ImageHeader header;
    bool hasPixels = false;
    for (bool first = true;; first = false) {
        const std::uint32_t length = reader.readNumber(4);
        const std::string kind = reader.read(4);
        if (first != (kind == "IHDR") || (first && length != 13))
            reader.fail("is damaged");
        if (first) {
            const std::uint32_t width = reader.readNumber(4);
            reader.setSize(header, width, reader.readNumber(4));
            const std::uint32_t depthAndKind = reader.readNumber(2);
            header.gray16 = depthAndKind == 0x1000;
            reader.skip(3 + 4);
            continue;
        }
        reader.skip(length);
        reader.skip(4);
        hasPixels = hasPixels || kind == "IDAT";
        if (kind == "IEND")
            break;
    }
    if (!hasPixels)
        reader.fail("has no pixels");
    return header;
}

/// Whether a JPEG marker begins the frame header; three of the range have other meanings.
bool isFrameMarker(std::uint32_t marker) {
    return marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

/// Segments of "0xff, marker, length, content" up to the frame header.
ImageHeader readJpeg(Reader& reader) {
    reader.skip(jpegStart.size());
    ImageHeader header;
    for (;;) {
        if (reader.readNumber(1) != 0xff)
            reader.fail("is damaged");
        std::uint32_t marker = reader.readNumber(1);
        while (marker == 0xff)
            marker = reader.readNumber(1);
        const std::uint32_t length = reader.readNumber(2);
        if (length < 2 || marker == 0xda)
            reader.fail("is damaged");
        if (isFrameMarker(marker)) {
            reader.skip(1);
            const std::uint32_t height = reader.readNumber(2);
            reader.setSize(header, reader.readNumber(2), height);
            break;
        }
        reader.skip(length - 2);
    }
    // A decoder fills what is missing with grey and does not complain. Some writers add a few
    // bytes.
    if (reader.readTail(64).find(jpegEnd) == std::string::npos)
        reader.fail("is cut off");
    return header;
}

} // namespace

ImageHeader readImageHeader(const std::filesystem::path& file) {
    Reader start(file);
    const std::string signature = start.read(pngSignature.size());
    Reader reader(file);
    if (signature == pngSignature)
        return readPng(reader);
    if (signature.starts_with(jpegStart))
        return readJpeg(reader);
    reader.fail("is neither PNG nor JPEG");
}

} // namespace virtual_kinect
