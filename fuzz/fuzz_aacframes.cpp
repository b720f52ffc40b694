// AAC frames as a hostile sender joins them: an input is a row of packets of frames with ADTS headers, and
// mutations keep to frames. What a packet leaves in the decoder is bounded, whatever it holds.
//
//   input    sample rate as an index of 4 bits, channels in 4 bits; packets
//   packet   u8 how often its bytes are repeated, as a power of two; u16 length, little endian; frames

#include "src/MediaPacket.h"
#include "src/decoders/PcmBlock.h"
#include "src/playback/DecoderSlot.h"
#include "src/vocabulary/StreamType.h"

#include <sanitizer/allocator_interface.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

extern "C" {
#include <libavutil/log.h>

std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);
}

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::array<std::uint32_t, 16> rates{96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050,
                                              16000, 12000, 11025, 8000,  7350,  0,     1,     0xFFFFFFFF};
constexpr std::size_t headerSize = 7;        // ADTS, without a check sum
constexpr std::size_t maxPacket = 1U << 20U; // bytes, after repetition
constexpr unsigned maxRepeats = 17;          // as a power of two
constexpr std::size_t maxPackets = 8;
constexpr std::size_t maxHeld = 64U << 20U; // bytes between two packets; a block of PCM has 576,000

struct Packet
{
    std::uint8_t repeats = 0;
    std::vector<Bytes> frames;

    std::size_t size() const
    {
        std::size_t sum = 0;
        for (const Bytes& frame : frames) {
            sum += frame.size();
        }
        return sum;
    }
};

/** The length of the frame at the start, header included, as far as there is one. */
std::size_t frameLength(const std::uint8_t* data, std::size_t size)
{
    if (size < headerSize || data[0] != 0xFF || (data[1] & 0xF0U) != 0xF0U) {
        return size;
    }
    const std::size_t length = static_cast<std::size_t>(data[3] & 3U) << 11U |
                               static_cast<std::size_t>(data[4]) << 3U | data[5] >> 5U;
    return std::clamp(length, headerSize, size);
}

/** Corrects what a header says of its frame's length. */
void fixLength(Bytes& frame)
{
    if (frame.size() >= headerSize && frame.size() < 8192) {
        frame[3] = static_cast<std::uint8_t>((frame[3] & 0xFCU) | frame.size() >> 11U);
        frame[4] = static_cast<std::uint8_t>(frame.size() >> 3U);
        frame[5] = static_cast<std::uint8_t>((frame[5] & 0x1FU) | (frame.size() & 7U) << 5U);
    }
}

struct Stream
{
    std::uint8_t format = 0;
    std::vector<Packet> packets;

    /** Takes any bytes; what is cut off at the end is left out. */
    static Stream parse(const std::uint8_t* data, std::size_t size)
    {
        Stream stream;
        stream.format = size > 0 ? data[0] : 0x81;
        std::size_t at = 1;
        while (at + 3 <= size && stream.packets.size() < maxPackets) {
            Packet packet;
            packet.repeats = static_cast<std::uint8_t>(data[at] % (maxRepeats + 1));
            const std::size_t wanted = data[at + 1] | static_cast<std::size_t>(data[at + 2]) << 8U;
            at += 3;
            const std::size_t end = at + std::min(wanted, size - at);
            while (at < end) {
                const std::size_t length = frameLength(data + at, end - at);
                packet.frames.emplace_back(data + at, data + at + length);
                at += length;
            }
            stream.packets.push_back(std::move(packet));
        }
        return stream;
    }

    Bytes toBytes() const
    {
        Bytes bytes{format};
        for (const Packet& packet : packets) {
            const std::size_t size = std::min<std::size_t>(packet.size(), 0xFFFF);
            bytes.push_back(packet.repeats);
            bytes.push_back(static_cast<std::uint8_t>(size));
            bytes.push_back(static_cast<std::uint8_t>(size >> 8U));
            const std::size_t end = bytes.size() + size;
            for (const Bytes& frame : packet.frames) {
                bytes.insert(bytes.end(), frame.begin(), frame.end());
            }
            bytes.resize(end);
        }
        return bytes;
    }
};

class Mutation
{
public:
    Mutation(Stream& stream, unsigned seed) : m_stream(stream), m_random(seed) {}

