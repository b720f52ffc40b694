#pragma once

#include "server/access/SocketServer.h"
#include "server/core/CommandExecutor.h"

#include <QMap>

/** A server that lets clients in and answers each command with what it is told to; the rest with nothing. */
class HostileServer
{
public:
    HostileServer() : m_sockets(m_executor, config(), nullptr) { m_listens = m_sockets.listen(); }

    /** Sets the payload of the answers to a command. */
    void answer(const QString& command, const QVariant& payload) { m_executor.payloads[command] = payload; }

    /** Lets the options of a client name this server. */
    template<class Options>
    void applyTo(Options& options) const
    {
        options.serverUrl = m_listens ? m_sockets.url().toString() : QString();
        options.user = user();
        options.secret = secret();
    }

private:
    static QString user() { return QStringLiteral("anna"); }
    static QString secret() { return QStringLiteral("right"); }

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

    static SocketConfig config()
    {
        SocketConfig made;
        made.users.setPassword(user(), secret());
        return made;
    }

    Executor m_executor;
    SocketServer m_sockets;
    bool m_listens = false;
};
