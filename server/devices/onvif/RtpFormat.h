#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

/** A payload format of an RTP stream, as a session description offers it (RFC 4566, RFC 3551). */
struct RtpFormat
{
    QString encoding;    ///< In capitals: "PCMU", "PCMA", "L16", "G726-32", "AAL2-G726-32", "MPEG4-GENERIC".
    int payloadType = 0; ///< 0 to 127.
    int clockRate = 0;   ///< Hz, of timestamps and of the sound.
    int channels = 1;    ///< Channel count.

    // Of MPEG4-GENERIC (RFC 3640, clause 4.1).
    int sizeLength = 0;       ///< Bits of the size in an AU header.
    int indexLength = 0;      ///< Bits of the index in the first AU header of a packet.
    int indexDeltaLength = 0; ///< The same of later ones.
    QByteArray config{};      ///< AudioSpecificConfig (ISO/IEC 14496-3, clause 1.6.2.1).
};

/** What an AudioSpecificConfig says of a stream. */
struct AacConfig
{
    int objectType = 0;    ///< 2 is AAC-LC.
    int sampleRate = 0;    ///< Hz, of the frames' core.
    int channels = 0;      ///< Of the core, as ADTS headers have it: 7 are eight channels.
    int soundRate = 0;     ///< Hz, of what a decoder makes of it: band replication doubles the core's.
    int soundChannels = 0; ///< Channel count of the same: parametric stereo adds one.

    /** Reads a configuration; empty when it is cut off, or of no form that an ADTS header can have. */
    static std::optional<AacConfig> parse(const QByteArray& config);
};

/** Bit/s and order of bits of G.726 (RFC 3551, clause 4.5.4). */
struct G726Format
{
    int bitRate = 0;           ///< bit/s
    bool highestFirst = false; ///< From the most significant bit on, as AAL2 has it.

    /** Reads the name of an encoding; empty when it is another. */
    static std::optional<G726Format> of(const QString& encoding);
};
