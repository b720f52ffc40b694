// A server whose cameras are reached by RTSP: what its clients get.

#include "protocol/Words.h"
#include "server/devices/onvif/OnvifDevices.h"
#include "tests/server/ServerHarness.h"
#include "tests/server/onvif/TalkProbe.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

class TestOnvifServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void talks();
    void refuses();
    void losesItsCamera();
    void losesOneOfTwo();
    void goesWithTalksOpen();
    void marksWhatItSends_data();
    void marksWhatItSends();
    void twentyCamerasAtOnce();
};

namespace {

struct OnvifServer
{
    OnvifServer()
    {
        ServerConfig config;
        config.devices = onvifDevices(OnvifConfig());
        harness = std::make_unique<ServerHarness>(config);
    }

    QString add(const QString& name, const QString& address, const QVariantMap& settings = QVariantMap())
    {
        return harness
            ->ask("AddCamera", QVariantMap{{"camName", name},
                                           {"camKind", "onvif"},
                                           {"camAddress", address},
                                           {"camSettings", settings}})
            .result.toMap()["camId"]
            .toString();
    }

    /** Opens a talk; its token, or an empty text. */
    QString open(const QString& camera)
    {
        return harness->ask("StartTalk", QVariantMap{{"camId", camera}})
            .result.toMap()["talkToken"]
            .toString();
    }

    ServerReply say(const QString& token)
    {
        const QByteArray packet = TalkProbe::packet(position, QByteArray(640, '\x2A'));
        position += 640;
        return harness->ask("TalkData", QVariantMap{{"targets", "<Dest>" + token + "</Dest>"},
                                                    {"talkData", QString::fromLatin1(packet.toBase64())}});
    }

    std::size_t count(const QString& event) const
    {
        return static_cast<std::size_t>(std::count_if(harness->events.begin(), harness->events.end(),
                                                      [&](const auto& each) { return each.name == event; }));
    }
    bool waitForEvent(const QString& event)
    {
        return ServerHarness::waitFor([&] { return count(event) > 0; });
    }

    std::unique_ptr<ServerHarness> harness;
    std::uint32_t position = 0;
};

/** Whether this process has a socket of a type that marks its packets, and with TCP to a port sends at once.
 */
bool hasMarkedSocket(int type, int port, int trafficClass)
{
    for (int socket = 0; socket < 1024; ++socket) {
        int found = 0;
        socklen_t size = sizeof(found);
        if (getsockopt(socket, SOL_SOCKET, SO_TYPE, &found, &size) != 0 || found != type) {
            continue;
        }
        int noDelay = type == SOCK_STREAM ? 0 : 1;
        if (type == SOCK_STREAM) {
            sockaddr_in peer{};
            socklen_t length = sizeof(peer);
            if (getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &length) != 0 ||
                peer.sin_family != AF_INET || ntohs(peer.sin_port) != port) {
                continue;
            }
            getsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &noDelay, &size);
        }
        int tos = 0;
        size = sizeof(tos);
        getsockopt(socket, IPPROTO_IP, IP_TOS, &tos, &size);
        if (tos == trafficClass && noDelay != 0) {
            return true;
        }
    }
    return false;
}

} // namespace

void TestOnvifServer::talks()
{
    TestCamera camera({"--user", "anna", "--password", "secret", "--jitter", "20"});
    OnvifServer server;
    const QString address = camera.address().replace("rtsp://", "rtsp://anna:secret@");
    const QString id = server.add("Gate", address);
    const auto record = [&server] {
        return server.harness->ask("GetCamera").result.toList().first().toMap();
    };
    QCOMPARE(record()["camAddress"].toString(), camera.address()); // nobody sees the login
    QTRY_COMPARE(record()["online"], QVariant(true));
    const QString token = server.open(id);
    QCOMPARE(token.size(), 32);
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(server.say(token).returnCode, ReturnCode::success);
    }
    QVERIFY(!camera.waitFor("hears 1").isEmpty());
    QVERIFY(server.waitForEvent("AudioReceived"));
    const QVariantMap event = server.harness->events.back().payload["AudioReceived"].toMap();
    QCOMPARE(event["Token"].toString(), token);
    QCOMPARE(event["StreamType"].toUInt(), 8192U);
    QCOMPARE(event["BitstreamSize"].toUInt(), 160U);
    QCOMPARE(server.harness->ask("StopTalk", QVariantMap{{"talkToken", token}}).returnCode,
             ReturnCode::success);
    QVERIFY(!camera.waitFor("closed 1").isEmpty());
    QCOMPARE(camera.count("teardown"), 1);
}

void TestOnvifServer::refuses()
{
    TestCamera camera({"--user", "anna", "--password", "secret"});
    OnvifServer server;
    const QString id = server.add("Gate", camera.address().replace("rtsp://", "rtsp://anna:wrong@"));
    const ServerReply reply = server.harness->ask("StartTalk", QVariantMap{{"camId", id}});
    QCOMPARE(reply.returnCode, ReturnCode::loginRefused);
    QVERIFY(!reply.errorText.contains("wrong") && !reply.errorText.isEmpty());
    QCOMPARE(server.count("TalkDisconnected"), std::size_t{0});
}

