// Lines to cameras that do what gst-rtsp-server never does.

#include "protocol/ServerReply.h"
#include "server/devices/onvif/GstLog.h"
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

#ifdef __linux__
#include <sys/resource.h>
#include <unistd.h>
#endif

class TestOnvifScripts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasNoThread(); // the first: the C library keeps stacks of threads that have ended
    void talks();
    void recordsWhatItDoesNotPlay_data();
    void recordsWhatItDoesNotPlay();
    void refusesToRecord_data();
    void refusesToRecord();
    void recordsInSilence();
    void sendsElsewhere_data();
    void sendsElsewhere();
    void sendsInACircle_data();
    void sendsInACircle();
    void wantsALoginOfNoForm_data();
    void wantsALoginOfNoForm();
    void wantsALoginAmongOthers_data();
    void wantsALoginAmongOthers();
    void streamsElsewhere();
    void sendsTheTalkElsewhere_data();
    void sendsTheTalkElsewhere();
    void takesItsOwnHost();
    void answersWithoutAnEnd_data();
    void answersWithoutAnEnd();
    void floods_data();
    void floods();
    void muchSound();
    void answersForEver_data();
    void answersForEver();
    void speaksWhereItHears();
    void speaksTooOften();
    void wantsItEncrypted_data();
    void wantsItEncrypted();
    void inCapitals();
    void loginOfTwoLines();
    void writesToTheLog();
    void linesByOpenFiles();
    void manyAtOnce();
    void codecsWithoutNames();
    void followsWithinTheCamera();
};

/** The script itself is that of a camera that can be talked to. */
void TestOnvifScripts::talks()
{
    ScriptedRtsp camera;
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(probe.say(2));
    QVERIFY(probe.waitFor([&] { return camera.packets == 8; }));
    QVERIFY(probe.close());
    QVERIFY(camera.hasRequest("PLAY", "Require: www.onvif.org/ver20/backchannel"));
    QVERIFY(!camera.hasRequest("RECORD"));
    QVERIFY(probe.waitFor([&] { return camera.hasRequest("TEARDOWN"); }));
}

void TestOnvifScripts::recordsWhatItDoesNotPlay_data()
{
    QTest::addColumn<QByteArray>("refusal");
    for (const char* refusal :
         {"400 Bad Request", "405 Method Not Allowed", "455 Method Not Valid in This State",
          "459 Aggregate Operation Not Allowed", "501 Not Implemented"}) {
        QTest::newRow(refusal) << QByteArray(refusal);
    }
}

void TestOnvifScripts::recordsWhatItDoesNotPlay()
{
    QFETCH(QByteArray, refusal);
    ScriptedRtsp camera;
    camera.answers["PLAY"] = refusal + "\r\n\r\n";
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(camera.hasRequest("RECORD", "Require: www.onvif.org/ver20/backchannel"));
    QVERIFY(probe.say(2));
    QVERIFY(probe.waitFor([&] { return camera.packets == 8; }));
    QVERIFY(probe.close());
    QVERIFY(probe.waitFor([&] { return camera.hasRequest("TEARDOWN"); }));
}

void TestOnvifScripts::refusesToRecord_data()
{
    QTest::addColumn<QByteArray>("refusal");
    for (const char* refusal : {"400 Bad Request", "405 Method Not Allowed",
                                "455 Method Not Valid in This State", "501 Not Implemented"}) {
        QTest::newRow(refusal) << QByteArray(refusal);
    }
}

void TestOnvifScripts::refusesToRecord()
{
    QFETCH(QByteArray, refusal);
    ScriptedRtsp camera;
    camera.answers["PLAY"] = "455 Method Not Valid in This State\r\n\r\n";
    camera.answers["RECORD"] = refusal + "\r\n\r\n"; // two of which rtspsrc takes for consent
    TalkProbe probe(camera.address());
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    QVERIFY2(probe.reason.contains("neither PLAY nor RECORD"), qPrintable(probe.reason));
    QVERIFY2(probe.refusedAfter < 1000, qPrintable(QString::number(probe.refusedAfter)));
    QCOMPARE(camera.connections, 2); // it is not tried for ever
}

