// Lines to cameras that are broken, or mean harm.

#include "protocol/Limits.h"
#include "protocol/ServerReply.h"
#include "server/devices/onvif/GstLog.h"
#include "server/devices/onvif/H264Assembler.h"
#include "server/devices/onvif/LineThreads.h"
#include "server/devices/onvif/LocatedTalk.h"
#include "server/devices/onvif/PacketRate.h"
#include "server/devices/onvif/RtspGuard.h"
#include "tests/server/onvif/ScriptedRtsp.h"
#include "tests/server/onvif/TalkProbe.h"

#include <QMutex>
#include <QTemporaryFile>

#include <QNetworkDatagram>
#include <QUdpSocket>

#include <atomic>
#include <condition_variable>
#include <mutex>

#ifdef __linux__
#include <sys/resource.h>
#include <unistd.h>
#endif

class TestHostileCameras : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasNoThread(); // first: the stack of a thread that has ended would do for the next
    void answersForEver_data();
    void answersForEver();
    void speaksWhereItHears();
    void packetsOfASecond();
    void speaksTooOften();
    void wantsItEncrypted_data();
    void wantsItEncrypted();
    void inCapitals();
    void loginOfTwoLines();
    void writesToTheLog();
    void linesByOpenFiles();
    void linesOfVideos();
    void manyAtOnce();
};

void TestHostileCameras::answersForEver_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("answer"); // begins so
    QTest::addColumn<QByteArray>("more");
    const QByteArray ok = "200 OK\r\n";
    const QByteArray body = "200 OK\r\nContent-Type: application/sdp\r\nContent-Length: 100000\r\n\r\nv=0";
    for (const char* method : {"OPTIONS", "DESCRIBE", "SETUP", "PLAY", "TEARDOWN"}) {
        QTest::addRow("lines, %s", method) << QByteArray(method) << ok << QByteArray("X: x\r\n");
        QTest::addRow("a line, %s", method) << QByteArray(method) << ok << QByteArray("x");
        QTest::addRow("a body, %s", method) << QByteArray(method) << body << QByteArray("\n");
    }
    QTest::newRow("a packet") << QByteArray("PLAY") << ok + "\r\n$" << QByteArray(1, '\xff');
}

/** A session that hangs in the middle of an answer gets its line back all the same. */
void TestHostileCameras::answersForEver()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, answer);
    QFETCH(QByteArray, more);
    ScriptedRtsp camera;
    camera.answers[method] = answer;
    camera.drips[method] = more;
    CameraSettings settings;
    settings.openTimeout = 1000;
    TalkProbe probe(camera.address(), settings);
    QVERIFY(probe.waitFor([&] { return probe.openedAfter >= 0 || probe.refusedAfter >= 0; }));
    const qint64 end = probe.clock.elapsed();
    QVERIFY(probe.close());
    QVERIFY2(probe.clock.elapsed() - end < 2000, qPrintable(QString::number(probe.clock.elapsed() - end)));
}

/** rtspsrc itself does not survive packets there. */
void TestHostileCameras::speaksWhereItHears()
{
    ScriptedRtsp camera;
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    for (int i = 0; i < 20; ++i) {
        camera.speak(QByteArray(160, 'x'), 0, camera.talkChannel());
    }
    QVERIFY(probe.say(2));
    QVERIFY(probe.waitFor([&] { return camera.packets == 8; }));
    for (int i = 0; i < 3; ++i) {
        camera.speak(QByteArray(160, 'y'));
    }
    QVERIFY(probe.waitFor([&] {
        return std::any_of(probe.heard.begin(), probe.heard.end(),
                           [](const VoicePacket& packet) { return packet.bitstream.contains("yyy"); });
    }));
    QVERIFY(std::none_of(probe.heard.begin(), probe.heard.end(),
                         [](const VoicePacket& packet) { return packet.bitstream.contains("xxx"); }));
    QVERIFY(probe.close());
}

