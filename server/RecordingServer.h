#pragma once

#include "server/core/CommandExecutor.h"
#include "server/playback/PlaybackService.h"
#include "server/records/DataFolder.h"
#include "server/schedules/ScheduleRunner.h"
#include "server/schedules/ScheduleStore.h"
#include "server/talks/TalkService.h"

#include <QHash>

#include <functional>
#include <optional>
#include <vector>

/** How a reference recording server is set up. */
struct ServerConfig
{
    std::vector<CameraConfig> cameras;
    QString recordingDirectory; ///< Created when something is recorded.
    QString dataDirectory;      ///< Of the database and the audio files, for this process alone as long as
                                ///< the server lives; empty: they end with the server.
    QSet<QString> offlineAddresses; ///< Devices at these addresses are not there.
    bool speakersAloud = false;     ///< Simulated speakers are also heard on this machine.
    bool answers = true;            ///< False: takes commands and answers none, to try out a dead server.
    ServerClock clock;
};

/**
 * The cameras of a server that nobody configured: one that echoes what it hears after half a second, one that
 * listens or, if there is a file for it, speaks, and one that is offline.
 */
std::vector<CameraConfig> defaultCameras(const QString& speechFile = QString());

/**
 * The reference recording server: executes the commands of its sessions.
 *
 *   transport --> ServerSession::submit --> RecordingServer::execute --> service or store --> ServerReply
 *
 * A service or store owns one kind of thing: talks, devices, files, groups, schedules, playback. Lives on one
 * thread.
 */
class RecordingServer : public QObject, public CommandExecutor
{
    Q_OBJECT

public:
    explicit RecordingServer(ServerConfig config);

    const ServerConfig& config() const { return m_config; }

    /** Whether its records can be read and written; errorString says why not. Else every command is refused.
     */
    bool isOpen() const { return m_errorString.isEmpty(); }
    QString errorString() const { return m_errorString; }

    /** The recordings of talks to cameras written so far, in the order of the talks. */
    QStringList recordings() const { return m_talks.recordings(); }

    /** Where a simulated speaker's recording is; empty until it has played something. */
    QString speakerRecording(int device) const { return m_rack.recordingPath(device); }

    /** Looks for schedules that are due, beside the regular looks. */
    void lookAtSchedules() { m_scheduleRunner.look(); }

    /** The names of the commands that it executes: those of CommandTable. */
    QStringList commands() const { return m_executors.keys(); }

    std::optional<ServerReply> execute(ServerSession& session, const QString& command,
                                       const QVariant& payload, quint64 request) override;
    void openSession(ServerSession& session) override;
    void closeSession(ServerSession& session) override;

private:
    using Executor = std::function<ServerReply(ServerSession&, const QVariant& payload, quint64 request)>;

    QString whyNotOpen() const;
    void registerTalks();
    void registerRecords();
    void registerPlayback();
    QVariantList cameraRecords() const;
    ServerReply startTalkToIPAudio(ServerSession& session, const QVariant& payload);

    ServerConfig m_config;
    DataFolder m_data;
    RecordDatabase m_database;
    SecretBox m_secrets;
    DeviceStore m_devices;
    FileStore m_files;
    GroupStore m_groups;
    ScheduleStore m_schedules;
    SpeakerRack m_rack;
    PlaybackService m_playback;
    ScheduleRunner m_scheduleRunner;
    TalkService m_talks;
    QString m_errorString;
    QSet<ServerSession*> m_sessions;
    QHash<QString, Executor> m_executors; ///< By command.
};
