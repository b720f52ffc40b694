// RFC 6455 at both ends: what a peer does wrong at the level of frames and of the handshake ends with the
// close code of the RFC, or without one where there is nobody to give it to.

#include "server/access/ServerCertificate.h"
#include "tests/embedded/LyingServer.h"
#include "tests/embedded/RawClient.h"
#include "tests/embedded/SocketHarness.h"
#include "tests/embedded/TrustedCertificate.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>

using namespace SocketHarness;

class TestWebSocketRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesOfAClient_data() { addBrokenFrames(true); }
    void framesOfAClient();
    void framesOfAServer_data() { addBrokenFrames(false); }
    void framesOfAServer();
    void closingHandshake_data();
    void closingHandshake();
    void pings_data();
    void pings();
    void pingsBetweenFragments();
    void pongsThatNobodyAskedFor();
    void pingFlood_data() { addTls(); }
    void pingFlood();
    void largeMessages_data();
    void largeMessages();
    void closeReachesAClientThatSendsOn_data() { addTls(); }
    void closeReachesAClientThatSendsOn();
    void handshakes_data();
    void handshakes();
    void halfHandshakes_data();
    void halfHandshakes();
    void silentStrangersKeepNobodyOut();
    void unansweredCloseOfAServer();
    void recordedClient();
    void recordedServer();
    void oldTls_data();
    void oldTls();

private:
    static void addTls()
    {
        QTest::addColumn<bool>("tls");
        QTest::newRow("plain") << false;
        QTest::newRow("TLS") << true;
    }
    static void addBrokenFrames(bool masked);
};

namespace {

using Frames = QList<WebSocketFrame>;

enum Opcode
{
    Continuation,
    Text,
    Binary,
    Close = 8,
    Ping,
    Pong
};

WebSocketFrame frame(int opcode, const QByteArray& payload = QByteArray(), bool isFinal = true)
{
    WebSocketFrame made;
    made.opcode = opcode;
    made.payload = payload;
    made.isFinal = isFinal;
    return made;
}

/** A server with or without TLS. */
struct Served
{
    explicit Served(bool tls, const SocketConfig& config = SocketHarness::config())
        : sockets(*harness.server, config, tls ? &trusted.made : nullptr), listens(sockets.listen())
    {
    }

