// The video of a camera that is gst-rtsp-server: from its RTP to the events of clients.

#include "protocol/Limits.h"
#include "server/access/ServerCertificate.h"
#include "server/devices/onvif/OnvifDevices.h"
#include "server/devices/onvif/OnvifVideo.h"
#include "server/devices/onvif/RtspSession.h"
#include "tests/onvif/ScriptedCamera.h"
#include "tests/server/ServerHarness.h"
#include "tests/server/onvif/ScriptedRtsp.h"
#include "tests/server/onvif/TestCamera.h"

#include <QTemporaryFile>

namespace {

QStringList showing(const QStringList& more = QStringList())
{
    return QStringList{"--video", QStringLiteral(TEST_DATA_DIR "/h264/quadrants.h264")} + more;
}

struct Server
{
    Server()
    {
        OnvifConfig onvif;
        onvif.presence.period = std::chrono::milliseconds(0); // nobody else comes to the camera
        onvif.videoSilence = std::chrono::milliseconds(600);
        ServerConfig config;
        config.videoTimes.linger = std::chrono::milliseconds(100);
        config.devices = onvifDevices(onvif);
        harness = std::make_unique<ServerHarness>(config);
    }

    QString add(const QString& address, QVariantMap more = QVariantMap())
    {
        more["camName"] = QString("Camera %1").arg(++cameras);
        more["camKind"] = "onvif";
        more["camAddress"] = address;
        return harness->ask("AddCamera", more).result.toMap()["camId"].toString();
    }
    ServerReply watch(const QString& id) { return harness->ask("WatchCamera", id); }
    QList<QVariantMap> all(const QString& event) const
    {
        QList<QVariantMap> payloads;
        for (const auto& each : harness->events) {
            if (each.name == event) {
                payloads.append(each.payload);
            }
        }
        return payloads;
    }
    int count(const QString& event) const { return all(event).size(); }
    bool waitForPictures(int count) const
    {
        return ServerHarness::waitFor([&] { return this->count("CameraVideo") >= count; });
    }

    int cameras = 0;
    std::unique_ptr<ServerHarness> harness;
};

/** The access units of the file, as clients get them. */
QList<QByteArray> expected()
{
    QFile file(QStringLiteral(TEST_DATA_DIR "/h264/quadrants.h264"));
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const QByteArray code("\0\0\0\1", 4);
    QList<QByteArray> units;
    QByteArray unit;
    for (int at = 0, next = 0; at < bytes.size(); at = next) {
        next = bytes.indexOf(code, at + code.size());
        next = next < 0 ? bytes.size() : next;
        unit += bytes.mid(at, next - at);
        const int type = bytes[at + code.size()] & 31;
        if (type == 1 || type == 5) {
            units.append(unit);
            unit.clear();
        }
    }
    return units;
}

/** A camera with a video of the payload type 96 and nothing else. */
struct ScriptedVideo : ScriptedRtsp
{
    ScriptedVideo()
    {
        speaks = false;
        answers["DESCRIBE"] = describes("v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=camera\r\nt=0 0\r\n"
                                        "m=video 0 RTP/AVP 96\r\na=control:eye\r\n"
                                        "a=rtpmap:96 H264/90000\r\na=fmtp:96 packetization-mode=1\r\n");
    }

    bool waitForPlay() const
    {
        return ServerHarness::waitFor([this] { return hasRequest("PLAY"); });
    }
};

} // namespace

class TestOnvifVideo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pictures();
    void manyBytes();
    void videoIsDescribedFirst_data();
    void videoIsDescribedFirst();
    void watchersShareOneSession();
    void besideATalk();
    void sessionEnds();
    void serverEndsMeanwhile();
    void killed();
    void closesBeforeTheFirstPicture();
    void hangs();
    void cannotBeWatched_data();
    void cannotBeWatched();
    void sentElsewhere();
    void located();
    void firstWithH264_data();
    void firstWithH264();
    void withTls();
};

void TestOnvifVideo::pictures()
{
    TestCamera camera(showing({"--user", "anna", "--password", "secret"}));
    Server server;
    const QString id = server.add(camera.address(), {{"username", "anna"}, {"password", "secret"}});
    QCOMPARE(camera.count("client"), 0); // not before somebody watches
    QCOMPARE(server.watch(id).returnCode, ReturnCode::success);
    QVERIFY(server.waitForPictures(30));
    const QList<QByteArray> units = expected();
    QCOMPARE(units.size(), 20);
    int at = -1;
    int last = -1;
    const QList<QVariantMap> pictures = server.all("CameraVideo");
    for (const QVariantMap& picture : pictures) {
        const QByteArray unit = picture["accessUnit"].toByteArray();
        at = at < 0 ? units.indexOf(unit) : (at + 1) % units.size();
        QVERIFY(at >= 0 && unit == units[at]); // all, in their order
        QCOMPARE(picture["keyFrame"].toBool(), at % 10 == 0);
        QCOMPARE(picture["camId"].toString(), id);
        QVERIFY(picture["position"].toInt() > last);
        last = picture["position"].toInt();
    }
    QVERIFY(pictures[0]["keyFrame"].toBool());
    QVERIFY(last >= 500 && last < 20000);
}

