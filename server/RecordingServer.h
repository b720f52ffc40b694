#pragma once

#include "server/RecordKeeper.h"
#include "server/cameras/CameraInquiries.h"
#include "server/cameras/CameraPictures.h"
#include "server/cameras/CameraVideos.h"
#include "server/core/CommandExecutor.h"
#include "server/devices/DeviceKinds.h"
#include "server/playback/PlaybackService.h"
#include "server/schedules/ScheduleRunner.h"
#include "server/talks/TalkService.h"

#include <QHash>

#include <functional>
#include <optional>
#include <vector>

/** How a reference recording server is set up. */
struct ServerConfig
{
    DeviceKinds devices;   ///< Which cameras and speakers there can be.
    QString dataDirectory; ///< Of the database and the audio files, for this process alone as long as
                           ///< the server lives; empty: they end with the server.
    ServerClock clock;     ///< Of the schedules.
    TalkLimits talkLimits; ///< How long talks wait for their devices.
    std::chrono::milliseconds pictureInterval{
        1000};                      ///< A camera is asked for no more than one picture in it.
    CameraVideos::Times videoTimes; ///< Of the videos of cameras.
};

/**
 * The reference recording server: executes the commands of its sessions.
 *
 *   transport --> ServerSession::submit --> RecordingServer::execute --> service or store --> ServerReply
 *
 * A service owns one kind of thing: talks, playback, questions to cameras, pictures, records. All of it lives
 * on one thread, the server's, on which sound is carried; records and uploads have threads of their own
 * behind RecordKeeper.
 */
class RecordingServer : public QObject, public CommandExecutor
{
    Q_OBJECT

public:
    /** Opens the data folder and the database, and starts the schedules; see isOpen. */
    explicit RecordingServer(ServerConfig config);

    /** Returns how it was set up. */
    const ServerConfig& config() const { return m_config; }

    /** Returns whether its records can be read and written; every command is refused otherwise. */
    bool isOpen() const { return m_errorString.isEmpty(); }
    /** Returns why it is not open, for people; empty when it is. */
    QString errorString() const { return m_errorString; }

    /** Checks for due schedules now, besides the regular checks. */
    void checkDueSchedules() { m_scheduleRunner.checkDue(); }

    /** Returns the names of the commands that it executes: those of CommandTable. */
    QStringList commands() const { return m_executors.keys(); }

    std::optional<ServerReply> execute(ServerSession& session, const QString& command,
                                       const QVariant& payload, quint64 request) override;
    std::optional<ServerReply> executeTalkData(ServerSession& session, const TalkDataPayload& talk,
                                               quint64 request) override;
    void openSession(ServerSession& session) override;
    void closeSession(ServerSession& session) override;

private:
    using Executor =
        std::function<std::optional<ServerReply>(ServerSession&, const QVariant& payload, quint64 request)>;

    void registerTalks();
    void registerRecords();
    void registerPlayback();
    void registerCameras();
    void startSchedules();
    void playScheduled(const ScheduledRun& run);
    std::vector<CameraInquiries::Backend> backendsByKind() const;
    void applyCameraRecords();
    void reportCameras();
    QVariantList cameraRecords() const;
    std::optional<ServerReply> startTalkToIPAudio(ServerSession& session, const QVariant& payload);
    void askCamera(ServerSession& session, const QVariant& payload);

    ServerConfig m_config;
    DataFolder m_data;
    RecordKeeper m_records;
    std::vector<std::unique_ptr<CameraBackend>>
        m_cameraBackends;           ///< One for each kind, and AbsentCameras last.
    bool m_camerasReported = false; ///< An event about them is on its way.
    std::vector<std::unique_ptr<SpeakerBackend>> m_speakerBackends;
    PlaybackService m_playback;
    ScheduleRunner m_scheduleRunner;
    TalkService m_talks;
    CameraInquiries m_inquiries;
    CameraPictures m_pictures;
    CameraVideos m_videos;
    QString m_errorString;
    QSet<ServerSession*> m_sessions;
    QHash<QString, Executor> m_executors; ///< By command.
};
