#pragma once

#include "sockets/SendQueue.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <memory>

/**
 * A web socket of either side, as the rules see it: what is read, written and closed when, and signs of life.
 * One subclass knows the socket, a further one the side. Lives on the thread of its sockets.
 */
class SocketConnection
{
public:
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::milliseconds;

    /** Bytes of messages that were sent and have not gone: the sender counts up, the connection down. */
    using WaitingBytes = std::shared_ptr<std::atomic<qint64>>;

    /** What waits, and the closing handshake, have as much time. */
    static constexpr Milliseconds closeTime{1000};

    /** Makes one that is not open. @param idleTime without a sign of life after which it ends */
    explicit SocketConnection(Milliseconds idleTime) : m_idleTime(idleTime) {}
    virtual ~SocketConnection() = default;
    SocketConnection(const SocketConnection&) = delete;
    SocketConnection& operator=(const SocketConnection&) = delete;

    /** Queues a message, of which the sender has counted the bytes. */
    void send(const QByteArray& message);

    /** Ends it after what waits has gone, or after a time; the closing handshake then has as much. */
    void close(quint16 code, const QString& reason, Milliseconds time = closeTime);

    /** Ends it at once. @param reason for people */
    void abort(const QString& reason);

    /** Ends it when it is silent or closes for too long; to be called ten times a second. */
    virtual void tick(Clock::time_point now);

    /** Returns the bytes that wait; for any thread. */
    const WaitingBytes& waiting() const { return m_waiting; }

protected:
    // What the socket does.

    /** Reads a message; messageRead or abort follows. */
    virtual void startRead() = 0;
    /** Writes a piece; pieceWritten or abort follows. */
    virtual void startWrite(const SendQueue::Piece& piece) = 0;
    /** Sends a ping; pingWritten follows. */
    virtual void startPing() = 0;
    /** Sends a close frame and waits for that of the peer; abort follows. */
    virtual void startClose(quint16 code, const QString& reason) = 0;
    /** Closes the socket: what is under way fails. */
    virtual void closeSocket() = 0;

    // What the side says and is told.

    /** Whether one more message may be read. */
    virtual bool mayRead() const = 0;
    /** A message has come. */
    virtual void received(const QByteArray& message) = 0;
    /** A piece has gone. */
    virtual void pieceGone(const SendQueue::Piece& piece) = 0;
    /** Once: the connection has ended. @param reason for people, may be empty */
    virtual void ended(const QString& reason) = 0;

    /** Both sides have shaken hands. */
    void opened();
    /** A ping or pong has come. */
    virtual void controlHeard() { heard(); }
    /** A part of a message has come. */
    void heard() { m_lastLife = Clock::now(); }
    void messageRead(const QByteArray& message, bool isBinary);
    void pieceWritten();
    void pingWritten() { m_pinging = false; }
    /** The last frame has gone; what is left is up to the peer. */
    void closeBegun();
    /** Reads if it may. */
    void readOn();

    bool isOpen() const { return m_open; }
    bool isReading() const { return m_reading; }
    bool isClosing() const { return m_closing; }
    bool isEnded() const { return m_ended; }

private:
    void writeOn();

    const Milliseconds m_idleTime;
    SendQueue m_queue;
    const WaitingBytes m_waiting = std::make_shared<std::atomic<qint64>>(0);
    bool m_open = false;
    bool m_reading = false;
    bool m_writing = false;
    bool m_pinging = false;
    bool m_closing = false;   ///< Nothing is received or queued any more.
    bool m_closeSent = false; ///< Nothing may be written after the close frame.
    bool m_ended = false;
    quint16 m_closeCode = 0;
    QString m_closeReason;
    Milliseconds m_closeTime = closeTime;
    Clock::time_point m_lastLife;
    Clock::time_point m_lastPing; ///< The peer was asked for a sign of life.
    Clock::time_point m_closeEnd;
};
