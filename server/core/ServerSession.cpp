#include "server/core/ServerSession.h"

#include <utility>

LateReply::LateReply(ServerSession& session, QString command, quint64 request)
    : m_session(&session), m_command(std::move(command)), m_request(request)
{
}

void LateReply::send(const ServerReply& reply) const
{
    if (m_session) {
        m_session->sendReply(m_command, m_request, reply);
    }
}

ServerSession::ServerSession(CommandExecutor& executor, QString client)
    : m_executor(executor), m_client(std::move(client))
{
    m_executor.openSession(*this);
}

ServerSession::~ServerSession()
{
    m_executor.closeSession(*this);
}

void ServerSession::submit(const QString& command, const QVariant& payload, quint64 request)
{
    m_command = command;
    m_request = request;
    const auto reply = m_executor.execute(*this, command, payload, request);
    if (reply) {
        sendReply(command, request, *reply);
    }
}

void ServerSession::submitTalkData(const TalkDataPayload& talk, quint64 request)
{
    m_command = Vocabulary::TalkData;
    m_request = request;
    const auto reply = m_executor.executeTalkData(*this, talk, request);
    if (reply) {
        sendReply(m_command, request, *reply);
    }
}

LateReply ServerSession::replyLater()
{
    return LateReply(*this, m_command, m_request);
}

void ServerSession::sendReply(const QString& command, quint64 request, const ServerReply& reply)
{
    QMetaObject::invokeMethod(
        this, [this, command, request, reply] { Q_EMIT replied(command, request, reply); },
        Qt::QueuedConnection);
}

void ServerSession::raiseEncodedEvent(const QString& event, const QByteArray& payload)
{
    QMetaObject::invokeMethod(
        this, [this, event, payload] { Q_EMIT encodedEventRaised(event, payload); }, Qt::QueuedConnection);
}

void ServerSession::raiseEvent(const QString& event, const QVariantMap& fields)
{
    raisePlainEvent(event, {{event, fields}});
}

void ServerSession::raisePlainEvent(const QString& event, const QVariantMap& fields)
{
    const QVariant payload = fields;
    QMetaObject::invokeMethod(
        this, [this, event, payload] { Q_EMIT eventRaised(event, payload); }, Qt::QueuedConnection);
}
