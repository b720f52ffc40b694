// What the door rules for each client: who is read and when, what waits for it, and when it is taken for
// gone.

#include "server/access/DoorThread.h"
#include "server/access/SocketDoor.h"
#include "tests/embedded/TrustedCertificate.h"
#include "tests/server/ServerHarness.h"
#include "tests/support/WebSocketPeer.h"

class TestSocketDoor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void messagesKeepTheirOrder_data() { addTls(); }
    void messagesKeepTheirOrder();
    void answersGivenAtOnceLeave_data() { addTls(); }
    void answersGivenAtOnceLeave();
    void whatWaitsIsCounted_data() { addTls(); }
    void whatWaitsIsCounted();
    void whoDoesNotReadIsNotRead_data() { addTls(); }
    void whoDoesNotReadIsNotRead();
    void whoIsNotHandledIsNotRead_data() { addTls(); }
    void whoIsNotHandledIsNotRead();
    void silentPeersEnd_data() { addTls(); }
    void silentPeersEnd();
    void exceptionsCostOneClient();
    void slowSenderLives_data() { addTls(); }
    void slowSenderLives();
    void slowReaderLives_data() { addTls(); }
    void slowReaderLives();

private:
    static void addTls()
    {
        QTest::addColumn<bool>("tls");
        QTest::newRow("plain") << false;
        QTest::newRow("TLS") << true;
    }
};

namespace {

/** A door with one client, which has sent a first message. */
struct Visit
{
    explicit Visit(const DoorConfig& config = DoorConfig())
    {
        QFETCH(bool, tls);
        QObject::connect(&door, &SocketDoor::opened, [this](quint64 number) { client = number; });
        QObject::connect(&door, &SocketDoor::received,
                         [this](quint64, const QByteArray& message) { received.append(message); });
        QObject::connect(&door, &SocketDoor::closed, [this] { closed = true; });
        QString error;
        const bool listens = door.listen(config, tls ? &trusted.made : nullptr, &error);
        peer.open(QUrl(QString("%1://127.0.0.1:%2").arg(tls ? "wss" : "ws").arg(door.port())));
        came = listens && ServerHarness::waitFor([this] { return client != 0 && peer.isOpen(); });
        door.admit(client);
        peer.sendBinaryMessage("hello");
        came = came && ServerHarness::waitFor([this] { return received.size() == 1; });
    }

    const TrustedCertificate trusted;
    SocketDoor door;
    WebSocketPeer peer;
    QList<QByteArray> received;
    quint64 client = 0;
    bool closed = false;
    bool came = false;
};

DoorConfig impatient()
{
    DoorConfig config;
    config.idleTime = std::chrono::milliseconds(600);
    config.tickTime = std::chrono::milliseconds(20);
    return config;
}

} // namespace

void TestSocketDoor::messagesKeepTheirOrder()
{
    Visit visit;
    QVERIFY(visit.came);
    QList<QByteArray> sent;
    for (const int size : {0, 1, 125, 126, 65535, 65536, 65537, 300000, 2}) {
        sent.append(QByteArray(size, static_cast<char>('a' + sent.size())));
        visit.door.send(visit.client, sent.last());
    }
    QList<QByteArray> came;
    connect(&visit.peer, &WebSocketPeer::binaryMessageReceived,
            [&came](const QByteArray& message) { came.append(message); });
    QVERIFY(ServerHarness::waitFor([&] { return came.size() == sent.size(); }));
    QCOMPARE(came, sent);
    QCOMPARE(visit.door.waitingBytes(visit.client), 0);
}

void TestSocketDoor::answersGivenAtOnceLeave()
{
    Visit visit;
    QVERIFY(visit.came);
    connect(&visit.door, &SocketDoor::received, this,
            [&visit](quint64 client, const QByteArray& message) { visit.door.send(client, message); });
    const int messages = 100; // more than go together
    QList<QByteArray> came;
    connect(&visit.peer, &WebSocketPeer::binaryMessageReceived,
            [&came](const QByteArray& message) { came.append(message); });
    QList<QByteArray> sent;
    for (int i = 0; i < messages; ++i) {
        sent.append(QByteArray::number(i));
        visit.peer.sendBinaryMessage(sent.last());
    }
    QVERIFY(ServerHarness::waitFor([&] { return came.size() == messages; }, 5000));
    QCOMPARE(came, sent);
}

