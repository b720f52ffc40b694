// Clients on real sockets: what they send and get, how fast, how many, and after a loss.

#include "protocol/WireMessage.h"
#include "server/access/ServerCertificate.h"
#include "tests/embedded/RawClient.h"
#include "tests/embedded/SocketHarness.h"
#include "tests/server/AwkwardServer.h"
#include "tests/support/WavFiles.h"

#include <QSslSocket>
#include <QTcpSocket>

#ifndef Q_OS_WIN
#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#endif

using namespace SocketHarness;

namespace {

/** Knows the session of the client that is there. */
struct OneSession : CommandExecutor
{
    std::optional<ServerReply> execute(ServerSession&, const QString&, const QVariant&, quint64) override
    {
        return std::nullopt;
    }
    void openSession(ServerSession& opened) override { session = &opened; }
    void closeSession(ServerSession&) override { session = nullptr; }

    ServerSession* session = nullptr;
};

} // namespace

class TestSocketServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandsRepliesAndEvents();
    void progressCarriesItsRequest();
    void largeMessageTellsItsProgress();
    void nothingWaitsForAcknowledgements_data();
    void nothingWaitsForAcknowledgements();
    void connectionIsMadeAgain();
    void slowClientIsDropped();
    void receiptsCount();
    void whatWaitsIsKnown_data();
    void whatWaitsIsKnown();
    void tooManyClients();
    void twoHundredClients();
    void clientsAreKeptApart();
    void othersAreToldWhoTalks_data();
    void othersAreToldWhoTalks();

private:
    QTemporaryDir m_folder;
};

void TestSocketServer::commandsRepliesAndEvents()
{
    ServerHarness harness(ServerConfig(), ServerHarness::offlineAt("10.0.0.66"));
    SocketServer server(*harness.server, config(), nullptr);
    QVERIFY(server.listen());
    SocketLink link(to(server));
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
    SocketServer server(*harness.server, config(), nullptr);
    QVERIFY(server.listen());
    harness.addDevice("Gate");
    QVERIFY(WavFiles::write(m_folder.filePath("t.wav"), WavFiles::sine(440, 0.5, 1, 16000), 16000));
    harness.upload(m_folder.filePath("t.wav"));
    OpenedLink link(to(server));
    QVERIFY(link.isUp());
    const quint64 request = (quint64{3} << 32) + 5; // the wire carries 5
    link.send("PlayAudio", QVariantMap{{"ipAudioId", 1}, {"audioFileId", 1}}, request);
    QVERIFY(waitFor([&] {
        return !link.replied.isEmpty() && link.replied.last()[1].toMap()["progress"].toInt() == 100;
    }));
    QVERIFY(link.replied.size() > 2);
    for (const QList<QVariant>& reply : link.replied) {
        QCOMPARE(reply[0].toString(), QString("PlayAudio"));
        QCOMPARE(reply[2], QVariant(request));
    }
}

void TestSocketServer::largeMessageTellsItsProgress()
{
    RecordingServer recordingServer{ServerConfig()};
    SocketServer server(recordingServer, config(), nullptr);
    QVERIFY(server.listen());
    OpenedLink link(to(server));
    QVERIFY(link.isUp());
    QSignalSpy sending(&link.link, &ServerLink::sending);
    const QVariantMap upload{{"content", QString(20 << 20, 'A')}, {"filename", "big.wav"}, {"length", 0}};
    QVERIFY(link.send("UploadFile", upload, 1));
    QTRY_COMPARE_WITH_TIMEOUT(link.replied.size(), 1, 60000);
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
    auto server = std::make_unique<SocketServer>(*harness.server, config(), tls ? &*certificate : nullptr);
    QVERIFY(server->listen());
    SocketLinkConfig pinned = to(*server);
    pinned.fingerprint = tls ? ServerCertificate::fingerprint(certificate->certificate) : QString();
    OpenedLink link(pinned);
    for (int connection = 1; connection <= 2; ++connection) { // and when it is made again
        QVERIFY(waitFor([&] { return link.connected.size() == connection; }));
        const int port = server->url().port();
        QCOMPARE(noDelays(port, false), QList<bool>{true}); // the server's end
        QCOMPARE(noDelays(port, true), QList<bool>{true});  // the client's
        SocketConfig again = config();
        again.port = static_cast<quint16>(port);
        server.reset();
        server = std::make_unique<SocketServer>(*harness.server, again, tls ? &*certificate : nullptr);
        QVERIFY(waitFor([&] { return server->listen(); }));
    }
#endif
}

