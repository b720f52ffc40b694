#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

#include <memory>

/**
 * A web socket (RFC 6455) to a server. The socket is on a thread of its own, which all lines of the process
 * share; the object is used, and emits its signals, on the thread that made it.
 *
 *   SocketLine <-- Channel -- LineConnection (io_context) <--> socket
 */
class SocketLine : public QObject
{
    Q_OBJECT

public:
    /** Makes a line without a connection. */
    SocketLine();
    /** Ends the connection after what waits has gone; takes a quarter of a second at most. */
    ~SocketLine() override;

    /**
     * Connects; connected or lost follows. An earlier connection is dropped without a signal.
     *
     * @param url         ws://host:port/path or wss://
     * @param fingerprint SHA-256 of the server's certificate, lower-case hexadecimal, always compared; empty
     *                    for a certificate that the system trusts
     */
    void open(const QUrl& url, const QString& fingerprint);

    /** Sends a message, in the order of the calls. */
    void send(const QByteArray& message);

    /** Returns the bytes of messages that have been given to send and have not gone; with TLS, too. */
    qint64 waitingBytes() const;

    /**
     * Ends the connection after what waits has gone, or after a second; lost follows, and no message before
     * it.
     *
     * @param code   of RFC 6455, 7.4.1
     * @param reason which lost gives, too; at most 123 bytes of UTF-8
     */
    void close(quint16 code, const QString& reason = QString());

Q_SIGNALS:
    /** The web socket is open. */
    void connected();
    /** A message has come. */
    void received(const QByteArray& message);
    /** Some of a large message has gone. */
    void progressed();
    /** Emitted once for each open: the connection failed or has ended. @param reason says why, not empty */
    void lost(const QString& reason);
    /** There are events, from the other thread. */
    void woken(QPrivateSignal);

private:
    class Channel;
    class Loop;
    struct Connection;

    void connectTo(const QList<QHostAddress>& addresses, int port);
    void fail(const QString& reason);
    void deliver();
    void drop();

    std::shared_ptr<Connection> m_connection; ///< Null before the first open.
    int m_lookup = -1;                        ///< Of a host's name; -1 for none.
    bool m_closed = false;                    ///< By this side: nothing is read any more.
};
