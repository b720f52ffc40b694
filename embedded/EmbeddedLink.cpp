#include "embedded/EmbeddedLink.h"

EmbeddedLink::EmbeddedLink(ServerConfig config) : m_server(std::move(config)) {}

EmbeddedLink::~EmbeddedLink() = default;

void EmbeddedLink::open()
{
    m_session.emplace(m_server);
    connect(&*m_session, &ServerSession::replied, this,
            [this](const QString& command, quint64 request, const ServerReply& reply) {
                Q_EMIT replied(command, reply.result, request, reply.returnCode, reply.errorText);
            });
    connect(&*m_session, &ServerSession::eventRaised, this, &EmbeddedLink::eventRaised);
    QMetaObject::invokeMethod(this, &EmbeddedLink::connected, Qt::QueuedConnection);
}

bool EmbeddedLink::send(const QString& command, const QVariant& payload, quint64 request)
{
    if (!m_session) {
        return false;
    }
    m_session->submit(command, payload, request);
    return true;
}
