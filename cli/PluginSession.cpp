#include "cli/PluginSession.h"

#include "client/SocketLink.h"
#include "embedded/EmbeddedLink.h"

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QMetaMethod>
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
                if (returnCode != QLatin1String("0")) {
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
    const QMetaObject* meta = plugin()->metaObject();
    const auto listen = [&](const char* parameters, const char* slot) {
        const QMetaMethod target = metaObject()->method(metaObject()->indexOfSlot(slot));
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            const QMetaMethod signal = meta->method(i);
            if (signal.methodType() == QMetaMethod::Signal && signal.methodSignature().endsWith(parameters)) {
                connect(plugin(), signal, this, target);
            }
        }
    };
    listen("Response(bool,QString,int)", "response(bool,QString,int)");
    listen("Response(bool,int,QString,int)", "playResponse(bool,int,QString,int)");
    listen("playAudioError(QString,QString,QString,QString)", "playError(QString,QString,QString,QString)");
    listen("()", "plain()");
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

void PluginSession::keep(const QVariantList& arguments)
{
    const QMetaMethod signal = plugin()->metaObject()->method(senderSignalIndex());
    m_responses.append({QString::fromLatin1(signal.name()), arguments});
}

void PluginSession::response(bool success, const QString& returnCode, int id)
{
    keep({success, returnCode, id});
}

void PluginSession::talkResponse(bool success, const QString& error, int id)
{
    keep({success, error, id});
}

void PluginSession::playResponse(bool success, int progress, const QString& error, int id)
{
    keep({success, progress, error, id});
}

void PluginSession::playError(const QString& device, const QString& file, const QString& error,
                              const QString& alarm)
{
    keep({device, file, error, alarm});
}

void PluginSession::plain()
{
    keep({});
}

void PluginSession::forget()
{
    m_responses.clear();
    m_replies.clear();
    m_errorText.clear();
}

std::optional<PluginResponse> PluginSession::waitFor(const char* signalName, int timeout)
{
    wait(
        [&] {
            return std::any_of(m_responses.begin(), m_responses.end(), [&](const PluginResponse& candidate) {
                return candidate.name == QLatin1String(signalName);
            });
        },
        timeout);
    return takeNow(signalName);
}

std::optional<PluginResponse> PluginSession::takeNow(const char* signalName)
{
    QCoreApplication::processEvents();
    const auto found =
        std::find_if(m_responses.begin(), m_responses.end(), [&](const PluginResponse& candidate) {
            return candidate.name == QLatin1String(signalName);
        });
    if (found == m_responses.end()) {
        return std::nullopt;
    }
    const PluginResponse taken = *found;
    m_responses.erase(found);
    return taken;
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

QAbstractItemModel* PluginSession::model(const char* getter)
{
    QObject* made = nullptr;
    QMetaObject::invokeMethod(plugin(), getter, Q_RETURN_ARG(QObject*, made), Q_ARG(QObject*, this));
    return qobject_cast<QAbstractItemModel*>(made);
}
