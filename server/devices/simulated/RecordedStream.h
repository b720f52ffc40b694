#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

struct Codec;

/** A packet of a stream that was encoded elsewhere. */
struct RecordedPacket
{
    QByteArray bitstream;      ///< As encoded.
    unsigned frames = 1;       ///< Codec frames.
    std::uint32_t samples = 0; ///< Its duration at the rate of the codec.
};

/** Reads a packet dump; empty when there is nothing in it to be played. */
std::vector<RecordedPacket> readRecordedStream(const QString& path, const Codec& codec);