    const TrustedCertificate trusted;
    ServerHarness harness;
    SocketServer sockets;
    bool listens;
};

/** Logs a client in. */
bool logIn(RawClient& client)
{
    client.socket.sendBinaryMessage(loginOf("anna", "right"));
    return ServerHarness::waitFor([&] { return !client.received.isEmpty(); });
}

/** Bytes of one direction of a connection. */
QByteArray recording(const QString& name)
{
    QFile file(TEST_DATA_DIR "/websocket/" + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

Q_DECLARE_METATYPE(WebSocketFrame)

/** Each is sent over plain TCP and over TLS. @param masked as the sender's frames have to be */
void TestWebSocketRules::addBrokenFrames(bool masked)
{
    QTest::addColumn<bool>("tls");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("code");
    const auto add = [masked](const QByteArray& name, Frames frames, int code) {
        QByteArray bytes;
        for (WebSocketFrame& each : frames) {
            each.isMasked = masked;
            bytes += each.toBytes();
        }
        QTest::newRow(name.constData()) << false << bytes << code;
        QTest::newRow((name + ", TLS").constData()) << true << bytes << code;
    };
    WebSocketFrame other = frame(Binary, "x");
    other.isMasked = !masked;
    QTest::newRow("mask of the other side") << false << other.toBytes() << 1002;
    QTest::newRow("mask of the other side, TLS") << true << other.toBytes() << 1002;
    for (const int bits : {1, 2, 4, 7}) {
        WebSocketFrame reserved = frame(Binary, "x");
        reserved.reserved = bits;
        add("reserved bits " + QByteArray::number(bits), {reserved}, 1002);
    }
    for (const int opcode : {3, 7, 11, 15}) {
        add("reserved opcode " + QByteArray::number(opcode), {frame(opcode)}, 1002);
    }
    add("continuation without a start", {frame(Continuation, "x")}, 1002);
    add("message inside another", {frame(Binary, "x", false), frame(Binary, "x")}, 1002);
    add("fragmented ping", {frame(Ping, "x", false)}, 1002);
    add("ping of 126 bytes", {frame(Ping, QByteArray(126, 'x'))}, 1002);
    add("close of 126 bytes", {WebSocketFrame::close(1000, QByteArray(124, 'x'))}, 1002);
    add("close of one byte", {frame(Close, "x")}, 1002);
    for (const int code : {0, 999, 1004, 1005, 1006, 1015, 2999}) {
        add("close with " + QByteArray::number(code),
            {frame(Close, WebSocketFrame::close(0xFFFF).payload.replace(
                              0, 2, QByteArray().append(char(code >> 8)).append(char(code & 0xFF))))},
            1002);
    }
    add("close whose reason is no UTF-8", {WebSocketFrame::close(1000, "\xFF")}, 1002);
    add("text", {frame(Text, "hello")}, 1003);
    add("text that is no UTF-8", {frame(Text, "\xFF")}, 1007);
    const QByteArray flag(1, char(masked ? 0x80 : 0));
    const auto announced = [&](const QByteArray& size) {
        return QByteArray("\x82") + char(flag[0] | (size.size() == 2 ? 126 : 127)) + size +
               QByteArray(masked ? 4 : 0, '\0');
    };
    QTest::newRow("long form of a short length")
        << false << announced(QByteArray("\0\x05", 2)) + "hello" << 1002;
    QTest::newRow("longest form of a medium length")
        << false << announced(QByteArray("\0\0\0\0\0\0\x80\0", 8)) << 1002;
    QTest::newRow("announced terabyte") << false << announced(QByteArray("\0\0\x01\0\0\0\0\0", 8)) << 1009;
}

void TestWebSocketRules::framesOfAClient()
{
    QFETCH(bool, tls);
    QFETCH(QByteArray, bytes);
    QFETCH(int, code);
    const Served server(tls);
    RawClient client(server.sockets);
    QVERIFY(client.connected);
    client.socket.sendBytes(bytes);
    QVERIFY(client.closed());
    QCOMPARE(client.socket.closeCode(), code);
    QVERIFY(client.received.isEmpty());
    QVERIFY(waitFor([&] { return server.sockets.clients() == 0; }));
}

void TestWebSocketRules::framesOfAServer()
{
    QFETCH(bool, tls);
    QFETCH(QByteArray, bytes);
    QFETCH(int, code);
    const TrustedCertificate trusted;
    WebSocketListener listener;
    if (tls) {
        listener.useTls(trusted.made.certificate, trusted.made.key);
    }
    SocketLinkConfig config;
    config.url = listener.url();
    SocketLink link(config);
    QSignalSpy lost(&link, &SocketLink::lost);
    link.open();
    WebSocketPeer* peer = nullptr;
    QVERIFY(waitFor([&] { return (peer = listener.nextPeer()) != nullptr; }));
    peer->sendBytes(bytes);
    QTRY_VERIFY(!lost.isEmpty());
    QVERIFY(!lost[0][0].toString().isEmpty());
    QCOMPARE(lost[0][1], QVariant(false));
    QTRY_VERIFY(peer->isClosed());
    QCOMPARE(peer->closeCode(), code);
}

void TestWebSocketRules::closingHandshake_data()
{
    QTest::addColumn<bool>("tls");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("answer");
    for (const bool tls : {false, true}) {
        for (const int code : {1000, 1001, 1002, 3000, 4999}) {
            QTest::addRow("%d%s", code, tls ? ", TLS" : "") << tls << code << code;
        }
        QTest::addRow("none%s", tls ? ", TLS" : "") << tls << 0 << 1000;
    }
}

void TestWebSocketRules::closingHandshake()
{
    QFETCH(bool, tls);
    QFETCH(int, code);
    QFETCH(int, answer);
    const Served server(tls);
    RawClient client(server.sockets);
    QVERIFY(client.connected);
    WebSocketFrame close = WebSocketFrame::close(code, code != 0 ? "enough" : "");
    close.isMasked = true;
    client.socket.sendFrame(close);
    QVERIFY(client.closed());
    QCOMPARE(client.socket.closeCode(), answer);
    QVERIFY(waitFor([&] { return server.sockets.clients() == 0; }));
}

void TestWebSocketRules::pings_data()
{
    QTest::addColumn<bool>("tls");
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 125}) {
        QTest::addRow("%d bytes", size) << false << size;
        QTest::addRow("%d bytes, TLS", size) << true << size;
    }
}

void TestWebSocketRules::pings()
{
    QFETCH(bool, tls);
    QFETCH(int, size);
    const Served server(tls);
    RawClient client(server.sockets);
    QVERIFY(client.connected);
    for (int i = 0; i < 10; ++i) {
        WebSocketFrame ping = frame(Ping, QByteArray(size, static_cast<char>('a' + i)));
        ping.isMasked = true;
        client.socket.sendFrame(ping);
    }
    QVERIFY(waitFor([&] { return client.socket.frames.size() == 10; }));
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(client.socket.frames[i].opcode, int{Pong});
        QCOMPARE(client.socket.frames[i].payload, QByteArray(size, static_cast<char>('a' + i)));
        QVERIFY(!client.socket.frames[i].isMasked);
    }
}