void TestHostileCameras::packetsOfASecond()
{
    const PacketRate::Time start{std::chrono::hours(1)};
    const auto taken = [&](PacketRate& rate, std::chrono::milliseconds after, std::size_t bytes) {
        int count = 0;
        for (int i = 0; i < 100000; ++i) {
            count += rate.takes(start + after, bytes) ? 1 : 0;
        }
        return count;
    };
    using std::chrono::milliseconds;
    PacketRate voice;
    QCOMPARE(taken(voice, milliseconds(0), 0), 500); // the shortest, of 2 ms
    QCOMPARE(taken(voice, milliseconds(999), 0), 0);
    QCOMPARE(taken(voice, milliseconds(1000), 0), 500);
    PacketRate video(PacketRate::maxVideoPackets);
    QCOMPARE(taken(video, milliseconds(0), 1500), 50000);
    QCOMPARE(taken(video, milliseconds(1000), 1501), 25000);
    QCOMPARE(taken(video, milliseconds(2000), 65535), 1136);
    // The largest pictures in packets as cameras send them.
    const int packets = Limits::maxVideoUnitBytes / 1400 + 1;
    QVERIFY(H264Assembler::maxRate * packets <= PacketRate::maxVideoPackets);
}

/** What no voice needs does not reach those who listen. */
void TestHostileCameras::speaksTooOften()
{
    ScriptedRtsp camera;
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QElapsedTimer time;
    time.start();
    QTimer voice; // 20,000 packets a second
    connect(&voice, &QTimer::timeout, &camera, [&] {
        for (int i = 0; i < 20; ++i) {
            camera.speak("x");
        }
    });
    voice.start(1);
    QVERIFY(probe.waitFor([&] { return probe.heard.size() > PacketRate::maxPackets; }));
    const auto seconds = static_cast<std::size_t>(time.elapsed() / 1000);
    QVERIFY2(probe.heard.size() <= (seconds + 2) * PacketRate::maxPackets,
             qPrintable(QString::number(probe.heard.size())));
    QVERIFY(seconds > 0);
    voice.stop();
    QVERIFY(probe.close());
}

void TestHostileCameras::wantsItEncrypted_data()
{
    QTest::addColumn<QByteArray>("transport");
    QTest::newRow("SRTP") << QByteArray("RTP/SAVP");
    QTest::newRow("SRTP with feedback") << QByteArray("RTP/SAVPF");
    QTest::newRow("DTLS") << QByteArray("UDP/TLS/RTP/SAVP");
    QTest::newRow("no RTP") << QByteArray("udp");
}

/** Sound that was to be encrypted is not sent at all. */
void TestHostileCameras::wantsItEncrypted()
{
    QFETCH(QByteArray, transport);
    ScriptedRtsp camera;
    camera.answers["DESCRIBE"] =
        ScriptedRtsp::describes(ScriptedRtsp::description().replace("RTP/AVP", transport));
    TalkProbe probe(camera.address());
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    QVERIFY2(probe.reason.contains("PCMU/8000 (not by RTP/AVP)"), qPrintable(probe.reason));
    QVERIFY(!camera.hasRequest("SETUP"));
}

/** Schemes have no case (RFC 3986, clause 3.1). */
void TestHostileCameras::inCapitals()
{
    ScriptedRtsp camera;
    TalkProbe probe(camera.address().replace("rtsp:", "RTSP:"));
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(LocatedTalk::isStream("RTSPS://gate/talk"));
    QVERIFY(probe.close());
}

/** As no record can have it any more. */
void TestHostileCameras::loginOfTwoLines()
{
    ScriptedRtsp camera;
    camera.answers["DESCRIBE"] =
        "401 Unauthorized\r\nWWW-Authenticate: Digest realm=\"gate\", nonce=\"z\"\r\n\r\n";
    TalkProbe probe(camera.address(), CameraSettings(), "u\nv", "secret");
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::loginRefused);
    QVERIFY(!camera.hasRequest("DESCRIBE", "Authorization"));
}

/** GStreamer writes a warning for each field of a transport that it does not know. */
void TestHostileCameras::writesToTheLog()
{
    static QMutex mutex;
    static QByteArrayList lines;
    lines.clear();
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
            const QMutexLocker lock(&mutex);
            lines.append(text.toUtf8());
        });
    QTemporaryFile error;
    QVERIFY(error.open());
    const int kept = dup(2);
    dup2(error.handle(), 2);
    {
        ScriptedRtsp camera;
        camera.answers["SETUP"] =
            "200 OK\r\nTransport: RTP/AVP/TCP;unicast;interleaved=0-1;\x1b[31m\u202eevil" +
            QByteArray(";a").repeated(500) + "\r\n\r\n";
        TalkProbe probe(camera.address());
        probe.waitFor([&] { return probe.openedAfter >= 0 || probe.refusedAfter >= 0; });
        probe.close();
    }
    dup2(kept, 2);
    ::close(kept);
    qInstallMessageHandler(before);
    error.seek(0);
    QCOMPARE(error.readAll(), QByteArray());
    QVERIFY(!lines.isEmpty());
    QVERIFY(lines.size() <= GstLog::maxMessages);
    for (const QByteArray& line : qAsConst(lines)) {
        QVERIFY2(line.size() < GstLog::maxMessage + 30, line.constData());
        QVERIFY(std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; }));
    }
}

