#pragma once

#include "protocol/ReturnCode.h"

#include <QString>
#include <QVariant>

/** What the server answers to a command. */
struct ServerReply
{
    QString returnCode; ///< "0" for success; see ReturnCode.
    QVariant result;    ///< The reply's payload; invalid for none.
    QString errorText;  ///< Says in words what went wrong; empty on success.
};

/** A success with its payload. */
inline ServerReply done(const QVariant& result = QVariant())
{
    return {ReturnCode::success, result, QString()};
}

/** A refusal; some commands want a payload with it. */
inline ServerReply refusal(const QString& returnCode, const QString& errorText,
                           const QVariant& result = QVariant())
{
    return {returnCode, result, errorText};
}
