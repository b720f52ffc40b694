#pragma once

#include "server/access/SocketServer.h"
#include "server/core/CommandExecutor.h"

/** Serves commands at a free port of this machine. The one user is "anna", with the password "right". */
class ServedExecutor
{
public:
    /** @param executor of the commands, outlives the object */
    explicit ServedExecutor(CommandExecutor& executor) : m_sockets(executor, config(), nullptr)
    {
        m_listens = m_sockets.listen();
    }

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

    static SocketConfig config()
    {
        SocketConfig made;
        made.users.setPassword(user(), secret());
        return made;
    }

    SocketServer m_sockets;
    bool m_listens = false;
};
