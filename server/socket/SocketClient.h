#pragma once

#include "SocketServer.h"
#include "WireMessage.h"

#include <QWebSocket>

#include <memory>
#include <optional>

class ServerSession;

/** One client of the socket server, from its login to its end. */
class SocketClient : public QObject
{
    Q_OBJECT

public:
    /** @param socket owned from now on */
    SocketClient(RecordingServer& server, const SocketConfig& config, QWebSocket* socket);
    ~SocketClient() override;

Q_SIGNALS:
    /** The connection has ended; the object is to be deleted. */
    void gone();

private:
    void receive(const QByteArray& bytes);
    void login(const WireMessage& message);
    void answerLogin(bool admitted);
    void endSession();
    void send(const WireMessage& message);
    void drop(const QString& reason);

    RecordingServer& m_server;
    const SocketConfig& m_config;
    std::unique_ptr<QWebSocket> m_socket;
    std::unique_ptr<ServerSession> m_session; ///< Null until the login.
    QTimer m_loginTimer;
    bool m_verifying = false; ///< A login is being looked at.
    bool m_dropped = false;
};
