#include "server/playback/PlaybackService.h"

#include "audio/AudioFileReader.h"
#include "protocol/Limits.h"
#include "protocol/Words.h"
#include "server/core/ServerSession.h"

#include <algorithm>
#include <atomic>

namespace {

constexpr int progressInterval = 200; // ms

QVariantMap progressOf(int percent)
{
    return {{Words::progress, percent}};
}

ServerReply brokenFile()
{
    return refusal(ReturnCode::brokenFile, QStringLiteral("the file is broken"));
}

ServerReply stopped()
{
    return refusal(ReturnCode::playbackStopped, QStringLiteral("the playback was stopped"));
}

} // namespace

/** A file for one back end, which may read it on a thread of its own. */
class FileSource : public SoundSource
{
public:
    bool open(const QString& path)
    {
        static_assert(AudioFileReader::sampleRate == sampleRate, "a source does not convert");
        return m_reader.open(path);
    }

    bool read(std::size_t count, std::vector<std::int16_t>& out) override
    {
        const std::size_t before = out.size();
        m_reader.read(count, out);
        m_played += out.size() - before;
        m_broken = m_reader.isBroken();
        return out.size() - before == count;
    }

    std::size_t played() const { return m_played; } ///< Samples; any thread.
    bool isBroken() const { return m_broken; }      ///< Any thread.

private:
    AudioFileReader m_reader;
    std::atomic<std::size_t> m_played = 0;
    std::atomic<bool> m_broken = false;
};

PlaybackService::PlaybackService(const RecordSnapshot& records, std::vector<SpeakerBackend*> backends)
    : m_records(records), m_backends(std::move(backends))
{
    connect(&m_progressTimer, &QTimer::timeout, this, &PlaybackService::tellProgress);
}

PlaybackService::~PlaybackService() = default;

SpeakerBackend* PlaybackService::backendOf(const Speaker& speaker) const
{
    const auto found = std::find_if(m_backends.begin(), m_backends.end(),
                                    [&](const SpeakerBackend* backend) { return backend->serves(speaker); });
    return found != m_backends.end() && (*found)->isOnline(speaker) ? *found : nullptr;
}

/** The name of a device; empty when it has been deleted. */
QString PlaybackService::nameOf(int device) const
{
    ServerReply unused;
    const auto record = m_records.device(device, &unused);
    return record ? record->name : QString();
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
    return start({&session, command, request, device}, fields.value(Vocabulary::audioFileId).toInt(),
                 {device}, fields.value(Vocabulary::alarmName).toString());
}

ServerReply PlaybackService::playGroup(ServerSession& session, const QString& command,
                                       const QVariant& payload, quint64 request)
{
    const QVariantMap fields = payload.toMap();
    const int group = fields.value(Vocabulary::groupID).toInt();
    ServerReply bad;
    const auto devices = m_records.members(group, &bad);
    if (!devices) {
        bad.result = group;
        return bad;
    }
    return start({&session, command, request, group}, fields.value(Vocabulary::audioFileId).toInt(), *devices,
                 QString());
}

void PlaybackService::playUnasked(int file, const QList<int>& devices, const QString& alarmName)
{
    const ServerReply reply = start({nullptr, QString(), 0, QVariant()}, file, devices, alarmName);
    const bool reported = reply.returnCode == ReturnCode::success ||
                          reply.returnCode == ReturnCode::speakerOffline ||
                          reply.returnCode == ReturnCode::brokenFile;
    if (!reported) {
        raiseFailure(QString(), QString(), reply.errorText, alarmName);
    }
}

ServerReply PlaybackService::start(const Asker& asker, int fileId, const QList<int>& devices,
                                   const QString& alarmName)
{
    const QVariant& target = asker.target;
    ServerReply bad;
    const auto file = m_records.file(fileId, &bad);
    if (!file) {
        bad.result = target;
        return bad;
    }
    QList<int> reachable;
    QStringList names;
    std::map<SpeakerBackend*, QList<Speaker>> speakers;
    for (const int id : devices) {
        const auto device = m_records.device(id, &bad);
        if (!device) {
            bad.result = target;
            return bad;
        }
        SpeakerBackend* backend = backendOf(*device);
        if (backend == nullptr) {
            raiseFailure(device->name, file->name, QStringLiteral("the device is offline"), alarmName);
            continue;
        }
        reachable.append(id);
        names.append(device->name);
        speakers[backend].append(*device);
    }
    if (reachable.isEmpty()) {
        return devices.isEmpty()
                   ? refusal(ReturnCode::nothingToPlayOn, QStringLiteral("the group has no devices"), target)
                   : refusal(ReturnCode::speakerOffline, QStringLiteral("the device is offline"), target);
    }
    std::vector<Part> parts;
    for (std::size_t i = 0; i < speakers.size(); ++i) {
        parts.push_back({std::make_shared<FileSource>(), {}, nullptr});
        if (!parts.back().source->open(file->path)) {
            const QString error = QStringLiteral("the file cannot be decoded");
            for (const QString& name : qAsConst(names)) {
                raiseFailure(name, file->name, error, alarmName);
            }
            return refusal(ReturnCode::brokenFile, error, target);
        }
    }
    release(reachable,
            refusal(ReturnCode::speakerTaken, QStringLiteral("another playback has taken its place")));
    const int number = ++m_lastNumber;
    std::chrono::milliseconds lead(0);
    for (const auto& own : speakers) {
        lead = std::max(lead, own.first->leadTime());
    }
    const auto begin = std::chrono::steady_clock::now() + lead;
    auto part = parts.begin();
    for (const auto& [backend, own] : speakers) {
        for (const Speaker& speaker : own) {
            part->devices.append(speaker.id);
        }
        part->playback = backend->play(part->source, own, begin);
        connectPart(number, *part);
        ++part;
    }
    m_playbacks.emplace(number, Playback{asker, alarmName, *file, std::move(parts)});
    m_progressTimer.start(progressInterval);
    return done(progressOf(0));
}

