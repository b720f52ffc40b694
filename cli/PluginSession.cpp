#include "cli/PluginSession.h"

#include "client/SocketLink.h"
#include "embedded/EmbeddedLink.h"
#include "protocol/ReturnCode.h"

#include <QTimer>

#include <algorithm>
#include <cstdio>

PluginSession::PluginSession(ClientOptions options)
    : m_options(std::move(options)), m_link(m_options.makeLink()), m_host(*m_link)
{
    connect(m_link.get(), &ServerLink::connected, this, [this] { m_connected = true; });
    if (auto* socket = qobject_cast<SocketLink*>(m_link.get())) {
        connect(socket, &SocketLink::lost, this, [this](const QString& reason, bool) {
            m_connected = false;
            m_lost = reason;
        });
    }
    connect(&m_host, &PluginHost::replyArrived, this,
            [this](const QString& command, const QString& returnCode, const QString& errorText) {
                if (returnCode != ReturnCode::success) {
                    m_errorText = errorText;
                }
                m_replies.append({command, returnCode});
            });
}

PluginSession::~PluginSession() = default;

int PluginSession::fail(ExitStatus status, const QString& message)
{
    std::fprintf(stderr, "voicedesk: %s\n", qUtf8Printable(message));
    return status;
}

ExitStatus PluginSession::open()
{
    if (auto* embedded = qobject_cast<EmbeddedLink*>(m_link.get());
        embedded != nullptr && !embedded->server().isOpen()) {
        fail(ExitServerFailed, embedded->server().errorString());
        return ExitServerFailed;
    }
    if (!m_host.load(m_options.pluginPath)) {
        fail(ExitPluginFailed, QStringLiteral("the plug-in does not load: %1").arg(m_host.errorString()));
        return ExitPluginFailed;
    }
    if (!m_plugin.attach(m_host.plugin())) {
        fail(ExitPluginFailed, m_plugin.errorString());
        return ExitPluginFailed;
    }
    connect(&m_plugin, &PluginClient::ipAudioModelChanged, this, [this] { m_devicesListed = true; });
    if (!wait([this] { return m_connected || !m_lost.isEmpty(); }, m_options.timeout) || !m_connected) {
        const QString reason = m_lost.isEmpty() ? QStringLiteral("it does not answer") : m_lost;
        fail(ExitNoAnswer, QStringLiteral("no connection to %1: %2").arg(m_options.serverUrl, reason));
        return ExitNoAnswer;
    }
    return ExitSuccess;
}

bool PluginSession::wait(const std::function<bool()>& condition, int timeout)
{
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    deadline.start(timeout > 0 ? timeout : m_options.timeout);
    while (!condition() && deadline.isActive() && m_lost.isEmpty()) {
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    return condition();
}

bool PluginSession::waitForDevices()
{
    return wait([this] { return m_devicesListed; });
}

void PluginSession::forget()
{
    m_replies.clear();
    m_errorText.clear();
}

QString PluginSession::waitForReply(const QString& command, int timeout)
{
    const auto named = [&](const auto& reply) { return reply.first == command; };
    wait([&] { return std::any_of(m_replies.begin(), m_replies.end(), named); }, timeout);
    const auto found = std::find_if(m_replies.begin(), m_replies.end(), named);
    if (found == m_replies.end()) {
        return QString();
    }
    QString code = found->second;
    m_replies.erase(found);
    return code;
}
