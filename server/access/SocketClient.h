#pragma once

#include "protocol/WireMessage.h"
#include "server/access/SocketServer.h"

#include <QTimer>

#include <functional>
#include <memory>

class ServerSession;

/** One client of the socket server, from its connection to its end. Lives on the server's thread. */
class SocketClient : public QObject
{
    Q_OBJECT

public:
    /** Close code of a client that breaks a rule (RFC 6455, 7.4.1). */
    static constexpr quint16 policyViolated = 1008;

    /**
     * @param door   of the connection; it, @p server, @p config and @p logins outlive the object
     * @param number at the door
     * @param peer   its address
     */
    SocketClient(CommandExecutor& server, const SocketConfig& config, LoginChecker& logins, SocketDoor& door,
                 quint64 number, QString peer);
    ~SocketClient() override;

    /** Sets what says whether one more may log in, asked when the login was right. */
    void onLogin(std::function<bool()> hasRoom) { m_hasRoom = std::move(hasRoom); }

    /** Takes a message of the client. */
    void receive(const QByteArray& bytes);

    /** Returns whether it has logged in and is not on its way out. */
    bool isServed() const { return m_session != nullptr; }

    /** Returns the reason for which one more is refused. */
    static QString tooManyClients() { return QStringLiteral("too many clients"); }

private:
    void login(const WireMessage& message);
    void answerLogin(bool admitted);
    void endSession();
    void send(const WireMessage& message);
    void drop(const QString& reason);
    void refuse(const QString& reason);

    CommandExecutor& m_server;
    const SocketConfig& m_config;
    LoginChecker& m_logins;
    SocketDoor& m_door;
    const quint64 m_number;
    const QString m_peer;
    std::function<bool()> m_hasRoom;
    std::unique_ptr<ServerSession> m_session; ///< Null until the login.
    QString m_name;                           ///< Who logs in, for people.
    quint64 m_loginNumber = 0;                ///< Of the login that is being checked; 0 for none.
    bool m_dropped = false;
    bool m_refused = false; ///< Not dropped yet, but its messages are ignored.
};
