#pragma once

#include <QByteArrayList>
#include <QHash>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>
#include <QtEndian>

#include <sys/socket.h>

/**
 * A camera in the test's own process that answers RTSP requests over TCP as its script says, and hears mu-law
 * as payload type 0; for what gst-rtsp-server never does.
 */
class ScriptedRtsp : public QObject
{
public:
    ScriptedRtsp()
    {
        m_server.listen(QHostAddress::LocalHost);
        const int size = 4096; // like a small device: its system takes little that it does not read
        setsockopt(static_cast<int>(m_server.socketDescriptor()), SOL_SOCKET, SO_RCVBUF, &size, sizeof(size));
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection()) {
                ++connections;
                ++open;
                connect(socket, &QAbstractSocket::disconnected, this, [this] { --open; });
                connect(socket, &QIODevice::readyRead, this, [this, socket] { read(socket); });
            }
        });
    }

    QString address(const QString& path = QStringLiteral("/talk")) const
    {
        return QStringLiteral("rtsp://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path);
    }

    /** Whether a request with the method came whose text has the other one. */
    bool hasRequest(const QByteArray& method, const QByteArray& text = QByteArray()) const
    {
        return std::any_of(requests.begin(), requests.end(), [&](const QByteArray& request) {
            return request.startsWith(method + ' ') && request.contains(text);
        });
    }

    /** Its answer to a method, or to a method and a path: status and further lines of the header, after an
     * empty one a body. */
    QHash<QByteArray, QByteArray> answers{
        {"OPTIONS", "200 OK\r\nPublic: OPTIONS, DESCRIBE, SETUP, PLAY, RECORD, TEARDOWN\r\n\r\n"},
        {"DESCRIBE", describes(description())},
        {"SETUP", "200 OK\r\n\r\n"},
    };

    static QByteArray description()
    {
        return "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=camera\r\nt=0 0\r\n"
               "m=audio 0 RTP/AVP 0\r\na=control:heard\r\na=recvonly\r\n"
               "m=audio 0 RTP/AVP 0\r\na=control:talk\r\na=sendonly\r\n";
    }

    static QByteArray describes(const QByteArray& body)
    {
        return "200 OK\r\nContent-Type: application/sdp\r\nContent-Length: " +
               QByteArray::number(body.size()) + "\r\n\r\n" + body;
    }

    /** What it sends again and again behind its answer to a method, as fast as it is taken. */
    QHash<QByteArray, QByteArray> floods;
    qint64 flooded = 0;                         ///< Bytes of it that were taken by the system.
    static constexpr qint64 maxFlood = 1 << 28; ///< Then it ends.

    /** What it sends byte by byte behind its answer to a method, again and again. */
    QHash<QByteArray, QByteArray> drips;

    bool speaks = true; ///< It sends some sound when it plays or records.
    bool answersAtAll = true;
    bool takesOne = false;   ///< One session at a time.
    QByteArrayList requests; ///< Their headers.
    int packets = 0;         ///< RTP packets that came inside the connection, of the loudspeaker.
    int connections = 0;
    int open = 0; ///< Connections by now.

    /** Closes the connection of the session that began to play last. */
    void hangUp() { m_playing->close(); }

    /** Reads nothing in the session that began to play last, or goes on. */
    void setDeaf(bool deaf)
    {
        m_deaf = deaf;
        m_playing->setReadBufferSize(deaf ? 1 : 0);
        read(m_playing);
    }

    /** Returns the channel in which it gets the loudspeaker's sound. */
    char talkChannel() const { return m_talkChannel; }

    /** Sends a packet of sound in the session that began to play last. All have the same RTP time. */
    void speak(const QByteArray& payload, char payloadType = 0, char channel = 0)
    {
        write(payload, payloadType, channel, 0);
    }

    /** Sends a packet of video in that session, with the payload type 96. */
    void show(const QByteArray& payload, quint32 timestamp, bool marker)
    {
        write(payload, static_cast<char>(marker ? 0xe0 : 0x60), 0, timestamp);
    }

    /** Waits without events until the system has taken all that was sent; false when it takes too long. */
    bool sendAll()
    {
        while (m_playing->bytesToWrite() > 0) {
            if (!m_playing->waitForBytesWritten(10000)) {
                return false;
            }
        }
        return true;
    }

private:
    void write(const QByteArray& payload, char payloadType, char channel, quint32 timestamp)
    {
        const int size = payload.size() + 12;
        QByteArray packet = QByteArray::fromHex("240000008000000000000000aabbccdd");
        packet[2] = static_cast<char>(size >> 8);
        packet[3] = static_cast<char>(size);
        packet[1] = channel;
        packet[5] = payloadType;
        qToBigEndian(++m_sequence, packet.data() + 6);
        qToBigEndian(timestamp, packet.data() + 8);
        m_playing->write(packet + payload);
    }

    void read(QTcpSocket* socket)
    {
        if (m_deaf && socket == m_playing) {
            return;
        }
        QByteArray& received = m_received[socket];
        received += socket->readAll();
        for (;;) {
            if (received.startsWith('$')) { // RFC 2326, clause 10.12
                const int size = received.size() < 4 ? 0
                                                     : static_cast<quint8>(received[2]) << 8 |
                                                           static_cast<quint8>(received[3]);
                if (received.size() < 4 || received.size() < 4 + size) {
                    return;
                }
                packets += received[1] == m_talkChannel ? 1 : 0;
                received.remove(0, 4 + size);
                continue;
            }
            const int end = received.indexOf("\r\n\r\n");
            if (end < 0) {
                return;
            }
            requests.append(received.left(end));
            received.remove(0, end + 4);
            if (answersAtAll) {
                answer(socket, requests.last());
            }
        }
    }

    void answer(QTcpSocket* socket, const QByteArray& request)
    {
        const auto field = [&](const QByteArray& name) {
            for (const QByteArray& line : request.split('\n')) {
                if (line.toLower().startsWith(name.toLower() + ':')) {
                    return line.mid(name.size() + 1).trimmed();
                }
            }
            return QByteArray();
        };
        const QByteArray method = request.left(request.indexOf(' '));
        const QByteArray path = QUrl(QString::fromUtf8(request.split(' ').value(1))).path().toUtf8();
        QByteArray text = answers.value(method + ' ' + path, answers.value(method, "200 OK\r\n\r\n"));
        if (takesOne && method == "SETUP" && m_playing && m_playing != socket) {
            text = "453 Not Enough Bandwidth\r\n\r\n";
        } else if (takesOne && method == "TEARDOWN") {
            m_playing = nullptr;
        }
        QByteArray more = "CSeq: " + field("CSeq") + "\r\nSession: 1\r\n";
        if (method == "SETUP" && !text.contains("\r\nTransport:")) {
            more += "Transport: " + field("Transport") + "\r\n";
            if (request.left(request.indexOf('\n')).contains("/talk ")) {
                const QByteArray transport = field("Transport");
                m_talkChannel = static_cast<char>(
                    transport.mid(transport.indexOf("interleaved=") + 12).split('-').first().toInt());
            }
        }
        text.insert(text.indexOf("\r\n") + 2, more);
        socket->write("RTSP/1.0 " + text);
        if (drips.contains(method)) {
            drip(socket, drips[method]);
        }
        if (floods.contains(method)) {
            flood(socket, floods[method]);
        }
        if ((method == "PLAY" || method == "RECORD") && text.startsWith("200")) {
            m_playing = socket;
            for (int i = 0; speaks && i < 3; ++i) {
                speak(QByteArray(160, '\xFF'));
            }
        }
    }

    void drip(QTcpSocket* socket, const QByteArray& text)
    {
        auto* timer = new QTimer(socket);
        connect(timer, &QTimer::timeout, this,
                [socket, text, at = 0]() mutable { socket->write(text.mid(at++ % text.size(), 1)); });
        timer->start(20);
    }

    void flood(QTcpSocket* socket, const QByteArray& block)
    {
        const auto write = [this, socket, block] {
            while (socket->isValid() && flooded < maxFlood && socket->bytesToWrite() < block.size()) {
                socket->write(block);
            }
        };
        connect(socket, &QIODevice::bytesWritten, this, [this, write](qint64 bytes) {
            flooded += bytes;
            write();
        });
        write();
    }

    QTcpServer m_server;
    QHash<QTcpSocket*, QByteArray> m_received;
    char m_talkChannel = 2;
    QPointer<QTcpSocket> m_playing;
    bool m_deaf = false;
    quint16 m_sequence = 0;
};
