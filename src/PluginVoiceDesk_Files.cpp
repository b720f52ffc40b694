// The audio files on the server: upload with provisional entries, the list and its replies, remote playback.

#include "src/PendingBlocks.h"
#include "src/PluginVoiceDesk.h"
#include "src/vocabulary/AudioStatus.h"
#include "src/vocabulary/LogGate.h"
#include "src/vocabulary/PluginWords.h"
#include "src/vocabulary/Vocabulary.h"

#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QMediaContent>
#include <QMediaPlayer>
#include <QPointer>
#include <QTimer>
#include <QUuid>

#include <algorithm>

using ReturnCode::success;

namespace {

constexpr int durationTimeout = 5000; // ms

/** The first entry that holds a value under a key; -1 without one. */
int findEntry(const QList<QVariant>& entries, const QString& key, const QVariant& value)
{
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const QVariant& entry) { return entry.toMap().value(key) == value; });
    return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
}

} // namespace

int PluginVoiceDesk::getMediaDuration(const QString& path)
{
    if (!QFileInfo::exists(path)) {
        return 0;
    }
    QTimer timer;
    timer.setSingleShot(true);
    QEventLoop loop;
    QMediaPlayer player;
    connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    connect(&player, &QMediaPlayer::durationChanged, &loop, &QEventLoop::quit);
    player.setMedia(QMediaContent(QUrl::fromLocalFile(path)), nullptr);
    timer.start(durationTimeout);
    loop.exec();
    return static_cast<int>(player.duration());
}

bool PluginVoiceDesk::uploadFile(const QUrl& fileUrl)
{
    const QString path = fileUrl.toLocalFile();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray content = file.readAll();
    // Other events are served while this waits; one of them may end the plug-in.
    const QPointer<PluginVoiceDesk> self(this);
    const int duration = getMediaDuration(path);
    if (!self) {
        return false;
    }
    const QString name = fileUrl.fileName(QUrl::FullyDecoded);
    const QString guid = QUuid::createUuid().toString();
    QString* block = PendingBlocks::add(std::make_unique<QString>(guid));
    const QVariantMap payload{
        {Words::content, content.toBase64()},
        {Words::filename, name},
        {Words::length, duration},
    };
    if (!send(Vocabulary::UploadFile, payload, block)) {
        PendingBlocks::discard(block);
        VOICEDESK_LOG_ERROR("%s, Send UploadFile command failed, (%s)", "PluginVoiceDesk::uploadFile",
                            path.toLocal8Bit().constData());
        return false;
    }
    --m_uploadAudioId;
    m_audioFiles.append(QVariantMap{
        {Vocabulary::audioID, m_uploadAudioId},
        {Vocabulary::audioLength, duration},
        {Vocabulary::audioName, name},
        {Vocabulary::audioStatus, static_cast<int>(AudioStatus::Uploading)},
        {Vocabulary::guid, guid},
    });
    Q_EMIT audioFileListChanged();
    return true;
}

void PluginVoiceDesk::deleteAudioFile(int audioID)
{
    if (audioID >= 0) {
        send(Vocabulary::DeleteFile, audioID);
        return;
    }
    // A provisional entry, of which the server knows nothing.
    const int entry = findEntry(m_audioFiles, Vocabulary::audioID, audioID);
    if (entry >= 0) {
        m_audioFiles.removeAt(entry);
    }
    Q_EMIT audioFileListChanged();
}

void PluginVoiceDesk::setAudioFileList(const QList<QVariant>& list)
{
    if (m_audioFiles == list) {
        return;
    }
    m_audioFiles = list;
    Q_EMIT audioFileListChanged();
}

void PluginVoiceDesk::handleAudioFileList(QVariant result, void* userData, QString returnCode)
{
    const bool refusal = returnCode == Vocabulary::returnCodeFileRefused;
    // Only a refusal of the file reads the block; so at any other code a block of the host's own stays its
    // own.
    const std::unique_ptr<QString> guid = PendingBlocks::takeText(
        userData, refusal ? PendingBlocks::Unknown::Adopt : PendingBlocks::Unknown::Leave);
    if (returnCode == success) {
        setAudioFileList(result.toList());
        return;
    }
    if (!refusal || !guid) {
        return;
    }
    const int entry = findEntry(m_audioFiles, Vocabulary::guid, *guid);
    if (entry < 0) {
        return; // deleted, or replaced by a list of the server's, in the meantime
    }
    // Deliberate: whether this machine has a sound output decides which of the two the front end shows.
    QVariantMap refused = m_audioFiles.at(entry).toMap();
    refused[Vocabulary::audioStatus] = static_cast<int>(
        isAudioDeviceAvailable() ? AudioStatus::RefusedWithOutput : AudioStatus::RefusedWithoutOutput);
    m_audioFiles[entry] = refused;
    Q_EMIT audioFileListChanged();
}

void PluginVoiceDesk::handlePlayAudio(QVariant result, void* /*userData*/, QString returnCode,
                                      QString errorCode, bool /*flag*/, const QString& /*extra*/)
{
    const int progress = result.toMap().value(Words::progress).toInt();
    // Deliberate: a success carries no id, a failure carries it alone.
    const int ipAudioId = returnCode == success ? 0 : result.toInt();
    Q_EMIT playAudioResponse(returnCode == success, progress, errorCode, ipAudioId);
}

void PluginVoiceDesk::handleStopCurrentAudio(QVariant /*result*/, void* /*userData*/, QString returnCode,
                                             QString /*errorCode*/, bool /*flag*/, const QString& /*extra*/)
{
    if (returnCode == success) {
        Q_EMIT stopCurrentAudioResponse(); // deliberate: a failed stop is not reported
    }
}

void PluginVoiceDesk::handlePlayAudioError(const QVariant& payload)
{
    const QVariantMap event = payload.toMap();
    Q_EMIT playAudioError(
        event.value(Vocabulary::deviceName).toString(), event.value(Vocabulary::audioName).toString(),
        event.value(Vocabulary::error).toString(), event.value(Vocabulary::alarmName).toString());
}