void TestWebSocketRules::pingsBetweenFragments()
{
    const Served server(false);
    RawClient client(server.sockets);
    QVERIFY(client.connected);
    const QByteArray login = loginOf("anna", "right");
    for (WebSocketFrame each : Frames{frame(Binary, login.left(3), false), frame(Ping, "between"),
                                      frame(Continuation, "", false), frame(Continuation, login.mid(3))}) {
        each.isMasked = true;
        client.socket.sendFrame(each);
    }
    QVERIFY(waitFor([&] { return client.received.size() == 1; }));
    QCOMPARE(int{WireMessage::fromBytes(client.received[0])->kind}, int{WireMessage::Welcome});
    QCOMPARE(client.socket.frames[0].opcode, int{Pong});
    QCOMPARE(client.socket.frames[0].payload, QByteArray("between"));
}

void TestWebSocketRules::pongsThatNobodyAskedFor()
{
    const Served server(false);
    RawClient client(server.sockets);
    QVERIFY(client.connected);
    WebSocketFrame pong = frame(Pong, "x");
    pong.isMasked = true;
    client.socket.sendFrame(pong);
    QVERIFY(logIn(client));
    QVERIFY(client.socket.isOpen());
}

/** From somebody who has logged in, and reads none of the answers. */
void TestWebSocketRules::pingFlood()
{
    QFETCH(bool, tls);
    const Served server(tls);
    RawClient client(server.sockets);
    QVERIFY(client.connected && logIn(client));
    client.socket.setReading(false);
    WebSocketFrame ping = frame(Ping, QByteArray(125, 'x'));
    ping.isMasked = true;
    const QByteArray pings = ping.toBytes().repeated(200);
    QVERIFY(waitFor([&] {
        if (client.socket.socket().bytesToWrite() < pings.size() && !client.socket.isClosed()) {
            client.socket.sendBytes(pings);
        }
        return server.sockets.clients() == 0;
    }));
}

void TestWebSocketRules::largeMessages_data()
{
    QTest::addColumn<bool>("loggedIn");
    QTest::addColumn<bool>("inFragments");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("code");
    QTest::newRow("before the login") << false << false << Limits::maxLoginBytes + 1 << 1009;
    QTest::newRow("before the login, in fragments") << false << true << Limits::maxLoginBytes + 1 << 1009;
    QTest::newRow("as large as a login may be") << false << false << Limits::maxLoginBytes << 1008;
    QTest::newRow("after the login") << true << false << 100001 << 1009;
    QTest::newRow("after the login, in fragments") << true << true << 100001 << 1009;
    QTest::newRow("as large as a command may be") << true << true << 100000 << 1008;
}

