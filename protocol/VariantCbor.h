#pragma once

#include <QByteArray>
#include <QCborValue>
#include <QVariant>

#include <optional>

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

/** Converts a value. */
QCborValue encode(const QVariant& value);

/** Converts back; empty for a value that encode does not make, or nested beyond Limits::maxNesting. */
std::optional<QVariant> decode(const QCborValue& value);

} // namespace VariantCbor
