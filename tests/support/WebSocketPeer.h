#pragma once

#include <QHostAddress>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>
#include <QUrl>

#include <memory>

/** Frames of RFC 6455, 5.2, right and wrong ones. */
struct WebSocketFrame
{
    int opcode = 2;      ///< 0 continuation, 1 text, 2 binary, 8 close, 9 ping, 10 pong; others are reserved.
    QByteArray payload;  ///< Not masked.
    bool isFinal = true; ///< FIN.
    int reserved = 0;    ///< RSV1 to RSV3, as a number of three bits.
    bool isMasked = false; ///< By a mask that changes each byte.

    /** Returns it as it is on the wire. */
    QByteArray toBytes() const;

    /** Returns a close frame. @param code 0 for an empty payload */
    static WebSocketFrame close(int code, const QByteArray& reason = QByteArray());
};

/**
 * One end of a web socket on Qt's TCP, of its own making, so that the tests have a peer that shares no code
 * with what they test, and that can do wrong.
 */
class WebSocketPeer : public QObject
{
    Q_OBJECT

public:
    /** The server's end of a connection that has come. @param socket owned from now on */
    explicit WebSocketPeer(QTcpSocket* socket, QObject* parent = nullptr);
    /** The client's end; open connects. */
    WebSocketPeer();

    /** Connects; takes any certificate with wss. */
    void open(const QUrl& url);

    /** Connects without the request of a web socket. */
    void openSocket(const QUrl& url);

    /** Returns the request of a web socket with further header lines, each with its end. */
    static QByteArray request(const QByteArray& furtherLines = QByteArray());

    /** Sends a message in one frame. */
    void sendBinaryMessage(const QByteArray& message);

    /** Sends a frame; masked as its side must be, unless it says how itself. */
    void sendFrame(WebSocketFrame frame);

    /** Sends bytes as they are. */
    void sendBytes(const QByteArray& bytes) { m_socket->write(bytes); }

    /** Sends a close frame; the connection ends when the other side has answered. */
    void close();

    /** Stops reading, or goes on. */
    void setReading(bool reads);

    bool isOpen() const { return m_open && !isClosed(); } ///< Whether both sides have shaken hands.
    /** Returns whether there is no connection, or no longer. */
    bool isClosed() const { return m_socket->state() == QAbstractSocket::UnconnectedState; }
    int closeCode() const { return m_closeCode; } ///< Of the other side; 0 for none, 1005 without a code.
    QString closeReason() const { return m_closeReason; } ///< Of the other side.
    QTcpSocket& socket() { return *m_socket; }            ///< Below the web socket.

    QList<WebSocketFrame> frames; ///< All that have come, control frames included.
    QByteArray handshake;         ///< What came before the frames: the request, or the answer to it.
    bool answersPings = true;
    bool answersClose = true;

Q_SIGNALS:
    /** Emitted when both sides have shaken hands. */
    void connected();
    /** Emitted for each message. */
    void binaryMessageReceived(const QByteArray& message);
    /** Emitted when the connection has ended. */
    void disconnected();

private:
    void watch();
    void read();
    bool readFrame();
    void take(const WebSocketFrame& frame);
    QUrl m_url;
    bool m_isServer = false;
    bool m_open = false;
    bool m_reads = true;
    bool m_closeSent = false;
    int m_closeCode = 0;
    QString m_closeReason;
    QByteArray m_bytes;   ///< Read, and not taken apart.
    QByteArray m_message; ///< Fragments of a message.
    QTcpSocket* m_socket;
};

/** Takes web sockets at a free port of this machine. */
class WebSocketListener : public QTcpServer
{
    Q_OBJECT

public:
    /** Listens. */
    WebSocketListener();

    /** With TLS from now on. */
    void useTls(const QSslCertificate& certificate, const QSslKey& key);

    /** Returns ws://127.0.0.1:port, or wss://. */
    QUrl url() const;

    /** Returns the next web socket that came, or null; its parent is the listener. */
    WebSocketPeer* nextPeer() { return m_opened.isEmpty() ? nullptr : m_opened.takeFirst(); }

Q_SIGNALS:
    /** Emitted when there is a web socket, after its handshake. */
    void peerCame();

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    QSslCertificate m_certificate;
    QSslKey m_key;
    QList<WebSocketPeer*> m_opened;
};
