#pragma once

#include "audio/AudioFileReader.h"
#include "server/devices/simulated/SpeakerRack.h"
#include "server/records/DeviceStore.h"
#include "server/records/FileStore.h"
#include "server/records/GroupStore.h"

#include <QPointer>
#include <QSet>

#include <functional>
#include <map>
#include <memory>

class ServerSession;

/**
 * Plays files of the library on simulated speakers.
 *
 *   PlayAudio, PlayGroupAudio, a schedule --> Playback --> SpeakerRack
 *                                                '--> replies with the progress, PlayAudioFailed
 *
 * A speaker plays one file at a time: a new one takes the place of what runs.
 */
class PlaybackService : public QObject
{
    Q_OBJECT

public:
    /** @param offlineAddresses addresses of devices that are not there */
    PlaybackService(DeviceStore& devices, GroupStore& groups, FileStore& files, SpeakerRack& rack,
                    QSet<QString> offlineAddresses);

    /** @param request of the command, which its progress carries */
    ServerReply play(ServerSession& session, const QString& command, const QVariant& payload,
                     quint64 request);
    ServerReply playGroup(ServerSession& session, const QString& command, const QVariant& payload,
                          quint64 request);
    ServerReply stop(const QVariant& payload);
    ServerReply stopGroup(const QVariant& payload);

    /** Plays a file for nobody in particular; what fails is told by playAudioFailed alone. */
    void playUnasked(int file, const QList<int>& devices, const QString& alarmName);

    bool isOffline(const DeviceStore::Device& device) const
    {
        return m_offlineAddresses.contains(device.address);
    }

Q_SIGNALS:
    /** The fields of a PlayAudioFailed event. */
    void playAudioFailed(const QVariantMap& fields);

private:
    /** Who asked for a playback, and how it is answered. */
    struct Asker
    {
        QPointer<ServerSession> session; ///< Null for a schedule.
        QString command;
        quint64 request;
    };

    struct Playback
    {
        Asker asker;
        QString alarmName;
        FileStore::File file;
        QList<int> devices;
        std::shared_ptr<AudioFileReader> reader;
        std::shared_ptr<std::size_t> played; ///< Samples.
        int progress = 0;                    ///< Percent, as last told.
    };

    ServerReply start(const Asker& asker, int fileId, const QList<int>& devices, const QString& alarmName,
                      const QVariant& refusalResult);
    void release(const QList<int>& devices);
    void tellProgress();
    void ended(int source);
    void raiseFailure(const QString& device, const QString& file, const QString& error, const QString& alarm);

    DeviceStore& m_devices;
    GroupStore& m_groups;
    FileStore& m_files;
    SpeakerRack& m_rack;
    QSet<QString> m_offlineAddresses;
    std::map<int, Playback> m_playbacks; ///< By number of the source.
    QTimer m_progressTimer;
};
