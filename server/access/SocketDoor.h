#pragma once

#include "protocol/Limits.h"

#include <QByteArray>
#include <QHostAddress>
#include <QObject>

#include <chrono>
#include <memory>

class DoorThread;
struct ServerCertificate;

/** Where a door listens, and its limits, which are per client unless they say something else. */
struct DoorConfig
{
    QHostAddress address = QHostAddress::LocalHost; ///< Of the interface to listen on.
    quint16 port = 0;                               ///< 0 for any free one.
    int maxClients = Limits::maxClients;           ///< That have logged in; twice as many connections in all.
    quint64 maxLoginBytes = Limits::maxLoginBytes; ///< Of a message before the login.
    quint64 maxMessageBytes = Limits::maxMessageToServerBytes; ///< Of a message after it.
    std::chrono::milliseconds loginTime{Limits::maxLoginTime}; ///< From the connection to the first message.
    std::chrono::milliseconds idleTime{Limits::maxIdleTime};   ///< Without a byte received or a piece sent.
    std::chrono::milliseconds tickTime{100};                   ///< Between two looks at all connections.
    int maxUnhandled = 64;       ///< Messages that wait for the server's thread.
    qint64 readMark = 256 << 10; ///< Bytes of these, or of unsent answers, with which it is not read.
    int maxControls = 100;       ///< Pings and pongs in a tickTime.
};

/**
 * Web sockets (RFC 6455) for the server's thread: the sockets, TLS and the protocol are on a thread of the
 * door's own.
 *
 *   sockets <--> DoorThread (io_context) <-- two mailboxes --> SocketDoor (its QObject's thread)
 *
 * A client is a number: what is ordered for one that has gone is dropped.
 */
class SocketDoor : public QObject
{
    Q_OBJECT

public:
    /** Makes a door that is not open. */
    SocketDoor();
    /** Ends all connections, with close code 1001; takes half a second at most. */
    ~SocketDoor() override;

    /**
     * Starts to listen; once.
     *
     * @param certificate null for no TLS
     * @param error       receives the reason of a failure
     * @return whether it listens
     */
    bool listen(const DoorConfig& config, const ServerCertificate* certificate, QString* error);

    /** Returns the port that it listens at; 0 if it does not. */
    quint16 port() const;

    /** Sends a message, in the order of the calls. */
    void send(quint64 client, const QByteArray& message);

    /** Returns the bytes of messages that have been given to send and have not gone; with TLS, too. */
    qint64 waitingBytes(quint64 client) const;

    /** The client has logged in: from its next message on the larger limit holds. */
    void admit(quint64 client);

    /** Ends a connection after what waits for it has gone, or after a second; closed follows. */
    void close(quint64 client, quint16 code, const QString& reason);

    /** Ends a connection at once; closed follows. */
    void abort(quint64 client);

Q_SIGNALS:
    /** Emitted for each web socket that comes. @param peer its address */
    void opened(quint64 client, const QString& peer);
    /** Emitted for each message. */
    void received(quint64 client, const QByteArray& message);
    /** Emitted once for each client that was opened, last. */
    void closed(quint64 client);
    /** There are events, from the door's thread. */
    void woken(QPrivateSignal);

private:
    struct Clients;

    void deliver();
    void countHandled();
    template<class Order>
    void order(Order order);
    void handOver();

    std::unique_ptr<Clients> m_clients;
    std::unique_ptr<DoorThread> m_thread; ///< Null until it listens.
};
