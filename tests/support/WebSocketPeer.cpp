#include "tests/support/WebSocketPeer.h"

#include <QCryptographicHash>
#include <QtEndian>

namespace {

constexpr int shortLength = 125;       // in the second byte itself
constexpr int mediumLength = 65535;    // in two further bytes
constexpr int maxHandshake = 64 << 10; // bytes
const QByteArray endOfHeader("\r\n\r\n");
const QByteArray mask("\x12\x34\x56\x78");

QByteArray masked(QByteArray bytes, const QByteArray& key)
{
    for (int i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(bytes.at(i) ^ key.at(i % 4));
    }
    return bytes;
}

/** RFC 6455, 4.2.2. */
QByteArray answerTo(const QByteArray& request)
{
    const QByteArray name("sec-websocket-key:");
    QByteArray key;
    for (const QByteArray& line : request.split('\n')) {
        if (line.toLower().startsWith(name)) {
            key = line.mid(name.size()).trimmed();
        }
    }
    const QByteArray accept =
        QCryptographicHash::hash(key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11", QCryptographicHash::Sha1)
            .toBase64();
    return "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Accept: " +
           accept + endOfHeader;
}

} // namespace

QByteArray WebSocketFrame::toBytes() const
{
    QByteArray made;
    made.append(static_cast<char>((isFinal ? 0x80 : 0) | reserved << 4 | opcode));
    const int flag = isMasked ? 0x80 : 0;
    if (payload.size() <= shortLength) {
        made.append(static_cast<char>(flag | payload.size()));
    } else if (payload.size() <= mediumLength) {
        const quint16 size = qToBigEndian(static_cast<quint16>(payload.size()));
        made.append(static_cast<char>(flag | (shortLength + 1)));
        made.append(reinterpret_cast<const char*>(&size), sizeof(size));
    } else {
        const quint64 size = qToBigEndian(static_cast<quint64>(payload.size()));
        made.append(static_cast<char>(flag | (shortLength + 2)));
        made.append(reinterpret_cast<const char*>(&size), sizeof(size));
    }
    return isMasked ? made + mask + masked(payload, mask) : made + payload;
}

WebSocketFrame WebSocketFrame::close(int code, const QByteArray& reason)
{
    WebSocketFrame made;
    made.opcode = 8;
    if (code != 0) {
        made.payload.append(static_cast<char>(code >> 8)).append(static_cast<char>(code & 0xFF));
    }
    made.payload += reason;
    return made;
}

WebSocketPeer::WebSocketPeer(QTcpSocket* socket, QObject* parent)
    : QObject(parent), m_isServer(true), m_socket(socket)
{
    m_socket->setParent(this);
    watch();
}

WebSocketPeer::WebSocketPeer() : m_socket(new QSslSocket(this))
{
    static_cast<QSslSocket*>(m_socket)->setPeerVerifyMode(QSslSocket::VerifyNone);
    watch();
}

void WebSocketPeer::watch()
{
    connect(m_socket, &QTcpSocket::readyRead, this, &WebSocketPeer::read);
    connect(m_socket, &QTcpSocket::disconnected, this, &WebSocketPeer::disconnected);
}

void WebSocketPeer::openSocket(const QUrl& url)
{
    m_url = url;
    const auto port = static_cast<quint16>(url.port());
    if (url.scheme() == QLatin1String("wss")) {
        static_cast<QSslSocket*>(m_socket)->connectToHostEncrypted(url.host(), port);
    } else {
        m_socket->connectToHost(url.host(), port);
    }
}

QByteArray WebSocketPeer::request(const QByteArray& furtherLines)
{
    return "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n" +
           furtherLines + "\r\n";
}

void WebSocketPeer::open(const QUrl& url)
{
    const auto shakeHands = [this] {
        m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        sendBytes(request());
    };
    if (url.scheme() == QLatin1String("wss")) {
        connect(static_cast<QSslSocket*>(m_socket), &QSslSocket::encrypted, this, shakeHands);
    } else {
        connect(m_socket, &QTcpSocket::connected, this, shakeHands);
    }
    openSocket(url);
}

void WebSocketPeer::sendBinaryMessage(const QByteArray& message)
{
    WebSocketFrame frame;
    frame.payload = message;
    frame.isMasked = !m_isServer;
    sendFrame(frame);
}

void WebSocketPeer::sendFrame(WebSocketFrame frame)
{
    m_closeSent = m_closeSent || frame.opcode == 8;
    sendBytes(frame.toBytes());
}

void WebSocketPeer::close()
{
    WebSocketFrame frame = WebSocketFrame::close(1000);
    frame.isMasked = !m_isServer;
    sendFrame(frame);
}

void WebSocketPeer::setReading(bool reads)
{
    m_reads = reads;
    m_socket->setReadBufferSize(reads ? 0 : 1);
    if (reads) {
        read();
    }
}

void WebSocketPeer::read()
{
    if (!m_reads) {
        return;
    }
    m_bytes += m_socket->readAll();
    if (!m_open) {
        const int end = m_bytes.indexOf(endOfHeader);
        if (end < 0) {
            if (m_bytes.size() > maxHandshake) {
                m_socket->abort();
            }
            return;
        }
        handshake = m_bytes.left(end);
        m_bytes.remove(0, end + endOfHeader.size());
        if (m_isServer) {
            sendBytes(answerTo(handshake));
        } else if (!handshake.startsWith("HTTP/1.1 101")) {
            return; // what follows is for people
        }
        m_open = true;
        Q_EMIT connected();
    }
    while (m_reads && readFrame()) {
    }
}

bool WebSocketPeer::readFrame()
{
    const auto byte = [this](int at) { return static_cast<quint8>(m_bytes.at(at)); };
    int header = 2;
    if (m_bytes.size() < header) {
        return false;
    }
    WebSocketFrame frame;
    frame.opcode = byte(0) & 0x0F;
    frame.isFinal = (byte(0) & 0x80) != 0;
    frame.reserved = byte(0) >> 4 & 7;
    frame.isMasked = (byte(1) & 0x80) != 0;
    quint64 size = byte(1) & 0x7F;
    const int sizeBytes = size == shortLength + 1 ? 2 : size == shortLength + 2 ? 8 : 0;
    header += sizeBytes + (frame.isMasked ? 4 : 0);
    if (m_bytes.size() < header) {
        return false;
    }
    if (sizeBytes > 0) {
        size = 0;
        for (int i = 0; i < sizeBytes; ++i) {
            size = size << 8 | byte(2 + i);
        }
    }
    if (static_cast<quint64>(m_bytes.size() - header) < size) {
        return false;
    }
    const QByteArray key = m_bytes.mid(header - 4, 4);
    frame.payload = m_bytes.mid(header, static_cast<int>(size));
    if (frame.isMasked) {
        frame.payload = masked(frame.payload, key);
    }
    m_bytes.remove(0, header + static_cast<int>(size));
    take(frame);
    return true;
}

void WebSocketPeer::take(const WebSocketFrame& frame)
{
    frames.append(frame);
    if (frame.opcode == 9 && answersPings) {
        WebSocketFrame pong = frame;
        pong.opcode = 10;
        pong.isMasked = !m_isServer;
        sendFrame(pong);
    } else if (frame.opcode == 8) {
        const bool hasCode = frame.payload.size() >= 2;
        m_closeCode = hasCode ? qFromBigEndian<quint16>(frame.payload.constData()) : 1005;
        m_closeReason = QString::fromUtf8(frame.payload.mid(2));
        if (!answersClose) {
            return;
        }
        if (!m_closeSent) {
            WebSocketFrame answer = frame;
            answer.isMasked = !m_isServer;
            sendFrame(answer);
        }
        m_socket->disconnectFromHost();
    } else if (frame.opcode <= 2) {
        m_message += frame.payload;
        if (frame.isFinal) {
            Q_EMIT binaryMessageReceived(std::exchange(m_message, QByteArray()));
        }
    }
}

WebSocketListener::WebSocketListener()
{
    listen(QHostAddress::LocalHost);
}

void WebSocketListener::useTls(const QSslCertificate& certificate, const QSslKey& key)
{
    m_certificate = certificate;
    m_key = key;
}

QUrl WebSocketListener::url() const
{
    QUrl made;
    made.setScheme(m_certificate.isNull() ? QStringLiteral("ws") : QStringLiteral("wss"));
    made.setHost(QStringLiteral("127.0.0.1"));
    made.setPort(serverPort());
    return made;
}

void WebSocketListener::incomingConnection(qintptr descriptor)
{
    auto* socket = new QSslSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        delete socket;
        return;
    }
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    auto* peer = new WebSocketPeer(socket, this);
    connect(peer, &WebSocketPeer::connected, this, [this, peer] {
        m_opened.append(peer);
        Q_EMIT peerCame();
    });
    if (!m_certificate.isNull()) {
        socket->setLocalCertificate(m_certificate);
        socket->setPrivateKey(m_key);
        socket->startServerEncryption();
    }
}
