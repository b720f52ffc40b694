// Whether cameras are there: who is asked, how often, and what a talk finds out.

#include "protocol/Words.h"
#include "server/devices/onvif/CameraPresence.h"
#include "server/devices/onvif/OnvifDevices.h"
#include "tests/onvif/ScriptedCamera.h"
#include "tests/server/ServerHarness.h"

#include <QTcpServer>
#include <QTcpSocket>

using std::chrono::milliseconds;

namespace {

/** An RTSP server that answers, or not, and keeps what it was asked. */
class Rtsp
{
public:
    explicit Rtsp(const QByteArray& answer = "RTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n", quint16 port = 0)
    {
        server.listen(QHostAddress::LocalHost, port);
        QObject::connect(&server, &QTcpServer::newConnection, [this, answer] {
            while (QTcpSocket* socket = server.nextPendingConnection()) {
                ++connections;
                ++open;
                most = std::max(most, open);
                QObject::connect(socket, &QTcpSocket::disconnected, [this] { --open; });
                QObject::connect(socket, &QTcpSocket::readyRead, [this, socket, answer] {
                    text += socket->readAll();
                    socket->write(answer);
                });
            }
        });
    }
    QString address(const QString& path = QStringLiteral("/talk")) const
    {
        return QStringLiteral("rtsp://127.0.0.1:%1%2").arg(server.serverPort()).arg(path);
    }

    QTcpServer server;
    QByteArray text;
    int connections = 0;
    int open = 0;
    int most = 0; ///< Connections at once.
};

CameraRecord record(const QString& id, const QString& address)
{
    return {id, "Camera " + id, onvifKind(), address, "anna", "secret"};
}

PresencePace pace(int period, int answer = 500, int atOnce = 16)
{
    return {milliseconds(period), milliseconds(answer), atOnce};
}

} // namespace

class TestCameraPresence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isAsked();
    void isAskedAtItsService();
    void isNotThere_data();
    void isNotThere();
    void comesAndGoes();
    void isAskedRegularly();
    void notTwiceAtATime();
    void notTooManyAtOnce();
    void spreadEvenly();
    void neverAsked();
    void talksCount();
    void aLostTalk();
    void aLostTalkBesideAnother();
    void anotherAddressIsANewCamera();
    void goesWhileItAsks();
    void clientsAreTold();
};

void TestCameraPresence::isAsked()
{
    Rtsp camera;
    CameraPresence presence(pace(60000));
    presence.setRecords({record("1", camera.address())});
    QVERIFY(!presence.isOnline("1")); // it has not answered
    QTRY_VERIFY(presence.isOnline("1"));
    QCOMPARE(camera.text, "OPTIONS " + camera.address().toLatin1() + " RTSP/1.0\r\nCSeq: 1\r\n\r\n");
    QVERIFY(!presence.isOnline("2"));
}

void TestCameraPresence::isAskedAtItsService()
{
    ScriptedCamera camera;
    camera.user = "anna";
    camera.password = "secret";
    CameraPresence presence(pace(60000));
    presence.setRecords({record("1", camera.url().toString()),
                         record("2", QString("127.0.0.1:%1").arg(camera.url().port()))});
    QTRY_VERIFY(presence.isOnline("1") && presence.isOnline("2"));
    QCOMPARE(camera.names(), (QStringList{"GetSystemDateAndTime", "GetSystemDateAndTime"}));
    QVERIFY(!camera.requests[0].hasToken); // nobody logs in
    QVERIFY(!camera.requests[0].hasDigest);
}

void TestCameraPresence::isNotThere_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("another protocol") << QByteArray("HTTP/1.1 400 Bad Request\r\n\r\n");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("the start of an answer") << QByteArray("RTS");
}

void TestCameraPresence::isNotThere()
{
    QFETCH(QByteArray, answer);
    Rtsp camera(answer);
    Rtsp other;
    CameraPresence presence(pace(60000, 100, 1));
    presence.setRecords({record("1", camera.address()), record("2", other.address())});
    QTRY_VERIFY(presence.isOnline("2")); // which is asked when the first has had its time
    QVERIFY(!presence.isOnline("1"));
    QCOMPARE(camera.connections, 1);
}

