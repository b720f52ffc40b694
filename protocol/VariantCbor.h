#pragma once

#include <QVariant>

#include <optional>

class CborReader;
class CborWriter;

/**
 * QVariants as CBOR (RFC 8949) and back, with their types: texts, byte strings, booleans, doubles, ints,
 * lists and maps are CBOR's own; other types have a tag. A value of any other type becomes the invalid
 * QVariant.
 *
 *   undefined          invalid QVariant        tag 65536    uint
 *   integer            int                     tag 65537    qlonglong
 *   text, bytes        QString, QByteArray     tag 65538    qulonglong
 *   double, bool       double, bool            tag 65539    QStringList
 *   array, map         QVariantList, ...Map    tag 65540    QDateTime, ISO 8601 with milliseconds
 *                                              tag 65541    QUrl
 */
namespace VariantCbor {

/** Writes a value. */
void encode(const QVariant& value, CborWriter& writer);

/** Writes a uint: a tag and an integer. */
void encode(uint value, CborWriter& writer);

/**
 * Reads the next item; empty for one that encode does not make, or nested beyond Limits::maxNesting. Of pairs
 * with the same key the last one counts. An integer beyond 64 bits with a sign is a double.
 */
std::optional<QVariant> decode(CborReader& reader);

} // namespace VariantCbor