void TestWebSocketRules::largeMessages()
{
    QFETCH(bool, loggedIn);
    QFETCH(bool, inFragments);
    QFETCH(int, size);
    QFETCH(int, code);
    SocketConfig config = SocketHarness::config();
    config.maxMessageBytes = 100000;
    const Served server(false, config);
    RawClient client(server.sockets);
    QVERIFY(client.connected);
    if (loggedIn) {
        QVERIFY(logIn(client));
    }
    const QByteArray message(size, 'x'); // no message of the protocol: 1008 where it is read
    const int first = inFragments ? size - 1 : size;
    WebSocketFrame start = frame(Binary, message.left(first), !inFragments);
    start.isMasked = true;
    client.socket.sendFrame(start);
    if (inFragments) {
        WebSocketFrame end = frame(Continuation, message.mid(first));
        end.isMasked = true;
        client.socket.sendFrame(end);
    }
    QVERIFY(client.closed());
    QCOMPARE(client.socket.closeCode(), code);
}

/** The server takes what comes after its close frame: with bytes unread, TCP resets the connection. */
void TestWebSocketRules::closeReachesAClientThatSendsOn()
{
    QFETCH(bool, tls);
    const Served server(tls);
    RawClient client(server.sockets);
    QVERIFY(client.connected);
    auto& socket = static_cast<QSslSocket&>(client.socket.socket());
    qint64 written = 0;
    const auto count = [&written](qint64 bytes) { written += bytes; };
    if (tls) {
        connect(&socket, &QSslSocket::encryptedBytesWritten, this, count);
    } else {
        connect(&socket, &QSslSocket::bytesWritten, this, count);
    }
    client.socket.setReading(false);
    socket.setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, 64 << 10);
    WebSocketFrame large = frame(Binary, QByteArray(4 << 20, 'x')); // more than the buffers of TCP hold
    large.isMasked = true;
    client.socket.sendFrame(large);
    QVERIFY(waitFor([&] { return written >= large.payload.size() || client.socket.isClosed(); }));
    QVERIFY(!client.socket.isClosed());
    client.socket.setReading(true);
    QVERIFY(client.closed());
    QCOMPARE(client.socket.closeCode(), 1009);
}

void TestWebSocketRules::handshakes_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("answer");
    const QByteArray right = WebSocketPeer::request();
    const QByteArray refused = "HTTP/1.1 400";
    QTest::newRow("right") << right << QByteArray("HTTP/1.1 101");
    QTest::newRow("no upgrade") << QByteArray("GET / HTTP/1.1\r\nHost: x\r\n\r\n") << refused;
    QTest::newRow("another upgrade") << QByteArray(right).replace("Upgrade: websocket", "Upgrade: h2c")
                                     << refused;
    QTest::newRow("another method") << QByteArray(right).replace("GET", "POST") << refused;
    QTest::newRow("HTTP 1.0") << QByteArray(right).replace("HTTP/1.1", "HTTP/1.0")
                              << QByteArray("HTTP/1.0 400");
    QTest::newRow("no key") << QByteArray(right).replace("Sec-WebSocket-Key", "Sec-WebSocket-Kex") << refused;
    QTest::newRow("key that is no Base64 of 16 bytes")
        << QByteArray(right).replace("dGhlIHNhbXBsZSBub25jZQ==", QByteArray(99, 'x')) << refused;
    QTest::newRow("another version") << QByteArray(right).replace("Version: 13", "Version: 12")
                                     << QByteArray("HTTP/1.1 426");
    QTest::newRow("long header") << WebSocketPeer::request("X: " + QByteArray(4000, 'x') + "\r\n")
                                 << QByteArray("HTTP/1.1 101");
    QTest::newRow("too long a header")
        << WebSocketPeer::request("X: " + QByteArray(9000, 'x') + "\r\n") << QByteArray();
    WebSocketFrame early = frame(Binary, loginOf("anna", "right"));
    early.isMasked = true;
    QTest::newRow("message before the answer") << right + early.toBytes() << QByteArray();
    QTest::newRow("no HTTP") << QByteArray(200, '\0') << QByteArray();
}

void TestWebSocketRules::handshakes()
{
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, answer);
    const Served server(false);
    WebSocketPeer peer;
    peer.openSocket(server.sockets.url());
    peer.sendBytes(request);
    QVERIFY(waitFor([&] { return peer.isOpen() || peer.isClosed(); }));
    QCOMPARE(peer.handshake.left(answer.isEmpty() ? 1 : answer.size()), answer);
    QCOMPARE(peer.isOpen(), answer.endsWith("101"));
}

