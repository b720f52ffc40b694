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
inline const QString speakerOffline = QStringLiteral("206");
inline const QString storageFailed = QStringLiteral("301");
inline const QString noSuchDevice = QStringLiteral("401");
inline const QString noSuchFile = QStringLiteral("402");
inline const QString noSuchGroup = QStringLiteral("403");
inline const QString noSuchSchedule = QStringLiteral("404");
inline const QString badName = QStringLiteral("411");
inline const QString nameTaken = QStringLiteral("412");
inline const QString badAddress = QStringLiteral("413");
inline const QString badPort = QStringLiteral("414");
inline const QString badCredentials = QStringLiteral("415");
inline const QString badList = QStringLiteral("416");
inline const QString badSchedule = QStringLiteral("417");
inline const QString badCameraKind = QStringLiteral("418");
inline const QString nothingToPlayOn = QStringLiteral("421");
inline const QString brokenFile = QStringLiteral("422");
inline const QString fileRefused = QStringLiteral("-2");

} // namespace ReturnCode

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
