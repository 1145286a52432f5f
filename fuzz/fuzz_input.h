#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

/// What every fuzz target defines: one input, of any bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// A promise of the code under test; the process ends where it is broken, so that the fuzzer keeps
/// the input.
inline void require(bool holds, const char* promise) {
    if (!holds)
        qFatal("broken: %s", promise);
}

/// Takes an input's bytes apart, from front to back. Where they are used up everything is zero or
/// empty, so that every input means something.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : at(data), left(size) {}

    std::size_t bytesLeft() const { return left; }

    std::uint8_t byte() { return number<std::uint8_t>(); }
    bool flag() { return (byte() & 1) != 0; }

    /// Any value of the type, little-endian.
    template <typename Number>
    Number number() {
        std::array<char, sizeof(Number)> bytes{};
        const std::size_t taken = std::min(left, bytes.size());
        if (taken > 0)
            std::memcpy(bytes.data(), at, taken);
        skip(taken);
        return std::bit_cast<Number>(bytes);
    }

    /// A whole number from `least` to `most`.
    int between(int least, int most) {
        const std::int64_t span = std::int64_t(most) - least + 1;
        return static_cast<int>(least + number<std::uint32_t>() % span);
    }

    /// Ordinary, extreme and impossible values in turn.
    double real() {
        constexpr double extremes[] = {0.0,
                                       -0.0,
                                       1e308,
                                       -1e308,
                                       std::numeric_limits<double>::denorm_min(),
                                       std::numeric_limits<double>::infinity(),
                                       -std::numeric_limits<double>::infinity(),
                                       std::numeric_limits<double>::quiet_NaN()};
        switch (byte() % 4) {
        case 0:
            return extremes[byte() % std::size(extremes)];
        case 1:
            return number<double>();
        case 2:
            return static_cast<double>(number<std::int16_t>()) / 256.0;
        default:
            return static_cast<double>(number<std::uint8_t>()) / 255.0;
        }
    }

    /// Up to `most` bytes as they are.
    QByteArray bytes(std::size_t most) {
        const std::size_t taken = std::min(left, most);
        const QByteArray result(reinterpret_cast<const char*>(at), static_cast<qsizetype>(taken));
        skip(taken);
        return result;
    }
    QByteArray rest() { return bytes(left); }

    /// A text: short or long as its first byte says, from UTF-8 or, for lone surrogates, UTF-16.
    QString text() {
        const std::uint8_t kind = byte();
        if (kind % 8 == 7) { // long, from little
            return QString::fromUtf8(bytes(8)).repeated(512);
        }
        if (kind % 2 == 1) {
            const QByteArray raw = bytes(kind / 4U);
            QString result(raw.size() / 2, QChar());
            std::memcpy(result.data(), raw.constData(),
                        static_cast<std::size_t>(result.size()) * sizeof(QChar));
            return result;
        }
        return QString::fromUtf8(bytes(kind / 4U));
    }

private:
    void skip(std::size_t count) {
        at += count;
        left -= count;
    }

    const std::uint8_t* at;
    std::size_t left;
};
