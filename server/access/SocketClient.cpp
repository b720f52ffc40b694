#include "server/access/SocketClient.h"

#include "protocol/Limits.h"
#include "protocol/PrintableName.h"
#include "server/core/ServerSession.h"

namespace {

constexpr int refusalTime = 1000; // ms

} // namespace

SocketClient::SocketClient(CommandExecutor& server, const SocketConfig& config, LoginChecker& logins,
                           SocketDoor& door, quint64 number, QString peer)
    : m_server(server), m_config(config), m_logins(logins), m_door(door), m_number(number),
      m_peer(std::move(peer))
{
    connect(&m_logins, &LoginChecker::checked, this, [this](quint64 login, bool admitted) {
        if (login == m_loginNumber && !m_dropped) {
            m_loginNumber = 0;
            answerLogin(admitted);
        }
    });
}

SocketClient::~SocketClient()
{
    m_logins.withdraw(m_loginNumber);
}

/** Later, because the session may be the one that is speaking. */
void SocketClient::endSession()
{
    if (m_session) {
        m_session->disconnect(this);
        m_session->setWaiting(nullptr);
        m_session.release()->deleteLater();
    }
}

void SocketClient::drop(const QString& reason)
{
    if (m_dropped) {
        return;
    }
    m_dropped = true;
    m_logins.withdraw(m_loginNumber);
    endSession();
    m_door.close(m_number, policyViolated, reason);
}

/** Closes the connection a second later, if the client has not, which has the reason in a message. */
void SocketClient::refuse(const QString& reason)
{
    endSession();
    m_refused = true;
    QTimer::singleShot(refusalTime, this, [this, reason] { drop(reason); });
}

void SocketClient::send(const WireMessage& message)
{
    if (m_dropped) {
        return;
    }
    m_door.send(m_number, message.toBytes());
    if (m_door.waitingBytes(m_number) > m_config.maxWaitingBytes) {
        m_dropped = true;
        endSession();
        m_door.abort(m_number);
    }
}

void SocketClient::receive(const QByteArray& bytes)
{
    if (m_dropped || m_refused) {
        return;
    }
    QString error;
    const auto message = WireMessage::fromBytes(bytes, &error, WireMessage::Texts);
    if (!message) {
        drop(error);
        return;
    }
    if (!m_session) {
        login(*message);
        return;
    }
    if (message->kind != WireMessage::Command) {
        drop(QStringLiteral("kind %1 is not a command").arg(message->kind));
        return;
    }
    if (message->id == 0) {
        drop(QStringLiteral("the command %1 has no number").arg(printableName(message->name)));
        return;
    }
    const ServerSession::Turn turn(*m_session);
    if (message->talkData) {
        m_session->submitTalkData(*message->talkData, message->id);
    } else {
        m_session->submit(message->name, message->payload, message->id);
    }
}

void SocketClient::login(const WireMessage& message)
{
    if (message.kind != WireMessage::Login || m_loginNumber != 0) {
        drop(QStringLiteral("not logged in"));
        return;
    }
    // From here on the time is the server's: many logins wait for each other.
    m_name = message.name.isEmpty() ? QStringLiteral("a client at %1").arg(m_peer) : message.name;
    m_loginNumber = m_logins.check(message.name, message.secret);
}

void SocketClient::answerLogin(bool admitted)
{
    if (!admitted) {
        WireMessage refused;
        refused.kind = WireMessage::Refused;
        refused.text = QStringLiteral("wrong user name, password or token");
        send(refused);
        refuse(refused.text);
        return;
    }
    if (!m_hasRoom()) {
        drop(tooManyClients());
        return;
    }
    m_door.admit(m_number);
    m_session = std::make_unique<ServerSession>(m_server, m_name);
    m_session->setWaiting([this] { return m_door.waitingBytes(m_number); });
    connect(m_session.get(), &ServerSession::replied, this,
            [this](const QString& command, quint64 request, const ServerReply& reply) {
                WireMessage answer;
                answer.kind = WireMessage::Reply;
                answer.id = static_cast<quint32>(request);
                answer.name = command;
                answer.payload = reply.result;
                answer.code = reply.returnCode;
                answer.text = reply.errorText;
                send(answer);
            });
    connect(m_session.get(), &ServerSession::eventRaised, this,
            [this](const QString& event, const QVariant& payload) {
                WireMessage message;
                message.kind = WireMessage::Event;
                message.name = event;
                message.payload = payload;
                send(message);
            });
    m_session->setTakesEncoded();
    connect(m_session.get(), &ServerSession::encodedEventRaised, this,
            [this](const QString& event, const QByteArray& payload) {
                WireMessage message;
                message.kind = WireMessage::Event;
                message.name = event;
                message.encodedPayload = payload;
                send(message);
            });
    WireMessage welcome;
    welcome.kind = WireMessage::Welcome;
    send(welcome);
}