/** What a camera answers to a guess is believed when something comes of it. */
void TestOnvifScripts::recordsInSilence()
{
    ScriptedRtsp camera;
    camera.answers["PLAY"] = "501 Not Implemented\r\n\r\n";
    camera.speaks = false;
    TalkProbe probe(camera.address());
    QVERIFY(probe.refuse());
    QVERIFY(camera.hasRequest("RECORD"));
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
}

void TestOnvifScripts::sendsElsewhere_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QByteArray>("to"); // empty: another server that listens
    for (const char* method : {"OPTIONS", "DESCRIBE", "SETUP", "PLAY"}) {
        QTest::addRow("%s, for a while", method)
            << QByteArray(method) << QByteArray("302 Moved Temporarily") << QByteArray();
        QTest::addRow("%s, for ever", method)
            << QByteArray(method) << QByteArray("301 Moved Permanently") << QByteArray();
    }
    const auto row = [](const char* name, const QByteArray& to) {
        QTest::newRow(name) << QByteArray("DESCRIBE") << QByteArray("302 Moved Temporarily") << to;
    };
    row("to a port where nobody listens", "rtsp://127.0.0.1:1/talk");
    row("to TLS", "rtsps://HERE/talk");
    row("through a tunnel", "rtsph://HERE/talk");
    row("to a name in the place of a user", "rtsp://HERE@127.0.0.2/talk");
    row("to no address", "talk");
    row("nowhere", "");
    QTest::newRow("to play at a path of its own")
        << QByteArray("PLAY") << QByteArray("302 Moved Temporarily") << QByteArray("rtsp://HERE/other");
}

/** The login and the sound belong to the camera's address. */
void TestOnvifScripts::sendsElsewhere()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, status);
    QFETCH(QByteArray, to);
    ScriptedRtsp camera;
    ScriptedRtsp other;
    const QByteArray challenge = "401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"other\"\r\n\r\n";
    other.answers["OPTIONS"] = challenge;
    other.answers["DESCRIBE"] = challenge;
    const QByteArray here = camera.address("").toLatin1().mid(7);
    const QByteArray target = to.isNull() ? other.address().toLatin1() : QByteArray(to).replace("HERE", here);
    camera.answers[method] = status + (target.isEmpty() ? "" : "\r\nLocation: " + target) + "\r\n\r\n";
    TalkProbe probe(camera.address(), CameraSettings(), "anna", "secret");
    QVERIFY(probe.refuse());
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
    QCOMPARE(other.connections, 0);
    QCOMPARE(camera.connections, 1);
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    QVERIFY2(probe.reason.contains("another address"), qPrintable(probe.reason));
}

void TestOnvifScripts::sendsInACircle_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::newRow("OPTIONS") << QByteArray("OPTIONS");
    QTest::newRow("DESCRIBE") << QByteArray("DESCRIBE");
}

void TestOnvifScripts::sendsInACircle()
{
    QFETCH(QByteArray, method);
    ScriptedRtsp camera;
    const auto sendTo = [&](const QString& path) {
        return "302 Moved Temporarily\r\nLocation: " + camera.address(path).toLatin1() + "\r\n\r\n";
    };
    camera.answers[method + " /talk"] = sendTo("/other");
    camera.answers[method + " /other"] = sendTo("/talk");
    TalkProbe probe(camera.address());
    QVERIFY(probe.refuse());
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    QVERIFY2(probe.reason.contains("to the next"), qPrintable(probe.reason));
    QCOMPARE(camera.connections, RtspGuard::maxRedirects + 1);
}

void TestOnvifScripts::wantsALoginOfNoForm_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("challenge");
    for (const char* method : {"OPTIONS", "DESCRIBE", "SETUP", "PLAY"}) {
        QTest::addRow("%s", method) << QByteArray(method) << QByteArray("Digest x");
    }
    for (const char* challenge :
         {"", "Digest", "Digest ", "Digest x", "Digest realm", "Digest =", "Digest realm=",
          "Digest ,realm=\"y\"", "Digest realm=\"y\", nonce", "Digest realm, nonce=\"\"",
          "Digest realm=\"y\", nonce=\"z\", algorithm=x", "Basic, Digest", "Basic realm, Digest", "Foo"}) {
        QTest::addRow("'%s'", challenge) << QByteArray("DESCRIBE") << QByteArray(challenge);
    }
    QTest::newRow("without an end") << QByteArray("DESCRIBE") << "Digest realm=\"" + QByteArray(100000, 'x');
}