void TestSocketServer::connectionIsMadeAgain()
{
    ServerHarness harness;
    auto server = std::make_unique<SocketServer>(*harness.server, config(), nullptr);
    QVERIFY(server->listen());
    OpenedLink link(to(*server));
    QVERIFY(link.isUp());
    SocketConfig again = config();
    again.port = static_cast<quint16>(server->url().port());
    server.reset();
    QVERIFY(waitFor([&] { return !link.lost.isEmpty(); }));
    QVERIFY(!link.send("GetAudioFile", QVariant(), 1));
    server = std::make_unique<SocketServer>(*harness.server, again, nullptr);
    QVERIFY(waitFor([&] { return server->listen(); }));
    QVERIFY(waitFor([&] { return link.connected.size() == 2; }));
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
    SocketServer server(*harness.server, narrow, nullptr);
    QVERIFY(server.listen());
    // A client on a plain socket that logs in, asks and asks, and never reads.
    QTcpSocket socket;
    socket.setReadBufferSize(1024);
    socket.connectToHost("127.0.0.1", static_cast<quint16>(server.url().port()));
    QVERIFY(waitFor([&] { return socket.state() == QAbstractSocket::ConnectedState; }));
    socket.write("GET / HTTP/1.1\r\nHost: x\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                 "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n");
    const auto frame = [](const QByteArray& payload) {
        QByteArray made("\x82", 1);
        made.append(static_cast<char>(0x80 | 126));
        made.append(static_cast<char>(payload.size() >> 8)).append(static_cast<char>(payload.size() & 0xFF));
        return made + QByteArray(4, '\0') + payload; // a mask of zeros changes nothing
    };
    QVERIFY(waitFor([&] { return server.clients() == 1; }));
    socket.write(frame(loginOf("anna", "right")));
    WireMessage ask;
    ask.kind = WireMessage::Command;
    ask.id = 1;
    ask.name = "RetrieveIPAudioModel";
    const QByteArray question = frame(ask.toBytes());
    QElapsedTimer clock;
    clock.start();
    QVERIFY(waitFor([&] { // the welcome follows the server's side of the handshake
        const QByteArray came = socket.peek(1024);
        const int end = came.indexOf("\r\n\r\n");
        return end > 0 && came.size() > end + 4;
    }));
    QVERIFY(waitFor(
        [&] {
            if (socket.state() == QAbstractSocket::ConnectedState && socket.bytesToWrite() < 10000) {
                for (int i = 0; i < 20; ++i) {
                    socket.write(question);
                }
            }
            return server.clients() == 0;
        },
        60000));
    // The others are served as ever.
    OpenedLink link(to(server));
    QVERIFY(link.isUp());
}

/** A client that reads may get any number of bytes, and nothing waits for it. */
void TestSocketServer::receiptsCount()
{
    OneSession executor;
    SocketConfig narrow = config();
    narrow.maxWaitingBytes = 1 << 20;
    SocketServer server(executor, narrow, nullptr);
    QVERIFY(server.listen());
    SocketLink link(to(server));
    QSignalSpy events(&link, &ServerLink::eventRaised);
    link.open();
    QVERIFY(waitFor([&] { return executor.session != nullptr; }));
    constexpr int count = 100;
    for (int i = 1; i <= count; ++i) {
        executor.session->raisePlainEvent("CameraVideo", {{"accessUnit", QByteArray(64 << 10, 'x')}});
        QVERIFY(waitFor([&] { return events.size() == i; }));
        QVERIFY(
            waitFor([&] { return executor.session != nullptr && executor.session->waitingBytes() < 65536; }));
    }
    QCOMPARE(server.clients(), 1);
}

void TestSocketServer::whatWaitsIsKnown_data()
{
    QTest::addColumn<bool>("tls");
    QTest::newRow("plain") << false;
    QTest::newRow("TLS") << true;
}

/** What waits for a client that does not read: events go by it, and beyond a limit the client. */
void TestSocketServer::whatWaitsIsKnown()
{
    QFETCH(bool, tls);
    OneSession executor;
    QString error;
    const auto certificate = ServerCertificate::loadOrCreate(m_folder.filePath("tls5"), &error);
    QVERIFY2(certificate, qPrintable(error));
    SocketConfig narrow = config();
    narrow.maxWaitingBytes = 4 << 20;
    SocketServer server(executor, narrow, tls ? &*certificate : nullptr);
    QVERIFY(server.listen());
    QSslSocket socket;
    socket.setPeerVerifyMode(QSslSocket::VerifyNone);
    socket.setReadBufferSize(1024);
    const auto port = static_cast<quint16>(server.url().port());
    if (tls) {
        socket.connectToHostEncrypted("127.0.0.1", port);
        QVERIFY(waitFor([&] { return socket.isEncrypted(); }));
    } else {
        socket.connectToHost("127.0.0.1", port);
    }
    QVERIFY(waitFor([&] { return socket.state() == QAbstractSocket::ConnectedState; }));
    const QByteArray login = loginOf("anna", "right");
    socket.write("GET / HTTP/1.1\r\nHost: x\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                 "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n");
    QVERIFY(waitFor([&] { return server.clients() == 1; }));
    QVERIFY(login.size() < 126);
    socket.write(QByteArray("\x82").append(static_cast<char>(0x80 | login.size())) + QByteArray(4, '\0') +
                 login);
    QVERIFY(waitFor([&] { return executor.session != nullptr; }));
    QVERIFY(executor.session->waitingBytes() < 1000); // the welcome
    const QVariantMap picture{{"accessUnit", QByteArray(64 << 10, 'x')}};
    qint64 most = 0;
    for (int i = 0; i < 1000 && executor.session != nullptr; ++i) { // the systems at both ends take some
        most = std::max(most, executor.session->waitingBytes());
        executor.session->raisePlainEvent("CameraVideo", picture);
        QCoreApplication::processEvents();
    }
    QVERIFY(most > Limits::maxWaitingForVideo);
    QVERIFY(most <= narrow.maxWaitingBytes + (1 << 20));
    QVERIFY(executor.session == nullptr);
    QVERIFY(waitFor([&] { return server.clients() == 0; }));
}

void TestSocketServer::tooManyClients()
{
    SocketConfig few = config();
    few.maxClients = 2;
    const OpenedServer server(few);
    QVERIFY(server.listens);
    RawClient late(server.sockets); // whose login comes when all places are taken
    QVERIFY(late.connected);
    OpenedLink first(to(server.sockets));
    QVERIFY(first.isUp());
    OpenedLink second(to(server.sockets));
    QVERIFY(second.isUp());
    RawClient third(server.sockets);
    late.socket.sendBinaryMessage(loginOf("anna", "right"));
    for (RawClient* refused : {&third, &late}) {
        QVERIFY(refused->closed());
        QCOMPARE(refused->socket.closeCode(), 1008);
        QCOMPARE(refused->socket.closeReason(), QString("too many clients"));
        QVERIFY(refused->received.isEmpty());
    }
    QTRY_COMPARE(server.sockets.clients(), 2);
    QVERIFY(first.send("GetAudioFile", QVariant(), 1));
    QVERIFY(waitFor([&] { return first.replied.size() == 1; }));
}

void TestSocketServer::twoHundredClients()
{
    ServerHarness harness;
    harness.addDevice("Gate");
    SocketServer server(*harness.server, config(), nullptr);
    QVERIFY(server.listen());
    std::vector<std::unique_ptr<SocketLink>> links;
    int connected = 0;
    int replies = 0;
    SocketLinkConfig withToken = to(server);
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
    QCOMPARE(server.clients(), 200);
    links.clear();
    QVERIFY(waitFor([&] { return server.clients() == 0; }));
}

void TestSocketServer::clientsAreKeptApart()
{
    ServerHarness harness;
    harness.addDevice("Gate");
    SocketServer server(*harness.server, config(), nullptr);
    QVERIFY(server.listen());
    SocketLink first(to(server));
    SocketLink second(to(server));
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

void TestSocketServer::othersAreToldWhoTalks_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("secret");
    QTest::addColumn<QString>("words");
    QTest::newRow("a user") << "anna"
                            << "right"
                            << "camera \"Gate\" is in a talk with anna";
    QTest::newRow("a token") << ""
                             << "the-token"
                             << "camera \"Gate\" is in a talk with a client at 127.0.0.1";
}

void TestSocketServer::othersAreToldWhoTalks()
{
    QFETCH(QString, user);
    QFETCH(QString, secret);
    QFETCH(QString, words);
    Awkward awkward;
    awkward.devices->cameras[0].isExclusive = true;
    SocketServer server(*awkward.harness->server, config(), nullptr);
    QVERIFY(server.listen());
    SocketLinkConfig login = to(server);
    login.user = user;
    login.secret = secret;
    OpenedLink first(login);
    QVERIFY(first.isUp());
    first.send("StartTalk", gate, 1);
    QVERIFY(waitFor([&] { return !awkward.devices->talks.empty(); }));
    const ServerReply reply = awkward.harness->ask("StartTalk", gate);
    QCOMPARE(reply.returnCode, ReturnCode::cameraBusy);
    QCOMPARE(reply.errorText, words);
}

QTEST_GUILESS_MAIN(TestSocketServer)
#include "tst_socketserver.moc"
