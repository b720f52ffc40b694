#pragma once

#include "server/access/SocketServer.h"
#include "server/core/CommandExecutor.h"

/** A server that lets clients in, and answers none of their commands. */
class SilentServer
{
public:
    SilentServer() : m_sockets(m_executor, config(), nullptr) { m_listens = m_sockets.listen(); }

    /** Lets the options of a client name this server. */
    template<class Options>
    void applyTo(Options& options) const
    {
        options.serverUrl = url();
        options.user = user();
        options.secret = secret();
    }

private:
    static QString user() { return QStringLiteral("anna"); }
    static QString secret() { return QStringLiteral("right"); }

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

    QString url() const { return m_listens ? m_sockets.url().toString() : QString(); }

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