/** With a login and without one; rtspsrc itself does not survive most of them. */
void TestOnvifScripts::wantsALoginOfNoForm()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, challenge);
    for (const char* user : {"", "anna"}) {
        ScriptedRtsp camera;
        camera.answers[method] = "401 Unauthorized\r\nWWW-Authenticate: " + challenge + "\r\n\r\n";
        CameraSettings settings;
        settings.openTimeout = 2000;
        TalkProbe probe(camera.address(), settings, user, user);
        QVERIFY(probe.refuse());
        if (challenge.size() < 1000) { // else rtspsrc does not read the answer at all
            QCOMPARE(probe.returnCode, ReturnCode::loginRefused);
        }
        QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
    }
}

void TestOnvifScripts::wantsALoginAmongOthers_data()
{
    QTest::addColumn<QByteArray>("challenges");
    QTest::addColumn<QByteArray>("login");
    const QByteArray digest = "Digest username=\"anna\", realm=\"the gate\", nonce=\"z\"";
    const auto row = [](const char* name, const QByteArray& challenges, const QByteArray& login) {
        QTest::newRow(name) << challenges << login;
    };
    row("parameters without a value", "Digest realm=\"the gate\", nonce=\"z\", stale, foo", digest);
    row("the stronger one", "Basic realm=\"x\", Digest realm=\"the gate\", nonce=\"z\"", digest);
    row("a hash that it has not",
        "Digest realm=\"no\", nonce=\"no\", algorithm=SHA-256, Digest realm=\"the gate\", nonce=\"z\", "
        "algorithm=MD5",
        digest);
    row("the first one", "Digest realm=\"the gate\", nonce=\"z\", Digest realm=\"no\", nonce=\"no\"", digest);
    row("two headers", "Foo x=1\r\nWWW-Authenticate: Digest realm=\"the gate\", nonce=\"z\"", digest);
    row("Basic", "Digest, Basic realm=\"x\"", "Basic YW5uYTpzZWNyZXQ=");
    row("Basic without a realm", "Basic", "Basic YW5uYTpzZWNyZXQ=");
}

void TestOnvifScripts::wantsALoginAmongOthers()
{
    QFETCH(QByteArray, challenges);
    QFETCH(QByteArray, login);
    ScriptedRtsp camera;
    camera.answers["DESCRIBE"] = "401 Unauthorized\r\nWWW-Authenticate: " + challenges + "\r\n\r\n";
    TalkProbe probe(camera.address(), CameraSettings(), "anna", "secret");
    QVERIFY(probe.refuse());
    QVERIFY2(camera.hasRequest("DESCRIBE", "Authorization: " + login), camera.requests.value(2).constData());
}

/** Streams at another host are asked for at the camera, which may know it by that name. */
void TestOnvifScripts::streamsElsewhere()
{
    ScriptedRtsp camera;
    ScriptedRtsp other;
    const QByteArray path = "a=control:" + other.address("/").toLatin1();
    camera.answers["DESCRIBE"] =
        ScriptedRtsp::describes(ScriptedRtsp::description().replace("a=control:", path));
    TalkProbe probe(camera.address(), CameraSettings(), "anna", "secret");
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(camera.hasRequest("SETUP", other.address("/").toLatin1()));
    QCOMPARE(other.connections, 0);
}

void TestOnvifScripts::sendsTheTalkElsewhere_data()
{
    QTest::addColumn<bool>("udp");
    QTest::addColumn<QByteArray>("answer");
    const QByteArray unicast = "RTP/AVP;unicast;client_port=40000-40001;";
    QTest::newRow("a host") << true << unicast + "source=127.0.0.2;server_port=";
    QTest::newRow("a name") << true << unicast + "source=localhost;server_port=";
    QTest::newRow("a host, in place of TCP") << false << unicast + "source=127.0.0.2;server_port=";
}

