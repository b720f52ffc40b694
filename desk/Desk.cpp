#include "desk/Desk.h"

#include "desk/ErrorWords.h"
#include "protocol/RecordChecks.h"
#include "protocol/Words.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>

namespace {

constexpr qint64 largestUpload = qint64{32} << 20; // bytes

} // namespace

Desk::Desk(const ClientOptions& options, const QString& settingsFile)
    : m_pluginPath(options.pluginPath), m_settings(settingsFile), m_connection(options),
      m_watch(options.timeout), m_host(m_connection.link())
{
    connect(&m_host, &PluginHost::commandSent, &m_watch, &CommandWatch::commandSent);
    connect(&m_host, &PluginHost::commandSent, &m_meters, &TalkMeters::commandSent);
    connect(&m_host, &PluginHost::replyArrived, &m_watch, &CommandWatch::replyArrived);
    connect(&m_host, &PluginHost::eventArrived, &m_meters, &TalkMeters::eventArrived);
    connect(&m_connection.link(), &LinkSwitch::camerasListed, &m_targets, &TargetModel::setCameras);
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
        return false;
    }
    m_talk.emplace(plugin(), m_targets, m_watch);
    m_playback.emplace(plugin());
    QObject* speakers = nullptr;
    QMetaObject::invokeMethod(plugin(), "getIPAudioModel", Q_RETURN_ARG(QObject*, speakers),
                              Q_ARG(QObject*, this));
    m_targets.setSpeakers(qobject_cast<QAbstractItemModel*>(speakers));

    connect(&m_meters, &TalkMeters::packetSent, &*m_talk, &TalkControl::packetSent);
    connect(&m_host, &PluginHost::eventArrived, &*m_talk,
            [this](const QString& event, const QVariant& payload) {
                if (event == Words::TalkTargetLost) {
                    m_talk->targetLost(payload.toMap());
                }
            });
    connect(&*m_talk, &TalkControl::phaseChanged, this,
            [this] { m_meters.setActive(m_talk->phase() == TalkControl::Talking); });
    connect(&m_connection, &DeskConnection::aboutToChange, this, [this] {
        m_talk->stop();
        m_playback->forget();
        m_watch.forget();
    });
    connect(&m_connection, &DeskConnection::serverChanged, this, [this] {
        m_talk->forgetServer();
        m_playback->clear();
        m_targets.forgetServer();
    });
    connect(plugin(), SIGNAL(ipAudioModelChanged()), &m_targets, SLOT(speakersListed()));
    connect(&m_connection, &DeskConnection::changed, this, [this] {
        m_talk->setOnline(m_connection.isOnline());
        if (m_connection.state() == DeskConnection::Reconnecting) {
            m_watch.forget();
            m_playback->forget();
        }
    });
    connect(&m_watch, &CommandWatch::timedOut, &*m_playback, &PlaybackBook::timedOut);
    // Groups show the names of devices: they are asked for after those, and again when one of them changes.
    connect(plugin(), SIGNAL(ipAudioModelChanged()), this, SLOT(fetchGroupsAndSchedules()));
    connect(plugin(), SIGNAL(deleteNetworkAudioGroupResponse(bool, QString, int)), this,
            SLOT(fetchGroupsAndSchedules()));
    connect(plugin(), SIGNAL(audioFileListChanged()), this, SLOT(fetchGroupsAndSchedules()));
    m_connection.start();
    return true;
}

void Desk::fetchGroupsAndSchedules()
{
    QMetaObject::invokeMethod(plugin(), "getNetworkAudioGroup");
    QMetaObject::invokeMethod(plugin(), "getNetworkAudioSchedule");
}

QString Desk::words(const QString& code, const QString& detail) const
{
    return ErrorWords::of(code, detail);
}

QString Desk::escaped(const QString& text) const
{
    return QRegularExpression::escape(text);
}

QString Desk::checkAddress(const QString& address) const
{
    const auto refusal = RecordChecks::address(address);
    return refusal ? ErrorWords::of(refusal->returnCode) : QString();
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
    if (info.size() > largestUpload) {
        return tr("\"%1\" is larger than 32 MiB.").arg(info.fileName());
    }
    return QString();
}
