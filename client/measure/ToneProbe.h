#pragma once

#include <QByteArray>
#include <QVariantMap>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class PacketStream;

/**
 * A sound that is sent to a camera to find out whether it comes back: a tone that rises from 400 to 2400 Hz,
 * and is like itself at no other place. Used on one thread.
 */
class ToneProbe
{
public:
    static constexpr int sampleRate = 8000;      ///< Of the tone, Hz.
    static constexpr int packetSamples = 640;    ///< Of a talk packet.
    static constexpr int packets = 20;           ///< That the tone has.
    static constexpr double leastLikeness = 0.2; ///< Correlation of a tone that came back.

    /** Where the tone came back. */
    struct Echo
    {
        double likeness; ///< Correlation with the tone, 0 to 1.
        double time;     ///< When the packet with its start came, seconds of the steady clock.
    };

    ToneProbe();
    ~ToneProbe();

    /** Returns a talk packet of the tone: header and G.711 mu-law. @param number from 0 */
    QByteArray packet(int number) const;

    /** Takes the fields of an AudioReceived event; what cannot be decoded counts as nothing. Keeps ten
     * seconds. */
    void hear(const QVariantMap& fields);

    /** Returns whether anything was heard. */
    bool hasHeard() const { return !m_heard.empty(); }

    /** Looks for the tone in what was heard; takes parts of a second. Empty when it is not there. */
    std::optional<Echo> find() const;

private:
    struct Arrival
    {
        std::size_t sample; ///< Of m_heard, the first of a packet.
        double time;        ///< Of the packet, seconds of the steady clock.
    };

    std::vector<std::int16_t> m_tone;
    std::vector<std::int16_t> m_heard; ///< At the tone's rate.
    std::vector<Arrival> m_arrivals;
    std::unique_ptr<PacketStream> m_stream; ///< Of the codec of the first packet.
    std::uint32_t m_streamType = 0;
    std::uint32_t m_rate = 0; ///< Hz.
    double m_place = 0;       ///< Of the next sample to keep, in samples of the packet that comes.
};
