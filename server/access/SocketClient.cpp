#include "server/access/SocketClient.h"

#include "protocol/Limits.h"
#include "protocol/PrintableName.h"
#include "server/core/ServerSession.h"

#include <QRandomGenerator>

#include <algorithm>

namespace {

constexpr int refusalTime = 1000;        // ms
constexpr qint64 receiptStep = 32 << 10; // bytes from one question for a receipt to the next

} // namespace

SocketClient::SocketClient(CommandExecutor& server, const SocketConfig& config, LoginChecker& logins,
                           QWebSocket* socket)
    : m_server(server), m_config(config), m_logins(logins), m_socket(socket)
{
    m_socket->setParent(nullptr);
    m_socket->setMaxAllowedIncomingMessageSize(Limits::maxLoginBytes);
    m_socket->setMaxAllowedIncomingFrameSize(Limits::maxLoginBytes);
    connect(m_socket.get(), &QWebSocket::binaryMessageReceived, this, &SocketClient::receive);
    connect(m_socket.get(), &QWebSocket::textMessageReceived, this,
            [this] { drop(QStringLiteral("messages are binary")); });
    connect(m_socket.get(), &QWebSocket::pong, this,
            [this](quint64, const QByteArray& mark) { takeReceipt(mark); });
    connect(m_socket.get(), &QWebSocket::disconnected, this, &SocketClient::gone);
    connect(&m_logins, &LoginChecker::checked, this, [this](quint64 number, bool admitted) {
        if (number == m_loginNumber && !m_dropped) {
            m_loginNumber = 0;
            answerLogin(admitted);
        }
    });
    m_loginTimer.setSingleShot(true);
    connect(&m_loginTimer, &QTimer::timeout, this, [this] { drop(QStringLiteral("no login")); });
    m_loginTimer.start(m_config.loginTimeout);
}

SocketClient::~SocketClient()
{
    m_socket->disconnect(this);
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
    m_loginTimer.stop();
    m_logins.withdraw(m_loginNumber);
    endSession();
    m_socket->close(QWebSocketProtocol::CloseCodePolicyViolated, reason);
    // A peer that does not answer the closing would hold the connection.
    QTimer::singleShot(m_config.loginTimeout, this, [this] { m_socket->abort(); });
}

/**
 * Closes the connection a second later, if the client has not: on Windows a close may overtake the last
 * message.
 */
void SocketClient::refuse(const QString& reason)
{
    m_loginTimer.stop();
    endSession();
    m_refused = true;
    QTimer::singleShot(refusalTime, this, [this, reason] { drop(reason); });
}

/**
 * Asks the client, with a ping that it must answer (RFC 6455, clause 5.5.2), whether it has what was sent.
 * The socket knows less: with TLS, what is encrypted counts as written, and the system keeps some megabytes.
 * The answer is a number that only a client that reads can know.
 */
void SocketClient::askForReceipt()
{
    const QByteArray mark = QByteArray::number(QRandomGenerator::system()->generate64());
    m_receipts.push_back({mark, m_sent});
    m_socket->ping(mark);
}

void SocketClient::takeReceipt(const QByteArray& mark)
{
    const auto receipt = std::find_if(m_receipts.begin(), m_receipts.end(),
                                      [&](const Receipt& each) { return each.mark == mark; });
    if (receipt != m_receipts.end()) {
        m_received = receipt->sent;
        m_receipts.erase(m_receipts.begin(), receipt + 1);
    }
}

void SocketClient::send(const WireMessage& message)
{
    if (m_dropped) {
        return;
    }
    const QByteArray bytes = message.toBytes();
    m_socket->sendBinaryMessage(bytes);
    m_sent += bytes.size();
    if (m_sent - (m_receipts.empty() ? m_received : m_receipts.back().sent) >= receiptStep) {
        askForReceipt();
    }
    if (waitingBytes() > m_config.maxWaitingBytes) {
        m_dropped = true;
        endSession();
        m_socket->abort();
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
    m_loginTimer.stop(); // from here on the time is the server's: many logins wait for each other
    m_name = message.name.isEmpty() ? QStringLiteral("a client at %1").arg(m_socket->peerAddress().toString())
                                    : message.name;
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
    m_loginTimer.stop();
    m_socket->setMaxAllowedIncomingMessageSize(m_config.maxMessageBytes);
    m_socket->setMaxAllowedIncomingFrameSize(m_config.maxMessageBytes);
    m_session = std::make_unique<ServerSession>(m_server, m_name);
    m_session->setWaiting([this] { return waitingBytes(); });
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