/** 14 Mbit/s. */
void TestOnvifVideo::manyBytes()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    const QList<QByteArray> units = expected();
    for (const QByteArray& unit : units) {
        file.write(unit + QByteArray(70000, 'x')); // its slice is longer
    }
    file.close();
    TestCamera camera({"--video", file.fileName()});
    Server server;
    QCOMPARE(server.watch(server.add(camera.address())).returnCode, ReturnCode::success);
    QVERIFY(server.waitForPictures(60));
    const QList<QVariantMap> pictures = server.all("CameraVideo");
    const int sent = (pictures.last()["position"].toInt() + 20) / 40 + 1;
    QVERIFY2(pictures.size() * 10 >= sent * 9,
             qPrintable(QString("%1 of %2").arg(pictures.size()).arg(sent)));
    QVERIFY(pictures[0]["accessUnit"].toByteArray().size() > 70000);
}

void TestOnvifVideo::videoIsDescribedFirst_data()
{
    QTest::addColumn<QStringList>("loudspeaker");
    QTest::newRow("with a loudspeaker") << QStringList();
    QTest::newRow("without one") << QStringList{"--no-backchannel"};
    QTest::newRow("with one that is not described") << QStringList{"--hides-backchannel"};
}

void TestOnvifVideo::videoIsDescribedFirst()
{
    QFETCH(QStringList, loudspeaker);
    TestCamera camera(showing(QStringList{"--video-first"} + loudspeaker));
    Server server;
    const QString id = server.add(camera.address());
    QCOMPARE(server.watch(id).returnCode, ReturnCode::success);
    QVERIFY(server.waitForPictures(5));
}

void TestOnvifVideo::watchersShareOneSession()
{
    TestCamera camera(showing());
    Server server;
    const QString id = server.add(camera.address());
    QCOMPARE(server.watch(id).returnCode, ReturnCode::success);
    ServerSession second(*server.harness->server);
    QSignalSpy pictures(&second, &ServerSession::eventRaised);
    second.submit("WatchCamera", id, 1);
    QTRY_VERIFY(pictures.size() >= 3);
    QVERIFY(pictures[0][1].toMap()["keyFrame"].toBool());
    QCOMPARE(camera.count("client"), 1);
    QCOMPARE(camera.count("shows"), 1);
    QCOMPARE(server.harness->ask("UnwatchCamera", id).returnCode, ReturnCode::success);
    const int before = pictures.size();
    QTRY_VERIFY(pictures.size() >= before + 25); // longer than the session lingers
    QCOMPARE(camera.count("teardown"), 0);
    second.submit("UnwatchCamera", id, 2);
    QVERIFY(!camera.waitFor("teardown").isEmpty());
    QVERIFY(!camera.waitFor("shown 1").isEmpty());
    QCOMPARE(camera.count("client"), 1);
}

void TestOnvifVideo::besideATalk()
{
    TestCamera camera(showing());
    Server server;
    const QString id = server.add(camera.address());
    QCOMPARE(server.harness->ask("StartTalk", QVariantMap{{"camId", id}}).returnCode, ReturnCode::success);
    QCOMPARE(server.watch(id).returnCode, ReturnCode::success);
    QVERIFY(server.waitForPictures(10));
    QVERIFY(!camera.waitFor("open 1").isEmpty());
    QCOMPARE(camera.count("closed"), 0);
}

void TestOnvifVideo::sessionEnds()
{
    TestCamera camera(showing());
    Server server;
    const QString id = server.add(camera.address());
    QCOMPARE(server.watch(id).returnCode, ReturnCode::success);
    server.harness->session.reset();
    QVERIFY(ServerHarness::waitFor([&] { return camera.count("teardown") == 1; }));
}

void TestOnvifVideo::serverEndsMeanwhile()
{
    TestCamera camera(showing());
    {
        Server server;
        server.harness->submit("WatchCamera", server.add(camera.address()));
        QVERIFY(ServerHarness::waitFor([&] { return camera.count("describe") > 0; }));
    }
    {
        Server server;
        QCOMPARE(server.watch(server.add(camera.address())).returnCode, ReturnCode::success);
    }
    QVERIFY(!camera.waitFor("teardown").isEmpty());
}