    /** Makes one change. */
    void apply()
    {
        if (m_stream.packets.empty()) {
            m_stream.packets.emplace_back();
        }
        Packet& packet = any(m_stream.packets);
        if (packet.frames.empty()) {
            packet.frames.push_back(anyFrame());
        }
        Bytes& frame = any(packet.frames);
        switch (below(11)) {
        case 0: // joins a frame of any packet
            packet.frames.insert(
                packet.frames.begin() + static_cast<std::ptrdiff_t>(below(packet.frames.size())), anyFrame());
            break;
        case 1: // joins two packets
            joinPackets();
            break;
        case 2: // the same packet again
            m_stream.packets.push_back(packet);
            break;
        case 3: // a frame less
            packet.frames.erase(packet.frames.begin() +
                                static_cast<std::ptrdiff_t>(below(packet.frames.size())));
            break;
        case 4:
        case 5:
            flipBits(frame, frame.size() > headerSize ? headerSize : 0);
            break;
        case 6:
            flipBits(frame, 0);
            break;
        case 7: // cut short, with a header that knows it
            frame.resize(below(frame.size()) + 1);
            fixLength(frame);
            break;
        case 8: // cut short, with a header that does not
            frame.resize(below(frame.size()) + 1);
            break;
        case 9:
            packet.repeats = static_cast<std::uint8_t>(below(maxRepeats + 1));
            break;
        default:
            m_stream.format = static_cast<std::uint8_t>(m_random());
        }
    }

private:
    std::size_t below(std::size_t end) { return end == 0 ? 0 : m_random() % end; }

    template<class T>
    T& any(std::vector<T>& all)
    {
        return all[below(all.size())];
    }

    /** A copy; a short silence when there is none. */
    Bytes anyFrame()
    {
        Packet& from = any(m_stream.packets);
        return from.frames.empty() ? Bytes{0xFF, 0xF1, 0x60, 0x40, 0x01, 0x7F, 0xFC, 0x01, 0x18, 0x20, 0x07}
                                   : Bytes(any(from.frames));
    }

    void joinPackets()
    {
        Packet last = m_stream.packets.back();
        m_stream.packets.pop_back();
        if (m_stream.packets.empty()) {
            m_stream.packets.push_back(last);
        }
        Packet& to = any(m_stream.packets);
        to.frames.insert(to.frames.end(), last.frames.begin(), last.frames.end());
    }

    void flipBits(Bytes& frame, std::size_t from)
    {
        if (frame.size() <= from) {
            return;
        }
        for (std::size_t left = below(8) + 1; left > 0; --left) {
            frame[from + below(frame.size() - from)] ^= static_cast<std::uint8_t>(1U << below(8));
        }
    }

    Stream& m_stream;
    std::minstd_rand m_random;
};

Bytes repeated(const Packet& packet)
{
    Bytes once;
    for (const Bytes& frame : packet.frames) {
        once.insert(once.end(), frame.begin(), frame.end());
    }
    Bytes all = once;
    for (std::size_t left = (std::size_t{1} << packet.repeats) - 1;
         left > 0 && all.size() + once.size() <= maxPacket && !once.empty(); --left) {
        all.insert(all.end(), once.begin(), once.end());
    }
    return all;
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed)
{
    if (seed % 8 == 0) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    Stream stream = Stream::parse(data, size);
    Mutation(stream, seed).apply();
    const Bytes bytes = stream.toBytes();
    const std::size_t used = std::min(bytes.size(), maxSize);
    std::copy_n(bytes.begin(), used, data);
    return used;
}

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    av_log_set_level(AV_LOG_QUIET);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Bytes block(pcmBlockSize);
    const Stream stream = Stream::parse(data, size);
    const std::size_t before = __sanitizer_get_current_allocated_bytes();
    DecoderSlot slot;
    for (const Packet& packet : stream.packets) {
        Bytes bytes = repeated(packet);
        TMediaDataPacketInfo record{};
        record.StreamType = StreamType::Aac;
        record.AudioSamplingFreq = rates[stream.format >> 4U];
        record.AudioChannelNum = stream.format & 15U;
        record.FrameNumber = 1;
        record.Buffer = bytes.data();
        record.BitstreamSize = static_cast<std::uint32_t>(bytes.size());
        std::uint32_t written = pcmBlockSize;
        const std::int32_t result = slot.Decode(block.data(), &written, *makeMediaPacket(record));
        if (result < 0 ? written != pcmBlockSize : written > pcmBlockSize) {
            std::abort();
        }
        const std::size_t now = __sanitizer_get_current_allocated_bytes();
        if (now > before && now - before > maxHeld) {
            std::fprintf(stderr, "%zu MiB are held after a packet of %zu bytes\n", (now - before) >> 20U,
                         bytes.size());
            std::abort();
        }
    }
    return 0;
}
