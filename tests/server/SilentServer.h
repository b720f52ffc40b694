#pragma once

#include "tests/server/ServedExecutor.h"

#include <QMap>

/** A server that lets clients in, and answers none of their commands but those that it is told to. */
class SilentServer
{
public:
    /** Sets the answer to a command. */
    void answer(const QString& command, const ServerReply& reply) { m_executor.replies[command] = reply; }

    /** Lets the options of a client name this server. */
    template<class Options>
    void applyTo(Options& options) const
    {
        m_served.applyTo(options);
    }

private:
    class Executor : public CommandExecutor
    {
    public:
        std::optional<ServerReply> execute(ServerSession& /*session*/, const QString& command,
                                           const QVariant& /*payload*/, quint64) override
        {
            return replies.contains(command) ? std::optional(replies.value(command)) : std::nullopt;
        }
        void openSession(ServerSession& /*session*/) override {}
        void closeSession(ServerSession& /*session*/) override {}

        QMap<QString, ServerReply> replies;
    };

    Executor m_executor;
    ServedExecutor m_served{m_executor};
};
