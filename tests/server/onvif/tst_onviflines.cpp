// What a talk reports of its line: why it does not open, and that it is lost.

#include "protocol/ServerReply.h"
#include "tests/server/onvif/TalkProbe.h"

#include <QTcpServer>
#include <QTcpSocket>

class TestOnvifLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void refusals_data();
    void refusals();
    void nobodyListens();
    void neverAnswers();
    void logsIn_data();
    void logsIn();
    void isKilled_data();
    void isKilled();
    void hangs_data();
    void hangs();
    void wakesUp();
    void silentCameraIsAlive();
    void waitsForASlowCamera();
    void closesWhileItOpens();
    void closesWhileItHangs();
    void closesWhileItIsAsked();
    void isDestroyedWhileItTalks();
    void severalTalksAtOnce();
};

/** GStreamer reads its registry at the first talk. */
void TestOnvifLines::initTestCase()
{
    TestCamera camera({"--jitter", "20"});
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
}

void TestOnvifLines::refusals_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("words");
    const auto row = [](const char* name, const QStringList& options, const QString& code,
                        const QString& path = "/talk", const QString& words = QString()) {
        QTest::newRow(name) << options << path << code << words;
    };
    row("551 to who asks for the loudspeaker", {"--no-backchannel"}, ReturnCode::noLoudspeaker);
    row("200 without a loudspeaker", {"--hides-backchannel"}, ReturnCode::noLoudspeaker);
    row("a codec that nobody has", {"--back-codec", "opus"}, ReturnCode::talkRefused);
    row("a wrong path", {}, ReturnCode::talkRefused, "/other");
    row("busy at DESCRIBE", {"--refuse-describe", "503"}, ReturnCode::cameraBusy);
    row("busy at SETUP", {"--refuse-setup", "453"}, ReturnCode::cameraBusy);
    row("busy at PLAY", {"--refuse-play", "453"}, ReturnCode::cameraBusy);
    row("refuses to PLAY", {"--refuse-play", "455"}, ReturnCode::talkRefused);
    row("refuses to describe itself", {"--refuse-describe", "500"}, ReturnCode::talkRefused);
    row("no such transport", {"--transport", "udp"}, ReturnCode::talkRefused, "/talk",
        "the transport \"tcp\"; its setting may be \"udp\"");
    row("a login is wanted", {"--user", "anna", "--password", "secret"}, ReturnCode::loginRefused);
}

void TestOnvifLines::refusals()
{
    QFETCH(QStringList, options);
    QFETCH(QString, path);
    QFETCH(QString, code);
    QFETCH(QString, words);
    TestCamera camera(options);
    TalkProbe probe(camera.address("rtsp", path));
    QVERIFY(probe.refuse());
    qInfo("%s: %s after %lld ms", qPrintable(probe.returnCode), qPrintable(probe.reason), probe.refusedAfter);
    QCOMPARE(probe.returnCode, code);
    QVERIFY(!probe.reason.isEmpty());
    QVERIFY2(probe.reason.contains(words), qPrintable(probe.reason));
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
    QCOMPARE(probe.openedAfter, qint64{-1});
    QVERIFY(probe.refusedAfter < 2000);
}

void TestOnvifLines::nobodyListens()
{
    QString address;
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        address = QStringLiteral("rtsp://127.0.0.1:%1/talk").arg(server.serverPort());
    }
    TalkProbe probe(address);
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::cameraOffline);
}

void TestOnvifLines::neverAnswers()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    CameraSettings settings;
    settings.openTimeout = 1000;
    TalkProbe probe(QStringLiteral("rtsp://127.0.0.1:%1/talk").arg(server.serverPort()), settings);
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::cameraTimedOut);
    QVERIFY(probe.refusedAfter >= 999);
    QVERIFY(probe.refusedAfter < 1500);
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
}

void TestOnvifLines::logsIn_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("password");
    QTest::addColumn<bool>("opens");
    QTest::newRow("digest") << "digest"
                            << "s3cret/@:" << true;
    QTest::newRow("basic") << "basic"
                           << "s3cret/@:" << true;
    QTest::newRow("digest, wrong") << "digest"
                                   << "other" << false;
    QTest::newRow("basic, wrong") << "basic"
                                  << "other" << false;
    QTest::newRow("digest, none") << "digest"
                                  << "" << false;
}

void TestOnvifLines::logsIn()
{
    QFETCH(QString, method);
    QFETCH(QString, password);
    QFETCH(bool, opens);
    TestCamera camera({"--user", "anna", "--password", "s3cret/@:", "--auth", method});
    TalkProbe probe(camera.address(), CameraSettings(), "anna", password);
    QCOMPARE(probe.open(), opens);
    QCOMPARE(probe.returnCode, opens ? QString() : ReturnCode::loginRefused);
}

void TestOnvifLines::isKilled_data()
{
    QTest::addColumn<bool>("udp");
    QTest::newRow("TCP") << false;
    QTest::newRow("UDP") << true;
}

void TestOnvifLines::isKilled()
{
    QFETCH(bool, udp);
    TestCamera camera;
    TalkProbe probe(camera.address(), TalkProbe::over(udp));
    QVERIFY(probe.open());
    QVERIFY(probe.say(3));
    const qint64 killed = probe.clock.elapsed();
    camera.kill();
    QVERIFY(probe.lose());
    qInfo("lost after %lld ms: %s", probe.lostAfter - killed, qPrintable(probe.reason));
    QVERIFY(probe.lostAfter - killed < 100);
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
}

void TestOnvifLines::hangs_data()
{
    isKilled_data();
}

