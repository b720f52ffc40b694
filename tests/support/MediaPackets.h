#pragma once

#include "src/MediaPacket.h"

#include <QByteArray>

/** Media packets as the downlink makes them. */
namespace MediaPackets {

struct Format
{
    std::uint32_t streamType = 8192;
    std::uint32_t sampleRate = 8000;
    std::uint8_t channels = 1;
    std::uint32_t frames = 1;
    std::uint32_t bitRate = 0;
    std::uint8_t packing = 0;
    std::uint32_t offset = 0; ///< Bytes of room before the bitstream.
};

inline MediaPacketPtr make(const QByteArray& bitstream, const Format& format = Format())
{
    TMediaDataPacketInfo record{};
    record.StreamType = format.streamType;
    record.AudioSamplingFreq = format.sampleRate;
    record.AudioChannelNum = format.channels;
    record.FrameNumber = format.frames;
    record.AudioBitRate = format.bitRate;
    record.AudioPackingMode = format.packing;
    record.BitstreamSize = static_cast<std::uint32_t>(bitstream.size());
    record.Offset = format.offset;
    const QByteArray buffer = QByteArray(static_cast<int>(format.offset), '\0') + bitstream;
    record.Buffer = reinterpret_cast<std::uint8_t*>(const_cast<char*>(buffer.constData()));
    return makeMediaPacket(record);
}

} // namespace MediaPackets
