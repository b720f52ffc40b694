// The server's door: real sockets, real TLS, and clients of every kind.

#include "client/SocketLink.h"
#include "protocol/WireMessage.h"
#include "server/access/ServerCertificate.h"
#include "server/access/SocketServer.h"
#include "server/access/UserStore.h"
#include "tests/embedded/RawClient.h"
#include "tests/server/ServerHarness.h"
#include "tests/support/FileReaders.h"
#include "tests/support/FullDisk.h"
#include "tests/support/WavFiles.h"

#include <QTcpSocket>

#ifndef Q_OS_WIN
#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#endif

class TestSocketServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void userStore();
    void certificateIsMadeOnce();
    void certificateOnAFullDisk();
    void keyAloneGetsACertificate();
    void commandsRepliesAndEvents();
    void progressCarriesItsRequest();
    void largeMessageTellsItsProgress();
    void token();
    void wrongPasswordIsFinal();
    void refusedClientThatStays();
    void withoutALoginNoAnswer_data();
    void withoutALoginNoAnswer();
    void silentClientLosesItsPlace();
    void loginsOfThoseWhoLeftAreWithdrawn();
    void loginsWaitForEachOther();
    void tlsWithAFingerprint();
    void tlsWithAnotherFingerprint();
    void nothingWaitsForAcknowledgements_data();
    void nothingWaitsForAcknowledgements();
    void connectionIsMadeAgain();
    void slowClientIsDropped();
    void tooManyClients();
    void twoHundredClients();
    void clientsAreKeptApart();

private:
    SocketConfig config() const
    {
        SocketConfig made;
        made.users = m_users;
        return made;
    }
    static SocketLinkConfig to(const SocketServer& server)
    {
        SocketLinkConfig made;
        made.url = server.url();
        made.url.setHost("127.0.0.1");
        made.user = "anna";
        made.secret = "right";
        return made;
    }

    UserStore m_users;
    QTemporaryDir m_folder;
};

namespace {

template<class Condition>
bool waitFor(Condition condition, int timeout = 20000)
{
    return ServerHarness::waitFor(condition, timeout);
}

} // namespace

void TestSocketServer::initTestCase()
{
    QVERIFY(m_users.setPassword("anna", "right"));
    QVERIFY(m_users.setPassword(QString(), "the-token"));
}

void TestSocketServer::userStore()
{
    const QString path = m_folder.filePath("users");
    QVERIFY(m_users.save(path));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QVERIFY(!text.contains("right") && !text.contains("the-token"));
    QVERIFY(FileReaders::isPrivate(path));
    UserStore read;
    QVERIFY(read.load(path));
    QVERIFY(read.admits("anna", "right"));
    QVERIFY(read.admits("", "the-token"));
    QVERIFY(!read.admits("anna", "wrong"));
    QVERIFY(!read.admits("anna", ""));
    QVERIFY(!read.admits("anna", "the-token"));
    QVERIFY(!read.admits("", "right"));
    QVERIFY(!read.admits("nobody", "right"));
    QVERIFY(!read.setPassword("a b", "x"));
    QVERIFY(!read.setPassword("c", ""));
    UserStore empty;
    QVERIFY(empty.load(m_folder.filePath("absent")));
    QVERIFY(!empty.admits("", ""));
}

void TestSocketServer::certificateIsMadeOnce()
{
    QString error;
    const QString folder = m_folder.filePath("tls");
    const auto first = ServerCertificate::loadOrCreate(folder, &error);
    QVERIFY2(first, qPrintable(error));
    const auto second = ServerCertificate::loadOrCreate(folder, &error);
    QVERIFY(second);
    QCOMPARE(first->certificate, second->certificate);
    QVERIFY(first->certificate.expiryDate() > QDateTime::currentDateTime().addYears(5));
    QVERIFY(FileReaders::isPrivate(folder + "/server.key"));
    QFile broken(folder + "/server.key");
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("x");
    broken.close();
    QVERIFY(!ServerCertificate::loadOrCreate(folder, &error));
    QVERIFY(error.contains("server.key"));
}

