// What the front end asks for: each request builds a payload and sends it; the reply comes to a handler.

#include "PluginVoiceDesk.h"
#include "vocabulary/LogGate.h"
#include "vocabulary/Vocabulary.h"

#include <algorithm>
#include <memory>

namespace {

constexpr int minMicVolume = 0;
constexpr int maxMicVolume = 100;

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
    auto deviceId = std::make_unique<int>(ipAudioId);
    if (!send(Vocabulary::StartTalkToIPAudio, ipAudioId, deviceId.get())) {
        return false;
    }
    // Owned by the reply's handler from here on.
    static_cast<void>(deviceId.release()); // NOLINT(bugprone-unused-return-value)
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

// The operations below belong to the records of devices, files, groups and schedules, which this version does
// not serve: they send nothing and say so by a false, null or empty result.

bool PluginVoiceDesk::addIPAudio(const QString& /*deviceName*/, const QString& /*ip*/, int /*port*/,
                                 const QString& /*username*/, const QString& /*password*/,
                                 const QStringList& /*bindingCameraList*/)
{
    return false;
}

bool PluginVoiceDesk::updateIPAudio(int /*ipAudioId*/, const QString& /*deviceName*/, const QString& /*ip*/,
                                    int /*port*/, const QString& /*username*/, const QString& /*password*/,
                                    const QStringList& /*bindingCameraList*/)
{
    return false;
}

bool PluginVoiceDesk::deleteIPAudio(int /*ipAudioId*/)
{
    return false;
}

QObject* PluginVoiceDesk::getIPAudioModel(QObject* /*parent*/) const
{
    return nullptr;
}

QObject* PluginVoiceDesk::getNetworkAudioGroupModel(QObject* /*parent*/) const
{
    return nullptr;
}

QObject* PluginVoiceDesk::getNetworkAudioScheduleModel(QObject* /*parent*/) const
{
    return nullptr;
}

void PluginVoiceDesk::playAudio(int /*ipAudioId*/, int /*audioFileId*/) {}

void PluginVoiceDesk::playGroupAudio(int /*networkAudioGroupId*/, int /*audioFileId*/) {}

void PluginVoiceDesk::stopCurrentAudio(int /*ipAudioId*/) {}

void PluginVoiceDesk::stopCurrentGroupAudio(int /*networkAudioGroupId*/) {}

bool PluginVoiceDesk::uploadFile(const QUrl& /*fileUrl*/)
{
    return false;
}

void PluginVoiceDesk::deleteAudioFile(int /*audioID*/) {}

QVariantMap PluginVoiceDesk::queryBindingIPAudio(const QString& /*nodeId*/)
{
    return {};
}

void PluginVoiceDesk::getNetworkAudioGroup() {}

bool PluginVoiceDesk::addNetworkAudioGroup(const QString& /*groupName*/,
                                           const QVariant& /*networkAudioIDList*/)
{
    return false;
}

bool PluginVoiceDesk::updateNetworkAudioGroup(int /*id*/, const QString& /*groupName*/,
                                              const QVariant& /*networkAudioIDList*/)
{
    return false;
}

bool PluginVoiceDesk::deleteNetworkAudioGroup(int /*id*/)
{
    return false;
}

bool PluginVoiceDesk::addNetworkAudioSchedule(const QVariantMap& /*schedule*/)
{
    return false;
}

bool PluginVoiceDesk::updateNetworkAudioSchedule(int /*id*/, const QVariantMap& /*schedule*/)
{
    return false;
}

bool PluginVoiceDesk::deleteNetworkAudioSchedule(int /*id*/)
{
    return false;
}

void PluginVoiceDesk::getNetworkAudioSchedule() {}
