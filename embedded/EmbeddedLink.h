#pragma once

#include "client/ServerLink.h"
#include "server/RecordingServer.h"
#include "server/core/ServerSession.h"

#include <optional>

/** A server of its own inside this process. */
class EmbeddedLink : public ServerLink
{
    Q_OBJECT

public:
    explicit EmbeddedLink(ServerConfig config);
    ~EmbeddedLink() override;

    void open() override;
    bool send(const QString& command, const QVariant& payload, quint64 request) override;

    const RecordingServer& server() const { return m_server; }

private:
    RecordingServer m_server;
    std::optional<ServerSession> m_session;
};
