#pragma once

#include "protocol/WireMessage.h"
#include "server/access/SocketServer.h"

#include <QWebSocket>

#include <memory>
#include <optional>

class ServerSession;

/** One client of the socket server, from its connection to its end. Lives on the server's thread. */
class SocketClient : public QObject
{
    Q_OBJECT

public:
    /** @param socket owned from now on */
    SocketClient(CommandExecutor& server, const SocketConfig& config, LoginChecker& logins,
                 QWebSocket* socket);
    ~SocketClient() override;

Q_SIGNALS:
    /** Emitted when the connection has ended; the receiver deletes the object, later. */
    void gone();

private:
    void receive(const QByteArray& bytes);
    void login(const WireMessage& message);
    void answerLogin(bool admitted);
    void endSession();
    void send(const WireMessage& message);
    void drop(const QString& reason);
    void refuse(const QString& reason);

    CommandExecutor& m_server;
    const SocketConfig& m_config;
    LoginChecker& m_logins;
    std::unique_ptr<QWebSocket> m_socket;
    std::unique_ptr<ServerSession> m_session; ///< Null until the login.
    QTimer m_loginTimer;
    QString m_name;            ///< Who logs in, for people.
    quint64 m_loginNumber = 0; ///< Of the login that is being checked; 0 for none.
    bool m_dropped = false;
    bool m_refused = false; ///< Not dropped yet, but its messages are ignored.
};
