#pragma once

#include "protocol/ServerReply.h"
#include "protocol/TalkDataPayload.h"
#include "protocol/Words.h"

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

    /** Executes a TalkData command whose payload is regular, and is not made a QVariant. */
    virtual std::optional<ServerReply> executeTalkData(ServerSession& session, const TalkDataPayload& talk,
                                                       quint64 request)
    {
        return execute(session, Vocabulary::TalkData, talk.toMap(), request);
    }

    /** Registers a new session, which from then on receives events. */
    virtual void openSession(ServerSession& session) = 0;

    /** Frees what a session holds. */
    virtual void closeSession(ServerSession& session) = 0;
};
