#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <vector>

/** What a camera's voice is encoded with. */
enum class TalkCodec
{
    PcmMuLaw,
    PcmALaw,
    Aac,
    AmrNb,
    // No encoder for these: a camera plays recorded packets.
    G726,
    G7221,
    G729A,
};

/** How packets of a codec are described to a client. */
struct TalkFormat
{
    std::uint32_t streamType; ///< As media packets carry it.
    int sampleRate;           ///< Hz; one channel.
    int frameSamples;         ///< Samples that one packet takes.
};

/** Encodes a camera's voice, by an existing encoder for each codec. Used by one thread at a time. */
class TalkEncoder
{
public:
    /** Null when there is no encoder for the codec. */
    static std::unique_ptr<TalkEncoder> create(TalkCodec codec);

    virtual ~TalkEncoder() = default;

    virtual TalkFormat format() const = 0;

    /**
     * Encodes frameSamples samples; one packet with one codec frame at the most.
     *
     * @return empty when the encoder holds the sound back, as it may at its start, or when it fails
     */
    virtual QByteArray encode(const std::int16_t* samples) = 0;
};
