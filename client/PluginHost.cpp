#include "client/PluginHost.h"

#include "client/RequestNumber.h"
#include "platform/PluginBase.h"
#include "protocol/EventTable.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"
#include "src/vocabulary/RuntimeLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

constexpr int rememberedOwn = 1000; // commands; a reply that comes later than those of so many is none

const QString libraryName = QStringLiteral(RUNTIME_LIBRARY_NAME("VoiceDesk"));

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

struct Reply
{
    QVariant result;
    QString returnCode;
    QString errorText;
};

/** Returns a reply as it is, but a success that opens a talk without a token as a refusal: the plug-in takes
 * it for an open talk, and nobody would hear it. */
Reply withoutFalseTalk(const QString& command, const Reply& reply)
{
    const bool camera = command == Vocabulary::StartTalk;
    const bool speaker = command == Vocabulary::StartTalkToIPAudio;
    const QVariantMap fields = reply.result.toMap();
    if (reply.returnCode != ReturnCode::success || !(camera || speaker) ||
        !fields.value(Vocabulary::talkToken).toString().isEmpty() ||
        (speaker && !fields.value(Vocabulary::error).toString().isEmpty())) {
        return reply;
    }
    const QString reason = QStringLiteral("the server's answer has no talk token");
    if (camera) {
        return {QVariant(), ReturnCode::noTalkToken, reason};
    }
    // As a server refuses a speaker: a return code would end the talk with the others.
    return {QVariantMap{{Vocabulary::error, reason}}, reply.returnCode, reply.errorText};
}

} // namespace

PluginHost::PluginHost(ServerLink& link) : m_link(link)
{
    // The plug-in is not notified: it has no time-outs, and a lost reply leaves its front end without a
    // signal.
    const auto forget = [this] {
        m_requests.clear();
        m_own.clear();
    };
    connect(&m_link, &ServerLink::disconnected, this, forget);
    connect(&m_link, &ServerLink::connected, this, [this, forget] {
        forget(); // of a link that was exchanged
        if (m_plugin != nullptr) {
            m_plugin->PluginServerConnected();
        }
    });
    connect(&m_link, &ServerLink::replied, this, &PluginHost::passReply);
    connect(&m_link, &ServerLink::eventRaised, this, [this](const QString& event, const QVariant& payload) {
        Q_EMIT eventArrived(event, payload);
        if (m_plugin != nullptr && EventTable::isForPlugin(event)) {
            m_plugin->EventProcessor(event, 0, 0, 0, payload, QString());
        }
    });
}

void PluginHost::passReply(const QString& nameInReply, const QVariant& result, quint64 number,
                           const QString& returnCode, const QString& errorText)
{
    if (const QString own = m_own.value(number); !own.isEmpty()) {
        Q_EMIT replyArrived(own, returnCode, errorText, number, result);
        return;
    }
    // By number alone: user data is of no other command than the one that it was sent with.
    const SentRequests::Request request = m_requests.answered(number, nameInReply);
    const Reply reply = withoutFalseTalk(request.command, {result, returnCode, errorText});
    Q_EMIT replyArrived(request.command, reply.returnCode, reply.errorText, number, reply.result);
    if (m_plugin != nullptr) {
        m_plugin->CommandProcessor(request.command, reply.result, request.userData, reply.returnCode,
                                   reply.errorText, false, QString());
    }
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

quint64 PluginHost::sendOwn(const QString& command, const QVariant& payload)
{
    const quint64 request = nextRequestNumber();
    if (!m_link.send(command, payload, request)) {
        return 0;
    }
    m_own.insert(request, command);
    if (m_own.size() > rememberedOwn) {
        m_own.erase(m_own.begin()); // the oldest: numbers rise
    }
    return request;
}

bool PluginHost::SendCommand(void* /*pluginHandle*/, const QString& /*pluginId*/, const QString& command,
                             const QVariant& param, void* userData, bool /*flag*/, const QString& /*extra*/)
{
    const quint64 request = nextRequestNumber();
    const bool accepted = m_link.send(command, param, request);
    if (accepted) {
        m_requests.add(request, command, userData);
    }
    Q_EMIT commandSent(command, param, accepted, request);
    return accepted;
}
