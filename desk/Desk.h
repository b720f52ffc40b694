#pragma once

#include "client/PluginClient.h"
#include "client/PluginHost.h"
#include "desk/CameraModel.h"
#include "desk/CameraRequests.h"
#include "desk/CameraTest.h"
#include "desk/CameraView.h"
#include "desk/DeskConnection.h"
#include "desk/DeskSettings.h"
#include "desk/PlaybackModel.h"
#include "desk/ProtocolConstants.h"
#include "desk/RequestTimeouts.h"
#include "desk/ScheduleText.h"
#include "desk/ScheduleValidator.h"
#include "desk/TalkControl.h"
#include "desk/TalkMeters.h"
#include "desk/TargetModel.h"

#include <optional>

/**
 * All that the window shows, under one name for QML: the plug-in, and what the desk adds to it.
 */
class Desk : public QObject
{
    Q_OBJECT
    /** The plug-in, with types. */
    Q_PROPERTY(PluginClient* plugin READ plugin CONSTANT)
    /** The connection to a server. */
    Q_PROPERTY(DeskConnection* connection READ connection CONSTANT)
    /** The time-outs of requests, and which was answered last. */
    Q_PROPERTY(RequestTimeouts* watch READ watch CONSTANT)
    /** The cameras and speakers that can be talked to. */
    Q_PROPERTY(TargetModel* targets READ targets CONSTANT)
    /** The cameras as records. */
    Q_PROPERTY(CameraModel* cameras READ cameras CONSTANT)
    /** What changes these records. */
    Q_PROPERTY(CameraRequests* cameraRequests READ cameraRequests CONSTANT)
    /** The test of a camera. */
    Q_PROPERTY(CameraTest* cameraTest READ cameraTest CONSTANT)
    /** What the chosen camera sees. */
    Q_PROPERTY(CameraView* view READ view CONSTANT)
    /** The talk. Null until load has succeeded. */
    Q_PROPERTY(TalkControl* talk READ talk CONSTANT)
    /** The levels of the talk. */
    Q_PROPERTY(TalkMeters* meters READ meters CONSTANT)
    /** The playbacks that were asked for. Null until load has succeeded. */
    Q_PROPERTY(PlaybackModel* playback READ playback CONSTANT)
    /** What schedules mean, for people. */
    Q_PROPERTY(ScheduleText* schedules READ schedules CONSTANT)
    /** The check of a schedule before it is saved. */
    Q_PROPERTY(ScheduleValidator* scheduleValidator READ scheduleValidator CONSTANT)
    /** What is remembered of the user's choices. */
    Q_PROPERTY(DeskSettings* settings READ settings CONSTANT)
    /** Values and limits of the protocol. */
    Q_PROPERTY(ProtocolConstants* protocol READ protocol CONSTANT)

public:
    /** @param settingsFile where choices are remembered */
    Desk(const ClientOptions& options, const QString& settingsFile);
    ~Desk() override;

    /** Loads the plug-in; false, with errorString, when that fails. */
    bool load();
    /** Returns why load failed. */
    QString errorString() const { return m_errorString; }

    /** Returns the property plugin. */
    PluginClient* plugin() { return &m_plugin; }
    /** Returns the property connection. */
    DeskConnection* connection() { return &m_connection; }
    /** Returns the property watch. */
    RequestTimeouts* watch() { return &m_watch; }
    /** Returns the property targets. */
    TargetModel* targets() { return &m_targets; }
    /** Returns the property cameras. */
    CameraModel* cameras() { return &m_cameras; }
    /** Returns the property cameraRequests. */
    CameraRequests* cameraRequests() { return &m_cameraRequests; }
    /** Returns the property cameraTest. */
    CameraTest* cameraTest() { return &m_cameraTest; }
    /** Returns the property view. */
    CameraView* view() { return &m_view; }
    /** Returns the property talk. */
    TalkControl* talk() { return m_talk ? &*m_talk : nullptr; }
    /** Returns the property meters. */
    TalkMeters* meters() { return &m_meters; }
    /** Returns the property playback. */
    PlaybackModel* playback() { return m_playback ? &*m_playback : nullptr; }
    /** Returns the property schedules. */
    ScheduleText* schedules() { return &m_schedules; }
    /** Returns the property scheduleValidator. */
    ScheduleValidator* scheduleValidator() { return &m_scheduleValidator; }
    /** Returns the property settings. */
    DeskSettings* settings() { return &m_settings; }
    /** Returns the property protocol. */
    ProtocolConstants* protocol() { return &m_protocol; }

    /** Returns a return code of the server in words. @param detail the server's own text, for codes without
     * words */
    Q_INVOKABLE QString words(const QString& code, const QString& detail = QString()) const;

    /** Returns the same with the server's own text, cut where it is long. @param detail that text */
    Q_INVOKABLE QString fullWords(const QString& code, const QString& detail) const;

    /** Returns what is wrong with the address of a speaker, for people; empty when nothing is. */
    Q_INVOKABLE QString checkAddress(const QString& address) const;

    /** Returns why a file cannot be sent to the server, for people; empty when it can. */
    Q_INVOKABLE QString checkUpload(const QUrl& file) const;

private:
    void fetchWhatChanged(const QString& command, const QString& returnCode);

    QString m_pluginPath;
    DeskSettings m_settings;
    DeskConnection m_connection;
    RequestTimeouts m_watch;
    TargetModel m_targets;
    CameraModel m_cameras;
    TalkMeters m_meters;
    ScheduleText m_schedules;
    ScheduleValidator m_scheduleValidator;
    ProtocolConstants m_protocol;
    PluginHost m_host;
    CameraRequests m_cameraRequests;
    CameraTest m_cameraTest;
    CameraView m_view;
    PluginClient m_plugin;
    QString m_errorString;
    std::optional<TalkControl> m_talk;
    std::optional<PlaybackModel> m_playback;
};
