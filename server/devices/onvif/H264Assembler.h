#pragma once

#include "server/devices/CameraVideo.h"
#include "server/devices/onvif/RtpDecoder.h"

#include <QList>

#include <vector>

/**
 * Puts the access units of H.264 together from RTP packets (RFC 6184, packetization modes 0 and 1). What
 * comes out is what a client can decode: it begins with a key frame, each key frame has the parameter sets in
 * front, and after a loss nothing comes until the next key frame. Used by one thread at a time; payloads may
 * be anything.
 */
class H264Assembler
{
public:
    static constexpr int maxRate = 60;                ///< Access units a second, over a second.
    static constexpr int maxParameterSets = 16;       ///< That are kept; older ones are dropped.
    static constexpr int maxParameterSetBytes = 4096; ///< A larger one is broken.

    /** @param parameterSets of the camera's description: NAL units, which may be anything */
    explicit H264Assembler(const QList<QByteArray>& parameterSets);

    /** Appends the access units that are complete with a packet; none for a broken one. */
    void add(const RtpVoice& packet, std::vector<VideoUnit>& out);

private:
    void addPayload(const QByteArray& payload);
    void addAggregate(const QByteArray& payload);
    void addFragment(const QByteArray& payload);
    void addNal(const QByteArray& nal);
    void keepParameterSet(const QByteArray& nal);
    QByteArray parameterSets() const;
    void finish(std::vector<VideoUnit>& out);
    void startUnit(std::uint32_t timestamp, bool isBroken);
    bool isAllowed(std::uint64_t time);
    int positionOf(std::uint32_t timestamp);

    QList<QByteArray> m_sets; ///< Parameter sets, in the order in which they came.
    bool m_needsKeyFrame = true;
    bool m_started = false; ///< A packet has come.
    std::uint16_t m_sequence = 0;
    bool m_hasGap = false; ///< A packet is missing since the last one with a payload.

    // Of the access unit at hand.
    QByteArray m_unit;     ///< With start codes, without parameter sets.
    QByteArray m_fragment; ///< The NAL unit that has begun; empty for none.
    std::uint32_t m_timestamp = 0;
    std::uint64_t m_time = 0; ///< When its last packet came.
    bool m_isOpen = false;
    bool m_isBroken = false;
    bool m_hasSlice = false;
    bool m_isKeyFrame = false;
    bool m_hasOwnSets = false;

    // Of those that came out.
    bool m_hasShown = false;
    std::uint32_t m_lastTimestamp = 0;
    std::int64_t m_elapsed = 0; ///< Units of the clock since the first.
    double m_allowance = maxRate;
    std::uint64_t m_lastTime = 0;
};
