#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>

struct Codec;

/** How packets of a codec are described to a client. */
struct TalkFormat
{
    /** The codec's usual rate; one frame a packet, or 640 samples of a codec without frames. */
    explicit TalkFormat(const Codec& codec);

    std::uint32_t streamType; ///< As media packets carry it.
    int sampleRate;           ///< Hz; one channel.
    int frameSamples;         ///< Samples that one packet takes.
};

/** Encodes a camera's voice, by an existing encoder for each codec. Used by one thread at a time. */
class TalkEncoder
{
public:
    /** Whether there is an encoder for a codec; of others a camera plays recorded packets. Any thread. */
    static bool existsFor(const Codec& codec);

    /** Returns null when there is no encoder for the codec, or when it does not open. */
    static std::unique_ptr<TalkEncoder> create(const Codec& codec);

    virtual ~TalkEncoder() = default;

    const TalkFormat& format() const { return m_format; }

    /**
     * Encodes frameSamples samples; one packet with one codec frame at the most.
     *
     * @return empty when the encoder holds the sound back, as it may at its start, or when it fails
     */
    virtual QByteArray encode(const std::int16_t* samples) = 0;

protected:
    explicit TalkEncoder(const TalkFormat& format) : m_format(format) {}

private:
    TalkFormat m_format;
};