void TestSocketServer::certificateOnAFullDisk()
{
    if (!FullDisk::possible) {
        QSKIP("Needs a limit of a file's size.");
    }
    const QString folder = m_folder.filePath("full");
    for (const unsigned long room : {0UL, 300UL}) { // none; for the key, which is shorter, alone
        const FullDisk disk(room);
        QString error;
        QVERIFY(!ServerCertificate::loadOrCreate(folder, &error));
        QVERIFY2(error.contains(folder + (room == 0 ? "/server.key cannot" : "/server.crt cannot")),
                 qPrintable(error));
        QCOMPARE(QDir(folder).entryList(QDir::Files), room == 0 ? QStringList() : QStringList("server.key"));
    }
    QString error;
    QVERIFY2(ServerCertificate::loadOrCreate(folder, &error), qPrintable(error));
}

/** As a start leaves it that is killed between the two files. */
void TestSocketServer::keyAloneGetsACertificate()
{
    const QString folder = m_folder.filePath("key alone");
    QString error;
    const auto first = ServerCertificate::loadOrCreate(folder, &error);
    QVERIFY2(first, qPrintable(error));
    QVERIFY(QFile::remove(folder + "/server.crt"));
    const auto second = ServerCertificate::loadOrCreate(folder, &error);
    QVERIFY2(second, qPrintable(error));
    QVERIFY(second->key == first->key);
    QVERIFY(second->certificate.publicKey() == first->certificate.publicKey());
    QVERIFY(second->certificate.serialNumber() != first->certificate.serialNumber());
    QVERIFY(QFile::remove(folder + "/server.crt"));
    QFile broken(folder + "/server.key");
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("x");
    broken.close();
    QVERIFY(!ServerCertificate::loadOrCreate(folder, &error));
    QVERIFY(error.contains("server.key"));
    QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList("server.key")); // whatever it is, it stays
}

void TestSocketServer::commandsRepliesAndEvents()
{
    ServerHarness harness(ServerConfig(), ServerHarness::offlineAt("10.0.0.66"));
    SocketServer door(*harness.server, config(), nullptr);
    QVERIFY(door.listen());
    SocketLink link(to(door));
    const QSignalSpy connected(&link, &ServerLink::connected);
    QSignalSpy replied(&link, &ServerLink::replied);
    QSignalSpy events(&link, &ServerLink::eventRaised);
    QVERIFY(!link.send("GetAudioFile", QVariant(), 1)); // not connected yet
    link.open();
    QVERIFY(waitFor([&] { return connected.size() == 1; }));
    QVERIFY(link.send("AddIPAudio", ServerHarness::device("Gate", "10.0.0.66"), 71));
    QVERIFY(waitFor([&] { return replied.size() == 1; }));
    QCOMPARE(replied[0][0].toString(), QString("AddIPAudio"));
    QCOMPARE(replied[0][1].toMap()["deviceID"], QVariant(1));
    QCOMPARE(replied[0][2], QVariant(quint64{71}));
    QCOMPARE(replied[0][3].toString(), QString("0"));
    QVERIFY(link.send("AddIPAudio", QVariantMap(), 1));
    QVERIFY(waitFor([&] { return replied.size() == 2; }));
    QCOMPARE(replied[1][3].toString(), QString("411"));
    QVERIFY(!replied[1][4].toString().isEmpty());
    QVERIFY(WavFiles::write(m_folder.filePath("t.wav"), WavFiles::sine(440, 0.5, 0.3, 16000), 16000));
    harness.upload(m_folder.filePath("t.wav"));
    link.send("PlayAudio", QVariantMap{{"ipAudioId", 1}, {"audioFileId", 1}}, 1);
    QVERIFY(waitFor([&] { return events.size() == 1; }));
    QCOMPARE(events[0][0].toString(), QString("PlayAudioFailed"));
    QCOMPARE(events[0][1].toMap()["deviceName"], QVariant("Gate"));
}

void TestSocketServer::progressCarriesItsRequest()
{
    ServerHarness harness;
    SocketServer door(*harness.server, config(), nullptr);
    QVERIFY(door.listen());
    harness.addDevice("Gate");
    QVERIFY(WavFiles::write(m_folder.filePath("t.wav"), WavFiles::sine(440, 0.5, 1, 16000), 16000));
    harness.upload(m_folder.filePath("t.wav"));
    SocketLink link(to(door));
    QSignalSpy connected(&link, &ServerLink::connected);
    QSignalSpy replied(&link, &ServerLink::replied);
    link.open();
    QVERIFY(waitFor([&] { return connected.size() == 1; }));
    const quint64 request = (quint64{3} << 32) + 5; // the wire carries 5
    link.send("PlayAudio", QVariantMap{{"ipAudioId", 1}, {"audioFileId", 1}}, request);
    QVERIFY(
        waitFor([&] { return !replied.isEmpty() && replied.last()[1].toMap()["progress"].toInt() == 100; }));
    QVERIFY(replied.size() > 2);
    for (const QList<QVariant>& reply : replied) {
        QCOMPARE(reply[0].toString(), QString("PlayAudio"));
        QCOMPARE(reply[2], QVariant(request));
    }
}

