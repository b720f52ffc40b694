// Talks with cameras by the address of their device service, and what a camera says to a refusal.

#include "protocol/ServerReply.h"
#include "server/devices/onvif/LocatedTalk.h"
#include "tests/onvif/ScriptedCamera.h"
#include "tests/server/onvif/TalkProbe.h"

#include <QTcpServer>

namespace {

/** Makes the device service name a stream. */
void setStream(ScriptedCamera& service, const QString& address)
{
    service.setBody("GetStreamUri", "<tr2:GetStreamUriResponse><tr2:Uri>" + address.toLatin1() +
                                        "</tr2:Uri></tr2:GetStreamUriResponse>");
}

QString closedPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return QString::number(server.serverPort());
}

/** A device service that names a stream, and a back end with a record of it. */
struct Located
{
    explicit Located(const QString& stream) : cameras(TalkProbe::withoutPresence(OnvifConfig()))
    {
        setStream(service, stream);
        cameras.setRecords({{"1", "Gate", onvifKind(), service.url().toString()}});
    }

    ScriptedCamera service;
    OnvifCameras cameras;
};

/** A talk by way of a back end, which keeps what it has located. */
struct Call
{
    explicit Call(OnvifCameras& cameras) : talk(cameras.openTalk("1"))
    {
        QObject::connect(talk.get(), &DeviceTalk::opened, &context, [this] { isOpen = true; });
        QObject::connect(talk.get(), &DeviceTalk::refused, &context,
                         [this](const QString& refusedWith) { code = refusedWith; });
        QObject::connect(talk.get(), &DeviceTalk::closed, &context, [this] { isClosed = true; });
    }
    bool end()
    {
        return TalkProbe::waitFor([this] { return isOpen || !code.isEmpty(); });
    }

    QObject context;
    std::unique_ptr<DeviceTalk> talk;
    bool isOpen = false, isClosed = false;
    QString code;
};

} // namespace

class TestLocatedTalk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void talks_data();
    void talks();
    void keepsTheAddress();
    void findsAStreamThatMoved();
    void forgetsTheAddressOfAnotherRecord();
    void refusals_data();
    void refusals();
    void nobodyListens();
    void neverAnswers();
    void closesWhileItLooks();
    void goesWhileItLooks();
    void saysWhyItRefuses_data();
    void saysWhyItRefuses();
    void roomForLinesIsTakenAtOnce();
};

void TestLocatedTalk::talks_data()
{
    QTest::addColumn<bool>("withScheme");
    QTest::newRow("URL of the service") << true;
    QTest::newRow("host and port") << false;
}

void TestLocatedTalk::talks()
{
    QFETCH(bool, withScheme);
    TestCamera camera({"--user", "anna", "--password", "secret", "--jitter", "20"});
    ScriptedCamera service;
    service.user = "anna";
    service.password = "secret";
    setStream(service, camera.address());
    TalkProbe probe(withScheme ? service.url().toString()
                               : QStringLiteral("127.0.0.1:%1").arg(service.url().port()),
                    CameraSettings(), "anna", "secret");
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    qInfo("open after %lld ms", probe.openedAfter);
    QVERIFY(probe.say(5));
    QVERIFY(!camera.waitFor("hears 1").isEmpty());
    QVERIFY(TalkProbe::waitFor([&] { return !probe.heard.empty(); }));
    QVERIFY(probe.close());
    QVERIFY(!camera.waitFor("closed 1").isEmpty());
}

void TestLocatedTalk::keepsTheAddress()
{
    TestCamera camera;
    Located located(camera.address());
    Call first(located.cameras);
    QVERIFY(first.end() && first.isOpen);
    const int asked = located.service.requests.size();
    QVERIFY(asked > 0);
    Call second(located.cameras);
    QVERIFY(second.end() && second.isOpen);
    QCOMPARE(located.service.requests.size(), asked);
}

