#pragma once

#include "client/ServerLink.h"
#include "server/RecordingServer.h"
#include "server/core/ServerSession.h"

#include <optional>

/**
 * A link to a server of its own inside this process. It ends with the link. Lives, like the server, on the
 * plug-in's thread.
 */
class EmbeddedLink : public ServerLink
{
    Q_OBJECT

public:
    /** Makes the server; open makes the session with it. */
    explicit EmbeddedLink(ServerConfig config);
    ~EmbeddedLink() override;

    void open() override;
    bool send(const QString& command, const QVariant& payload, quint64 request) override;

    /** Returns the server. */
    const RecordingServer& server() const { return m_server; }

private:
    RecordingServer m_server;
    std::optional<ServerSession> m_session;
};