void TestSocketServer::largeMessageTellsItsProgress()
{
    RecordingServer recordingServer{ServerConfig()};
    SocketServer server(recordingServer, config(), nullptr);
    QVERIFY(server.listen());
    SocketLink link(to(server));
    QSignalSpy connected(&link, &ServerLink::connected);
    QSignalSpy replied(&link, &ServerLink::replied);
    link.open();
    QTRY_COMPARE(connected.size(), 1);
    QSignalSpy sending(&link, &ServerLink::sending);
    const QVariantMap upload{{"content", QString(20 << 20, 'A')}, {"filename", "big.wav"}, {"length", 0}};
    QVERIFY(link.send("UploadFile", upload, 1));
    QTRY_COMPARE_WITH_TIMEOUT(replied.size(), 1, 60000);
    QVERIFY2(sending.size() > 2, qPrintable(QString::number(sending.size())));
    qint64 before = 0;
    for (const auto& step : sending) {
        const qint64 sent = step[0].toLongLong();
        QVERIFY(sent >= before && sent <= step[1].toLongLong());
        before = sent;
    }
    QCOMPARE(sending.last()[0], sending.last()[1]); // all of it has gone
    QVERIFY(before >= 20 << 20);
}

void TestSocketServer::token()
{
    ServerHarness harness;
    SocketServer door(*harness.server, config(), nullptr);
    QVERIFY(door.listen());
    SocketLinkConfig withToken = to(door);
    withToken.user.clear();
    withToken.secret = "the-token";
    SocketLink link(withToken);
    const QSignalSpy connected(&link, &ServerLink::connected);
    link.open();
    QVERIFY(waitFor([&] { return connected.size() == 1; }));
}

void TestSocketServer::wrongPasswordIsFinal()
{
    ServerHarness harness;
    SocketServer door(*harness.server, config(), nullptr);
    QVERIFY(door.listen());
    SocketLinkConfig wrong = to(door);
    wrong.secret = "wrong";
    SocketLink link(wrong);
    const QSignalSpy connected(&link, &ServerLink::connected);
    QSignalSpy lost(&link, &SocketLink::lost);
    link.open();
    QVERIFY(waitFor([&] { return !lost.isEmpty(); }));
    QVERIFY2(lost[0][0].toString().contains("password"), qPrintable(lost[0][0].toString()));
    QCOMPARE(lost[0][1].toBool(), true);
    QVERIFY(connected.isEmpty());
    QVERIFY(waitFor([&] { return door.clients() == 0; }));
}

void TestSocketServer::refusedClientThatStays()
{
    ServerHarness harness;
    SocketServer door(*harness.server, config(), nullptr);
    QVERIFY(door.listen());
    RawClient client(door);
    QVERIFY(client.connected);
    client.socket.sendBinaryMessage(loginOf("anna", "wrong"));
    QVERIFY(waitFor([&] { return !client.received.isEmpty(); }));
    const auto refusal = WireMessage::fromBytes(client.received[0]);
    QVERIFY(refusal);
    QCOMPARE(int{refusal->kind}, int{WireMessage::Refused});
    QVERIFY(refusal->text.contains("password"));
    client.socket.sendBinaryMessage(loginOf("anna", "right")); // too late
    QVERIFY(client.closed());
    QCOMPARE(client.received.size(), 1);
    QVERIFY(waitFor([&] { return door.clients() == 0; }));
}

void TestSocketServer::withoutALoginNoAnswer_data()
{
    QTest::addColumn<QByteArray>("bytes");
    WireMessage command;
    command.kind = WireMessage::Command;
    command.id = 1;
    command.name = "GetAudioFile";
    WireMessage reply = command;
    reply.kind = WireMessage::Reply;
    QTest::newRow("command") << command.toBytes();
    QTest::newRow("reply") << reply.toBytes();
    QTest::newRow("no message") << QByteArray("hello");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("too large") << loginOf("anna", QString(100000, 'x'));
}

