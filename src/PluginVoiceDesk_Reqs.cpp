// What the front end asks for: each request builds a payload and sends it; the reply comes to a handler.

#include "src/PendingBlocks.h"
#include "src/PluginVoiceDesk.h"
#include "src/models/ItemRoles.h"
#include "src/models/NetworkAudioGroupTreeSortFilterModel.h"
#include "src/vocabulary/LogGate.h"
#include "src/vocabulary/Vocabulary.h"

#include <QSortFilterProxyModel>

#include <algorithm>
#include <memory>

namespace {

constexpr int minMicVolume = 0;
constexpr int maxMicVolume = 100;

QVariantMap ipAudioRecord(const QString& deviceName, const QString& ip, int port, const QString& username,
                          const QString& password, const QStringList& bindingCameraList)
{
    return {
        {Vocabulary::deviceName, deviceName},
        {Vocabulary::ip, ip},
        {Vocabulary::port, port},
        {Vocabulary::username, username},
        {Vocabulary::password, password},
        {Vocabulary::bindingCameraList, bindingCameraList.join(QLatin1Char('|'))},
    };
}

/** A list of ids as commands carry it. */
QString joinIds(const QVariant& ids)
{
    return ids.toStringList().join(QLatin1Char(','));
}

QVariantMap withJoinedLists(const QVariantMap& schedule)
{
    QVariantMap record = schedule;
    for (const QString& key : {Vocabulary::groupIDList, Vocabulary::networkAudioIDList}) {
        record[key] = joinIds(schedule.value(key));
    }
    return record;
}

} // namespace

void PluginVoiceDesk::setMicVolume(int volume)
{
    VOICEDESK_TRACE("PluginVoiceDesk::setMicVolume");
    if (!m_frameSmithWrapper.isNull()) {
        m_frameSmithWrapper->SetMicVolume(std::clamp(volume, minMicVolume, maxMicVolume));
    }
}

void PluginVoiceDesk::setMicMute(bool mute)
{
    VOICEDESK_TRACE("PluginVoiceDesk::setMicMute");
    if (!m_frameSmithWrapper.isNull()) {
        m_frameSmithWrapper->SetMicMute(mute);
    }
}

bool PluginVoiceDesk::startAudioCapture()
{
    if (m_frameSmithWrapper.isNull() || !m_frameSmithWrapper->StartAudioCapture()) {
        VOICEDESK_LOG_ERROR("%s, start audio capture failed", "PluginVoiceDesk::startAudioCapture");
        return false;
    }
    return true;
}

void PluginVoiceDesk::stopAudioCapture()
{
    if (!m_frameSmithWrapper.isNull()) {
        m_frameSmithWrapper->StopAudioCapture();
    }
}

bool PluginVoiceDesk::startTalk(const QString& camId, const QString& relayPath)
{
    if (talking()) {
        return true;
    }
    if (m_frameSmithWrapper.isNull() || !m_frameSmithWrapper->StartAudioCapture()) {
        VOICEDESK_LOG_ERROR("%s, start audio capture failed", "PluginVoiceDesk::startTalk");
        return false;
    }
    m_talkSequence = 0;
    // Deliberate: capture keeps running when the host refuses; the front end decides what to do.
    return send(Vocabulary::StartTalk,
                QVariantMap{{Vocabulary::camId, camId}, {Vocabulary::relayPath, relayPath}});
}

bool PluginVoiceDesk::stopTalk()
{
    if (!talking()) {
        return true; // deliberate: also while a request waits for its reply
    }
    stopAudioCapture();
    stopAllTalk();
    setTalking(false);
    return true;
}

bool PluginVoiceDesk::startTalkToIPAudio(int ipAudioId)
{
    if (isAudioIdExists(ipAudioId)) {
        Q_EMIT startTalkToIPAudioResponse(true, QString(), ipAudioId);
        return true;
    }
    m_talkSequence = 0; // deliberate: the numbers of a running talk start again, too
    int* deviceId = PendingBlocks::add(std::make_unique<int>(ipAudioId));
    if (!send(Vocabulary::StartTalkToIPAudio, ipAudioId, deviceId)) {
        PendingBlocks::discard(deviceId);
        return false;
    }
    return true;
}

bool PluginVoiceDesk::stopTalkToIPAudio(int ipAudioId)
{
    return send(Vocabulary::StopTalkToIPAudio, ipAudioId);
}

void PluginVoiceDesk::retrieveIPAudioModel()
{
    send(Vocabulary::RetrieveIPAudioModel, QVariant());
}

bool PluginVoiceDesk::addIPAudio(const QString& deviceName, const QString& ip, int port,
                                 const QString& username, const QString& password,
                                 const QStringList& bindingCameraList)
{
    return send(Vocabulary::AddIPAudio,
                ipAudioRecord(deviceName, ip, port, username, password, bindingCameraList));
}

