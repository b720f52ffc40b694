#pragma once

#include "standins/framesmith/MuLawEncoder.h"

#include <cstddef>
#include <cstdint>

struct TMediaDataPacketInfo;

namespace framesmith {

/** Makes G.711 mu-law packets with a PacketHeader of 8000 Hz mono PCM. Used by one thread at a time. */
class PacketMaker
{
public:
    /** Returns the bytes of a packet of this many samples. */
    static std::size_t packetSize(std::size_t samples);

    /**
     * Writes a packet to record.Buffer, which holds packetSize(count) bytes, and fills the record.
     *
     * @return false when the codec fails; the record is then unchanged
     */
    bool make(const std::int16_t* samples, std::size_t count, TMediaDataPacketInfo& record);

private:
    MuLawEncoder m_encoder;
    std::uint32_t m_position = 0; // of the next packet's first sample
};

} // namespace framesmith
