#pragma once

#include "protocol/WireMessage.h"
#include "server/access/SocketServer.h"
#include "tests/server/ServerHarness.h"
#include "tests/support/WebSocketPeer.h"

/** A client that may say anything. */
struct RawClient
{
    explicit RawClient(const SocketServer& server)
    {
        QObject::connect(&socket, &WebSocketPeer::binaryMessageReceived,
                         [this](const QByteArray& bytes) { received.append(bytes); });
        QUrl url = server.url();
        url.setHost("127.0.0.1");
        socket.open(url);
        ServerHarness::waitFor([this] { return socket.isOpen() || socket.isClosed(); });
        connected = socket.isOpen();
    }

    bool closed()
    {
        return ServerHarness::waitFor([this] { return socket.isClosed(); });
    }

    WebSocketPeer socket;
    QList<QByteArray> received;
    bool connected = false;
};

inline QByteArray loginOf(const QString& user, const QString& secret)
{
    WireMessage login;
    login.name = user;
    login.secret = secret;
    return login.toBytes();
}
