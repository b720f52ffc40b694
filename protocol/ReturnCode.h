#pragma once

#include "src/vocabulary/PluginWords.h"
#include "src/vocabulary/Vocabulary.h"

/** The return codes of the reference server. docs/PROTOCOL.md explains them. */
namespace ReturnCode {

inline const QString unknownCommand = QStringLiteral("101");   ///< The server does not know the command.
inline const QString malformedRequest = QStringLiteral("102"); ///< The request is malformed or too large.
inline const QString noSuchCamera = QStringLiteral("201");     ///< No camera has the id.
inline const QString cameraOffline = QStringLiteral("202");    ///< The camera is offline.
inline const QString noSuchTalk = QStringLiteral("203");       ///< No open talk of the client has the token.
inline const QString badTalkPacket = QStringLiteral("204");    ///< The talk packet cannot be decoded.
inline const QString noVoice = QStringLiteral("205"); ///< The camera's voice cannot be read or encoded.
inline const QString speakerOffline = QStringLiteral("206"); ///< The device is offline.
inline const QString loginRefused = QStringLiteral("207");   ///< The camera refuses the login.
inline const QString noLoudspeaker = QStringLiteral("208");  ///< The camera offers no loudspeaker.
inline const QString cameraBusy = QStringLiteral("209");     ///< The camera is busy with others.
inline const QString cameraTimedOut = QStringLiteral("210"); ///< The camera did not answer in time.
inline const QString talkRefused = QStringLiteral("211"); ///< The camera refuses the talk; the text says why.
inline const QString noTalkToken =
    QStringLiteral("212"); ///< A talk was opened without a token. Clients find it themselves.
inline const QString noPicture =
    QStringLiteral("213"); ///< The camera gives no picture, or no video; the text says why.
inline const QString storageFailed =
    QStringLiteral("301"); ///< A recording or the database cannot be written or read.
inline const QString noSuchDevice = QStringLiteral("401");      ///< No device has the id.
inline const QString noSuchFile = QStringLiteral("402");        ///< No audio file has the id.
inline const QString noSuchGroup = QStringLiteral("403");       ///< No group has the id.
inline const QString noSuchSchedule = QStringLiteral("404");    ///< No schedule has the id.
inline const QString badName = QStringLiteral("411");           ///< The name breaks the rules.
inline const QString nameTaken = QStringLiteral("412");         ///< Another record has the name.
inline const QString badAddress = QStringLiteral("413");        ///< Not an IP address or host name.
inline const QString badPort = QStringLiteral("414");           ///< Not a port.
inline const QString badCredentials = QStringLiteral("415");    ///< User name or password is too long.
inline const QString badList = QStringLiteral("416");           ///< A list has a wrong entry, or one twice.
inline const QString badSchedule = QStringLiteral("417");       ///< Type, settings or times are wrong.
inline const QString badCameraKind = QStringLiteral("418");     ///< No cameras of this kind are known.
inline const QString tooManyRecords = QStringLiteral("419");    ///< The server keeps no more of this kind.
inline const QString nothingToPlayOn = QStringLiteral("421");   ///< No device to play on.
inline const QString brokenFile = QStringLiteral("422");        ///< The audio file cannot be decoded.
inline const QString playbackStopped = QStringLiteral("423");   ///< The playback was stopped.
inline const QString speakerTaken = QStringLiteral("424");      ///< Another playback has the speakers.
inline const QString badCameraSettings = QStringLiteral("425"); ///< A setting of a camera is wrong.
inline const QString tooManyRequests = QStringLiteral("426");   ///< As many are under way as there may be.
inline const QString fileRefused = Vocabulary::returnCodeFileRefused; ///< An upload is refused.

/** All of them. */
inline const QString* const all[] = {
    &success,         &unknownCommand, &malformedRequest, &noSuchCamera, &cameraOffline,     &noSuchTalk,
    &badTalkPacket,   &noVoice,        &speakerOffline,   &loginRefused, &noLoudspeaker,     &cameraBusy,
    &cameraTimedOut,  &talkRefused,    &noTalkToken,      &noPicture,    &storageFailed,     &noSuchDevice,
    &noSuchFile,      &noSuchGroup,    &noSuchSchedule,   &badName,      &nameTaken,         &badAddress,
    &badPort,         &badCredentials, &badList,          &badSchedule,  &badCameraKind,     &tooManyRecords,
    &nothingToPlayOn, &brokenFile,     &playbackStopped,  &speakerTaken, &badCameraSettings, &tooManyRequests,
    &fileRefused,
};

} // namespace ReturnCode
