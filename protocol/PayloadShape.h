#pragma once

#include <QStringList>
#include <QVariant>

#include <optional>

/** The shape of a command's payload or of its answer. */
struct PayloadShape
{
    /** Types of a payload. */
    enum Kind
    {
        Nothing, ///< The invalid QVariant.
        Number,  ///< An int: the id of a record.
        Text,    ///< A QString: the id of a camera.
        Map,     ///< A QVariantMap with all or some of the keys.
        Maps,    ///< A QVariantList of such maps.
    };

    Kind kind = Nothing; ///< The payload's type.
    QStringList keys;    ///< Of Map and Maps.
};

/**
 * Returns the size of a payload: characters of its texts and keys, bytes of its byte arrays, and one for each
 * value. Stops counting beyond @p limit, and returns more than it when lists and maps are nested deeper than
 * Limits::maxNesting. Any thread.
 */
qint64 payloadSize(const QVariant& payload, qint64 limit);

/**
 * Returns the first key of a payload that its shape does not have; empty when there is none. Keys of maps
 * inside the values are not looked at. Any thread.
 */
std::optional<QString> unknownKey(const PayloadShape& shape, const QVariant& payload);

/**
 * Returns whether a payload has the type of its shape; anything fits Nothing. Types are not converted: 3.3
 * and "3" are not the id 3, but 3.0 is. Any thread.
 */
bool hasKindOf(const PayloadShape& shape, const QVariant& payload);
