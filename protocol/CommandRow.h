#pragma once

#include "protocol/Limits.h"
#include "protocol/PayloadShape.h"
#include "protocol/ReturnCode.h"

#include <QString>

namespace CommandTable {

/** How often and how soon a command is answered. */
enum class Answered
{
    AtOnce, ///< Once, without waiting for anything.
    Late,   ///< Once, after work that takes seconds.
    Often,  ///< At once, and again with each step of what was started.
};

/** A command. */
struct Row
{
    QString name;         ///< As sent.
    PayloadShape payload; ///< Of the request.
    PayloadShape answer;  ///< Of a reply with the return code "0".
    PayloadShape refusal; ///< Of replies with other codes; one with storageFailed may be without it.
    qint64 maxSize;       ///< The largest payloadSize.
    QString malformed;    ///< Return code for a payload beyond maxSize, or with a key that it does not have.
    Answered answered;    ///< How often and how soon it is answered.
};

/** Returns the shape of a payload that is not there. */
inline PayloadShape nothing()
{
    return {};
}

/** Returns the shape of an int. */
inline PayloadShape number()
{
    return {PayloadShape::Number, {}};
}

/** Returns the shape of a text. */
inline PayloadShape text()
{
    return {PayloadShape::Text, {}};
}

/** Returns the shape of a map with these keys. */
inline PayloadShape map(const QStringList& keys)
{
    return {PayloadShape::Map, keys};
}

/** Returns the shape of a list of maps with these keys. */
inline PayloadShape maps(const QStringList& keys)
{
    return {PayloadShape::Maps, keys};
}

/** Returns a command that is answered at once. @param more size that it needs beyond Limits::maxShortPayload
 */
inline Row row(const QString& name, const PayloadShape& payload, const PayloadShape& answer,
               const PayloadShape& refusal = nothing(), qint64 more = 0)
{
    return {name,
            payload,
            answer,
            refusal,
            Limits::maxShortPayload + more,
            ReturnCode::malformedRequest,
            Answered::AtOnce};
}

/** Returns the same command, answered again and again. */
inline Row often(Row row)
{
    row.answered = Answered::Often;
    return row;
}

/** Returns the same command, answered when a device has. */
inline Row late(Row row)
{
    row.answered = Answered::Late;
    return row;
}

} // namespace CommandTable
