#pragma once

#include "protocol/Limits.h"
#include "server/access/LoginChecker.h"
#include "server/access/SocketDoor.h"
#include "server/access/UserStore.h"
#include "server/core/CommandExecutor.h"

#include <QHostAddress>
#include <QObject>
#include <QUrl>

#include <map>
#include <memory>

class SocketClient;
struct ServerCertificate;

/** Address and limits of a socket server. */
struct SocketConfig
{
    QHostAddress address = QHostAddress::LocalHost; ///< Of the interface to listen on.
    quint16 port = 0;                               ///< 0 for any free one.
    UserStore users;                                ///< Who may log in.
    int maxClients = Limits::maxClients;            ///< That have logged in; further ones are refused.
    qint64 maxWaitingBytes =
        Limits::maxWaitingBytes; ///< Unsent, for a client; one with more is disconnected.
    quint64 maxMessageBytes = Limits::maxMessageToServerBytes; ///< After the login.
    int loginTimeout = Limits::maxLoginTime;                   ///< From the connection to the login, ms.
};

/**
 * Serves clients in other processes: WebSockets with CBOR messages, with TLS if there is a certificate.
 *
 *   SocketDoor --> SocketClient (login, then a ServerSession) --> CommandExecutor
 *
 * A client that has not logged in gets no data, and its messages are limited to 16 KiB. Lives on the server's
 * thread.
 */
class SocketServer : public QObject
{
    Q_OBJECT

public:
    /** @param server outlives the object @param certificate null for no TLS, else outlives it, too */
    SocketServer(CommandExecutor& server, SocketConfig config, const ServerCertificate* certificate);
    ~SocketServer() override;

    /** Starts to listen; returns false when the address or port cannot be used. */
    bool listen();

    /** Returns why listen failed. */
    QString errorString() const { return m_error; }

    /** Returns the address that clients connect to; valid after listen. */
    QUrl url() const;

    /** Returns the number of connected clients, those without a login included. */
    int clients() const { return static_cast<int>(m_clients.size()); }

private:
    void accept(quint64 number, const QString& peer);
    bool isFull() const;

    CommandExecutor& m_executor;
    SocketConfig m_config;
    const ServerCertificate* m_certificate;
    LoginChecker m_logins;
    SocketDoor m_door;
    QString m_error;
    std::map<quint64, std::unique_ptr<SocketClient>> m_clients; ///< By their numbers at the door.
};
