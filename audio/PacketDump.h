#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

/**
 * A file of packets: records of a 32-bit little-endian length and that many bytes of bitstream, with nothing
 * between them. A length of 0 is legal.
 */
struct PacketDump
{
    std::vector<QByteArray> packets; ///< The bitstream of each packet.

    /** Reads the packets of a dump; empty for an incomplete record, whose place @p error receives. */
    static std::optional<PacketDump> parse(const QByteArray& bytes, QString* error);

    /** Reads a file; empty when that fails, and @p error then receives the reason. */
    static std::optional<PacketDump> read(const QString& path, QString* error);
};
