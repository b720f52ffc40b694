#pragma once

#include "server/devices/VoicePacket.h"
#include "server/devices/onvif/RtpFormat.h"

#include <memory>
#include <vector>

/** What came in one RTP packet of a camera. */
struct RtpVoice
{
    QByteArray payload;          ///< Of the packet, without its headers.
    std::uint32_t timestamp = 0; ///< In units of the clock rate; wraps.
    bool marker = false;         ///< Bit of the header.
    std::uint64_t time = 0;      ///< When it came, microseconds of the steady clock.
    std::uint16_t sequence = 0;  ///< One more than that of the packet before; wraps.
    int payloadType = 0;         ///< 0 to 127, of the header.
};

/**
 * Turns the RTP payloads of a camera's voice into packets of codecs that clients know: G.711 and AAC as they
 * are, G.726 and L16 as mu-law at 8000 Hz. A packet's position goes by the RTP time since the first one. Used
 * by one thread at a time; payloads may be anything.
 */
class RtpDecoder
{
public:
    /** Returns null when there is no decoder for a format. */
    static std::unique_ptr<RtpDecoder> create(const RtpFormat& format);

    virtual ~RtpDecoder() = default;

    /** Appends the packets that are complete with a payload; none for a broken one. */
    void decode(const RtpVoice& voice, std::vector<VoicePacket>& out);

protected:
    /** @param clockRate of timestamps, Hz @param packetRate of the positions of packets, Hz */
    RtpDecoder(int clockRate, int packetRate) : m_clockRate(clockRate), m_packetRate(packetRate) {}

    /** Appends the packets that are complete with a payload; none for a broken one. */
    virtual void decodePayload(const RtpVoice& voice, std::vector<VoicePacket>& out) = 0;

    /** Returns the position of a time that is some units behind that of the payload at hand. */
    std::uint32_t positionOf(std::int64_t behind = 0) const;

    /** Returns the rate of the positions of packets, Hz. */
    int packetRate() const { return m_packetRate; }

private:
    int m_clockRate;
    int m_packetRate;
    bool m_started = false;
    std::uint32_t m_last = 0;   ///< Timestamp.
    std::int64_t m_elapsed = 0; ///< Units of the clock rate since the first payload.
};
