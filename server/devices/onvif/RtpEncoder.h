#pragma once

#include "server/devices/onvif/RtpFormat.h"

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <vector>

/** What goes into one RTP packet to a camera. */
struct RtpPayload
{
    QByteArray bytes;            ///< The payload.
    std::uint32_t timestamp = 0; ///< Of the first sample, in units of the clock rate; wraps.
    bool marker = false;         ///< The first after a pause (RFC 3551, clause 4.1), or an AAC frame's end.
    int duration = 0;            ///< ms, rounded down.
};

/**
 * Turns what is said, G.711 mu-law at 8000 Hz mono, into the payloads of a camera's codec. Used by one thread
 * at a time.
 */
class RtpEncoder
{
public:
    static constexpr int spokenRate = 8000; ///< Hz

    /** Returns whether there is an encoder for a format. */
    static bool existsFor(const RtpFormat& format);

    /**
     * @param packetTime of a payload, ms; AAC has its own frames
     * @return null when there is no encoder for the format, or when it does not open
     */
    static std::unique_ptr<RtpEncoder> create(const RtpFormat& format, int packetTime);

    virtual ~RtpEncoder() = default;

    /**
     * Takes sound that was said and appends the payloads that are complete. A pause between two calls is a
     * pause in the timestamps; a position that goes back, or on by more than the time that has passed, is
     * taken as if it went on by that time.
     *
     * @param position of the first sample, samples; wraps
     * @param time     of the call, microseconds of a steady clock
     */
    void encode(std::uint32_t position, std::int64_t time, const QByteArray& muLaw,
                std::vector<RtpPayload>& out);

protected:
    /** @param clockRate of timestamps, Hz @param packetTime of a payload, ms */
    RtpEncoder(int clockRate, int packetTime);

    /** Forgets what belongs to the sound before a pause. */
    virtual void restart() {}

    /** Encodes sound that follows the last or, after a restart, starts at m_next. */
    virtual void encodeSound(const QByteArray& muLaw, std::vector<RtpPayload>& out) = 0;

    /** Appends a payload that starts where the last one ended. @param samples at the clock rate */
    void append(const QByteArray& bytes, int samples, bool marker, std::vector<RtpPayload>& out);

    /** Returns whether the next payload is the first after a pause, once for each pause. */
    bool takeMarker();
    /** Returns the rate of timestamps, Hz. */
    int clockRate() const { return m_clockRate; }
    /** Returns the sound of a payload, ms. */
    int packetTime() const { return m_packetTime; }

private:
    int m_clockRate;
    int m_packetTime;
    bool m_started = false;
    bool m_afterPause = true;
    std::uint32_t m_expected = 0; ///< Position of the next sample that is said.
    std::int64_t m_lastTime = 0;  ///< Of the last call.
    std::uint64_t m_said = 0;     ///< Samples since the start, with pauses.
    std::uint64_t m_pauseAt = 0;  ///< m_said at the start of the sound without a pause.
    std::uint64_t m_sent = 0;     ///< Samples at the clock rate since then.
};
