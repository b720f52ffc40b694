#include "server/playback/PlaybackService.h"

#include "protocol/Limits.h"
#include "protocol/Words.h"
#include "server/core/ServerSession.h"

namespace {

constexpr int progressInterval = 200; // ms

QVariantMap progressOf(int percent)
{
    return {{Words::progress, percent}};
}

} // namespace

PlaybackService::PlaybackService(DeviceStore& devices, GroupStore& groups, FileStore& files,
                                 SpeakerRack& rack, QSet<QString> offlineAddresses)
    : m_devices(devices), m_groups(groups), m_files(files), m_rack(rack),
      m_offlineAddresses(std::move(offlineAddresses))
{
    connect(&m_rack, &SpeakerRack::sourceEnded, this, &PlaybackService::ended);
    connect(&m_progressTimer, &QTimer::timeout, this, &PlaybackService::tellProgress);
}

void PlaybackService::raiseFailure(const QString& device, const QString& file, const QString& error,
                                   const QString& alarm)
{
    Q_EMIT playAudioFailed({
        {Vocabulary::deviceName, device},
        {Vocabulary::audioName, file},
        {Vocabulary::error, error},
        {Vocabulary::alarmName, alarm},
    });
}

ServerReply PlaybackService::play(ServerSession& session, const QString& command, const QVariant& payload,
                                  quint64 request)
{
    const QVariantMap fields = payload.toMap();
    const int device = fields.value(Vocabulary::ipAudioId).toInt();
    return start({&session, command, request}, fields.value(Vocabulary::audioFileId).toInt(), {device},
                 fields.value(Vocabulary::alarmName).toString(), device);
}

ServerReply PlaybackService::playGroup(ServerSession& session, const QString& command,
                                       const QVariant& payload, quint64 request)
{
    const QVariantMap fields = payload.toMap();
    const int group = fields.value(Vocabulary::groupID).toInt();
    if (!m_groups.exists(group)) {
        return refusal(ReturnCode::noSuchGroup, QStringLiteral("no group has the id %1").arg(group), group);
    }
    return start({&session, command, request}, fields.value(Vocabulary::audioFileId).toInt(),
                 m_groups.members(group), QString(), group);
}

void PlaybackService::playUnasked(int file, const QList<int>& devices, const QString& alarmName)
{
    const ServerReply reply = start({nullptr, QString(), 0}, file, devices, alarmName, QVariant());
    const bool told = reply.returnCode == ReturnCode::success ||
                      reply.returnCode == ReturnCode::speakerOffline ||
                      reply.returnCode == ReturnCode::brokenFile;
    if (!told) {
        raiseFailure(QString(), QString(), reply.errorText, alarmName);
    }
}

ServerReply PlaybackService::start(const Asker& asker, int fileId, const QList<int>& devices,
                                   const QString& alarmName, const QVariant& refusalResult)
{
    const auto file = m_files.find(fileId);
    if (!file) {
        return refusal(ReturnCode::noSuchFile, QStringLiteral("no audio file has the id %1").arg(fileId),
                       refusalResult);
    }
    QList<int> reachable;
    QStringList names;
    for (const int id : devices) {
        const auto device = m_devices.find(id);
        if (!device) {
            return refusal(ReturnCode::noSuchDevice, QStringLiteral("no device has the id %1").arg(id),
                           refusalResult);
        }
        if (isOffline(*device)) {
            raiseFailure(device->name, file->name, QStringLiteral("the device is offline"), alarmName);
            continue;
        }
        reachable.append(id);
        names.append(device->name);
    }
    if (reachable.isEmpty()) {
        return devices.isEmpty() ? refusal(ReturnCode::nothingToPlayOn,
                                           QStringLiteral("the group has no devices"), refusalResult)
                                 : refusal(ReturnCode::speakerOffline,
                                           QStringLiteral("the device is offline"), refusalResult);
    }
    auto reader = std::make_shared<AudioFileReader>();
    if (!reader->open(file->path)) {
        const QString error = QStringLiteral("the file cannot be decoded");
        for (const QString& name : qAsConst(names)) {
            raiseFailure(name, file->name, error, alarmName);
        }
        return refusal(ReturnCode::brokenFile, error, refusalResult);
    }
    release(reachable);
    auto played = std::make_shared<std::size_t>(0);
    const int source =
        m_rack.addSource(reachable, [reader, played](std::size_t count, std::vector<std::int16_t>& out) {
            reader->read(count, out);
            *played += out.size();
            return out.size() == count;
        });
    m_playbacks[source] = {asker, alarmName, *file, reachable, reader, played, 0};
    m_progressTimer.start(progressInterval);
    return done(progressOf(0));
}

/** Stops what plays on devices; a playback that has others left goes on there. */
void PlaybackService::release(const QList<int>& devices)
{
    for (auto playback = m_playbacks.begin(); playback != m_playbacks.end();) {
        QList<int> left;
        for (const int device : qAsConst(playback->second.devices)) {
            if (!devices.contains(device)) {
                left.append(device);
            }
        }
        if (left.isEmpty()) {
            m_rack.removeSource(playback->first);
            playback = m_playbacks.erase(playback);
        } else {
            playback->second.devices = left;
            m_rack.setSpeakers(playback->first, left);
            ++playback;
        }
    }
}

ServerReply PlaybackService::stop(const QVariant& payload)
{
    const int device = payload.toInt();
    if (!m_devices.find(device)) {
        return refusal(ReturnCode::noSuchDevice, QStringLiteral("no device has the id %1").arg(device),
                       device);
    }
    release({device});
    return done();
}

ServerReply PlaybackService::stopGroup(const QVariant& payload)
{
    const int group = payload.toInt();
    if (!m_groups.exists(group)) {
        return refusal(ReturnCode::noSuchGroup, QStringLiteral("no group has the id %1").arg(group), group);
    }
    release(m_groups.members(group));
    return done();
}

void PlaybackService::tellProgress()
{
    for (auto& [source, playback] : m_playbacks) {
        const auto ms = static_cast<qint64>(*playback.played) * 1000 / SpeakerRack::sampleRate;
        const int percent = static_cast<int>(
            qBound<qint64>(0, ms * Limits::maxProgressPercent / qMax(playback.file.length, 1),
                           Limits::maxProgressPercent - 1));
        if (percent > playback.progress && playback.asker.session) {
            playback.progress = percent;
            playback.asker.session->sendReply(playback.asker.command, playback.asker.request,
                                              done(progressOf(percent)));
        }
    }
    if (m_playbacks.empty()) {
        m_progressTimer.stop();
    }
}

void PlaybackService::ended(int source)
{
    const auto found = m_playbacks.find(source);
    if (found == m_playbacks.end()) {
        return;
    }
    const Playback playback = found->second;
    m_playbacks.erase(found);
    if (!playback.reader->isBroken()) {
        if (playback.asker.session) {
            playback.asker.session->sendReply(playback.asker.command, playback.asker.request,
                                              done(progressOf(Limits::maxProgressPercent)));
        }
        return;
    }
    for (const int id : playback.devices) {
        const auto device = m_devices.find(id);
        raiseFailure(device ? device->name : QString(), playback.file.name,
                     QStringLiteral("the file is broken"), playback.alarmName);
    }
}
