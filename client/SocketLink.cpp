#include "client/SocketLink.h"

#include "protocol/Limits.h"
#include "protocol/WireMessage.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpSocket>

namespace {

constexpr int firstRetryDelay = 250; // ms
constexpr int maxRetryDelay = 5000;
constexpr quint32 wireMask = 0xFFFFFFFF;
constexpr qint64 maxQueuedBytes =
    qint64{2} * Limits::maxMessageToServerBytes; // an upload, and what follows it

} // namespace

SocketLink::SocketLink(SocketLinkConfig config) : m_config(std::move(config)), m_retryDelay(firstRetryDelay)
{
    m_socket.setMaxAllowedIncomingMessageSize(Limits::maxMessageToClientBytes);
    m_socket.setMaxAllowedIncomingFrameSize(Limits::maxMessageToClientBytes);
    m_retryTimer.setSingleShot(true);
    connect(&m_retryTimer, &QTimer::timeout, this, &SocketLink::open);
    connect(&m_socket, &QWebSocket::connected, this, [this] {
        if (!isExpectedServer()) {
            m_socket.close(); // before it gets the secret
            return;
        }
        sendAtOnce();
        WireMessage login;
        login.kind = WireMessage::Login;
        login.name = m_config.user;
        login.secret = m_config.secret;
        m_socket.sendBinaryMessage(login.toBytes());
    });
    connect(&m_socket, &QWebSocket::binaryMessageReceived, this, &SocketLink::receive);
    connect(&m_socket, &QWebSocket::disconnected, this, [this] {
        end(m_socket.closeReason().isEmpty() ? m_socket.errorString() : m_socket.closeReason());
    });
    connect(&m_socket, QOverload<QAbstractSocket::SocketError>::of(&QWebSocket::error), this,
            [this] { end(m_socket.errorString()); });
    connect(&m_socket, &QWebSocket::bytesWritten, this, [this] {
        const qint64 waiting = m_socket.bytesToWrite();
        Q_EMIT sending(qMax(m_queued - waiting, qint64{0}), m_queued);
        m_queued = waiting > 0 ? m_queued : 0;
    });
    connect(&m_socket, &QWebSocket::sslErrors, this, &SocketLink::checkCertificate);
}

SocketLink::~SocketLink()
{
    m_socket.disconnect(this);
}

/** Else a command waits for the acknowledgement of the one before, which the server may delay for 40 ms. */
void SocketLink::sendAtOnce()
{
    // A web socket hides its connection, but owns it.
    for (QTcpSocket* connection : m_socket.findChildren<QTcpSocket*>()) {
        connection->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    }
}

std::optional<QString> SocketLink::fingerprintDigits(QString text)
{
    static const QRegularExpression separators(QStringLiteral("[\\s:]"));
    static const QRegularExpression sha256(QStringLiteral("\\A[0-9a-f]{64}\\z"));
    text = text.remove(separators).toLower();
    return sha256.match(text).hasMatch() ? std::optional(text) : std::nullopt;
}

void SocketLink::open()
{
    m_wrongCertificate.clear();
    m_socket.open(m_config.url);
}

/** Returns whether no fingerprint is expected, or the server's own certificate has it; whether the system
 * trusts that certificate does not matter. */
bool SocketLink::isExpectedServer()
{
    if (m_config.fingerprint.isEmpty()) {
        return true;
    }
    // A web socket has the configuration that it was given, not the one that was agreed on; its connection
    // has.
    const auto* connection = m_socket.findChild<QSslSocket*>();
    const QSslCertificate certificate =
        connection != nullptr ? connection->peerCertificate() : QSslCertificate();
    if (certificate.isNull()) {
        m_wrongCertificate =
            QStringLiteral("it shows no certificate, expected was one with the fingerprint %1")
                .arg(m_config.fingerprint);
        return false;
    }
    const QByteArray digest = certificate.digest(QCryptographicHash::Sha256).toHex();
    if (digest != m_config.fingerprint.toLatin1().toLower()) {
        m_wrongCertificate = QStringLiteral("its certificate has the fingerprint %1, expected was %2")
                                 .arg(QString::fromLatin1(digest), m_config.fingerprint);
        return false;
    }
    return true;
}

/** Accepts a certificate that the system does not trust if it has the expected fingerprint. */
void SocketLink::checkCertificate()
{
    if (!m_config.fingerprint.isEmpty() && isExpectedServer()) {
        m_socket.ignoreSslErrors();
    }
}

void SocketLink::goDown()
{
    if (m_ready) {
        m_ready = false;
        Q_EMIT disconnected();
    }
}

void SocketLink::closeForBreach(const QString& reason)
{
    goDown();
    m_socket.close(QWebSocketProtocol::CloseCodeProtocolError, reason);
}

void SocketLink::end(const QString& reason)
{
    goDown();
    m_queued = 0;
    if (m_retryTimer.isActive()) {
        return; // an error and the end of the connection come both
    }
    // A refusal says why itself; what the socket says of its end differs between systems. Of a certificate it
    // names the first of its own doubts, and another one than that for which it is not accepted.
    const QString& why = m_wrongCertificate.isEmpty() ? reason : m_wrongCertificate;
    Q_EMIT lost(m_final && !m_refusal.isEmpty() ? m_refusal : why, m_final);
    if (!m_final) {
        m_retryTimer.start(m_retryDelay);
        m_retryDelay = qMin(2 * m_retryDelay, maxRetryDelay);
    }
}

/** The wire carries the lower half of a request's number: the latest one that was sent with that half. */
quint64 SocketLink::requestOf(quint32 id) const
{
    if (id == 0) {
        return 0;
    }
    const quint64 request = (m_lastRequest & ~quint64{wireMask}) | id;
    return request > m_lastRequest && request > wireMask ? request - wireMask - 1 : request;
}

bool SocketLink::send(const QString& command, const QVariant& payload, quint64 request)
{
    if (!m_ready) {
        return false;
    }
    WireMessage message;
    message.kind = WireMessage::Command;
    message.id = static_cast<quint32>(request);
    message.name = command;
    message.payload = payload;
    const QByteArray bytes = message.toBytes();
    if (bytes.size() > Limits::maxMessageToServerBytes ||
        m_socket.bytesToWrite() + bytes.size() > maxQueuedBytes) {
        return false;
    }
    m_lastRequest = request;
    m_queued += m_socket.sendBinaryMessage(bytes);
    return true;
}

void SocketLink::receive(const QByteArray& bytes)
{
    QString error;
    const auto message = WireMessage::fromBytes(bytes, &error);
    if (!message) {
        closeForBreach(error);
        return;
    }
    const bool isAnswer = message->kind == WireMessage::Reply || message->kind == WireMessage::Event;
    if (isAnswer && !m_ready) {
        closeForBreach(QStringLiteral("kind %1 came before the welcome").arg(message->kind));
        return;
    }
    switch (message->kind) {
    case WireMessage::Welcome:
        if (m_ready) {
            closeForBreach(QStringLiteral("a second welcome"));
            return;
        }
        m_ready = true;
        m_retryDelay = firstRetryDelay;
        Q_EMIT connected();
        break;
    case WireMessage::Refused:
        m_final = true;
        m_refusal = message->text;
        m_socket.close();
        break;
    case WireMessage::Reply:
        Q_EMIT replied(message->name, message->payload, requestOf(message->id), message->code, message->text);
        break;
    case WireMessage::Event:
        Q_EMIT eventRaised(message->name, message->payload);
        break;
    case WireMessage::Login:
    case WireMessage::Command:
        closeForBreach(QStringLiteral("kind %1 is a client's").arg(message->kind));
        break;
    }
}
