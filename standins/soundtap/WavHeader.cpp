#include "standins/soundtap/WavHeader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <optional>

namespace soundtap {

namespace {

constexpr std::uint16_t formatPcm = 1;
constexpr std::uint16_t formatExtensible = 0xFFFE;
constexpr std::uint64_t riffHeaderSize = 12;
constexpr std::uint64_t chunkHeaderSize = 8;
constexpr std::size_t formatSize = 16;
constexpr std::size_t extensibleFormatSize = 40;
constexpr int maxChunks = 10000;

// The last 14 bytes of the sub-format of an extensible file; the format's number comes before them.
constexpr std::array<std::uint8_t, 14> subFormatTail{0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                                     0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

std::uint16_t getU16(const std::uint8_t* in)
{
    return static_cast<std::uint16_t>(in[0] | in[1] << 8U);
}

std::uint32_t getU32(const std::uint8_t* in)
{
    return in[0] | std::uint32_t{in[1]} << 8U | std::uint32_t{in[2]} << 16U | std::uint32_t{in[3]} << 24U;
}

bool readAt(std::istream& stream, std::uint64_t position, std::uint8_t* out, std::size_t size)
{
    stream.clear();
    stream.seekg(static_cast<std::streamoff>(position));
    stream.read(reinterpret_cast<char*>(out), static_cast<std::streamsize>(size));
    return stream.good();
}

struct Format
{
    std::uint32_t sampleRate;
    std::uint32_t bytesPerFrame; // one sample of each channel
};

WavError readFormat(std::istream& stream, std::uint64_t position, std::uint32_t size,
                    std::optional<Format>& format)
{
    std::array<std::uint8_t, extensibleFormatSize> bytes{};
    const bool extended = size >= extensibleFormatSize;
    if (size < formatSize || !readAt(stream, position, bytes.data(), extended ? bytes.size() : formatSize)) {
        return WavNoFormat;
    }
    std::uint16_t tag = getU16(&bytes[0]);
    if (tag == formatExtensible && extended &&
        std::equal(subFormatTail.begin(), subFormatTail.end(), bytes.begin() + 26)) {
        tag = getU16(&bytes[24]);
    }
    const std::uint32_t channels = getU16(&bytes[2]);
    const std::uint32_t sampleRate = getU32(&bytes[4]);
    const std::uint32_t bits = getU16(&bytes[14]);
    if (tag != formatPcm || channels == 0 || sampleRate == 0 || bits == 0 || bits > 32) {
        return WavUnsupported;
    }
    format = Format{sampleRate, channels * ((bits + 7) / 8)};
    return WavOk;
}

} // namespace

WavError readWavHeader(std::istream& stream, WavHeader& header)
{
    stream.seekg(0, std::ios::end);
    const std::streamoff length = stream.tellg();
    if (!stream.good() || length < 0) {
        return WavUnreadable;
    }
    const auto fileSize = static_cast<std::uint64_t>(length);
    std::array<std::uint8_t, riffHeaderSize> riff{};
    if (!readAt(stream, 0, riff.data(), riff.size()) || std::memcmp(&riff[0], "RIFF", 4) != 0 ||
        std::memcmp(&riff[8], "WAVE", 4) != 0) {
        return WavNotRiff;
    }

    std::optional<Format> format;
    std::optional<std::uint64_t> dataBegin;
    std::uint64_t dataEnd = 0;
    int chunks = 0;
    for (std::uint64_t position = riffHeaderSize; position + chunkHeaderSize <= fileSize;) {
        if (++chunks > maxChunks) {
            return WavTooManyParts;
        }
        std::array<std::uint8_t, chunkHeaderSize> chunk{};
        if (!readAt(stream, position, chunk.data(), chunk.size())) {
            return WavUnreadable;
        }
        const std::uint32_t size = getU32(&chunk[4]);
        const std::uint64_t body = position + chunkHeaderSize;
        const bool isFormat = std::memcmp(chunk.data(), "fmt ", 4) == 0;
        const bool isData = std::memcmp(chunk.data(), "data", 4) == 0;
        if (isFormat && !format) {
            const WavError error = readFormat(stream, body, size, format);
            if (error != WavOk) {
                return error;
            }
        } else if (isData && !dataBegin) {
            dataBegin = body;
            const bool unfinished = size == 0 || size == std::numeric_limits<std::uint32_t>::max();
            dataEnd = unfinished ? fileSize : std::min(body + size, fileSize);
            if (unfinished) {
                break;
            }
        }
        position = body + size + size % 2; // chunks are padded to an even size
    }

    if (!format) {
        return WavNoFormat;
    }
    if (!dataBegin) {
        return WavNoSamples;
    }
    constexpr std::uint64_t maxOffset = std::numeric_limits<std::uint32_t>::max();
    if (*dataBegin > maxOffset) {
        return WavTooLarge;
    }
    dataEnd = std::min(dataEnd, maxOffset);
    dataEnd -= (dataEnd - *dataBegin) % format->bytesPerFrame;
    if (dataEnd == *dataBegin) {
        return WavNoSamples;
    }
    header.sampleRate = format->sampleRate;
    header.dataBegin = static_cast<std::uint32_t>(*dataBegin);
    header.dataEnd = static_cast<std::uint32_t>(dataEnd);
    return WavOk;
}

} // namespace soundtap