void TestCameraPresence::comesAndGoes()
{
    auto camera = std::make_unique<Rtsp>();
    const quint16 port = camera->server.serverPort();
    CameraPresence presence(pace(50));
    QSignalSpy changes(&presence, &CameraPresence::changed);
    presence.setRecords({record("1", camera->address())});
    QTRY_COMPARE(changes.size(), 1);
    QTRY_VERIFY(camera->connections > 3);
    QCOMPARE(changes.size(), 1); // nothing has changed
    camera.reset();
    QTRY_COMPARE(changes.size(), 2);
    QVERIFY(!presence.isOnline("1"));
    camera = std::make_unique<Rtsp>("RTSP/1.0 401 Unauthorized\r\n\r\n", port);
    QTRY_COMPARE(changes.size(), 3);
    QVERIFY(presence.isOnline("1"));
}

void TestCameraPresence::isAskedRegularly()
{
    Rtsp camera;
    CameraPresence presence(pace(200));
    QElapsedTimer clock;
    clock.start();
    presence.setRecords({record("1", camera.address())});
    QTRY_COMPARE(camera.connections, 6);
    QVERIFY(clock.elapsed() >= 5 * 200 - 50);
}

void TestCameraPresence::notTwiceAtATime()
{
    Rtsp camera{QByteArray()};
    CameraPresence presence(pace(20, 300));
    presence.setRecords({record("1", camera.address())});
    QTRY_VERIFY(camera.connections >= 3);
    QVERIFY(camera.most <= 2); // the end of a connection is seen late
}

void TestCameraPresence::notTooManyAtOnce()
{
    Rtsp camera{QByteArray()};
    CameraPresence presence(pace(1000, 100, 4));
    QList<CameraRecord> records;
    for (int i = 1; i <= 20; ++i) {
        records.append(record(QString::number(i), camera.address()));
    }
    presence.setRecords(records);
    QTRY_VERIFY(camera.connections >= 20);
    QVERIFY(camera.most <= 8); // the end of a connection is seen late
}

void TestCameraPresence::spreadEvenly()
{
    Rtsp camera;
    CameraPresence presence(pace(2000));
    QList<CameraRecord> records;
    for (int i = 1; i <= 20; ++i) {
        records.append(record(QString::number(i), camera.address("/" + QString::number(i))));
    }
    presence.setRecords(records);
    QTRY_COMPARE(camera.connections, 20); // the new ones, at once
    camera.text.clear();
    std::vector<qint64> times;
    QElapsedTimer clock;
    clock.start();
    QVERIFY(ServerHarness::waitFor([&] {
        if (camera.connections > 20 + static_cast<int>(times.size())) {
            times.push_back(clock.elapsed());
        }
        return times.size() == 20;
    }));
    QVERIFY(times.back() - times.front() >= 1700);
    QVERIFY(times.back() - times.front() < 3000);
    for (int i = 1; i <= 20; ++i) {
        QTRY_VERIFY(camera.text.contains("/" + QByteArray::number(i) + " RTSP"));
    }
}

void TestCameraPresence::neverAsked()
{
    Rtsp camera;
    Rtsp other;
    CameraPresence never(pace(0));
    never.setRecords({record("1", camera.address())});
    never.noticed("1", never.version("1"), false);
    CameraPresence presence(pace(60000));
    presence.setRecords({record("1", other.address())});
    QTRY_VERIFY(presence.isOnline("1"));
    QCOMPARE(camera.connections, 0);
}

void TestCameraPresence::talksCount()
{
    Rtsp camera{QByteArray()};
    CameraPresence presence(pace(30, 20));
    presence.setRecords({record("1", camera.address())});
    const quint64 version = presence.version("1");
    QTRY_VERIFY(camera.connections >= 2);
    presence.talkOpened("1", version);
    QVERIFY(presence.isOnline("1"));
    QTRY_COMPARE(camera.open, 0);
    const int asked = camera.connections;
    Rtsp clock{QByteArray()};
    CameraPresence other(pace(30, 20));
    other.setRecords({record("1", clock.address())});
    QTRY_VERIFY(clock.connections >= 5); // time has passed
    QCOMPARE(camera.connections, asked); // who talks is not asked
    QVERIFY(presence.isOnline("1"));
    presence.talkEnded("1", version);
    QTRY_VERIFY(!presence.isOnline("1"));
}

