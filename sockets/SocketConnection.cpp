#include "sockets/SocketConnection.h"

#include <algorithm>

namespace {

constexpr quint16 unsupportedData = 1003; // RFC 6455, 7.4.1

} // namespace

void SocketConnection::opened()
{
    m_open = true;
    m_lastLife = Clock::now();
    readOn();
    writeOn();
}

void SocketConnection::messageRead(const QByteArray& message, bool isBinary)
{
    m_reading = false;
    if (!isBinary) {
        close(unsupportedData, QStringLiteral("messages are binary"));
    } else if (!m_closing) { // else only the peer's close frame behind it matters
        received(message);
    }
    readOn();
}

void SocketConnection::readOn()
{
    if (m_open && !m_ended && !m_reading && !m_closeSent && (m_closing || mayRead())) {
        m_reading = true;
        startRead();
    }
}

void SocketConnection::send(const QByteArray& message)
{
    if (m_ended || m_closing) {
        *m_waiting -= message.size();
        return;
    }
    m_queue.push(message);
    writeOn();
}

void SocketConnection::writeOn()
{
    if (!m_open || m_ended || m_writing || m_closeSent) {
        return;
    }
    if (!m_queue.isEmpty()) {
        m_writing = true;
        startWrite(m_queue.next());
    } else if (m_closing) {
        m_closeSent = true;
        startClose(m_closeCode, m_closeReason);
    }
}

void SocketConnection::pieceWritten()
{
    const SendQueue::Piece piece = m_queue.next();
    m_writing = false;
    m_lastLife = Clock::now();
    *m_waiting -= static_cast<qint64>(piece.size);
    m_queue.written();
    pieceGone(piece);
    writeOn();
    readOn();
}

void SocketConnection::close(quint16 code, const QString& reason, Milliseconds time)
{
    if (m_ended) {
        return;
    }
    if (m_closing) {
        m_closeEnd = std::min(m_closeEnd, Clock::now() + time);
        return;
    }
    m_closing = true;
    m_closeCode = code;
    m_closeReason = reason;
    m_closeTime = time;
    m_closeEnd = Clock::now() + time;
    if (m_open) {
        writeOn();
        readOn(); // it may be that the peer closes first
    } else {
        abort(QString());
    }
}

void SocketConnection::closeBegun()
{
    m_closing = true;
    m_closeSent = true;
    m_closeEnd = Clock::now() + m_closeTime;
}

void SocketConnection::abort(const QString& reason)
{
    if (!m_ended) {
        m_ended = true;
        closeSocket();
        ended(m_closeReason.isEmpty() ? reason : m_closeReason);
    }
}

void SocketConnection::tick(Clock::time_point now)
{
    if (m_closing) {
        if (now > m_closeEnd) {
            abort(QString());
        }
    } else if (!m_reading && m_queue.isEmpty()) {
        m_lastLife = now; // it is this side that lets the other one wait
    } else if (now - m_lastLife > m_idleTime) {
        abort(QStringLiteral("it gives no sign of life"));
    } else if (now - m_lastLife > m_idleTime / 2 && !m_pinging && m_lastPing < m_lastLife) {
        // Once: a peer that was asleep would answer all of them at once.
        m_pinging = true;
        m_lastPing = now;
        startPing();
    }
}
