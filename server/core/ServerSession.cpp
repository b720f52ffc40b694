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

ServerSession::Turn::Turn(ServerSession& session) : m_session(&session)
{
    session.m_hasTurn = true;
}

ServerSession::Turn::~Turn()
{
    if (m_session) {
        m_session->m_hasTurn = false;
        m_session->emitWaiting();
    }
}

void ServerSession::emitLater(std::function<void()> emission)
{
    m_emissions.push_back(std::move(emission));
    if (!m_hasTurn) {
        wakeUp();
    }
}

/** One call for all that waits: each one would wake up the thread again. */
void ServerSession::wakeUp()
{
    if (!m_wakesUp) {
        m_wakesUp = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_wakesUp = false;
                emitWaiting();
            },
            Qt::QueuedConnection);
    }
}

void ServerSession::emitWaiting()
{
    const QPointer<ServerSession> self(this);
    while (self && !m_emissions.empty()) {
        const auto emission = std::move(m_emissions.front());
        m_emissions.pop_front();
        if (!m_emissions.empty()) {
            wakeUp(); // whom this one reaches may run an event loop, in which the others are due
        }
        emission();
    }
}

void ServerSession::sendReply(const QString& command, quint64 request, const ServerReply& reply)
{
    emitLater([this, command, request, reply] { Q_EMIT replied(command, request, reply); });
}

void ServerSession::raiseEncodedEvent(const QString& event, const QByteArray& payload)
{
    emitLater([this, event, payload] { Q_EMIT encodedEventRaised(event, payload); });
}

void ServerSession::raiseEvent(const QString& event, const QVariantMap& fields)
{
    raisePlainEvent(event, {{event, fields}});
}

void ServerSession::raisePlainEvent(const QString& event, const QVariantMap& fields)
{
    emitLater([this, event, payload = QVariant(fields)] { Q_EMIT eventRaised(event, payload); });
}