void TestOnvifVideo::killed()
{
    TestCamera camera(showing());
    Server server;
    const QString id = server.add(camera.address());
    QCOMPARE(server.watch(id).returnCode, ReturnCode::success);
    QVERIFY(server.waitForPictures(3));
    QElapsedTimer clock;
    clock.start();
    camera.kill();
    QVERIFY(ServerHarness::waitFor([&] { return server.count("CameraVideoEnded") == 1; }));
    QVERIFY(clock.elapsed() < 500); // not after the silence
    QCOMPARE(server.all("CameraVideoEnded")[0]["camId"].toString(), id);
    QVERIFY(!server.all("CameraVideoEnded")[0]["error"].toString().isEmpty());
    QCOMPARE(server.watch(id).returnCode, ReturnCode::cameraOffline);
}

void TestOnvifVideo::closesBeforeTheFirstPicture()
{
    ScriptedVideo camera;
    Server server;
    const QString id = server.add(camera.address(), {{"camSettings", QVariantMap{{"openTimeout", 10000}}}});
    QTimer timer; // looks for the PLAY
    connect(&timer, &QTimer::timeout, &camera, [&] {
        if (camera.hasRequest("PLAY")) {
            timer.stop();
            camera.hangUp();
        }
    });
    timer.start(5);
    const ServerReply reply = server.watch(id);
    QCOMPARE(reply.returnCode, ReturnCode::cameraOffline);
    QVERIFY2(reply.errorText.contains("has ended its video"), qPrintable(reply.errorText));
}

void TestOnvifVideo::hangs()
{
    TestCamera camera(showing());
    Server server;
    QCOMPARE(server.watch(server.add(camera.address())).returnCode, ReturnCode::success);
    QVERIFY(server.waitForPictures(3));
    camera.stop();
    QVERIFY(ServerHarness::waitFor([&] { return server.count("CameraVideoEnded") == 1; }));
    camera.wake();
}

void TestOnvifVideo::cannotBeWatched_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("words");
    QTest::newRow("no video") << QStringList() << "/talk" << ReturnCode::noPicture << "no video";
    QTest::newRow("no H.264") << QStringList{"--video", "jpeg"} << "/talk" << ReturnCode::noPicture
                              << "JPEG, not H264";
    QTest::newRow("wrong password") << showing({"--user", "anna", "--password", "secret"}) << "/talk"
                                    << ReturnCode::loginRefused << "password";
    QTest::newRow("wrong path") << showing() << "/nothing" << ReturnCode::noPicture << "no stream";
    QTest::newRow("busy") << showing({"--refuse-play", "453"}) << "/talk" << ReturnCode::cameraBusy << "busy";
    QTest::newRow("refused") << showing({"--refuse-setup", "461"}) << "/talk" << ReturnCode::noPicture
                             << "refuses its video";
    QTest::newRow("slow") << showing({"--slow-describe", "1500"}) << "/talk" << ReturnCode::cameraTimedOut
                          << "in time";
}

void TestOnvifVideo::cannotBeWatched()
{
    QFETCH(QStringList, options);
    QFETCH(QString, path);
    QFETCH(QString, code);
    QFETCH(QString, words);
    TestCamera camera(options);
    Server server;
    const ServerReply reply = server.watch(server.add(
        camera.address("rtsp", path),
        {{"username", "anna"}, {"password", "wrong"}, {"camSettings", QVariantMap{{"openTimeout", 1000}}}}));
    QCOMPARE(reply.returnCode, code);
    QVERIFY2(reply.errorText.contains(words), qPrintable(reply.errorText));
    QVERIFY(!reply.errorText.contains("wrong"));
    QCOMPARE(server.count("CameraVideo"), 0);
}

void TestOnvifVideo::sentElsewhere()
{
    TestCamera other(showing());
    QTcpServer listener;
    QVERIFY(listener.listen(QHostAddress::LocalHost));
    QObject::connect(&listener, &QTcpServer::newConnection, [&] {
        QTcpSocket* socket = listener.nextPendingConnection();
        QObject::connect(socket, &QTcpSocket::readyRead, [socket, &other] {
            const QByteArray request = socket->readAll();
            const int at = request.indexOf("CSeq:");
            const QByteArray number = request.mid(at, request.indexOf("\r\n", at) - at);
            socket->write("RTSP/1.0 302 Found\r\n" + number + "\r\nLocation: " + other.address().toLatin1() +
                          "\r\n\r\n");
        });
    });
    Server server;
    const ServerReply reply =
        server.watch(server.add(QString("rtsp://127.0.0.1:%1/talk").arg(listener.serverPort())));
    QCOMPARE(reply.returnCode, ReturnCode::noPicture);
    QCOMPARE(other.count("describe"), 0);
}

