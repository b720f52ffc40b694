#include "audio/PacketHeader.h"

#include <algorithm>

namespace {

constexpr std::array<std::uint8_t, 4> magic{'V', 'D', 'A', 'P'};
constexpr std::uint8_t version = 1;

void putU32(std::uint8_t* out, std::uint32_t value)
{
    for (unsigned i = 0; i < 4; ++i) {
        out[i] = static_cast<std::uint8_t>(value >> (8U * i));
    }
}

std::uint32_t getU32(const std::uint8_t* in)
{
    return in[0] | std::uint32_t{in[1]} << 8U | std::uint32_t{in[2]} << 16U | std::uint32_t{in[3]} << 24U;
}

} // namespace

std::array<std::uint8_t, PacketHeader::size> PacketHeader::toBytes() const
{
    std::array<std::uint8_t, size> bytes{};
    std::copy(magic.begin(), magic.end(), bytes.begin());
    bytes[4] = version;
    bytes[5] = length;
    bytes[6] = channels;
    putU32(&bytes[8], streamType);
    putU32(&bytes[12], sampleRate);
    putU32(&bytes[16], position);
    putU32(&bytes[24], static_cast<std::uint32_t>(captureTime));
    putU32(&bytes[28], static_cast<std::uint32_t>(captureTime >> 32U));
    return bytes;
}

std::optional<PacketHeader> PacketHeader::fromBytes(const std::uint8_t* packet, std::size_t packetSize)
{
    if (packetSize < size || !std::equal(magic.begin(), magic.end(), packet) || packet[4] != version ||
        packet[5] < size || packet[5] > packetSize) {
        return std::nullopt;
    }
    PacketHeader header;
    header.channels = packet[6];
    header.streamType = getU32(packet + 8);
    header.sampleRate = getU32(packet + 12);
    header.position = getU32(packet + 16);
    header.captureTime = getU32(packet + 24) | std::uint64_t{getU32(packet + 28)} << 32U;
    header.length = packet[5];
    return header;
}
