#pragma once

#include "audio/TalkEncoder.h"

#include <QByteArray>
#include <QString>

#include <vector>

/** A packet of a stream that was encoded elsewhere. */
struct RecordedPacket
{
    QByteArray bitstream;
    unsigned frames = 1;       ///< Codec frames.
    std::uint32_t samples = 0; ///< What it sounds for.
};

/** How packets of a codec without an encoder here are described. @param codec G726, G7221 or G729A */
TalkFormat recordedFormat(TalkCodec codec);

/** Reads a packet dump; empty when there is nothing in it to be played. */
std::vector<RecordedPacket> readRecordedStream(const QString& path, TalkCodec codec);