bool PluginVoiceDesk::updateIPAudio(int ipAudioId, const QString& deviceName, const QString& ip, int port,
                                    const QString& username, const QString& password,
                                    const QStringList& bindingCameraList)
{
    QVariantMap record = ipAudioRecord(deviceName, ip, port, username, password, bindingCameraList);
    record[Vocabulary::deviceID] = ipAudioId;
    return send(Vocabulary::UpdateIPAudio, record);
}

bool PluginVoiceDesk::deleteIPAudio(int ipAudioId)
{
    return send(Vocabulary::DeleteIPAudio, ipAudioId);
}

QObject* PluginVoiceDesk::getIPAudioModel(QObject* parent) const
{
    auto* proxy = new QSortFilterProxyModel(parent);
    proxy->setSourceModel(m_ipAudioModel.data());
    proxy->setFilterRole(IPAudioRole::deviceNameRole);
    proxy->setFilterCaseSensitivity(Qt::CaseInsensitive);
    proxy->setSortRole(IPAudioRole::deviceNameRole);
    proxy->sort(0, Qt::AscendingOrder);
    return proxy;
}

QObject* PluginVoiceDesk::getNetworkAudioGroupModel(QObject* parent) const
{
    auto* proxy = new NetworkAudioGroupTreeSortFilterModel(parent);
    proxy->setSourceModel(m_networkAudioGroupModel.data());
    proxy->setSortRole(NetworkAudioGroupRole::nameRole);
    proxy->sort(0, Qt::AscendingOrder);
    return proxy;
}

QObject* PluginVoiceDesk::getNetworkAudioScheduleModel(QObject* parent) const
{
    auto* proxy = new QSortFilterProxyModel(parent);
    proxy->setSourceModel(m_networkAudioScheduleModel.data());
    proxy->setSortRole(NetworkAudioScheduleRole::nameRole);
    proxy->sort(0, Qt::AscendingOrder);
    return proxy;
}

void PluginVoiceDesk::playAudio(int ipAudioId, int audioFileId)
{
    send(Vocabulary::PlayAudio, QVariantMap{
                                    {Vocabulary::ipAudioId, ipAudioId},
                                    {Vocabulary::audioFileId, audioFileId},
                                    {Vocabulary::ipAudioStatus, 1},
                                });
}

void PluginVoiceDesk::playGroupAudio(int networkAudioGroupId, int audioFileId)
{
    send(Vocabulary::PlayGroupAudio, QVariantMap{
                                         {Vocabulary::groupID, networkAudioGroupId},
                                         {Vocabulary::audioFileId, audioFileId},
                                     });
}

void PluginVoiceDesk::stopCurrentAudio(int ipAudioId)
{
    send(Vocabulary::StopCurrentAudio, ipAudioId);
}

void PluginVoiceDesk::stopCurrentGroupAudio(int networkAudioGroupId)
{
    send(Vocabulary::StopCurrentGroupAudio, networkAudioGroupId);
}

void PluginVoiceDesk::getNetworkAudioGroup()
{
    send(Vocabulary::GetNetworkAudioGroup, QVariant());
}

bool PluginVoiceDesk::addNetworkAudioGroup(const QString& groupName, const QVariant& networkAudioIDList)
{
    return send(Vocabulary::AddNetworkAudioGroup,
                QVariantMap{
                    {Vocabulary::groupName, groupName},
                    {Vocabulary::networkAudioIDList, joinIds(networkAudioIDList)},
                });
}

bool PluginVoiceDesk::updateNetworkAudioGroup(int id, const QString& groupName,
                                              const QVariant& networkAudioIDList)
{
    return send(Vocabulary::UpdateNetworkAudioGroup,
                QVariantMap{
                    {Vocabulary::groupID, id},
                    {Vocabulary::groupName, groupName},
                    {Vocabulary::networkAudioIDList, joinIds(networkAudioIDList)},
                });
}

bool PluginVoiceDesk::deleteNetworkAudioGroup(int id)
{
    return send(Vocabulary::DeleteNetworkAudioGroup, id);
}

bool PluginVoiceDesk::addNetworkAudioSchedule(const QVariantMap& schedule)
{
    return send(Vocabulary::AddNetworkAudioSchedule, withJoinedLists(schedule));
}

bool PluginVoiceDesk::updateNetworkAudioSchedule(int id, const QVariantMap& schedule)
{
    QVariantMap record = withJoinedLists(schedule);
    record[Vocabulary::scheduleID] = id;
    return send(Vocabulary::UpdateNetworkAudioSchedule, record);
}

bool PluginVoiceDesk::deleteNetworkAudioSchedule(int id)
{
    return send(Vocabulary::DeleteNetworkAudioSchedule, id);
}

void PluginVoiceDesk::getNetworkAudioSchedule()
{
    send(Vocabulary::GetNetworkAudioSchedule, QVariant());
}
