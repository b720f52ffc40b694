#pragma once

#include "client/SocketLink.h"
#include "server/access/SocketServer.h"
#include "server/access/UserStore.h"
#include "tests/server/ServerHarness.h"

#include <QSignalSpy>

/** Servers that know the user "anna" with the password "right", and a token, and links to them. */
namespace SocketHarness {

inline const UserStore& users()
{
    static const UserStore made = [] {
        UserStore users;
        users.setPassword(QStringLiteral("anna"), QStringLiteral("right"));
        users.setPassword(QString(), QStringLiteral("the-token"));
        return users;
    }();
    return made;
}

inline SocketConfig config()
{
    SocketConfig made;
    made.users = users();
    return made;
}

/** Where the server is, and anna's login. */
inline SocketLinkConfig to(const SocketServer& server)
{
    SocketLinkConfig made;
    made.url = server.url();
    made.url.setHost(QStringLiteral("127.0.0.1"));
    made.user = QStringLiteral("anna");
    made.secret = QStringLiteral("right");
    return made;
}

template<class Condition>
bool waitFor(Condition condition, int timeout = 20000)
{
    return ServerHarness::waitFor(condition, timeout);
}

/** A server of no devices that others reach. */
struct OpenedServer
{
    explicit OpenedServer(const SocketConfig& config = SocketHarness::config())
        : sockets(*harness.server, config, nullptr), listens(sockets.listen())
    {
    }

    ServerHarness harness;
    SocketServer sockets;
    bool listens;
};

/** A link that has been opened. */
struct OpenedLink
{
    explicit OpenedLink(const SocketLinkConfig& config)
        : link(config), connected(&link, &ServerLink::connected), lost(&link, &SocketLink::lost),
          replied(&link, &ServerLink::replied), events(&link, &ServerLink::eventRaised)
    {
        link.open();
    }

    bool isUp(int timeout = 20000)
    {
        return waitFor([this] { return !connected.isEmpty(); }, timeout);
    }

    bool send(const QString& command, const QVariant& payload, quint64 request)
    {
        return link.send(command, payload, request);
    }

    SocketLink link;
    QSignalSpy connected;
    QSignalSpy lost;
    QSignalSpy replied;
    QSignalSpy events;
};

} // namespace SocketHarness
