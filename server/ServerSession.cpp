#include "ServerSession.h"

#include "RecordingServer.h"

ServerSession::ServerSession(RecordingServer& server) : m_server(server)
{
    m_server.openSession(*this);
}

ServerSession::~ServerSession()
{
    m_server.closeSession(*this);
}

void ServerSession::submit(const QString& command, const QVariant& payload, void* userData)
{
    const auto reply = m_server.execute(*this, command, payload);
    if (reply) {
        sendReply(command, userData, *reply);
    }
}

void ServerSession::sendReply(const QString& command, void* userData, const ServerReply& reply)
{
    QMetaObject::invokeMethod(
        this, [this, command, userData, reply] { Q_EMIT replied(command, userData, reply); },
        Qt::QueuedConnection);
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