void TestCameraPresence::aLostTalk()
{
    Rtsp camera;
    CameraPresence presence(pace(60000));
    QSignalSpy changes(&presence, &CameraPresence::changed);
    presence.setRecords({record("1", camera.address())});
    const quint64 version = presence.version("1");
    QTRY_COMPARE(changes.size(), 1);
    presence.talkOpened("1", version);
    presence.talkEnded("1", version);
    presence.noticed("1", version, false);
    QCOMPARE(changes.size(), 2);
    QVERIFY(!presence.isOnline("1"));
    QTRY_VERIFY(presence.isOnline("1")); // it is asked at once: only the talk is gone
    QCOMPARE(changes.size(), 3);
}

/** One that does not open says nothing of a camera that is being talked to. */
void TestCameraPresence::aLostTalkBesideAnother()
{
    CameraPresence presence(pace(0));
    presence.setRecords({record("1", "rtsp://127.0.0.1:9/talk")});
    const quint64 version = presence.version("1");
    presence.talkOpened("1", version);
    presence.noticed("1", version, false);
    QVERIFY(presence.isOnline("1"));
    presence.talkEnded("1", version);
    presence.noticed("1", version, false);
    QVERIFY(!presence.isOnline("1"));
}

void TestCameraPresence::anotherAddressIsANewCamera()
{
    Rtsp camera;
    Rtsp other{QByteArray()};
    CameraPresence presence(pace(60000));
    presence.setRecords({record("1", camera.address())});
    const quint64 version = presence.version("1");
    QTRY_VERIFY(presence.isOnline("1"));
    CameraRecord renamed = record("1", camera.address());
    renamed.name = "Yard";
    presence.setRecords({renamed});
    QVERIFY(presence.isOnline("1"));
    presence.setRecords({record("1", other.address())});
    QVERIFY(!presence.isOnline("1"));
    presence.talkOpened("1", version); // to the former one
    QVERIFY(!presence.isOnline("1"));
    presence.setRecords({});
    QVERIFY(!presence.isOnline("1"));
}

void TestCameraPresence::goesWhileItAsks()
{
    Rtsp camera{QByteArray()};
    ScriptedCamera service;
    service.tricks["GetSystemDateAndTime"] = ScriptedCamera::Silence;
    auto presence = std::make_unique<CameraPresence>(pace(60000));
    presence->setRecords({record("1", camera.address()), record("2", service.url().toString())});
    QTRY_VERIFY(camera.connections == 1 && service.connections == 1);
    presence.reset();
    QTRY_COMPARE(camera.open, 0);
}

void TestCameraPresence::clientsAreTold()
{
    auto camera = std::make_unique<Rtsp>();
    OnvifConfig onvif;
    onvif.presence = pace(50);
    ServerConfig config;
    config.devices = onvifDevices(onvif);
    ServerHarness harness(config);
    harness.ask("AddCamera",
                QVariantMap{{"camName", "Gate"}, {"camKind", "onvif"}, {"camAddress", camera->address()}});
    const auto online = [&harness] { return harness.ask("GetCamera").result.toList()[0].toMap()["online"]; };
    QTRY_COMPARE(online(), QVariant(true));
    harness.events.clear();
    camera.reset();
    QVERIFY(ServerHarness::waitFor([&] { return !harness.events.empty(); }));
    QCOMPARE(harness.events[0].name, Words::CamerasChanged);
    QCOMPARE(online(), QVariant(false));
    // A talk is tried all the same, and says more than that.
    const ServerReply reply = harness.ask("StartTalk", QVariantMap{{"camId", "1"}});
    QCOMPARE(reply.returnCode, ReturnCode::cameraOffline);
    QVERIFY(!reply.errorText.contains("is offline"));
}

QTEST_GUILESS_MAIN(TestCameraPresence)
#include "tst_camerapresence.moc"
