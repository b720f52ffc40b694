#pragma once

#include "protocol/ReturnCode.h"

#include <QString>
#include <QVariant>

/** The server's reply to a command. */
struct ServerReply
{
    QString returnCode; ///< "0" for success; see ReturnCode.
    QVariant result;    ///< The reply's payload; invalid for none.
    QString errorText;  ///< Says in words what went wrong; empty on success.
};

/** Makes a success with its payload. */
inline ServerReply done(const QVariant& result = QVariant())
{
    return {ReturnCode::success, result, QString()};
}

/** Makes a refusal; for some commands it has a payload. */
inline ServerReply refusal(const QString& returnCode, const QString& errorText,
                           const QVariant& result = QVariant())
{
    return {returnCode, result, errorText};
}