void TestSocketServer::withoutALoginNoAnswer()
{
    QFETCH(QByteArray, bytes);
    ServerHarness harness;
    SocketServer door(*harness.server, config(), nullptr);
    QVERIFY(door.listen());
    RawClient client(door);
    QVERIFY(client.connected);
    client.socket.sendBinaryMessage(bytes);
    QVERIFY(client.closed());
    QVERIFY(client.received.isEmpty());
    QVERIFY(waitFor([&] { return door.clients() == 0; }));
}

void TestSocketServer::silentClientLosesItsPlace()
{
    ServerHarness harness;
    SocketConfig quick = config();
    quick.loginTimeout = 200;
    SocketServer door(*harness.server, quick, nullptr);
    QVERIFY(door.listen());
    RawClient client(door);
    QVERIFY(client.connected);
    QVERIFY(client.closed());
    QVERIFY(waitFor([&] { return door.clients() == 0; }));
}

void TestSocketServer::loginsOfThoseWhoLeftAreWithdrawn()
{
    ServerHarness harness;
    SocketServer door(*harness.server, config(), nullptr);
    QVERIFY(door.listen());
    QElapsedTimer clock;
    const auto timeOfAnHonestLogin = [&] {
        clock.start();
        SocketLink link(to(door));
        bool connected = false;
        QObject::connect(&link, &ServerLink::connected, [&connected] { connected = true; });
        link.open();
        return waitFor([&] { return connected; }, 60000) ? clock.elapsed() : 60000;
    };
    const qint64 alone = timeOfAnHonestLogin();
    constexpr int count = 40; // two are looked at at a time
    std::vector<std::unique_ptr<RawClient>> leaving;
    for (int i = 0; i < count; ++i) {
        leaving.push_back(std::make_unique<RawClient>(door));
        QVERIFY(leaving.back()->connected);
    }
    for (const auto& client : leaving) {
        client->socket.sendBinaryMessage(loginOf("anna", "wrong"));
        client->socket.close();
    }
    QVERIFY(waitFor([&] { return door.clients() == 0; }));
    leaving.clear();
    const qint64 after = timeOfAnHonestLogin();
    QVERIFY2(after < alone * count / 5, qPrintable(QString("%1 ms, alone %2 ms").arg(after).arg(alone)));
}

/** A login that waits for others' is not one that never came. */
void TestSocketServer::loginsWaitForEachOther()
{
    ServerHarness harness;
    SocketConfig quick = config();
    quick.loginTimeout = 300;
    SocketServer door(*harness.server, quick, nullptr);
    QVERIFY(door.listen());
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 24; ++i) {
        clients.push_back(std::make_unique<RawClient>(door));
        QVERIFY(clients.back()->connected);
        clients.back()->socket.sendBinaryMessage(loginOf("anna", "right"));
    }
    for (const auto& client : clients) {
        QVERIFY(waitFor([&] { return !client->received.isEmpty(); }, 60000));
        const auto answer = WireMessage::fromBytes(client->received[0]);
        QVERIFY(answer);
        QCOMPARE(int{answer->kind}, int{WireMessage::Welcome});
    }
}

void TestSocketServer::tlsWithAFingerprint()
{
    ServerHarness harness;
    QString error;
    const auto certificate = ServerCertificate::loadOrCreate(m_folder.filePath("tls2"), &error);
    QVERIFY2(certificate, qPrintable(error));
    SocketServer door(*harness.server, config(), &*certificate);
    QVERIFY(door.listen());
    QCOMPARE(door.url().scheme(), QString("wss"));
    SocketLinkConfig pinned = to(door);
    pinned.fingerprint = ServerCertificate::fingerprint(certificate->certificate);
    SocketLink link(pinned);
    const QSignalSpy connected(&link, &ServerLink::connected);
    link.open();
    QVERIFY(waitFor([&] { return connected.size() == 1; }));
}

void TestSocketServer::tlsWithAnotherFingerprint()
{
    ServerHarness harness;
    QString error;
    const auto certificate = ServerCertificate::loadOrCreate(m_folder.filePath("tls3"), &error);
    SocketServer door(*harness.server, config(), &*certificate);
    QVERIFY(door.listen());
    for (const QString& fingerprint : {QString(), QString(64, '0')}) {
        SocketLinkConfig pinned = to(door);
        pinned.fingerprint = fingerprint;
        SocketLink link(pinned);
        const QSignalSpy connected(&link, &ServerLink::connected);
        const QSignalSpy lost(&link, &SocketLink::lost);
        link.open();
        QVERIFY(waitFor([&] { return !lost.isEmpty(); }));
        QVERIFY(connected.isEmpty());
    }
}