void TestWebSocketRules::halfHandshakes_data()
{
    QTest::addColumn<bool>("tls");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << false << QByteArray();
    QTest::newRow("half a request") << false << QByteArray("GET / HTTP/1.1\r\n");
    QTest::newRow("nothing, TLS") << true << QByteArray();
    QTest::newRow("half a hello, TLS") << true << QByteArray("\x16\x03\x01\x02\x00\x01", 6);
    QTest::newRow("a request without TLS") << true << WebSocketPeer::request();
}

void TestWebSocketRules::halfHandshakes()
{
    QFETCH(bool, tls);
    QFETCH(QByteArray, bytes);
    SocketConfig quick = config();
    quick.loginTimeout = 200;
    const Served server(tls, quick);
    QTcpSocket socket;
    socket.connectToHost("127.0.0.1", static_cast<quint16>(server.sockets.url().port()));
    QVERIFY(socket.waitForConnected());
    socket.write(bytes);
    QVERIFY(waitFor([&] { return socket.state() == QAbstractSocket::UnconnectedState; }));
    QCOMPARE(server.sockets.clients(), 0);
}

/** Neither those that shake hands and say no more, nor those that do not even do that. */
void TestWebSocketRules::silentStrangersKeepNobodyOut()
{
    SocketConfig few = config();
    few.maxClients = 4;
    const Served server(false, few);
    std::vector<std::unique_ptr<RawClient>> silent;
    std::vector<std::unique_ptr<QTcpSocket>> dumb;
    for (int i = 0; i < 6; ++i) {
        silent.push_back(std::make_unique<RawClient>(server.sockets));
        QVERIFY(silent.back()->connected);
        dumb.push_back(std::make_unique<QTcpSocket>());
        dumb.back()->connectToHost("127.0.0.1", static_cast<quint16>(server.sockets.url().port()));
        QVERIFY(dumb.back()->waitForConnected());
    }
    RawClient honest(server.sockets);
    QVERIFY(honest.connected && logIn(honest));
    QVERIFY(silent[0]->closed()); // the one that said nothing for longest
    QVERIFY(waitFor([&] { return dumb[0]->state() == QAbstractSocket::UnconnectedState; }));
}

/** A client that does not answer a close frame is rid of soon. */
void TestWebSocketRules::unansweredCloseOfAServer()
{
    const Served server(false);
    RawClient client(server.sockets);
    QVERIFY(client.connected);
    client.socket.answersClose = false;
    client.socket.sendBinaryMessage("hello");
    QVERIFY(waitFor([&] { return client.socket.closeCode() == 1008; }));
    QVERIFY(waitFor([&] { return server.sockets.clients() == 0; }, 5000));
}

/** What a client of the first version of the protocol has sent, and what a server of it answered. */
void TestWebSocketRules::recordedClient()
{
    const QByteArray sent = recording("client.bin");
    const QByteArray answered = recording("server.bin");
    const int frames = sent.indexOf("\r\n\r\n") + 4;
    const int login = frames + 6 + (sent.at(frames + 1) & 0x7F); // a short frame with its mask
    QVERIFY(frames > 4 && login < sent.size());
    Served server(false);
    const ServerReply added = server.harness.ask(
        "AddIPAudio",
        QVariantMap{
            {"deviceName", "Gate"}, {"ip", "10.0.0.5"}, {"port", 554}, {"bindingCameraList", "camera-1"}});
    QCOMPARE(added.returnCode, ReturnCode::success);
    WebSocketPeer peer;
    QByteArray messages;
    connect(&peer, &WebSocketPeer::binaryMessageReceived, [&](const QByteArray& each) { messages += each; });
    peer.openSocket(server.sockets.url());
    peer.sendBytes(sent.left(frames));
    QVERIFY(waitFor([&] { return peer.isOpen(); }));
    peer.sendBytes(sent.mid(frames, login - frames));
    QVERIFY(waitFor([&] { return !messages.isEmpty(); })); // the welcome
    const int close = sent.indexOf('\x88', login);         // whose client had got its answers
    peer.sendBytes(sent.mid(login, close - login));
    QByteArray expected;
    for (int at = answered.indexOf("\r\n\r\n") + 4; answered.at(at) == '\x82';) {
        const bool isLong = answered.at(at + 1) == 126;
        const int size = isLong ? static_cast<quint8>(answered.at(at + 3)) : answered.at(at + 1);
        expected += answered.mid(at + (isLong ? 4 : 2), size);
        at += (isLong ? 4 : 2) + size;
    }
    QVERIFY(waitFor([&] { return messages.size() >= expected.size(); }));
    QCOMPARE(messages, expected);
    peer.sendBytes(sent.mid(close));
    QVERIFY(waitFor([&] { return peer.isClosed(); }));
    QCOMPARE(peer.closeCode(), 1001);
}