void TestSocketDoor::whatWaitsIsCounted()
{
    constexpr int size = 10 << 20;
    Visit visit;
    QVERIFY(visit.came);
    visit.peer.setReading(false);
    visit.door.send(visit.client, QByteArray(size, 'x'));
    QVERIFY(visit.door.waitingBytes(visit.client) > size / 2); // at once
    qint64 before = 0; // until the systems between have taken what they take
    QVERIFY(ServerHarness::waitFor([&] {
        const qint64 now = visit.door.waitingBytes(visit.client);
        return now < size && std::exchange(before, now) == now;
    }));
    QVERIFY2(visit.door.waitingBytes(visit.client) > size / 5,
             qPrintable(QString::number(visit.door.waitingBytes(visit.client))));
    visit.peer.setReading(true);
    QVERIFY(ServerHarness::waitFor([&] { return visit.door.waitingBytes(visit.client) == 0; }));
}

/** Until it reads again, and then nothing is missing. */
void TestSocketDoor::whoDoesNotReadIsNotRead()
{
    constexpr int questions = 400;
    const QByteArray answer(100000, 'x');
    Visit visit;
    QVERIFY(visit.came);
    visit.peer.setReading(false);
    connect(&visit.door, &SocketDoor::received, &visit.door, [&] { visit.door.send(visit.client, answer); });
    qint64 most = 0;
    for (int i = 0; i < questions; ++i) {
        visit.peer.sendBinaryMessage(QByteArray(20000, 'q'));
    }
    qint64 unsent = 0; // until no more of the questions is taken
    QVERIFY(ServerHarness::waitFor([&] {
        most = std::max(most, visit.door.waitingBytes(visit.client));
        const qint64 now = visit.peer.socket().bytesToWrite();
        return most > answer.size() && std::exchange(unsent, now) == now;
    }));
    const int taken = visit.received.size() - 1;
    QVERIFY2(taken < questions, qPrintable(QString::number(taken)));
    QVERIFY2(most < (64 + 5) * answer.size(), qPrintable(QString::number(most)));
    int came = 0;
    connect(&visit.peer, &WebSocketPeer::binaryMessageReceived, [&came] { ++came; });
    visit.peer.setReading(true);
    QVERIFY(ServerHarness::waitFor([&] { return came == questions; }));
}

/** While the server's thread is busy, little is read; afterwards nothing is missing. */
void TestSocketDoor::whoIsNotHandledIsNotRead()
{
    constexpr int messages = 2000;
    constexpr int size = 20000;
    Visit visit;
    QVERIFY(visit.came);
    for (int i = 0; i < messages; ++i) {
        visit.peer.sendBinaryMessage(QByteArray(size, 'm'));
    }
    auto& socket = dynamic_cast<QSslSocket&>(visit.peer.socket());
    const auto unsent = [&socket] { return socket.bytesToWrite() + socket.encryptedBytesToWrite(); };
    QElapsedTimer steady; // since the last byte was taken; this thread handles nothing meanwhile
    steady.start();
    for (qint64 before = unsent(); before > 0 && steady.elapsed() < 300;) {
        socket.flush();
        if (std::exchange(before, unsent()) != before) {
            steady.restart();
        }
        QTest::qSleep(1);
    }
    QVERIFY(unsent() > messages * size / 3);
    QVERIFY(ServerHarness::waitFor([&] { return visit.received.size() == 1 + messages; }));
}