namespace {

#ifndef Q_OS_WIN

/** TCP_NODELAY of this process's connections with a port at their near end or, if @p far, at their far end.
 */
QList<bool> noDelays(int port, bool far)
{
    QList<bool> found;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        sockaddr_in address{};
        socklen_t size = sizeof(address);
        const bool connected = getpeername(descriptor, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
                               (far || getsockname(descriptor, reinterpret_cast<sockaddr*>(&address),
                                                   &(size = sizeof(address))) == 0);
        if (connected && ntohs(address.sin_port) == port) {
            int value = 0;
            size = sizeof(value);
            getsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &value, &size);
            found.append(value != 0);
        }
    }
    return found;
}

#endif

} // namespace

void TestSocketServer::nothingWaitsForAcknowledgements_data()
{
    QTest::addColumn<bool>("tls");
    QTest::newRow("plain") << false;
    QTest::newRow("TLS") << true;
}

void TestSocketServer::nothingWaitsForAcknowledgements()
{
#ifdef Q_OS_WIN
    QSKIP("Looks through the descriptors of the process.");
#else
    QFETCH(bool, tls);
    ServerHarness harness;
    QString error;
    const auto certificate = ServerCertificate::loadOrCreate(m_folder.filePath("tls4"), &error);
    QVERIFY2(certificate, qPrintable(error));
    auto door = std::make_unique<SocketServer>(*harness.server, config(), tls ? &*certificate : nullptr);
    QVERIFY(door->listen());
    SocketLinkConfig pinned = to(*door);
    pinned.fingerprint = ServerCertificate::fingerprint(certificate->certificate);
    SocketLink link(pinned);
    const QSignalSpy connected(&link, &ServerLink::connected);
    link.open();
    for (int connection = 1; connection <= 2; ++connection) { // and when it is made again
        QVERIFY(waitFor([&] { return connected.size() == connection; }));
        const int port = door->url().port();
        QCOMPARE(noDelays(port, false), QList<bool>{true}); // the server's end
        QCOMPARE(noDelays(port, true), QList<bool>{true});  // the client's
        SocketConfig again = config();
        again.port = static_cast<quint16>(port);
        door.reset();
        door = std::make_unique<SocketServer>(*harness.server, again, tls ? &*certificate : nullptr);
        QVERIFY(waitFor([&] { return door->listen(); }));
    }
#endif
}

void TestSocketServer::connectionIsMadeAgain()
{
    ServerHarness harness;
    auto door = std::make_unique<SocketServer>(*harness.server, config(), nullptr);
    QVERIFY(door->listen());
    SocketLink link(to(*door));
    const QSignalSpy connected(&link, &ServerLink::connected);
    const QSignalSpy lost(&link, &SocketLink::lost);
    link.open();
    QVERIFY(waitFor([&] { return connected.size() == 1; }));
    SocketConfig again = config();
    again.port = static_cast<quint16>(door->url().port());
    door.reset();
    QVERIFY(waitFor([&] { return !lost.isEmpty(); }));
    QVERIFY(!link.send("GetAudioFile", QVariant(), 1));
    door = std::make_unique<SocketServer>(*harness.server, again, nullptr);
    QVERIFY(waitFor([&] { return door->listen(); }));
    QVERIFY(waitFor([&] { return connected.size() == 2; }));
    QVERIFY(link.send("GetAudioFile", QVariant(), 1));
}

