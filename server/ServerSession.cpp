#include "ServerSession.h"

#include "RecordingServer.h"

ServerSession::ServerSession(RecordingServer& server) : m_server(server) {}

ServerSession::~ServerSession()
{
    m_server.closeSession(*this);
}

void ServerSession::submit(const QString& command, const QVariant& payload, void* userData)
{
    const auto reply = m_server.execute(*this, command, payload);
    if (reply) {
        QMetaObject::invokeMethod(
            this, [this, command, userData, answer = *reply] { Q_EMIT replied(command, userData, answer); },
            Qt::QueuedConnection);
    }
}

void ServerSession::raiseEvent(const QString& event, const QVariantMap& fields)
{
    const QVariant payload = QVariantMap{{event, fields}};
    QMetaObject::invokeMethod(
        this, [this, event, payload] { Q_EMIT eventRaised(event, payload); }, Qt::QueuedConnection);
}
