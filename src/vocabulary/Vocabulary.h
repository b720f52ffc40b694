#pragma once

#include <QString>

/**
 * The words between plug-in and recording server: record keys, event names and command names.
 *
 * The words are compared by exact equality, letter by letter; "ipAudioId", "deviceID", "groupID" and
 * "audioID" keep their differing case. Words that the plug-in does not use belong to the protocol as well and
 * stay.
 */
namespace Vocabulary {

/**
 * @name Keys
 * @{
 */
/** A key of records and payloads. */
inline const QString alarmName = QStringLiteral("alarmName");
inline const QString audioFileId = QStringLiteral("audioFileId");
inline const QString audioID = QStringLiteral("audioID");
inline const QString audioLength = QStringLiteral("audioLength");
inline const QString audioName = QStringLiteral("audioName");
inline const QString audioStatus = QStringLiteral("audioStatus");
inline const QString guid = QStringLiteral("guid");
inline const QString bindingCameraList = QStringLiteral("bindingCameraList");
inline const QString camId = QStringLiteral("camId");
inline const QString deviceID = QStringLiteral("deviceID");
inline const QString deviceName = QStringLiteral("deviceName");
inline const QString enableSchedule = QStringLiteral("enableSchedule");
inline const QString enableScheduleEndTime = QStringLiteral("enableScheduleEndTime");
inline const QString groupID = QStringLiteral("groupID");
inline const QString groupIDList = QStringLiteral("groupIDList");
inline const QString groupName = QStringLiteral("groupName");
inline const QString ip = QStringLiteral("ip");
inline const QString ipAudioId = QStringLiteral("ipAudioId");
inline const QString ipAudioStatus = QStringLiteral("ipAudioStatus");
inline const QString networkAudioIDList = QStringLiteral("networkAudioIDList");
inline const QString networkAudioNameList = QStringLiteral("networkAudioNameList");
inline const QString password = QStringLiteral("password");
inline const QString port = QStringLiteral("port");
inline const QString relayPath = QStringLiteral("relayPath");
inline const QString scheduleEndTime = QStringLiteral("scheduleEndTime");
inline const QString scheduleID = QStringLiteral("scheduleID");
inline const QString scheduleName = QStringLiteral("scheduleName");
inline const QString scheduleSettings = QStringLiteral("scheduleSettings");
inline const QString scheduleStartTime = QStringLiteral("scheduleStartTime");
inline const QString scheduleType = QStringLiteral("scheduleType");
inline const QString sequence = QStringLiteral("sequence");
inline const QString talkData = QStringLiteral("talkData");
inline const QString error = QStringLiteral("error");
inline const QString targets = QStringLiteral("targets");
inline const QString talkToken = QStringLiteral("talkToken");
inline const QString username = QStringLiteral("username");
/** @} */

/**
 * @name Events
 * @{
 */
/** An event, from the server to the plug-in. */
inline const QString AudioReceived = QStringLiteral("AudioReceived");
inline const QString PlayAudioFailed = QStringLiteral("PlayAudioFailed");
inline const QString TalkDisconnected = QStringLiteral("TalkDisconnected");
/** @} */

/** The framework's name for an error of its own; not used by the plug-in. */
inline const QString FrameworkInternalError =
    QStringLiteral("{2C85B19D-AE6F-45D9-B8FE-DC436FCBEABE}FrameworkInternalError");

/** The one failure code with a meaning of its own: the server could not store an uploaded file. */
inline const QString returnCodeFileRefused = QStringLiteral("-2");

/**
 * @name Other
 * @{
 */
/** A word that the plug-in does not use. */
inline const QString param = QStringLiteral("param");
inline const QString addSystemLog = QStringLiteral("addSystemLog");
/** @} */

/**
 * @name Commands
 * @{
 */
/** A command, from the plug-in to the server; the reply comes back under the same name. */
inline const QString AddIPAudio = QStringLiteral("AddIPAudio");
inline const QString AddNetworkAudioGroup = QStringLiteral("AddNetworkAudioGroup");
inline const QString AddNetworkAudioSchedule = QStringLiteral("AddNetworkAudioSchedule");
inline const QString AlarmPlayIPAudio = QStringLiteral("AlarmPlayIPAudio");
inline const QString DeleteFile = QStringLiteral("DeleteFile");
inline const QString DeleteNetworkAudioGroup = QStringLiteral("DeleteNetworkAudioGroup");
inline const QString DeleteNetworkAudioSchedule = QStringLiteral("DeleteNetworkAudioSchedule");
inline const QString DeleteIPAudio = QStringLiteral("DeleteIPAudio");
inline const QString GetAudioFile = QStringLiteral("GetAudioFile");
inline const QString RetrieveIPAudioModel = QStringLiteral("RetrieveIPAudioModel");
inline const QString GetNetworkAudioGroup = QStringLiteral("GetNetworkAudioGroup");
inline const QString GetNetworkAudioSchedule = QStringLiteral("GetNetworkAudioSchedule");
inline const QString PlayAudio = QStringLiteral("PlayAudio");
inline const QString PlayGroupAudio = QStringLiteral("PlayGroupAudio");
inline const QString TalkData = QStringLiteral("TalkData");
inline const QString StartTalk = QStringLiteral("StartTalk");
inline const QString StartTalkToIPAudio = QStringLiteral("StartTalkToIPAudio");
inline const QString StopCurrentAudio = QStringLiteral("StopCurrentAudio");
inline const QString StopCurrentGroupAudio = QStringLiteral("StopCurrentGroupAudio");
inline const QString StopTalk = QStringLiteral("StopTalk");
inline const QString StopTalkToIPAudio = QStringLiteral("StopTalkToIPAudio");
inline const QString UpdateNetworkAudioGroup = QStringLiteral("UpdateNetworkAudioGroup");
inline const QString UpdateNetworkAudioSchedule = QStringLiteral("UpdateNetworkAudioSchedule");
inline const QString UpdateIPAudio = QStringLiteral("UpdateIPAudio");
inline const QString UploadFile = QStringLiteral("UploadFile");
/** @} */

/** The identifier of another plug-in; not used. */
inline const QString otherPluginId = QStringLiteral("D8C607070A81469B8CA4FF2E107DB6AB");

} // namespace Vocabulary
