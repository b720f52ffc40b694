#pragma once

#include "tests/server/ServedExecutor.h"

#include <QMap>

/** A server that lets clients in and answers each command with what it is told to; the rest with nothing. */
class HostileServer
{
public:
    /** Sets the payload of the answers to a command. */
    void answer(const QString& command, const QVariant& payload) { m_executor.payloads[command] = payload; }

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
            return done(payloads.value(command));
        }
        void openSession(ServerSession& /*session*/) override {}
        void closeSession(ServerSession& /*session*/) override {}

        QMap<QString, QVariant> payloads;
    };

    Executor m_executor;
    ServedExecutor m_served{m_executor};
};
