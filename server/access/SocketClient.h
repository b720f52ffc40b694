#pragma once

#include "protocol/WireMessage.h"
#include "server/access/SocketServer.h"

#include <QWebSocket>

#include <deque>
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
    qint64 waitingBytes() const { return m_sent - m_received; }
    void askForReceipt();
    void takeReceipt(const QByteArray& mark);
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
    struct Receipt
    {
        QByteArray mark;
        qint64 sent; ///< Bytes, up to the question.
    };
    std::deque<Receipt> m_receipts; ///< That the client was asked for.
    qint64 m_sent = 0;              ///< Bytes of messages.
    qint64 m_received = 0;          ///< Of them, those that the client is known to have.
    bool m_dropped = false;
    bool m_refused = false; ///< Not dropped yet, but its messages are ignored.
};
