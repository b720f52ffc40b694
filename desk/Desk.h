#pragma once

#include "client/PluginClient.h"
#include "client/PluginHost.h"
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
    Q_PROPERTY(PluginClient* plugin READ plugin CONSTANT)
    Q_PROPERTY(DeskConnection* connection READ connection CONSTANT)
    Q_PROPERTY(RequestTimeouts* watch READ watch CONSTANT)
    Q_PROPERTY(TargetModel* targets READ targets CONSTANT)
    Q_PROPERTY(TalkControl* talk READ talk CONSTANT)
    Q_PROPERTY(TalkMeters* meters READ meters CONSTANT)
    Q_PROPERTY(PlaybackModel* playback READ playback CONSTANT)
    Q_PROPERTY(ScheduleText* schedules READ schedules CONSTANT)
    Q_PROPERTY(ScheduleValidator* scheduleValidator READ scheduleValidator CONSTANT)
    Q_PROPERTY(DeskSettings* settings READ settings CONSTANT)
    Q_PROPERTY(ProtocolConstants* protocol READ protocol CONSTANT)

public:
    /** @param settingsFile where choices are remembered */
    Desk(const ClientOptions& options, const QString& settingsFile);
    ~Desk() override;

    /** Loads the plug-in; false, with errorString, when that fails. */
    bool load();
    QString errorString() const { return m_errorString; }

    PluginClient* plugin() { return &m_plugin; }
    DeskConnection* connection() { return &m_connection; }
    RequestTimeouts* watch() { return &m_watch; }
    TargetModel* targets() { return &m_targets; }
    TalkControl* talk() { return m_talk ? &*m_talk : nullptr; }
    TalkMeters* meters() { return &m_meters; }
    PlaybackModel* playback() { return m_playback ? &*m_playback : nullptr; }
    ScheduleText* schedules() { return &m_schedules; }
    ScheduleValidator* scheduleValidator() { return &m_scheduleValidator; }
    DeskSettings* settings() { return &m_settings; }
    ProtocolConstants* protocol() { return &m_protocol; }

    /** A return code of the server in words. */
    Q_INVOKABLE QString words(const QString& code, const QString& detail = QString()) const;

    /** What is wrong with an address of a speaker; empty when nothing is. */
    Q_INVOKABLE QString checkAddress(const QString& address) const;

    /** Whether a file is one that can be sent to the server; what is wrong with it, or nothing. */
    Q_INVOKABLE QString checkUpload(const QUrl& file) const;

private:
    void fetchGroupsAndSchedules();

    QString m_pluginPath;
    DeskSettings m_settings;
    DeskConnection m_connection;
    RequestTimeouts m_watch;
    TargetModel m_targets;
    TalkMeters m_meters;
    ScheduleText m_schedules;
    ScheduleValidator m_scheduleValidator;
    ProtocolConstants m_protocol;
    PluginHost m_host;
    PluginClient m_plugin;
    QString m_errorString;
    std::optional<TalkControl> m_talk;
    std::optional<PlaybackModel> m_playback;
};