void TestLocatedTalk::findsAStreamThatMoved()
{
    auto camera = std::make_unique<TestCamera>();
    Located located(camera->address());
    {
        Call first(located.cameras);
        QVERIFY(first.end() && first.isOpen);
    }
    camera = std::make_unique<TestCamera>();
    setStream(located.service, camera->address());
    Call second(located.cameras);
    QVERIFY(second.end());
    QVERIFY2(second.isOpen, qPrintable(second.code));
    second.talk->close();
    QVERIFY(TalkProbe::waitFor([&] { return second.isClosed; }));
}

void TestLocatedTalk::forgetsTheAddressOfAnotherRecord()
{
    TestCamera camera;
    Located located(camera.address());
    {
        Call first(located.cameras);
        QVERIFY(first.end() && first.isOpen);
    }
    located.cameras.setRecords({{"1", "Gate", onvifKind(), "127.0.0.1:" + closedPort()}});
    Call second(located.cameras);
    QVERIFY(second.end());
    QCOMPARE(second.code, ReturnCode::cameraOffline);
}

void TestLocatedTalk::refusals_data()
{
    QTest::addColumn<bool>("hasLoudspeaker");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("stream");
    QTest::addColumn<QString>("code");
    QTest::newRow("no loudspeaker") << false << "secret"
                                    << "rtsp://127.0.0.1:1/x" << ReturnCode::noLoudspeaker;
    QTest::newRow("a wrong password") << true << "wrong"
                                      << "rtsp://127.0.0.1:1/x" << ReturnCode::loginRefused;
    QTest::newRow("no stream") << true << "secret"
                               << "" << ReturnCode::talkRefused;
    QTest::newRow("a stream of another host") << true << "secret"
                                              << "rtsp://8.8.8.8/x" << ReturnCode::talkRefused;
    QTest::newRow("nobody listens at the stream") << true << "secret"
                                                  << "rtsp://127.0.0.1:1/x" << ReturnCode::cameraOffline;
}

void TestLocatedTalk::refusals()
{
    QFETCH(bool, hasLoudspeaker);
    QFETCH(QString, password);
    QFETCH(QString, stream);
    QFETCH(QString, code);
    ScriptedCamera service;
    service.user = "anna";
    service.password = "secret";
    service.hasLoudspeaker = hasLoudspeaker;
    setStream(service, stream);
    TalkProbe probe(service.url().toString(), CameraSettings(), "anna", password);
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, code);
    QVERIFY(!probe.reason.isEmpty());
    QVERIFY(probe.close());
}

void TestLocatedTalk::nobodyListens()
{
    TalkProbe probe("http://127.0.0.1:" + closedPort() + "/onvif/device_service");
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::cameraOffline);
    QVERIFY2(probe.reason.contains("does not answer ONVIF questions at http://"), qPrintable(probe.reason));
}

void TestLocatedTalk::neverAnswers()
{
    ScriptedCamera service;
    service.tricks["GetSystemDateAndTime"] = ScriptedCamera::Silence;
    CameraSettings settings;
    settings.openTimeout = 1000;
    TalkProbe probe(service.url().toString(), settings);
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::cameraTimedOut);
    QVERIFY(probe.refusedAfter >= 900); // the timer is a coarse one
    QVERIFY(probe.refusedAfter < 1500);
}

void TestLocatedTalk::closesWhileItLooks()
{
    ScriptedCamera service;
    service.tricks["GetServices"] = ScriptedCamera::Silence;
    TalkProbe probe(service.url().toString());
    QTRY_VERIFY(service.names().contains("GetServices"));
    QVERIFY(probe.close());
    QCOMPARE(probe.refusedAfter, qint64{-1});
}

void TestLocatedTalk::goesWhileItLooks()
{
    ScriptedCamera service;
    service.tricks["GetServices"] = ScriptedCamera::Silence;
    auto probe = std::make_unique<TalkProbe>(service.url().toString());
    QTRY_VERIFY(service.names().contains("GetServices"));
    probe.reset();
}

