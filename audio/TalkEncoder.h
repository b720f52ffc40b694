#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>

struct Codec;

/** The description of a codec's packets for a client. */
struct TalkFormat
{
    /** Takes the codec's usual rate; a packet has one frame, or 640 samples of a codec without frames. */
    explicit TalkFormat(const Codec& codec);

    std::uint32_t streamType; ///< A value of StreamType.
    int sampleRate;           ///< Hz; one channel.
    int frameSamples;         ///< Samples of one packet.
};

/** An encoder of a camera's voice. Used by one thread at a time. */
class TalkEncoder
{
public:
    /** Returns whether there is an encoder for a codec; of others a camera plays recorded packets. Any
     * thread. */
    static bool existsFor(const Codec& codec);

    /** Returns null when there is no encoder for the codec, or when it does not open. */
    static std::unique_ptr<TalkEncoder> create(const Codec& codec);

    virtual ~TalkEncoder() = default;

    /** Returns the description of the packets. */
    const TalkFormat& format() const { return m_format; }

    /**
     * Encodes frameSamples samples to a packet with one codec frame.
     *
     * @return empty when the encoder delays the sound, as it may at its start, or when it fails
     */
    virtual QByteArray encode(const std::int16_t* samples) = 0;

protected:
    /** @param format of the packets */
    explicit TalkEncoder(const TalkFormat& format) : m_format(format) {}

private:
    TalkFormat m_format;
};
