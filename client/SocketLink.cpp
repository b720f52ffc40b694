#include "client/SocketLink.h"

#include "protocol/Limits.h"
#include "protocol/WireMessage.h"

#include <QRegularExpression>

namespace {

constexpr int firstRetryDelay = 250; // ms
constexpr int maxRetryDelay = 5000;
constexpr quint32 wireMask = 0xFFFFFFFF;
constexpr quint16 normalClosure = 1000; // RFC 6455, 7.4.1
constexpr quint16 protocolError = 1002;
constexpr qint64 maxQueuedBytes =
    qint64{2} * Limits::maxMessageToServerBytes; // an upload, and what follows it

} // namespace

SocketLink::SocketLink(SocketLinkConfig config) : m_config(std::move(config)), m_retryDelay(firstRetryDelay)
{
    m_retryTimer.setSingleShot(true);
    connect(&m_retryTimer, &QTimer::timeout, this, &SocketLink::open);
    connect(&m_line, &SocketLine::connected, this, [this] {
        WireMessage login;
        login.kind = WireMessage::Login;
        login.name = m_config.user;
        login.secret = m_config.secret;
        m_line.send(login.toBytes());
    });
    connect(&m_line, &SocketLine::received, this, &SocketLink::receive);
    connect(&m_line, &SocketLine::lost, this, &SocketLink::end);
    connect(&m_line, &SocketLine::progressed, this, [this] {
        if (m_queued == 0) {
            return; // all of it has been reported
        }
        const qint64 waiting = m_line.waitingBytes();
        Q_EMIT sending(qMax(m_queued - waiting, qint64{0}), m_queued);
        m_queued = waiting > 0 ? m_queued : 0;
    });
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
    m_line.open(m_config.url, m_config.fingerprint);
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
    m_line.close(protocolError, reason);
}

void SocketLink::end(const QString& reason)
{
    goDown();
    m_queued = 0;
    // A refusal says why itself; what the line says of its end differs between systems.
    Q_EMIT lost(m_final && !m_refusal.isEmpty() ? m_refusal : reason, m_final);
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
        m_line.waitingBytes() + bytes.size() > maxQueuedBytes) {
        return false;
    }
    m_lastRequest = request;
    m_queued = (m_line.waitingBytes() > 0 ? m_queued : 0) + bytes.size();
    m_line.send(bytes);
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
        m_line.close(normalClosure);
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
