#pragma once

#include "protocol/ServerReply.h"

#include <optional>

class ServerSession;

/** What executes the commands of sessions. All calls are on the server's thread. */
class CommandExecutor
{
public:
    virtual ~CommandExecutor() = default;

    /**
     * Executes one command.
     *
     * @param request the client's number, which later replies carry
     * @return the reply; nothing when it comes later, or never
     */
    virtual std::optional<ServerReply> execute(ServerSession& session, const QString& command,
                                               const QVariant& payload, quint64 request) = 0;

    /** Registers a new session, which from then on receives events. */
    virtual void openSession(ServerSession& session) = 0;

    /** Frees what a session holds. */
    virtual void closeSession(ServerSession& session) = 0;
};