void TestWebSocketRules::recordedServer()
{
    const QByteArray answered = recording("server.bin");
    WebSocketListener listener;
    SocketLinkConfig config;
    config.url = listener.url();
    config.user = "anna";
    config.secret = "right";
    OpenedLink link(config);
    WebSocketPeer* peer = nullptr;
    QVERIFY(waitFor([&] { return (peer = listener.nextPeer()) != nullptr; }));
    const int frames = answered.indexOf("\r\n\r\n") + 4;
    const int welcome = frames + 2 + answered.at(frames + 1);
    peer->sendBytes(answered.mid(frames, welcome - frames));
    QVERIFY(link.isUp());
    QVERIFY(link.send("RetrieveIPAudioModel", QVariant(), 1));
    QVERIFY(link.send("GetAudioFile", QVariant(), 2));
    peer->sendBytes(answered.mid(welcome));
    QVERIFY(waitFor([&] { return !link.lost.isEmpty(); }));
    QCOMPARE(link.replied.size(), 2);
    QCOMPARE(link.replied[0][2], QVariant(quint64{1}));
    QCOMPARE(link.replied[0][1].toList().value(0).toMap().value("deviceName"), QVariant("Gate"));
    QCOMPARE(link.replied[1][2], QVariant(quint64{2}));
    QCOMPARE(link.lost[0], (QVariantList{"Connection closed", false}));
}

void TestWebSocketRules::oldTls_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<bool>("agrees");
    QTest::newRow("1.3") << QStringList{"-tls1_3"} << true;
    QTest::newRow("1.2, GCM") << QStringList{"-tls1_2", "-cipher", "ECDHE-ECDSA-AES256-GCM-SHA384"} << true;
    QTest::newRow("1.2, CBC and SHA-1")
        << QStringList{"-tls1_2", "-cipher", "ECDHE-ECDSA-AES128-SHA:@SECLEVEL=0"} << false;
    QTest::newRow("1.2, CBC and SHA-2")
        << QStringList{"-tls1_2", "-cipher", "ECDHE-ECDSA-AES128-SHA256:@SECLEVEL=0"} << false;
    QTest::newRow("1.1") << QStringList{"-tls1_1", "-cipher", "ALL:@SECLEVEL=0"} << false;
}

/** By another program: what our own OpenSSL would not offer proves nothing. */
void TestWebSocketRules::oldTls()
{
    QFETCH(QStringList, options);
    QFETCH(bool, agrees);
    const QString openssl = QStandardPaths::findExecutable("openssl");
    if (openssl.isEmpty()) {
        QSKIP("Needs the program openssl.");
    }
    const Served server(true);
    QProcess client;
    client.start(openssl, QStringList{"s_client", "-connect",
                                      QString("127.0.0.1:%1").arg(server.sockets.url().port())} +
                              options);
    client.closeWriteChannel();
    QVERIFY(client.waitForFinished());
    const QByteArray output = client.readAllStandardOutput();
    QVERIFY2(output.contains("CONNECTED"), output.constData());
    QCOMPARE(output.contains("BEGIN CERTIFICATE"), agrees);
}

QTEST_GUILESS_MAIN(TestWebSocketRules)
#include "tst_websocketrules.moc"