/** Nobody gets what is said because a camera says so. */
void TestOnvifScripts::sendsTheTalkElsewhere()
{
    QFETCH(bool, udp);
    QFETCH(QByteArray, answer);
    QUdpSocket other;
    QVERIFY(other.bind(QHostAddress("127.0.0.2")));
    const QByteArray ports =
        QByteArray::number(other.localPort()) + '-' + QByteArray::number(other.localPort() + 1);
    ScriptedRtsp camera;
    camera.answers["SETUP"] = "200 OK\r\nTransport: " + answer + ports + "\r\n\r\n";
    CameraSettings settings;
    settings.transport = udp ? CameraTransport::Udp : CameraTransport::Tcp;
    TalkProbe probe(camera.address(), settings);
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    QVERIFY2(probe.reason.contains("to another host"), qPrintable(probe.reason));
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
    QVERIFY(!other.hasPendingDatagrams());
    QVERIFY(probe.waitFor([&] { return camera.hasRequest("TEARDOWN"); }));
}

/** A camera may name itself. */
void TestOnvifScripts::takesItsOwnHost()
{
    QUdpSocket loudspeaker;
    QVERIFY(loudspeaker.bind(QHostAddress(QHostAddress::LocalHost)));
    const QByteArray port = QByteArray::number(loudspeaker.localPort());
    ScriptedRtsp camera;
    CameraSettings settings;
    settings.transport = CameraTransport::Udp;
    for (const char* source : {"", "source=127.0.0.1;"}) {
        camera.answers["SETUP"] =
            QByteArray("200 OK\r\nTransport: RTP/AVP;unicast;client_port=40000-40001;") + source +
            "server_port=" + port + '-' + port + "\r\n\r\n";
        TalkProbe probe(camera.address().replace("127.0.0.1", "localhost"), settings);
        QVERIFY2(probe.open(), qPrintable(probe.reason));
        QVERIFY(probe.say(1));
        QVERIFY(probe.waitFor([&] { return loudspeaker.hasPendingDatagrams(); }));
        while (loudspeaker.hasPendingDatagrams()) {
            loudspeaker.receiveDatagram();
        }
        QVERIFY(probe.close());
    }
}

void TestOnvifScripts::answersWithoutAnEnd_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("a body of gigabytes")
        << QByteArray("200 OK\r\nContent-Type: application/sdp\r\nContent-Length: 4000000000\r\n\r\nv=0\r\n");
    QTest::newRow("a long line") << "200 OK\r\nX-Line: " + QByteArray(1 << 17, 'x');
    QByteArray lines;
    for (int i = 0; i < 10000; ++i) {
        lines += "X-Line: x\r\n";
    }
    QTest::newRow("lines without an end") << "200 OK\r\n" + lines;
    QTest::newRow("a negative length") << QByteArray("200 OK\r\nContent-Length: -1\r\n\r\n");
}

void TestOnvifScripts::answersWithoutAnEnd()
{
    QFETCH(QByteArray, answer);
    ScriptedRtsp camera;
    camera.answers["DESCRIBE"] = answer;
    CameraSettings settings;
    settings.openTimeout = 1000;
    TalkProbe probe(camera.address(), settings);
    QVERIFY(probe.refuse());
    QVERIFY2(probe.refusedAfter < 1500, qPrintable(QString::number(probe.refusedAfter)));
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
}

void TestOnvifScripts::floods_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::newRow("before it plays") << QByteArray("DESCRIBE");
    QTest::newRow("when it plays") << QByteArray("PLAY");
}