/** The system has no memory for the stack of one more thread. */
void TestHostileCameras::hasNoThread()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__linux__)
    QSKIP("needs a limit of the address space");
#else
    ScriptedRtsp camera;
    TalkProbe probe(camera.address()); // its line starts when events are taken
    QFile statm(QStringLiteral("/proc/self/statm"));
    QVERIFY(statm.open(QIODevice::ReadOnly));
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_AS, &before), 0);
    rlimit now = before;
    now.rlim_cur =
        static_cast<rlim_t>(statm.readAll().split(' ').first().toLongLong() * getpagesize()) + (1 << 20);
    QCOMPARE(setrlimit(RLIMIT_AS, &now), 0);
    QCoreApplication::processEvents();
    setrlimit(RLIMIT_AS, &before);
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    QVERIFY2(probe.reason.contains("no room"), qPrintable(probe.reason));
    QVERIFY(probe.close());
#endif
}

void TestHostileCameras::linesByOpenFiles()
{
    QCOMPARE(LineThreads::maxLines(0), 0);
    QCOMPARE(LineThreads::maxLines(1024), 96);
    QCOMPARE(LineThreads::maxLines(std::numeric_limits<int>::max()), 200);
}

/** A quarter of all lines is left to talks. */
void TestHostileCameras::linesOfVideos()
{
    struct Line : LineWork
    {
        void run() override
        {
            std::unique_lock<std::mutex> lock(mutex);
            closed.wait(lock, [this] { return closing.load(); });
            ended = true;
        }
        void close() override
        {
            const std::lock_guard<std::mutex> lock(mutex);
            closing = true;
            closed.notify_all();
        }
        void forgetListener() override {}
        bool hasEnded() const override { return ended; }
        bool isClosing() const override { return closing; }

        std::mutex mutex;
        std::condition_variable closed;
        std::atomic<bool> closing{false};
        std::atomic<bool> ended{false};
    };
    LineThreads threads(8);
    for (int i = 0; i < 6; ++i) {
        QVERIFY(threads.hasRoomForVideo());
        QVERIFY(threads.start(std::make_shared<Line>()));
    }
    QVERIFY(!threads.hasRoomForVideo());
    QVERIFY(threads.hasRoom());
    LineThreads others(8);
    const std::vector<std::shared_ptr<LineWork>> reserved{std::make_shared<Line>(), std::make_shared<Line>()};
    for (const auto& line : reserved) {
        others.reserve(line); // of talks that begin
    }
    for (int i = 0; i < 4; ++i) {
        QVERIFY(others.hasRoomForVideo());
        QVERIFY(others.start(std::make_shared<Line>()));
    }
    QVERIFY(!others.hasRoomForVideo());
}

/** All are asked for before the first begins. */
void TestHostileCameras::manyAtOnce()
{
#ifndef __linux__
    QSKIP("needs a limit of open files");
#else
    ScriptedRtsp camera;
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit now = before;
    now.rlim_cur = 256 + 2 * 8;
    QCOMPARE(LineThreads::maxLines(static_cast<int>(now.rlim_cur)), 2);
    OnvifCameras cameras(TalkProbe::withoutPresence(OnvifConfig()));
    cameras.setRecords({{"1", "Gate", onvifKind(), camera.address(), "", "", CameraSettings()}});
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &now), 0);
    int opened = 0;
    int refused = 0;
    std::vector<std::unique_ptr<DeviceTalk>> talks;
    for (int i = 0; i < 5; ++i) {
        talks.push_back(cameras.openTalk("1"));
        connect(talks.back().get(), &DeviceTalk::opened, this, [&] { ++opened; });
        connect(talks.back().get(), &DeviceTalk::refused, this, [&] { ++refused; });
    }
    const bool done = TalkProbe::waitFor([&] { return opened + refused == 5; });
    setrlimit(RLIMIT_NOFILE, &before);
    QVERIFY(done);
    QCOMPARE(opened, 2);
#endif
}

QTEST_GUILESS_MAIN(TestHostileCameras)
#include "tst_hostilecameras.moc"
