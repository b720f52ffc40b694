#pragma once

#include "src/vocabulary/Vocabulary.h"

/** The words of the protocol as arrays, for a fuzzer to pick from. */
namespace Words {

namespace V = Vocabulary;

inline const QString getCamera = QStringLiteral("GetCamera");
inline const QString token = QStringLiteral("Token");
inline const QString progress = QStringLiteral("progress");
inline const QString weekdays = QStringLiteral("weekdays");
inline const QString content = QStringLiteral("content");
inline const QString fileName = QStringLiteral("filename");
inline const QString length = QStringLiteral("length");
inline const QString nothing = QStringLiteral("Nothing"); ///< No word of the protocol.

/** All commands that a server knows, and one that it does not. */
inline const QString* const commands[] = {&V::AddIPAudio,
                                          &V::UpdateIPAudio,
                                          &V::DeleteIPAudio,
                                          &V::RetrieveIPAudioModel,
                                          &V::AddNetworkAudioGroup,
                                          &V::UpdateNetworkAudioGroup,
                                          &V::DeleteNetworkAudioGroup,
                                          &V::GetNetworkAudioGroup,
                                          &V::AddNetworkAudioSchedule,
                                          &V::UpdateNetworkAudioSchedule,
                                          &V::DeleteNetworkAudioSchedule,
                                          &V::GetNetworkAudioSchedule,
                                          &V::GetAudioFile,
                                          &V::UploadFile,
                                          &V::DeleteFile,
                                          &V::PlayAudio,
                                          &V::PlayGroupAudio,
                                          &V::AlarmPlayIPAudio,
                                          &V::StopCurrentAudio,
                                          &V::StopCurrentGroupAudio,
                                          &V::StartTalk,
                                          &V::StartTalkToIPAudio,
                                          &V::StopTalk,
                                          &V::StopTalkToIPAudio,
                                          &V::TalkData,
                                          &getCamera,
                                          &nothing};

/** All events, and one that nobody knows. */
inline const QString* const events[] = {&V::AudioReceived, &V::TalkDisconnected, &V::PlayAudioFailed,
                                        &nothing};

/** Keys of records and payloads, on either side. */
inline const QString* const keys[] = {&V::alarmName,
                                      &V::audioFileId,
                                      &V::audioID,
                                      &V::audioLength,
                                      &V::audioName,
                                      &V::audioStatus,
                                      &V::guid,
                                      &V::bindingCameraList,
                                      &V::camId,
                                      &V::deviceID,
                                      &V::deviceName,
                                      &V::enableSchedule,
                                      &V::enableScheduleEndTime,
                                      &V::groupID,
                                      &V::groupIDList,
                                      &V::groupName,
                                      &V::ip,
                                      &V::ipAudioId,
                                      &V::ipAudioStatus,
                                      &V::networkAudioIDList,
                                      &V::networkAudioNameList,
                                      &V::password,
                                      &V::port,
                                      &V::relayPath,
                                      &V::scheduleEndTime,
                                      &V::scheduleID,
                                      &V::scheduleName,
                                      &V::scheduleSettings,
                                      &V::scheduleStartTime,
                                      &V::scheduleType,
                                      &V::sequence,
                                      &V::talkData,
                                      &V::error,
                                      &V::targets,
                                      &V::talkToken,
                                      &V::username,
                                      &V::AudioReceived,
                                      &V::TalkDisconnected,
                                      &token,
                                      &progress,
                                      &weekdays,
                                      &content,
                                      &fileName,
                                      &length};

} // namespace Words