void TestLocatedTalk::saysWhyItRefuses_data()
{
    QTest::addColumn<bool>("hasLoudspeaker");
    QTest::addColumn<bool>("usesLoudspeaker");
    QTest::addColumn<bool>("tells");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("words");
    const QStringList noBackchannel{"--no-backchannel"};
    QTest::newRow("it has none") << false << false << true << QStringList{"--refuse-describe", "500"}
                                 << ReturnCode::noLoudspeaker << "the camera has no loudspeaker";
    QTest::newRow("none of its profiles uses it")
        << true << false << true << noBackchannel << ReturnCode::noLoudspeaker
        << "the camera offers no loudspeaker; the camera has a loudspeaker, but none of its media profiles "
           "uses it; it may refuse a talk";
    QTest::newRow("it does not tell") << true << false << false << noBackchannel << ReturnCode::noLoudspeaker
                                      << "the camera offers no loudspeaker";
    QTest::newRow("it is elsewhere") << true << true << true << noBackchannel << ReturnCode::noLoudspeaker
                                     << "the camera offers no loudspeaker; its loudspeaker is in the stream "
                                        "rtsp://127.0.0.1:8554/live?profile=1";
}

void TestLocatedTalk::saysWhyItRefuses()
{
    QFETCH(bool, hasLoudspeaker);
    QFETCH(bool, usesLoudspeaker);
    QFETCH(bool, tells);
    QFETCH(QStringList, options);
    QFETCH(QString, code);
    QFETCH(QString, words);
    TestCamera camera(options);
    ScriptedCamera service;
    service.hasLoudspeaker = hasLoudspeaker;
    service.usesLoudspeaker = usesLoudspeaker;
    if (!tells) {
        service.setFault("GetAudioOutputConfigurations", "Busy");
    }
    LineThreads threads;
    CameraRecord record{"1", "Gate", onvifKind(), camera.address()};
    OnvifConfig config;
    config.servicePort = service.url().port();
    LocatedTalk talk(record, config, threads, QString());
    QString refusedWith;
    QString reason;
    connect(&talk, &DeviceTalk::refused, this, [&](const QString& returnCode, const QString& text) {
        refusedWith = returnCode;
        reason = text;
    });
    QVERIFY(TalkProbe::waitFor([&] { return !refusedWith.isEmpty(); }));
    QCOMPARE(refusedWith, code);
    QCOMPARE(reason, words);
}

/** A line starts with the next turn of the event loop, and counts before. */
void TestLocatedTalk::roomForLinesIsTakenAtOnce()
{
    QTcpServer camera; // which answers nothing
    QVERIFY(camera.listen(QHostAddress::LocalHost));
    const CameraRecord record{"1", "Gate", onvifKind(),
                              QStringLiteral("rtsp://127.0.0.1:%1/talk").arg(camera.serverPort())};
    LineThreads threads(3);
    std::vector<std::unique_ptr<LocatedTalk>> talks;
    QStringList reasons;
    const auto open = [&] {
        talks.push_back(std::make_unique<LocatedTalk>(record, OnvifConfig(), threads, QString()));
        connect(talks.back().get(), &DeviceTalk::refused, this,
                [&](const QString&, const QString& text) { reasons.append(text); });
    };
    open();
    open();
    QVERIFY(TalkProbe::waitFor([&] { return camera.hasPendingConnections(); }));
    QVERIFY(threads.hasRoom());
    open();
    QVERIFY(!threads.hasRoom());
    open();
    talks.erase(talks.begin() + 2); // before it has begun
    QVERIFY(threads.hasRoom());
    QVERIFY(TalkProbe::waitFor([&] { return !reasons.isEmpty(); }));
    QVERIFY2(reasons[0].contains("no room for one more talk"), qPrintable(reasons[0]));
    talks.clear();
    QVERIFY(TalkProbe::waitFor([&] { return threads.hasRoom(); }));
}

QTEST_GUILESS_MAIN(TestLocatedTalk)
#include "tst_locatedtalk.moc"
