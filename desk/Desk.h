#pragma once

#include "client/PluginHost.h"
#include "desk/CommandWatch.h"
#include "desk/DeskConnection.h"
#include "desk/DeskSettings.h"
#include "desk/PlaybackBook.h"
#include "desk/ScheduleWords.h"
#include "desk/TalkControl.h"
#include "desk/TalkMeters.h"
#include "desk/TargetModel.h"

#include <optional>

/**
 * All that the window shows, under one name for QML: the plug-in itself, and what the desk adds to it.
 */
class Desk : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QObject* plugin READ plugin CONSTANT)
    Q_PROPERTY(QObject* connection READ connection CONSTANT)
    Q_PROPERTY(QObject* watch READ watch CONSTANT)
    Q_PROPERTY(QObject* targets READ targets CONSTANT)
    Q_PROPERTY(QObject* talk READ talk CONSTANT)
    Q_PROPERTY(QObject* meters READ meters CONSTANT)
    Q_PROPERTY(QObject* playback READ playback CONSTANT)
    Q_PROPERTY(QObject* schedules READ schedules CONSTANT)
    Q_PROPERTY(QObject* settings READ settings CONSTANT)

public:
    /** @param settingsFile where choices are remembered */
    Desk(const ClientOptions& options, const QString& settingsFile);
    ~Desk() override;

    /** Loads the plug-in; false, with errorString, when that fails. */
    bool load();
    QString errorString() const { return m_host.errorString(); }

    QObject* plugin() const { return m_host.plugin(); }
    DeskConnection* connection() { return &m_connection; }
    CommandWatch* watch() { return &m_watch; }
    TargetModel* targets() { return &m_targets; }
    TalkControl* talk() { return m_talk ? &*m_talk : nullptr; }
    TalkMeters* meters() { return &m_meters; }
    PlaybackBook* playback() { return m_playback ? &*m_playback : nullptr; }
    ScheduleWords* schedules() { return &m_schedules; }
    DeskSettings* settings() { return &m_settings; }

    /** A return code of the server in words. */
    Q_INVOKABLE QString words(const QString& code, const QString& detail = QString()) const;

    /** A text that finds exactly what a person typed, for a filter that takes regular expressions. */
    Q_INVOKABLE QString escaped(const QString& text) const;

    /** What is wrong with an address of a speaker; empty when nothing is. */
    Q_INVOKABLE QString checkAddress(const QString& address) const;

    /** Whether a file is one that can be sent to the server; what is wrong with it, or nothing. */
    Q_INVOKABLE QString checkUpload(const QUrl& file) const;

private Q_SLOTS:
    void fetchGroupsAndSchedules();

private:
    QString m_pluginPath;
    DeskSettings m_settings;
    DeskConnection m_connection;
    CommandWatch m_watch;
    TargetModel m_targets;
    TalkMeters m_meters;
    ScheduleWords m_schedules;
    PluginHost m_host;
    std::optional<TalkControl> m_talk;
    std::optional<PlaybackBook> m_playback;
};
