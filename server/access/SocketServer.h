#pragma once

#include "server/access/LoginChecker.h"
#include "server/access/UserBook.h"
#include "server/core/CommandExecutor.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QObject>
#include <QTimer>
#include <QUrl>
#include <QWebSocketServer>

#include <map>
#include <memory>

class SocketClient;
struct ServerCertificate;

/** How a server is reached from other processes. */
struct SocketConfig
{
    QHostAddress address = QHostAddress::LocalHost;
    quint16 port = 0; ///< 0 for any that is free.
    UserBook users;
    int maxClients = 256;
    qint64 longestQueue =
        16 << 20; ///< Bytes that wait for a client; one that is slower loses its connection.
    quint64 largestMessage = 48U << 20U; ///< Bytes, after the login; the largest upload fits.
    int loginTimeout = 10000;            ///< ms
};

/**
 * The server's door for other processes: WebSockets with CBOR messages, with TLS if there is a certificate.
 *
 *   QWebSocketServer --> SocketClient (login, then a ServerSession) --> CommandExecutor
 *
 * Until a client has logged in, it is told nothing and may send little. Lives on the server's thread.
 */
class SocketServer : public QObject
{
    Q_OBJECT

public:
    /** @param server outlives the object @param certificate null for no TLS */
    SocketServer(CommandExecutor& server, SocketConfig config, const ServerCertificate* certificate);
    ~SocketServer() override;

    bool listen();

    QString errorString() const { return m_server.errorString(); }

    /** Where clients connect to. */
    QUrl url() const { return m_server.serverUrl(); }

    int clients() const { return static_cast<int>(m_clients.size()); }

private:
    void accept();

    CommandExecutor& m_executor;
    SocketConfig m_config;
    LoginChecker m_logins;
    QWebSocketServer m_server;
    std::map<SocketClient*, std::unique_ptr<SocketClient>> m_clients;
};