/** A body that has no end: the camera is cut off before it fills the memory. */
void TestOnvifScripts::floods()
{
    QFETCH(QByteArray, method);
    ScriptedRtsp camera;
    camera.speaks = false;
    const QByteArray length = "Content-Length: 4000000000\r\n\r\n";
    const bool plays = method == "PLAY";
    camera.answers[method] = "200 OK\r\n" + (plays ? "\r\nRTSP/1.0 200 OK\r\nCSeq: 77\r\n" + length : length);
    camera.floods[method] = QByteArray(1 << 16, 'x');
    OnvifConfig config;
    config.teardown = std::chrono::seconds(3); // it is cut before that
    TalkProbe probe(camera.address(), CameraSettings(), QString(), QString(), config);
    QVERIFY(probe.waitFor([&] { return probe.refusedAfter >= 0 || probe.lostAfter >= 0; }, 5000));
    QVERIFY2(probe.reason.contains("more than answers and sound"), qPrintable(probe.reason));
    QCOMPARE(probe.returnCode, probe.refusedAfter >= 0 ? ReturnCode::talkRefused : QString());
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
    qInfo("%lld bytes", camera.flooded);
    QVERIFY(camera.flooded > 1 << 20);
    QVERIFY(camera.flooded < ScriptedRtsp::maxFlood);
}

/** More than a flood may have, but sound. */
void TestOnvifScripts::muchSound()
{
    ScriptedRtsp camera;
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    for (std::size_t i = 0; i < 110; ++i) {
        camera.speak(QByteArray(15000, 'x'));
        QVERIFY(probe.waitFor([&] { return probe.heard.size() > i; }));
    }
    QCOMPARE(probe.lostAfter, qint64{-1});
}

void TestOnvifScripts::answersForEver_data()
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
void TestOnvifScripts::answersForEver()
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
void TestOnvifScripts::speaksWhereItHears()
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

/** What no voice needs does not reach those who listen. */
void TestOnvifScripts::speaksTooOften()
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

void TestOnvifScripts::wantsItEncrypted_data()
{
    QTest::addColumn<QByteArray>("transport");
    QTest::newRow("SRTP") << QByteArray("RTP/SAVP");
    QTest::newRow("SRTP with feedback") << QByteArray("RTP/SAVPF");
    QTest::newRow("DTLS") << QByteArray("UDP/TLS/RTP/SAVP");
    QTest::newRow("no RTP") << QByteArray("udp");
}

/** Sound that was to be encrypted is not sent at all. */
void TestOnvifScripts::wantsItEncrypted()
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
void TestOnvifScripts::inCapitals()
{
    ScriptedRtsp camera;
    TalkProbe probe(camera.address().replace("rtsp:", "RTSP:"));
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(LocatedTalk::isStream("RTSPS://gate/talk"));
    QVERIFY(probe.close());
}

/** As no record can have it any more. */
void TestOnvifScripts::loginOfTwoLines()
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
void TestOnvifScripts::writesToTheLog()
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
void TestOnvifScripts::hasNoThread()
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

void TestOnvifScripts::linesByOpenFiles()
{
    QCOMPARE(LineThreads::maxLines(0), 0);
    QCOMPARE(LineThreads::maxLines(1024), 96);
    QCOMPARE(LineThreads::maxLines(std::numeric_limits<int>::max()), 200);
}

/** All are asked for before the first begins. */
void TestOnvifScripts::manyAtOnce()
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

/** What a camera calls its codecs gets to people only when it is a name. */
void TestOnvifScripts::codecsWithoutNames()
{
    ScriptedRtsp camera;
    camera.answers["DESCRIBE"] = ScriptedRtsp::describes(
        "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=camera\r\nt=0 0\r\nm=audio 0 RTP/AVP 96 97 98\r\na=rtpmap:96 "
        "\x1b[31m/8000\r\n"
        "a=rtpmap:97 " +
        QByteArray(5000, 'x') + "/8000\r\na=rtpmap:98 OPUS/48000\r\na=control:talk\r\na=sendonly\r\n");
    TalkProbe probe(camera.address());
    QVERIFY(probe.refuse());
    QVERIFY2(probe.reason.contains("takes OPUS/48000, which"), qPrintable(probe.reason));
}

/** The same camera, whose stream has moved. */
void TestOnvifScripts::followsWithinTheCamera()
{
    ScriptedRtsp camera;
    camera.answers["DESCRIBE /talk"] =
        "302 Moved Temporarily\r\nLocation: " + camera.address("/other").toLatin1() + "\r\n\r\n";
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(camera.hasRequest("PLAY", "/other"));
}

QTEST_GUILESS_MAIN(TestOnvifScripts)
#include "tst_onvifscripts.moc"
