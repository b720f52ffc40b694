#pragma once

#include "server/devices/SpeakerBackend.h"
#include "server/records/RecordSnapshot.h"

#include <QPointer>
#include <QSet>
#include <QTimer>

#include <map>
#include <memory>
#include <vector>

class FileSource;
class ServerSession;

/**
 * Plays files of the library on speakers. All calls are on the server's thread.
 *
 *   PlayAudio, PlayGroupAudio, a schedule --> Playback --> SpeakerPlayback, one for each back end
 *                                                '--> replies with the progress, PlayAudioFailed
 *
 * A speaker plays one file at a time: a new one takes the place of what runs. Each playback has a last reply
 * to the request that started it, unless its client has left:
 *
 *   played to the end           "0", progress 100
 *   the file is broken          brokenFile       after a PlayAudioFailed for each device
 *   its last speaker is lost    speakerOffline   after a PlayAudioFailed for each lost one
 *   stopped                     playbackStopped
 *   displaced by another one    speakerTaken
 */
class PlaybackService : public QObject
{
    Q_OBJECT

public:
    /** All arguments outlive the object. @param backends of several that serve a speaker the first counts */
    PlaybackService(const RecordSnapshot& records, std::vector<SpeakerBackend*> backends);
    ~PlaybackService() override;

    /**
     * Plays a file on a device.
     *
     * @param command PlayAudio or AlarmPlayIPAudio
     * @param payload a map: ipAudioId, audioFileId (int), alarmName (QString, may be absent)
     * @param request of the command, which its later replies carry
     * @return success with progress 0, or noSuchFile, noSuchDevice, speakerOffline or brokenFile, each with
     * the id of the device
     */
    ServerReply play(ServerSession& session, const QString& command, const QVariant& payload,
                     quint64 request);

    /**
     * Plays a file on the devices of a group that are online, in step.
     *
     * @param command PlayGroupAudio
     * @param payload a map: groupID, audioFileId (int)
     * @param request of the command, which its later replies carry
     * @return as play, or noSuchGroup or nothingToPlayOn; a refusal has the id of the group. playAudioFailed
     * is emitted for each device that is offline
     */
    ServerReply playGroup(ServerSession& session, const QString& command, const QVariant& payload,
                          quint64 request);

    /**
     * Stops what a device plays, whoever asked for it.
     *
     * @param payload the id, an int
     * @return success also when nothing plays, or noSuchDevice with the id
     */
    ServerReply stop(const QVariant& payload);

    /**
     * Stops what the devices of a group play, whoever asked for it.
     *
     * @param payload the id, an int
     * @return success also when nothing plays, or noSuchGroup with the id
     */
    ServerReply stopGroup(const QVariant& payload);

    /** Stops what a device plays that has no record any more, so that nobody could stop it. */
    void stopDeleted(int device);

    /** Plays a file that no client asked for, as a schedule does; playAudioFailed alone reports what fails.
     */
    void playUnasked(int file, const QList<int>& devices, const QString& alarmName);

    /** Returns the back end that reaches a speaker; null when there is none, or the speaker is offline. */
    SpeakerBackend* backendOf(const Speaker& speaker) const;

Q_SIGNALS:
    /** A device does not play. @param fields those of a PlayAudioFailed event */
    void playAudioFailed(const QVariantMap& fields);

private:
    /** Who asked for a playback, and how it is answered. */
    struct Asker
    {
        QPointer<ServerSession> session; ///< Null for a schedule.
        QString command;
        quint64 request;
        QVariant target; ///< The device or group, an int: what a refusal carries.
    };

    /** What one back end plays. */
    struct Part
    {
        std::shared_ptr<FileSource> source;
        QList<int> devices;
        std::unique_ptr<SpeakerPlayback> playback;
    };

    struct Playback
    {
        Asker asker;
        QString alarmName;
        FileStore::File file;
        std::vector<Part> parts;
        int progress = 0;    ///< Percent, as last sent.
        bool broken = false; ///< A part could not decode the whole file.
    };
    using Playbacks = std::map<int, Playback>; ///< By a number of their own.

    ServerReply start(const Asker& asker, int fileId, const QList<int>& devices, const QString& alarmName);
    void release(const QList<int>& devices, const ServerReply& ending);
    void tellProgress();
    void connectPart(int number, Part& part);
    void ended(int number, const SpeakerPlayback* part);
    void failed(int number, int device, const QString& reason);
    Playbacks::iterator keep(Playbacks::iterator playback, const QSet<int>& released,
                             const ServerReply& ending);
    Playbacks::iterator finish(Playbacks::iterator playback, ServerReply ending);
    void drop(std::unique_ptr<SpeakerPlayback> playback);
    QString nameOf(int device) const;
    void raiseFailure(const QString& device, const QString& file, const QString& error, const QString& alarm);

    const RecordSnapshot& m_records;
    std::vector<SpeakerBackend*> m_backends;
    Playbacks m_playbacks;
    int m_lastNumber = 0;
    std::vector<std::unique_ptr<SpeakerPlayback>>
        m_dropped; ///< Deleted when none of their signals is being handled.
    QTimer m_progressTimer;
};
