#include "protocol/CommandTable.h"

#include "protocol/Limits.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <algorithm>

namespace CommandTable {

namespace {

namespace V = Vocabulary;
namespace W = Words;

constexpr qint64 idLength = 11; // characters of an int and a comma
constexpr qint64 maxIdsLength = Limits::maxListEntries * idLength;
constexpr qint64 maxCamerasLength = Limits::maxListEntries * (Limits::maxNameLength + qint64{1});
constexpr qint64 maxTalkPacket = qint64{Limits::maxTargetsLength} + Limits::maxTalkDataLength;

const PayloadShape nothing;
const PayloadShape number{PayloadShape::Number, {}};
const PayloadShape text{PayloadShape::Text, {}};

PayloadShape map(const QStringList& keys)
{
    return {PayloadShape::Map, keys};
}

PayloadShape maps(const QStringList& keys)
{
    return {PayloadShape::Maps, keys};
}

/** A command that is answered at once. */
Row row(const QString& name, const PayloadShape& payload, const PayloadShape& answer,
        const PayloadShape& refusal = nothing, qint64 more = 0)
{
    return {name,
            payload,
            answer,
            refusal,
            Limits::maxShortPayload + more,
            ReturnCode::malformedRequest,
            Answered::AtOnce};
}

/** The same command, answered again and again. */
Row often(Row row)
{
    row.answered = Answered::Often;
    return row;
}

/** The same command, answered when a device has. */
Row late(Row row)
{
    row.answered = Answered::Late;
    return row;
}

std::vector<Row> deviceRows()
{
    const QStringList fields{V::deviceName, V::ip, V::port, V::username, V::password, V::bindingCameraList};
    const QStringList record = QStringList(V::deviceID) + fields;
    return {
        row(V::AddIPAudio, map(fields), map(record), nothing, maxCamerasLength),
        row(V::UpdateIPAudio, map(record), map(record), map({V::deviceID}), maxCamerasLength),
        row(V::DeleteIPAudio, number, number, number),
        row(V::RetrieveIPAudioModel, nothing, maps(record)),
    };
}

std::vector<Row> groupRows()
{
    const QStringList fields{V::groupName, V::networkAudioIDList};
    const QStringList record = QStringList(V::groupID) + fields;
    return {
        row(V::AddNetworkAudioGroup, map(fields), map(record), nothing, maxIdsLength),
        row(V::UpdateNetworkAudioGroup, map(record), map(record), map({V::groupID}), maxIdsLength),
        row(V::DeleteNetworkAudioGroup, number, number, number),
        row(V::GetNetworkAudioGroup, nothing, maps(record)),
    };
}

std::vector<Row> scheduleRows()
{
    constexpr qint64 more = 2 * maxIdsLength + Limits::maxSettingsBytes;
    const QStringList fields{V::scheduleName,          V::enableSchedule,    V::scheduleType,
                             V::scheduleSettings,      V::scheduleStartTime, V::scheduleEndTime,
                             V::enableScheduleEndTime, V::audioID,           V::groupIDList,
                             V::networkAudioIDList};
    const QStringList record = QStringList(V::scheduleID) + fields;
    return {
        row(V::AddNetworkAudioSchedule, map(fields), map(record), nothing, more),
        row(V::UpdateNetworkAudioSchedule, map(record), map(record), map({V::scheduleID}), more),
        row(V::DeleteNetworkAudioSchedule, number, number, number),
        row(V::GetNetworkAudioSchedule, nothing, maps(record)),
    };
}

std::vector<Row> fileRows()
{
    const PayloadShape files = maps({V::audioID, V::audioName, V::audioLength, V::audioStatus});
    const PayloadShape progress = map({W::progress});
    return {
        row(V::GetAudioFile, nothing, files),
        {V::UploadFile, map({W::content, W::filename, W::length}), files, nothing,
         Limits::maxMessageToServerBytes, ReturnCode::fileRefused, Answered::Late},
        row(V::DeleteFile, number, files, number),
        often(row(V::PlayAudio, map({V::ipAudioId, V::audioFileId, V::ipAudioStatus}), progress, number)),
        often(row(V::PlayGroupAudio, map({V::groupID, V::audioFileId}), progress, number)),
        often(row(V::AlarmPlayIPAudio, map({V::ipAudioId, V::audioFileId, V::ipAudioStatus, V::alarmName}),
                  progress, number)),
        row(V::StopCurrentAudio, number, nothing, number),
        row(V::StopCurrentGroupAudio, number, nothing, number),
    };
}

std::vector<Row> talkRows()
{
    return {
        late(row(V::StartTalk, map({V::camId, V::relayPath}), map({V::camId, V::talkToken, V::relayPath}))),
        late(row(V::StartTalkToIPAudio, number, map({V::deviceID, V::talkToken, V::error}))),
        row(V::StopTalk, map({V::talkToken, V::relayPath}), nothing),
        row(V::StopTalkToIPAudio, number, nothing),
        row(V::TalkData, map({V::targets, V::sequence, V::talkData}), nothing, nothing, maxTalkPacket),
        row(W::GetCamera, nothing,
            maps({V::camId, W::camName, W::online, W::camKind, W::camAddress, V::username, W::camSettings})),
    };
}

std::vector<Row> cameraRows()
{
    const QStringList answered{V::camId, W::camName, W::camKind, W::camAddress, V::username, W::camSettings};
    const QStringList fields{W::camName, W::camKind, W::camAddress, V::username, V::password, W::camSettings};
    return {
        row(W::AddCamera, map(fields), map(answered)),
        row(W::UpdateCamera, map(QStringList(V::camId) + fields), map(answered), map({V::camId})),
        row(W::DeleteCamera, text, text, text),
    };
}

} // namespace

const std::vector<Row>& rows()
{
    static const std::vector<Row> all = [] {
        std::vector<Row> joined;
        for (const auto& part :
             {deviceRows(), groupRows(), scheduleRows(), fileRows(), talkRows(), cameraRows()}) {
            joined.insert(joined.end(), part.begin(), part.end());
        }
        return joined;
    }();
    return all;
}

const Row* find(const QString& name)
{
    const auto found =
        std::find_if(rows().begin(), rows().end(), [&](const Row& row) { return row.name == name; });
    return found == rows().end() ? nullptr : &*found;
}

} // namespace CommandTable