void TestOnvifVideo::located()
{
    TestCamera camera(showing());
    ScriptedCamera device;
    device.setBody("GetStreamUri", "<tr2:GetStreamUriResponse><tr2:Uri>" + camera.address().toLatin1() +
                                       "</tr2:Uri></tr2:GetStreamUriResponse>");
    Server server;
    const QString id = server.add(device.url().toString());
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(server.watch(id).returnCode, ReturnCode::success);
        server.harness->ask("UnwatchCamera", id);
        QVERIFY(ServerHarness::waitFor([&] { return camera.count("shown") == i + 1; }));
    }
    QCOMPARE(device.names().count("GetProfiles"), 1); // the address is kept
    camera.kill();
    for (int i = 0; i < 2; ++i) {
        const ServerReply reply = server.watch(id);
        QVERIFY2(reply.returnCode == ReturnCode::cameraOffline, qPrintable(reply.errorText));
    }
    QVERIFY(device.names().count("GetProfiles") > 1); // until it fails
}

void TestOnvifVideo::firstWithH264_data()
{
    QTest::addColumn<bool>("hasMedia2");
    QTest::addColumn<QStringList>("codecs"); // of profiles
    QTest::addColumn<int>("shown");          // which of them; -1 for none
    for (const bool two : {false, true}) {
        const QByteArray service = two ? "Media 2" : "Media";
        QTest::addRow("JPEG first, %s", service.constData())
            << two << QStringList{"JPEG", "H264", "H264"} << 1;
        QTest::addRow("H.265 first, %s", service.constData()) << two << QStringList{"H265", "h264"} << 1;
        QTest::addRow("nameless first, %s", service.constData()) << two << QStringList{"", "H264"} << 1;
        QTest::addRow("nameless, %s", service.constData()) << two << QStringList{"JPEG", ""} << 1;
        QTest::addRow("none, %s", service.constData()) << two << QStringList{"JPEG", "MPEG4", "JPEG"} << -1;
    }
}

void TestOnvifVideo::firstWithH264()
{
    QFETCH(bool, hasMedia2);
    QFETCH(QStringList, codecs);
    QFETCH(int, shown);
    TestCamera camera(showing());
    ScriptedCamera device;
    device.hasMedia2 = hasMedia2;
    QByteArray profiles;
    for (int i = 0; i < codecs.size(); ++i) {
        const QByteArray token = QByteArray::number(i);
        const QByteArray element = hasMedia2 ? "VideoEncoder" : "VideoEncoderConfiguration";
        const QByteArray encoding =
            codecs[i].isEmpty() ? QByteArray() : "<Encoding>" + codecs[i].toLatin1() + "</Encoding>";
        profiles += "<Profiles token=\"" + token + "\"><" + element + ">" + encoding + "</" + element +
                    "></Profiles>";
        const QString path = i == shown ? QStringLiteral("/talk") : QStringLiteral("/nothing");
        device.setBody("GetStreamUri " + token, "<GetStreamUriResponse><Uri>" +
                                                    camera.address("rtsp", path).toLatin1() +
                                                    "</Uri></GetStreamUriResponse>");
    }
    device.setBody("GetProfiles", "<GetProfilesResponse>" + profiles + "</GetProfilesResponse>");
    Server server;
    const ServerReply reply = server.watch(server.add(device.url().toString()));
    if (shown >= 0) {
        QVERIFY2(reply.returnCode == ReturnCode::success, qPrintable(reply.errorText));
    } else {
        QCOMPARE(reply.returnCode, ReturnCode::noPicture);
        QCOMPARE(reply.errorText, QString("the camera's video is JPEG, MPEG4, not H264"));
        QCOMPARE(camera.count("client"), 0);
    }
}

void TestOnvifVideo::withTls()
{
    QTemporaryDir folder;
    QString error;
    const auto made = ServerCertificate::loadOrCreate(folder.path(), &error);
    QVERIFY2(made, qPrintable(error));
    QFile file(folder.filePath("camera.pem"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(made->certificate.toPem() + made->key.toPem());
    file.close();
    TestCamera camera(showing({"--certificate", file.fileName(), "--user", "anna", "--password", "secret"}));
    Server server;
    const QVariantMap login{{"username", "anna"}, {"password", "secret"}};
    QCOMPARE(server.watch(server.add(camera.address("rtsps"), login)).returnCode, ReturnCode::noPicture);
    QCOMPARE(camera.count("describe"), 0);
    QVariantMap trusting = login;
    trusting["camSettings"] = QVariantMap{{"anyCertificate", true}};
    const QString id = server.add(camera.address("rtsps"), trusting);
    QCOMPARE(server.watch(id).returnCode, ReturnCode::success);
    QVERIFY(server.waitForPictures(12));
    server.harness->ask("UnwatchCamera", id);
    QVERIFY(!camera.waitFor("teardown").isEmpty());
}

QTEST_GUILESS_MAIN(TestOnvifVideo)
#include "tst_onvifvideo.moc"
