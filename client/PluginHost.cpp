#include "client/PluginHost.h"

#include "platform/PluginBase.h"
#include "protocol/Words.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

#ifdef Q_OS_WIN
const QString libraryName = QStringLiteral("VoiceDesk.dll");
#else
const QString libraryName = QStringLiteral("libVoiceDesk.so");
#endif

QString findLibrary()
{
    const QDir programFolder(QCoreApplication::applicationDirPath());
    for (const QString& folder : {QStringLiteral("."), QStringLiteral("../lib")}) {
        const QString path = programFolder.filePath(folder + QLatin1Char('/') + libraryName);
        if (QFileInfo::exists(path)) {
            return QDir::cleanPath(path);
        }
    }
    return libraryName;
}

} // namespace

PluginHost::PluginHost(ServerLink& link) : m_link(link)
{
    connect(&m_link, &ServerLink::connected, this, [this] {
        if (m_plugin != nullptr) {
            m_plugin->PluginServerConnected();
        }
    });
    connect(&m_link, &ServerLink::replied, this,
            [this](const QString& command, const QVariant& result, void* userData, const QString& returnCode,
                   const QString& errorText) {
                Q_EMIT replyArrived(command, returnCode, errorText);
                if (m_plugin != nullptr) {
                    m_plugin->CommandProcessor(command, result, userData, returnCode, errorText, false,
                                               QString());
                }
            });
    connect(&m_link, &ServerLink::eventRaised, this, [this](const QString& event, const QVariant& payload) {
        Q_EMIT eventArrived(event, payload);
        if (m_plugin != nullptr && !Words::isHostEvent(event)) {
            m_plugin->EventProcessor(event, 0, 0, 0, payload, QString());
        }
    });
}

PluginHost::~PluginHost()
{
    unload();
}

bool PluginHost::load(const QString& path)
{
    const QString library = path.isEmpty() ? findLibrary() : path;
    m_loader.setFileName(library);
    QObject* instance = m_loader.instance();
    if (instance == nullptr) {
        m_errorString = m_loader.errorString();
        return false;
    }
    m_plugin = qobject_cast<PluginBase*>(instance);
    if (m_plugin == nullptr) {
        m_errorString = QStringLiteral("%1 is a plug-in of another kind").arg(library);
        return false;
    }
    m_link.open();
    if (!m_plugin->InitialPluginBase(nullptr, this, this)) {
        m_errorString = QStringLiteral("%1 could not be initialised; its log says why").arg(library);
        return false;
    }
    return true;
}

QObject* PluginHost::plugin() const
{
    return m_plugin;
}

void PluginHost::unload()
{
    delete m_plugin;
    m_plugin = nullptr;
}

bool PluginHost::SendCommand(void* /*pluginHandle*/, const QString& /*pluginId*/, const QString& command,
                             const QVariant& param, void* userData, bool /*flag*/, const QString& /*extra*/)
{
    const bool accepted = m_link.send(command, param, userData);
    Q_EMIT commandSent(command, param, accepted);
    return accepted;
}
