#pragma once

#include "protocol/CommandTable.h"
#include "protocol/EventTable.h"
#include "protocol/Words.h"

#include <fuzzer/FuzzedDataProvider.h>

/** The words of the protocol, for a fuzzer to pick from. */
namespace FuzzWords {

namespace V = Vocabulary;
namespace W = Words;

inline const QString nothing = QStringLiteral("Nothing"); ///< Not a word of the protocol.

/** The name of a row, or a word that is none. */
template<class Row>
QString pickName(FuzzedDataProvider& input, const std::vector<Row>& rows)
{
    const auto row = input.ConsumeIntegralInRange<std::size_t>(0, rows.size());
    return row < rows.size() ? rows[row].name : nothing;
}

/** A command that a server knows, or one that it does not. */
inline QString pickCommand(FuzzedDataProvider& input)
{
    return pickName(input, CommandTable::rows());
}

/** An event, or one that nobody knows. */
inline QString pickEvent(FuzzedDataProvider& input)
{
    return pickName(input, EventTable::rows());
}

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
                                      &W::Token,
                                      &W::progress,
                                      &W::weekdays,
                                      &W::content,
                                      &W::filename,
                                      &W::length};

} // namespace FuzzWords
