#pragma once

#include "protocol/HostCommands.h"
#include "src/vocabulary/PluginWords.h"
#include "src/vocabulary/Vocabulary.h"

#include <QString>

/**
 * Words of the protocol beside those of Vocabulary.h and HostCommands.h, which this header brings along:
 * events for the host, and keys inside payloads. Each constant has the name of its word; words are compared
 * letter by letter. A new event also gets a row in EventTable.
 */
namespace Words {

/**
 * @name Events for the host
 * @{
 */
/** A camera came, went, or changed its name or whether it is online. */
inline const QString CamerasChanged = QStringLiteral("CamerasChanged");
/** One of several targets of a talk is lost; the others go on. */
inline const QString TalkTargetLost = QStringLiteral("TalkTargetLost");
/** A piece of the video of a camera that the client watches. */
inline const QString CameraVideo = QStringLiteral("CameraVideo");
/** The video of a camera has ended that the client watches. */
inline const QString CameraVideoEnded = QStringLiteral("CameraVideoEnded");
/** @} */

/**
 * @name Settings of cameras
 * @{
 */
/** A key of "camSettings". */
inline const QString transport = QStringLiteral("transport");
inline const QString packetTime = QStringLiteral("packetTime");
inline const QString talkCodec = QStringLiteral("talkCodec");
inline const QString readinessDelay = QStringLiteral("readinessDelay");
inline const QString evenPace = QStringLiteral("evenPace");
inline const QString halfDuplex = QStringLiteral("halfDuplex");
inline const QString noDelay = QStringLiteral("noDelay");
inline const QString dscp = QStringLiteral("dscp");
inline const QString openTimeout = QStringLiteral("openTimeout");
inline const QString anyCertificate = QStringLiteral("anyCertificate");
inline const QString severalTalks = QStringLiteral("severalTalks");
/** @} */

/**
 * @name Talks
 * @{
 */
/** A key of the events of a talk. */
inline const QString Token = QStringLiteral("Token");
inline const QString AudioData = QStringLiteral("AudioData");
inline const QString Offset = QStringLiteral("Offset");
inline const QString BitstreamSize = QStringLiteral("BitstreamSize");
inline const QString StreamType = QStringLiteral("StreamType");
inline const QString AudioSamplingFreq = QStringLiteral("AudioSamplingFreq");
inline const QString AudioChannelNum = QStringLiteral("AudioChannelNum");
inline const QString FrameNumber = QStringLiteral("FrameNumber");
/** @} */

/**
 * @name Videos
 * @{
 */
/** A key of the event with a piece of a video, beside "camId". */
inline const QString accessUnit = QStringLiteral("accessUnit");
inline const QString keyFrame = QStringLiteral("keyFrame");
inline const QString position = QStringLiteral("position");
/** @} */

/** Key inside the settings of a weekly schedule. */
inline const QString weekdays = QStringLiteral("weekdays");

} // namespace Words