void TestSocketDoor::silentPeersEnd()
{
    Visit visit(impatient());
    QVERIFY(visit.came);
    // As long as it answers pings, it stays.
    QVERIFY(ServerHarness::waitFor([&] { return visit.peer.frames.size() >= 4; }));
    QVERIFY(!visit.closed);
    QCOMPARE(visit.peer.frames.last().opcode, 9);
    visit.peer.answersPings = false;
    const auto pings = [&visit] {
        return std::count_if(visit.peer.frames.begin(), visit.peer.frames.end(),
                             [](const WebSocketFrame& frame) { return frame.opcode == 9; });
    };
    const auto before = pings();
    QVERIFY(ServerHarness::waitFor([&] { return visit.closed; }));
    QVERIFY(pings() - before <= 1); // who was asleep would have to answer all of them at once
}

/** What cannot be had, such as memory, costs the client that it is for. */
void TestSocketDoor::exceptionsCostOneClient()
{
    DoorConfig config = impatient();
    config.maxClients = 1;
    std::atomic<bool> fails{false};
    DoorThread door(config, [&fails] {
        if (fails.exchange(false)) {
            throw std::bad_alloc();
        }
    });
    QString error;
    QVERIFY(door.listen(nullptr, &error));
    const QUrl url(QString("ws://127.0.0.1:%1").arg(door.port()));
    WebSocketPeer silent;
    silent.open(url);
    QVERIFY(ServerHarness::waitFor([&] { return silent.isOpen(); }));
    QVERIFY(ServerHarness::waitFor([&] { return !door.takeEvents().empty(); }));
    // The next one takes its place, which nobody can be told.
    fails = true;
    WebSocketPeer unlucky;
    unlucky.open(url);
    QVERIFY(ServerHarness::waitFor([&] { return !fails; }));
    WebSocketPeer next;
    next.open(url);
    QVERIFY(ServerHarness::waitFor([&] { return next.isOpen(); }));
    // Time-outs go on.
    QVERIFY(ServerHarness::waitFor([&] { return next.isClosed(); }));
}

/** A message that takes longer than the idle time, from somebody who cannot answer pings meanwhile. */
void TestSocketDoor::slowSenderLives()
{
    Visit visit(impatient());
    QVERIFY(visit.came);
    visit.peer.answersPings = false;
    WebSocketFrame frame;
    frame.payload = QByteArray(30, 'x');
    frame.isMasked = true;
    const QByteArray bytes = frame.toBytes();
    QElapsedTimer clock;
    clock.start();
    int sent = 0;
    QVERIFY(ServerHarness::waitFor([&] {
        if (sent < bytes.size() && clock.elapsed() > sent * 50) {
            visit.peer.sendBytes(bytes.mid(sent++, 1));
        }
        return visit.received.size() == 2 || visit.closed;
    }));
    QVERIFY(!visit.closed);
    QVERIFY(clock.elapsed() > 2 * 600);
    QCOMPARE(visit.received[1], frame.payload);
}

/** It takes a little at a time, and cannot answer pings meanwhile. */
void TestSocketDoor::slowReaderLives()
{
    DoorConfig config = impatient();
    config.idleTime = std::chrono::milliseconds(1500);
    Visit visit(config);
    QVERIFY(visit.came);
    visit.peer.answersPings = false;
    visit.peer.setReading(false);
    const QByteArray message(12 << 20, 'x');
    visit.door.send(visit.client, message);
    QElapsedTimer clock;
    clock.start();
    QTcpSocket& socket = visit.peer.socket();
    socket.setReadBufferSize(64 << 10);
    qint64 read = 0;
    QVERIFY(ServerHarness::waitFor([&] { // 3 MB/s
        if (socket.bytesAvailable() > 0 && read < clock.elapsed() * 3000) {
            read += socket.read(64 << 10).size();
        }
        return read > message.size() || visit.closed;
    }));
    QVERIFY2(!visit.closed, qPrintable(QString::number(read)));
    QVERIFY(clock.elapsed() > 2 * 1500);
}

QTEST_GUILESS_MAIN(TestSocketDoor)
#include "tst_socketdoor.moc"
