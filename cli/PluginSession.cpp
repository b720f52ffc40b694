#include "cli/PluginSession.h"

#include "cli/InterruptFlag.h"
#include "client/SocketLink.h"
#include "embedded/EmbeddedLink.h"
#include "protocol/PrintableName.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <QEventLoop>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int lookInterval = 50; // ms
constexpr double msPerSecond = 1000.0;
constexpr std::size_t maxReplies = 1000; // to one command that nobody has read yet

} // namespace

bool PluginSession::Reply::success() const
{
    return code == ReturnCode::success;
}

QString PluginSession::Reply::refusal() const
{
    return QStringLiteral("%1 (code %2)").arg(errorText, code);
}

PluginSession::PluginSession(ClientOptions options)
    : m_options(std::move(options)), m_link(m_options.makeLink()), m_host(*m_link)
{
    connect(m_link.get(), &ServerLink::connected, this, [this] { m_connected = true; });
    if (auto* socket = qobject_cast<SocketLink*>(m_link.get())) {
        connect(socket, &SocketLink::lost, this, [this](const QString& reason, bool final) {
            if (m_lost.isEmpty()) {
                m_lost = reason.isEmpty() ? QStringLiteral("it does not answer") : reason;
            }
            m_refused = m_refused || (final && !m_connected);
        });
    }
    connect(&m_host, &PluginHost::commandSent, this,
            [this](const QString& command, const QVariant&, bool accepted, quint64 request) {
                if (!accepted || command == Vocabulary::TalkData) {
                    return; // nobody waits for the replies to sound; TalkMonitor counts those that refuse it
                }
                m_lastSent = request;
                m_replies.insert(request, {});
                if (!m_connected) {
                    m_unasked.insert(command, request);
                }
            });
    connect(&m_host, &PluginHost::replyArrived, this,
            [this](const QString&, const QString& returnCode, const QString& errorText, quint64 request,
                   const QVariant& result) {
                const auto waiting = m_replies.find(request);
                if (waiting != m_replies.end()) {
                    if (waiting->size() >= maxReplies) {
                        waiting->pop_back(); // the last one counts: it says how the command ended
                    }
                    waiting->push_back({returnCode, errorText, result});
                }
            });
}

PluginSession::~PluginSession() = default;

ExitStatus PluginSession::fail(ExitStatus status, const QString& message)
{
    std::fprintf(stderr, "voicedesk: %s\n", qUtf8Printable(printableText(message)));
    return status;
}

const RecordingServer* PluginSession::embeddedServer() const
{
    const auto* embedded = qobject_cast<EmbeddedLink*>(m_link.get());
    return embedded != nullptr ? &embedded->server() : nullptr;
}

ExitStatus PluginSession::open()
{
    if (const RecordingServer* server = embeddedServer(); server != nullptr && !server->isOpen()) {
        return fail(ExitServerFailed, server->errorString());
    }
    if (!m_host.load(m_options.pluginPath)) {
        return fail(ExitPluginFailed,
                    QStringLiteral("the plug-in does not load: %1").arg(m_host.errorString()));
    }
    if (!m_plugin.attach(m_host.plugin())) {
        return fail(ExitPluginFailed, m_plugin.errorString());
    }
    return wait([this] { return m_connected; }) ? ExitSuccess : noAnswer();
}

ExitStatus PluginSession::noAnswer()
{
    if (InterruptFlag::raised()) {
        return fail(ExitNoAnswer, QStringLiteral("interrupted before the server answered"));
    }
    if (m_refused) {
        return fail(ExitRefused, QStringLiteral("%1 refuses the login: %2").arg(m_options.serverUrl, m_lost));
    }
    if (isLost() || !m_connected) {
        const QString reason = isLost() ? m_lost : QStringLiteral("it does not answer");
        return fail(ExitNoAnswer, (m_connected ? QStringLiteral("the connection to %1 was lost: %2")
                                               : QStringLiteral("no connection to %1: %2"))
                                      .arg(m_options.serverUrl, reason));
    }
    return fail(ExitNoAnswer,
                QStringLiteral("the server did not answer within %1 s").arg(m_options.timeout / msPerSecond));
}

bool PluginSession::wait(const std::function<bool()>& condition, int timeout)
{
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    if (timeout != forever) {
        deadline.start(timeout > 0 ? timeout : m_options.timeout);
    }
    QTimer looks; // nothing else wakes the loop after Ctrl-C
    looks.start(lookInterval);
    while (!condition()) {
        if ((timeout != forever && !deadline.isActive()) || isLost() || InterruptFlag::raised()) {
            return condition();
        }
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

quint64 PluginSession::sendOwn(const QString& command, const QVariant& payload)
{
    const quint64 request = m_host.sendOwn(command, payload);
    m_replies.insert(request, {});
    return request;
}

std::optional<PluginSession::Reply> PluginSession::nextReply(quint64 request, int timeout)
{
    if (request == 0 || !wait([&] { return !m_replies[request].empty(); }, timeout)) {
        return std::nullopt;
    }
    std::deque<Reply>& replies = m_replies[request];
    Reply reply = replies.front();
    replies.pop_front();
    return reply;
}

ExitStatus PluginSession::receive(quint64 request, Reply* reply, int timeout)
{
    if (request == 0 && !isLost()) {
        return fail(ExitNoAnswer, QStringLiteral("the request could not be sent"));
    }
    const auto received = nextReply(request, timeout);
    if (!received) {
        return noAnswer();
    }
    if (reply != nullptr) {
        *reply = *received;
    }
    return received->success() ? ExitSuccess : fail(ExitRefused, received->refusal());
}

template<class Call>
ExitStatus PluginSession::readOnce(bool* isRead, const Call& call)
{
    if (*isRead) {
        return ExitSuccess;
    }
    const ExitStatus status = receive(call());
    *isRead = status == ExitSuccess;
    return status;
}

ExitStatus PluginSession::readDevices()
{
    return readOnce(&m_devicesRead, [this] { return m_unasked.value(Vocabulary::RetrieveIPAudioModel); });
}

ExitStatus PluginSession::readFiles()
{
    return readOnce(&m_filesRead, [this] { return m_unasked.value(Vocabulary::GetAudioFile); });
}

ExitStatus PluginSession::readGroups()
{
    // The names of devices are looked up when the groups come: first the one, then the other.
    if (const ExitStatus status = readDevices(); status != ExitSuccess) {
        return status;
    }
    return readOnce(&m_groupsRead,
                    [this] { return send([](PluginClient& plugin) { plugin.getNetworkAudioGroup(); }); });
}

ExitStatus PluginSession::readSchedules()
{
    return readOnce(&m_schedulesRead,
                    [this] { return send([](PluginClient& plugin) { plugin.getNetworkAudioSchedule(); }); });
}