void TestSocketServer::slowClientIsDropped()
{
    ServerHarness harness;
    for (int i = 0; i < 200; ++i) {
        harness.addDevice(QString(100, 'x') + QString::number(i));
    }
    SocketConfig narrow = config();
    narrow.maxWaitingBytes = 200000;
    SocketServer door(*harness.server, narrow, nullptr);
    QVERIFY(door.listen());
    // A client on a plain socket that logs in, asks and asks, and never reads.
    QTcpSocket socket;
    socket.setReadBufferSize(1024);
    socket.connectToHost("127.0.0.1", static_cast<quint16>(door.url().port()));
    QVERIFY(waitFor([&] { return socket.state() == QAbstractSocket::ConnectedState; }));
    socket.write("GET / HTTP/1.1\r\nHost: x\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                 "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n");
    const auto frame = [](const QByteArray& payload) {
        QByteArray made("\x82", 1);
        made.append(static_cast<char>(0x80 | 126));
        made.append(static_cast<char>(payload.size() >> 8)).append(static_cast<char>(payload.size() & 0xFF));
        return made + QByteArray(4, '\0') + payload; // a mask of zeros changes nothing
    };
    QVERIFY(waitFor([&] { return door.clients() == 1; }));
    socket.write(frame(loginOf("anna", "right")));
    WireMessage ask;
    ask.kind = WireMessage::Command;
    ask.id = 1;
    ask.name = "RetrieveIPAudioModel";
    const QByteArray question = frame(ask.toBytes());
    QElapsedTimer clock;
    clock.start();
    QTest::qWait(500); // the login is looked at
    QVERIFY(waitFor(
        [&] {
            if (socket.state() == QAbstractSocket::ConnectedState && socket.bytesToWrite() < 10000) {
                for (int i = 0; i < 20; ++i) {
                    socket.write(question);
                }
            }
            return door.clients() == 0;
        },
        60000));
    // The others are served as ever.
    SocketLink link(to(door));
    const QSignalSpy connected(&link, &ServerLink::connected);
    link.open();
    QVERIFY(waitFor([&] { return connected.size() == 1; }));
}

void TestSocketServer::tooManyClients()
{
    ServerHarness harness;
    SocketConfig few = config();
    few.maxClients = 2;
    SocketServer door(*harness.server, few, nullptr);
    QVERIFY(door.listen());
    RawClient first(door);
    RawClient second(door);
    RawClient third(door);
    QVERIFY(third.closed());
    QCOMPARE(door.clients(), 2);
}

void TestSocketServer::twoHundredClients()
{
    ServerHarness harness;
    harness.addDevice("Gate");
    SocketServer door(*harness.server, config(), nullptr);
    QVERIFY(door.listen());
    std::vector<std::unique_ptr<SocketLink>> links;
    int connected = 0;
    int replies = 0;
    SocketLinkConfig withToken = to(door);
    for (int i = 0; i < 200; ++i) {
        links.push_back(std::make_unique<SocketLink>(withToken));
        SocketLink* link = links.back().get();
        QObject::connect(link, &ServerLink::connected, [&connected, link] {
            ++connected;
            link->send("RetrieveIPAudioModel", QVariant(), 1);
        });
        QObject::connect(link, &ServerLink::replied,
                         [&replies](const QString&, const QVariant& result, quint64, const QString&,
                                    const QString&) { replies += result.toList().size(); });
        link->open();
    }
    QVERIFY(waitFor([&] { return replies == 200; }, 90000));
    QCOMPARE(connected, 200);
    QCOMPARE(door.clients(), 200);
    links.clear();
    QVERIFY(waitFor([&] { return door.clients() == 0; }));
}

void TestSocketServer::clientsAreKeptApart()
{
    ServerHarness harness;
    harness.addDevice("Gate");
    SocketServer door(*harness.server, config(), nullptr);
    QVERIFY(door.listen());
    SocketLink first(to(door));
    SocketLink second(to(door));
    const QSignalSpy firstConnected(&first, &ServerLink::connected);
    const QSignalSpy secondConnected(&second, &ServerLink::connected);
    QSignalSpy firstReplied(&first, &ServerLink::replied);
    QSignalSpy secondReplied(&second, &ServerLink::replied);
    first.open();
    second.open();
    QVERIFY(waitFor([&] { return !firstConnected.isEmpty() && !secondConnected.isEmpty(); }));
    first.send("StartTalkToIPAudio", 1, 1);
    QVERIFY(waitFor([&] { return firstReplied.size() == 1; }));
    const QString token = firstReplied[0][1].toMap()["talkToken"].toString();
    second.send("StopTalk", QVariantMap{{"talkToken", token}}, 1);
    QVERIFY(waitFor([&] { return secondReplied.size() == 1; }));
    QCOMPARE(secondReplied[0][3].toString(), QString("203")); // another client's talk
    QCOMPARE(firstReplied.size(), 1);
}

QTEST_GUILESS_MAIN(TestSocketServer)
#include "tst_socketserver.moc"