void TestOnvifLines::hangs()
{
    QFETCH(bool, udp);
    TestCamera camera;
    TalkProbe probe(camera.address(), TalkProbe::over(udp));
    QVERIFY(probe.open());
    QVERIFY(probe.say(2));
    const qint64 stopped = probe.clock.elapsed();
    camera.stop();
    QVERIFY(probe.lose());
    qInfo("lost after %lld ms: %s", probe.lostAfter - stopped, qPrintable(probe.reason));
    QVERIFY(probe.lostAfter - stopped > 2500);
    QVERIFY(probe.lostAfter - stopped < 3500);
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }, 2000)); // though it answers no TEARDOWN
}

/** A camera that hangs for a while goes on, and plays nothing of what was said meanwhile but its beginning.
 */
void TestOnvifLines::wakesUp()
{
    TestCamera camera({"--jitter", "20"});
    TalkProbe probe(camera.address());
    QVERIFY(probe.open());
    QVERIFY(probe.say(5));
    camera.stop();
    QVERIFY(probe.say(25)); // two seconds
    camera.wake();
    QVERIFY(probe.say(10));
    QVERIFY(probe.close());
    QCOMPARE(probe.lostAfter, qint64{-1});
    const auto packets = camera.packets();
    int old = 0; // samples
    for (const TestCamera::Packet& packet : packets) {
        const std::uint32_t said = packet.timestamp - packets.front().timestamp;
        const qint64 late = packet.time - packets.front().time - said / 8 * 1000;
        old += late > 300000 ? packet.size : 0;
    }
    qInfo("%d ms were old", old / 8);
    QVERIFY(old <= 8 * 1000);
    QVERIFY(packets.size() > 15 * 4);
}

/** The camera sends nothing: it is asked, and its answers keep the line. */
void TestOnvifLines::silentCameraIsAlive()
{
    const QString question = "option";
    TestCamera camera({"--voice", "mute", "--jitter", "20"});
    OnvifConfig config;
    config.silence = std::chrono::milliseconds(1500);
    TalkProbe probe(camera.address(), CameraSettings(), QString(), QString(), config);
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    const int before = camera.count(question);
    QVERIFY(probe.say(30)); // longer than a camera may be silent
    QCOMPARE(probe.lostAfter, qint64{-1});
    QVERIFY(camera.count(question) - before >= 2);
    QVERIFY(probe.close());
    qInfo("%zu samples, %d questions", camera.heard().size(), camera.count(question) - before);
    QCOMPARE(camera.heard().size(), std::size_t{30 * 640}); // nothing is lost by the questions
    QVERIFY(camera.count("client") <= 2);                   // all on one connection
}

/** A camera that needs long to answer, but answers in time. */
void TestOnvifLines::waitsForASlowCamera()
{
    TestCamera camera({"--slow-describe", "700"});
    OnvifConfig config;
    config.silence = std::chrono::milliseconds(600); // which counts from when it is open
    TalkProbe probe(camera.address(), CameraSettings(), QString(), QString(), config);
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(probe.openedAfter >= 700);
}

void TestOnvifLines::closesWhileItOpens()
{
    TestCamera camera({"--slow-describe", "800"});
    TalkProbe probe(camera.address());
    QVERIFY(!camera.waitFor("client 1").isEmpty());
    QElapsedTimer clock;
    clock.start();
    QVERIFY(probe.close());
    QVERIFY(clock.elapsed() < 600);
    QCOMPARE(probe.openedAfter, qint64{-1});
    QCOMPARE(probe.refusedAfter, qint64{-1});
}

void TestOnvifLines::closesWhileItHangs()
{
    TestCamera camera;
    TalkProbe probe(camera.address());
    QVERIFY(probe.open());
    camera.stop();
    QElapsedTimer clock;
    clock.start();
    QVERIFY(probe.close());
    QVERIFY(clock.elapsed() < 1000);
}

/** The question and the end of the line meet at any time. */
void TestOnvifLines::closesWhileItIsAsked()
{
    TestCamera camera({"--voice", "mute", "--jitter", "20"});
    for (int round = 0; round < 8; ++round) {
        TalkProbe probe(camera.address());
        QVERIFY2(probe.open(), qPrintable(probe.reason));
        QVERIFY(probe.say(4));
        QVERIFY(probe.waitFor([&] { return probe.clock.elapsed() >= probe.openedAfter + 380 + round * 16; }));
        QVERIFY(probe.say(1)); // into the question
        QVERIFY(probe.close());
    }
}

void TestOnvifLines::isDestroyedWhileItTalks()
{
    TestCamera camera(
        {"--jitter", "20"}); // which has heard something before: it may not end while it hears the first
    TalkProbe probe(camera.address());
    QVERIFY(probe.open());
    QVERIFY(probe.say(2));
    QElapsedTimer clock;
    clock.start();
    probe.talk.reset(); // waits for nothing
    QVERIFY(clock.elapsed() < 100);
    QVERIFY(!camera.waitFor("closed 1").isEmpty());
    QCOMPARE(camera.count("teardown"), 1);
}

void TestOnvifLines::severalTalksAtOnce()
{
    TestCamera camera({"--jitter", "20"});
    std::vector<std::unique_ptr<TalkProbe>> probes;
    for (int i = 0; i < 4; ++i) {
        probes.push_back(std::make_unique<TalkProbe>(camera.address()));
    }
    for (const auto& probe : probes) {
        QVERIFY2(probe->open(), qPrintable(probe->reason));
    }
    for (int i = 0; i < 5; ++i) {
        for (const auto& probe : probes) {
            QVERIFY(probe->say(1));
        }
    }
    for (const auto& probe : probes) {
        QVERIFY(probe->close());
    }
    for (int i = 1; i <= 4; ++i) {
        QCOMPARE(camera.heard(i).size(), std::size_t{5 * 640});
    }
}

QTEST_GUILESS_MAIN(TestOnvifLines)
#include "tst_onviflines.moc"
