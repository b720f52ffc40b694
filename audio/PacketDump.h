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
    std::vector<QByteArray> packets;

    /** Takes the packets out of a dump; empty, and @p error says where, when a record is cut short. */
    static std::optional<PacketDump> parse(const QByteArray& bytes, QString* error);

    /** Reads a file; empty, and @p error says why, when that fails. */
    static std::optional<PacketDump> read(const QString& path, QString* error);
};
