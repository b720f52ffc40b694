#include "desk/Desk.h"

#include "desk/ErrorMessages.h"
#include "protocol/Limits.h"
#include "protocol/RecordChecks.h"
#include "protocol/Words.h"

#include <QFileInfo>
#include <QUrl>

Desk::Desk(const ClientOptions& options, const QString& settingsFile)
    : m_pluginPath(options.pluginPath), m_settings(settingsFile), m_connection(options),
      m_watch(options.timeout), m_host(m_connection.link()), m_cameraRequests(m_host, m_watch),
      m_cameraTest(m_host, m_watch), m_view(m_host)
{
    connect(&m_host, &PluginHost::commandSent, &m_watch, &RequestTimeouts::commandSent);
    connect(&m_host, &PluginHost::commandSent, &m_meters, &TalkMeters::commandSent);
    connect(&m_host, &PluginHost::replyArrived, &m_watch, &RequestTimeouts::replyArrived);
    connect(&m_host, &PluginHost::eventArrived, &m_meters, &TalkMeters::eventArrived);
    connect(&m_host, &PluginHost::replyArrived, &m_cameraRequests, &CameraRequests::replyArrived);
    connect(&m_host, &PluginHost::replyArrived, &m_cameraTest, &CameraTest::replyArrived);
    connect(&m_host, &PluginHost::eventArrived, &m_cameraTest, &CameraTest::eventArrived);
    connect(&m_host, &PluginHost::replyArrived, &m_view, &CameraView::replyArrived);
    connect(&m_host, &PluginHost::eventArrived, &m_view, &CameraView::eventArrived);
    connect(&m_connection.link(), &LinkSwitch::camerasListed, &m_targets, &TargetModel::setCameras);
    connect(&m_connection.link(), &LinkSwitch::camerasListed, &m_cameras, &CameraModel::setCameras);
    connect(&m_host, &PluginHost::eventArrived, &m_connection.link(), [this](const QString& event) {
        if (event == Words::CamerasChanged) {
            m_connection.link().askForCameras();
        }
    });
}

Desk::~Desk()
{
    m_talk.reset();
    m_playback.reset();
    m_host.unload();
}

bool Desk::load()
{
    if (!m_host.load(m_pluginPath)) {
        m_errorString = m_host.errorString();
        return false;
    }
    if (!m_plugin.attach(m_host.plugin())) {
        m_errorString = m_plugin.errorString();
        return false;
    }
    m_talk.emplace(m_plugin, m_targets, m_watch);
    m_playback.emplace(m_plugin, m_watch);
    connect(&m_host, &PluginHost::replyArrived, &*m_playback, &PlaybackModel::replyArrived);
    m_targets.setSpeakers(m_plugin.getIPAudioModel(this));

    connect(&m_meters, &TalkMeters::packetSent, &*m_talk, &TalkControl::packetSent);
    connect(&m_host, &PluginHost::eventArrived, &*m_talk,
            [this](const QString& event, const QVariant& payload) {
                if (event == Words::TalkTargetLost) {
                    m_talk->targetLost(payload.toMap());
                }
            });
    connect(&*m_talk, &TalkControl::phaseChanged, this,
            [this] { m_meters.setActive(m_talk->phase() == TalkControl::Talking); });
    connect(&*m_talk, &TalkControl::phaseChanged, this, [this] {
        if (m_talk->phase() != TalkControl::Idle) {
            m_cameraTest.cancel(); // its tone would be in the talk
        }
    });
    connect(&m_connection, &DeskConnection::aboutToChange, this, [this] {
        m_talk->stop();
        m_cameraTest.forgetConnection();
        m_playback->forget();
        m_watch.forget();
    });
    connect(&m_connection, &DeskConnection::serverChanged, this, [this] {
        m_talk->forgetServer();
        m_playback->clear();
        m_targets.forgetServer();
        m_cameras.forgetServer();
        m_view.forgetServer();
    });
    connect(&m_plugin, &PluginClient::ipAudioModelChanged, &m_targets, &TargetModel::speakersListed);
    connect(&m_connection, &DeskConnection::changed, this, [this] {
        m_talk->setOnline(m_connection.isOnline());
        m_view.setOnline(m_connection.isOnline());
        if (m_connection.state() == DeskConnection::Reconnecting) {
            m_cameraTest.forgetConnection();
            m_watch.forget();
            m_playback->forget();
        }
    });
    connect(&m_watch, &RequestTimeouts::timedOut, &*m_playback, &PlaybackModel::timedOut);
    // When the plug-in has the reply.
    connect(&m_host, &PluginHost::replyArrived, this, &Desk::fetchWhatChanged, Qt::QueuedConnection);
    m_connection.start();
    return true;
}

void Desk::fetchWhatChanged(const QString& command, const QString& returnCode)
{
    // Groups show the names of devices, so they are asked for after those. A server takes what it deletes out
    // of groups and schedules; a record that is added is in none yet.
    const bool listed = command == Vocabulary::RetrieveIPAudioModel;
    const bool done = returnCode == ReturnCode::success;
    const bool deviceDeleted = done && command == Vocabulary::DeleteIPAudio;
    const bool groupDeleted = command == Vocabulary::DeleteNetworkAudioGroup;
    const bool deviceRenamed = done && command == Vocabulary::UpdateIPAudio;
    const bool fileDeleted = done && command == Vocabulary::DeleteFile;
    if (listed || deviceDeleted || groupDeleted || deviceRenamed) {
        m_plugin.getNetworkAudioGroup();
    }
    if (listed || deviceDeleted || groupDeleted || fileDeleted) {
        m_plugin.getNetworkAudioSchedule();
    }
}

QString Desk::words(const QString& code, const QString& detail) const
{
    return ErrorMessages::of(code, detail);
}

QString Desk::fullWords(const QString& code, const QString& detail) const
{
    return ErrorMessages::withDetail(code, detail);
}

QString Desk::checkAddress(const QString& address) const
{
    const auto refusal = RecordChecks::address(address);
    return refusal ? ErrorMessages::of(refusal->returnCode) : QString();
}

QString Desk::checkUpload(const QUrl& file) const
{
    const QFileInfo info(file.toLocalFile());
    if (!file.isLocalFile() || !info.isFile()) {
        return tr("Only files on this computer can be sent.");
    }
    if (!info.isReadable()) {
        return tr("\"%1\" cannot be read.").arg(info.fileName());
    }
    if (info.size() > Limits::maxFileBytes) {
        return tr("\"%1\" is larger than %2 MiB.")
            .arg(info.fileName(), QString::number(Limits::maxFileBytes >> 20));
    }
    return QString();
}
