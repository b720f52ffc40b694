#pragma once

#include "tests/server/ServedExecutor.h"

/** A server that lets clients in, and answers none of their commands. */
class SilentServer
{
public:
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
        std::optional<ServerReply> execute(ServerSession& /*session*/, const QString& /*command*/,
                                           const QVariant& /*payload*/, quint64) override
        {
            return std::nullopt;
        }
        void openSession(ServerSession& /*session*/) override {}
        void closeSession(ServerSession& /*session*/) override {}
    };

    Executor m_executor;
    ServedExecutor m_served{m_executor};
};
