#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QVariantMap>

#include <cstdint>

/** One packet of what a camera or a speaker says. */
struct VoicePacket
{
    QByteArray bitstream;          ///< Without a header.
    std::uint32_t streamType = 0;  ///< The codec, see src/vocabulary/StreamType.h.
    int sampleRate = 0;            ///< Hz, of the sound as it is decoded.
    unsigned frames = 1;           ///< Codec frames in the bitstream.
    std::uint32_t position = 0;    ///< Of the first sample in the talk, samples; wraps.
    std::uint64_t captureTime = 0; ///< Of the last sample, microseconds of the steady clock.
    int channels = 1;              ///< Channel count of the sound, 1 to 8.

    /** The fields of an AudioReceived event, without the token. */
    QVariantMap toFields() const;

    /** The payload of an AudioReceived event as CBOR: the same fields and the token, under the event's name.
     */
    QByteArray toPayload(const QString& token) const;
};

Q_DECLARE_METATYPE(VoicePacket)