void PlaybackService::connectPart(int number, Part& part)
{
    const SpeakerPlayback* playback = part.playback.get();
    connect(playback, &SpeakerPlayback::ended, this, [this, number, playback] { ended(number, playback); });
    connect(playback, &SpeakerPlayback::failed, this,
            [this, number](int device, const QString& reason) { failed(number, device, reason); });
}

/**
 * Stops what plays on devices; a playback that has others left goes on there.
 *
 * @param ending the last reply of one that has none left; receives its device or group
 */
void PlaybackService::release(const QList<int>& devices, const ServerReply& ending)
{
    const QSet<int> released(devices.begin(), devices.end());
    for (auto playback = m_playbacks.begin(); playback != m_playbacks.end();) {
        playback = keep(playback, released, ending);
    }
}

/** Takes devices out of a playback, which ends without any. @return the next playback */
PlaybackService::Playbacks::iterator
PlaybackService::keep(Playbacks::iterator playback, const QSet<int>& released, const ServerReply& ending)
{
    auto& parts = playback->second.parts;
    for (auto part = parts.begin(); part != parts.end();) {
        QList<int> left;
        std::copy_if(part->devices.begin(), part->devices.end(), std::back_inserter(left),
                     [&](int device) { return !released.contains(device); });
        if (left.isEmpty()) {
            drop(std::move(part->playback));
            part = parts.erase(part);
            continue;
        }
        if (left != part->devices) {
            part->devices = left;
            part->playback->keepSpeakers(left);
        }
        ++part;
    }
    return parts.empty() ? finish(playback, ending) : std::next(playback);
}

/** Sends the last reply of a playback and removes it. @return the next playback */
PlaybackService::Playbacks::iterator PlaybackService::finish(Playbacks::iterator playback, ServerReply ending)
{
    const Asker& asker = playback->second.asker;
    if (asker.session) {
        if (ending.returnCode != ReturnCode::success) {
            ending.result = asker.target;
        }
        asker.session->sendReply(asker.command, asker.request, ending);
    }
    return m_playbacks.erase(playback);
}

/** Stops a part and deletes it later, since one of its signals may be running. */
void PlaybackService::drop(std::unique_ptr<SpeakerPlayback> playback)
{
    playback->disconnect(this);
    playback->keepSpeakers({});
    m_dropped.push_back(std::move(playback));
    QMetaObject::invokeMethod(
        this, [this] { m_dropped.clear(); }, Qt::QueuedConnection);
}

ServerReply PlaybackService::stop(const QVariant& payload)
{
    const int device = payload.toInt();
    ServerReply bad;
    if (!m_records.device(device, &bad)) {
        bad.result = device;
        return bad;
    }
    release({device}, stopped());
    return done();
}

void PlaybackService::stopDeleted(int device)
{
    release({device}, stopped());
}

ServerReply PlaybackService::stopGroup(const QVariant& payload)
{
    const int group = payload.toInt();
    ServerReply bad;
    const auto devices = m_records.members(group, &bad);
    if (!devices) {
        bad.result = group;
        return bad;
    }
    release(*devices, stopped());
    return done();
}

void PlaybackService::tellProgress()
{
    for (auto& [number, playback] : m_playbacks) {
        std::size_t played = 0; // the furthest, so that it never goes back
        for (const Part& part : playback.parts) {
            played = std::max(played, part.source->played());
        }
        const auto ms = static_cast<qint64>(played) * 1000 / SoundSource::sampleRate;
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

void PlaybackService::ended(int number, const SpeakerPlayback* part)
{
    const auto found = m_playbacks.find(number);
    if (found == m_playbacks.end()) {
        return;
    }
    Playback& playback = found->second;
    const auto over = std::find_if(playback.parts.begin(), playback.parts.end(),
                                   [&](const Part& each) { return each.playback.get() == part; });
    if (over == playback.parts.end()) {
        return;
    }
    const bool broken = over->source->isBroken();
    playback.broken |= broken;
    const QList<int> devices = over->devices;
    drop(std::move(over->playback));
    playback.parts.erase(over);
    if (broken) {
        for (const int id : devices) {
            raiseFailure(nameOf(id), playback.file.name, brokenFile().errorText, playback.alarmName);
        }
    }
    if (playback.parts.empty()) {
        finish(found, playback.broken ? brokenFile() : done(progressOf(Limits::maxProgressPercent)));
    }
}

void PlaybackService::failed(int number, int device, const QString& reason)
{
    const auto found = m_playbacks.find(number);
    if (found == m_playbacks.end()) {
        return;
    }
    const auto& parts = found->second.parts;
    if (std::none_of(parts.begin(), parts.end(),
                     [&](const Part& part) { return part.devices.contains(device); })) {
        return;
    }
    raiseFailure(nameOf(device), found->second.file.name, reason, found->second.alarmName);
    keep(found, {device}, refusal(ReturnCode::speakerOffline, reason));
}