void TestOnvifServer::losesItsCamera()
{
    TestCamera camera;
    OnvifServer server;
    const QString token = server.open(server.add("Gate", camera.address()));
    QVERIFY(!token.isEmpty());
    camera.kill();
    QVERIFY(server.waitForEvent("TalkDisconnected"));
}

void TestOnvifServer::losesOneOfTwo()
{
    TestCamera gate;
    TestCamera dock;
    OnvifServer server;
    const QString first = server.open(server.add("Gate", gate.address()));
    const QString second = server.open(server.add("Dock", dock.address()));
    QVERIFY(!first.isEmpty() && !second.isEmpty());
    gate.kill();
    QVERIFY(server.waitForEvent(Words::TalkTargetLost));
    QCOMPARE(server.count("TalkDisconnected"), std::size_t{0});
    QCOMPARE(server.say(second).returnCode, ReturnCode::success);
    QVERIFY(!dock.waitFor("hears 1").isEmpty());
}

void TestOnvifServer::goesWithTalksOpen()
{
    TestCamera camera;
    TestCamera slow({"--slow-describe", "5000"});
    QElapsedTimer clock;
    {
        OnvifServer server;
        QVERIFY(!server.open(server.add("Gate", camera.address())).isEmpty());
        server.harness->submit("StartTalk", QVariantMap{{"camId", server.add("Slow", slow.address())}});
        QVERIFY(!slow.waitFor("client 1").isEmpty());
        clock.start();
    }
    QVERIFY(clock.elapsed() < 2000);
    QVERIFY(!camera.waitFor("closed 1").isEmpty());
    QCOMPARE(camera.count("teardown"), 1);
}

void TestOnvifServer::marksWhatItSends_data()
{
    QTest::addColumn<QVariantMap>("settings");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("trafficClass");
    QTest::newRow("TCP") << QVariantMap() << int{SOCK_STREAM} << 46 * 4;
    QTest::newRow("TCP, marked otherwise") << QVariantMap{{"dscp", 10}} << int{SOCK_STREAM} << 10 * 4;
    QTest::newRow("UDP") << QVariantMap{{"transport", "udp"}} << int{SOCK_DGRAM} << 46 * 4;
}

void TestOnvifServer::marksWhatItSends()
{
    QFETCH(QVariantMap, settings);
    QFETCH(int, type);
    QFETCH(int, trafficClass);
    TestCamera camera;
    const int port = camera.address().section(':', 2).section('/', 0, 0).toInt();
    OnvifServer server;
    QVERIFY(!hasMarkedSocket(type, port, trafficClass));
    QVERIFY(!server.open(server.add("Gate", camera.address(), settings)).isEmpty());
    QVERIFY(hasMarkedSocket(type, port, trafficClass));
    QVERIFY(type != SOCK_STREAM || !hasMarkedSocket(type, port, trafficClass + 4));
}

void TestOnvifServer::twentyCamerasAtOnce()
{
    std::vector<std::unique_ptr<TestCamera>> cameras;
    OnvifServer server;
    QStringList ids;
    for (int i = 0; i < 20; ++i) {
        cameras.push_back(std::make_unique<TestCamera>(QStringList{"--jitter", "20", "--voice", "silent"}));
        ids.append(server.add(QString("Camera %1").arg(i), cameras.back()->address()));
    }
    server.harness->replies.clear();
    for (const QString& id : ids) {
        server.harness->submit("StartTalk", QVariantMap{{"camId", id}});
    }
    QVERIFY(ServerHarness::waitFor([&] { return server.harness->replies.size() == 20; }));
    QString targets;
    for (const auto& answer : server.harness->replies) {
        QCOMPARE(answer.reply.returnCode, ReturnCode::success);
        targets += "<Dest>" + answer.reply.result.toMap()["talkToken"].toString() + "</Dest>";
    }
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 12; ++i) {
        const QByteArray packet =
            TalkProbe::packet(static_cast<std::uint32_t>(i) * 640, QByteArray(640, '\x2A'));
        QCOMPARE(server.harness
                     ->ask("TalkData", QVariantMap{{"targets", targets},
                                                   {"talkData", QString::fromLatin1(packet.toBase64())}})
                     .returnCode,
                 ReturnCode::success);
        QVERIFY(ServerHarness::waitFor([&] { return clock.elapsed() >= (i + 1) * 80; }));
    }
    for (const auto& camera : cameras) {
        QTRY_COMPARE(camera->heard().size(), std::size_t{12 * 640}); // nothing is lost
    }
    QCOMPARE(server.count("TalkDisconnected"), std::size_t{0});
}

QTEST_GUILESS_MAIN(TestOnvifServer)
#include "tst_onvifserver.moc"
