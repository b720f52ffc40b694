#pragma once

#include <QString>
#include <QVariant>

/** What the server answers to a command. */
struct ServerReply
{
    QString returnCode; ///< "0" for success; see ReturnCode.
    QVariant result;    ///< The reply's payload; invalid for none.
    QString errorText;  ///< Says in words what went wrong; empty on success.
};

/** The texts of ServerReply::returnCode. docs/PROTOCOL.md explains them. */
namespace ReturnCode {

inline const QString success = QStringLiteral("0");
inline const QString unknownCommand = QStringLiteral("101");
inline const QString malformedRequest = QStringLiteral("102");
inline const QString noSuchCamera = QStringLiteral("201");
inline const QString cameraOffline = QStringLiteral("202");
inline const QString noSuchTalk = QStringLiteral("203");
inline const QString badTalkPacket = QStringLiteral("204");
inline const QString noVoice = QStringLiteral("205");
inline const QString storageFailed = QStringLiteral("301");

} // namespace ReturnCode
