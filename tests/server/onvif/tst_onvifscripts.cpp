// Lines to cameras that do what gst-rtsp-server never does.

#include "protocol/ServerReply.h"
#include "server/devices/onvif/RtpSample.h"
#include "server/devices/onvif/RtspGuard.h"
#include "server/devices/onvif/StreamChoice.h"
#include "tests/server/onvif/ScriptedRtsp.h"
#include "tests/server/onvif/TalkProbe.h"

#include <QNetworkDatagram>
#include <QTcpServer>
#include <QTimer>
#include <QUdpSocket>

class TestOnvifScripts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void talks();
    void recordsWhatItDoesNotPlay_data();
    void recordsWhatItDoesNotPlay();
    void refusesToRecord_data();
    void refusesToRecord();
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
    void comfortNoise_data();
    void comfortNoise();
    void muchSound();
    void stopsToRead();
    void readsAgain();
    void codecsWithoutNames();
    void followsWithinTheCamera();
    void talksAgainAtOnce();
    void endsBeforeItIsReady();
    void hangsBeforeItIsReady();
    void cannotBeKept();
    void loginForbidden();
    void talksShowPresence();
    void isAskedAgainAfterATalk();
    void explainsInTime();
    void choosesStreams();
    void timestampsStartAnywhere();
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
    camera.speaks = false; // as one that only hears
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
    camera.answers["RECORD"] = refusal + "\r\n\r\n";
    TalkProbe probe(camera.address());
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    QVERIFY2(probe.reason.contains("neither PLAY nor RECORD"), qPrintable(probe.reason));
    QCOMPARE(camera.connections, 2); // it is not tried for ever
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
    TalkProbe probe(camera.address());
    QVERIFY(probe.waitFor([&] { return probe.refusedAfter >= 0 || probe.lostAfter >= 0; }, 5000));
    QVERIFY2(probe.reason.contains("more than answers and sound"), qPrintable(probe.reason));
    QCOMPARE(probe.returnCode, probe.refusedAfter >= 0 ? ReturnCode::talkRefused : QString());
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
    qInfo("%lld bytes", camera.flooded);
    QVERIFY(camera.flooded > 1 << 20);
    QVERIFY(camera.flooded < ScriptedRtsp::maxFlood);
}

void TestOnvifScripts::comfortNoise_data()
{
    QTest::addColumn<char>("first");
    QTest::newRow("behind sound") << '\0';
    QTest::newRow("before sound") << '\x0d';
}

/** What a camera sends between its words is not played as words (RFC 3389). */
void TestOnvifScripts::comfortNoise()
{
    QFETCH(char, first);
    ScriptedRtsp camera;
    camera.speaks = false;
    camera.answers["DESCRIBE"] = ScriptedRtsp::describes(ScriptedRtsp::description().replace(
        "RTP/AVP 0\r\na=control:heard", "RTP/AVP 0 13\r\na=control:heard"));
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    camera.speak(first == 0 ? QByteArray(160, 'x') : QByteArray(1, 'n'), first);
    for (int i = 0; i < 5; ++i) {
        camera.speak(QByteArray(160, 'x'));
        camera.speak(QByteArray(1, 'n'), 13);
    }
    camera.speak(QByteArray(80, 'e')); // the end
    QVERIFY(probe.waitFor([&] { return !probe.heard.empty() && probe.heard.back().bitstream.size() == 80; }));
    probe.heard.pop_back();
    QVERIFY(probe.heard.size() >= 5);
    for (const VoicePacket& packet : probe.heard) {
        QCOMPARE(packet.bitstream, QByteArray(160, 'x'));
    }
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

/** A camera that speaks, and so is alive, but takes nothing. */
void TestOnvifScripts::stopsToRead()
{
    ScriptedRtsp camera;
    OnvifConfig config;
    config.silence = std::chrono::milliseconds(1000);
    TalkProbe probe(camera.address(), CameraSettings(), QString(), QString(), config);
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QTimer voice;
    connect(&voice, &QTimer::timeout, &camera, [&] { camera.speak(QByteArray(160, '\xFF')); });
    voice.start(20);
    camera.setDeaf(true);
    for (int i = 0; i < 50 && probe.lostAfter < 0; ++i) {
        probe.say(1);
    }
    QVERIFY(probe.lostAfter >= 0);
    QVERIFY2(probe.reason.contains("takes nothing"), qPrintable(probe.reason));
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
}

/** It plays little of what was said meanwhile, and then what is said now. */
void TestOnvifScripts::readsAgain()
{
    ScriptedRtsp camera;
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QTimer voice;
    connect(&voice, &QTimer::timeout, &camera, [&] { camera.speak(QByteArray(160, '\xFF')); });
    voice.start(20);
    camera.setDeaf(true);
    QVERIFY(probe.say(30)); // 120 packets
    camera.setDeaf(false);
    QVERIFY(probe.waitFor([&] { return camera.packets > 40; }));
    qInfo("%d packets", camera.packets);
    QVERIFY(camera.packets < 60);
    const int before = camera.packets;
    for (int i = 0; i < 40 && camera.packets < before + 20; ++i) {
        QVERIFY(probe.say(1));
    }
    QVERIFY(camera.packets >= before + 20);
    QCOMPARE(probe.lostAfter, qint64{-1});
    QVERIFY(probe.close());
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

/** The talk that has just ended does not keep the camera busy for the next one. */
void TestOnvifScripts::talksAgainAtOnce()
{
    ScriptedRtsp camera;
    camera.takesOne = true;
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    const auto other = probe.cameras.openTalk("1");
    QString code;
    connect(other.get(), &DeviceTalk::refused, &camera, [&](const QString& refusal) { code = refusal; });
    QVERIFY(probe.waitFor([&] { return !code.isEmpty(); }));
    QCOMPARE(code, ReturnCode::cameraBusy); // as long as it goes on
    probe.talk->close();
    const auto next = probe.cameras.openTalk("1");
    bool isOpen = false;
    QString refusal;
    connect(next.get(), &DeviceTalk::opened, &camera, [&] { isOpen = true; });
    connect(next.get(), &DeviceTalk::refused, &camera,
            [&](const QString& /*code*/, const QString& reason) { refusal = reason; });
    QVERIFY(probe.waitFor([&] { return isOpen || !refusal.isEmpty(); }));
    QVERIFY2(isOpen, qPrintable(refusal));
}

void TestOnvifScripts::endsBeforeItIsReady()
{
    ScriptedRtsp camera;
    CameraSettings settings;
    settings.readinessDelay = 5000;
    TalkProbe probe(camera.address(), settings);
    QVERIFY(probe.waitFor([&] { return camera.hasRequest("PLAY"); }));
    QVERIFY(probe.waitFor([&] { return probe.heard.size() == 3; })); // it is open, but not ready
    camera.hangUp();
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::cameraOffline);
    QVERIFY(probe.refusedAfter < 4000);
}

void TestOnvifScripts::hangsBeforeItIsReady()
{
    ScriptedRtsp camera;
    CameraSettings settings;
    settings.readinessDelay = 5000;
    OnvifConfig config;
    config.silence = std::chrono::milliseconds(600);
    TalkProbe probe(camera.address(), settings, QString(), QString(), config);
    QVERIFY(probe.waitFor([&] { return probe.heard.size() == 3; }));
    camera.answersAtAll = false;
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::cameraOffline);
    QVERIFY(probe.refusedAfter < 4000);
}

/** Where talks are kept, none is open that is not. */
void TestOnvifScripts::cannotBeKept()
{
    ScriptedRtsp camera;
    OnvifConfig config;
    config.recordingDirectory = "/dev/null/talks";
    TalkProbe probe(camera.address(), CameraSettings(), QString(), QString(), config);
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::storageFailed);
}

void TestOnvifScripts::loginForbidden()
{
    ScriptedRtsp camera;
    camera.answers["DESCRIBE"] = "403 Forbidden\r\n\r\n";
    TalkProbe probe(camera.address());
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::loginRefused);
}

/** What a talk finds out counts at once: the next question of its own is a minute away. */
void TestOnvifScripts::talksShowPresence()
{
    using std::chrono::milliseconds;
    ScriptedRtsp camera;
    camera.answersAtAll = false;
    OnvifConfig config;
    config.presence = {milliseconds(60000), milliseconds(200), 16};
    OnvifCameras cameras(config);
    QList<bool> states;
    connect(&cameras, &CameraBackend::camerasChanged, &camera,
            [&] { states.append(cameras.cameras().value(0).online); });
    cameras.setRecords({{"1", "Gate", onvifKind(), camera.address()}});
    QVERIFY(TalkProbe::waitFor([&] { return camera.hasRequest("OPTIONS"); }));
    const auto isAsked = [&] { return camera.open > 0; };
    QVERIFY(TalkProbe::waitFor([&] { return !isAsked(); })); // and given up
    camera.answersAtAll = true;
    states.clear();
    auto talk = cameras.openTalk("1");
    QVERIFY(TalkProbe::waitFor([&] { return states == QList<bool>{true}; }));
    QVERIFY(TalkProbe::waitFor([&] { return camera.hasRequest("PLAY"); }));
    camera.answersAtAll = false;
    camera.hangUp();
    QVERIFY(TalkProbe::waitFor([&] { return states == QList<bool>({true, false}); }));
    talk.reset();
    QVERIFY(TalkProbe::waitFor([&] { return !isAsked(); }));
    camera.answersAtAll = true;
    camera.answers["DESCRIBE"] = "503 Service Unavailable\r\n\r\n";
    talk = cameras.openTalk("1");
    QVERIFY(TalkProbe::waitFor([&] { return states == QList<bool>({true, false, true}); }));
}

/** The end of a talk that nobody closed ends what it says of the camera. */
void TestOnvifScripts::isAskedAgainAfterATalk()
{
    using std::chrono::milliseconds;
    ScriptedRtsp camera;
    OnvifConfig config;
    config.presence = {milliseconds(100), milliseconds(200), 16};
    OnvifCameras cameras(config);
    cameras.setRecords({{"1", "Gate", onvifKind(), camera.address()}});
    auto talk = cameras.openTalk("1");
    bool isOpen = false;
    connect(talk.get(), &DeviceTalk::opened, &camera, [&] { isOpen = true; });
    QVERIFY(TalkProbe::waitFor([&] { return isOpen; }));
    QVERIFY(TalkProbe::waitFor([&] { return cameras.cameras().value(0).online; }));
    talk.reset();
    camera.answersAtAll = false;
    QVERIFY(TalkProbe::waitFor([&] { return !cameras.cameras().value(0).online; }, 3000));
}

/** A camera that does not say by ONVIF why it refuses has two seconds for it, not the whole time to open. */
void TestOnvifScripts::explainsInTime()
{
    QTcpServer service; // which accepts, and says nothing
    QVERIFY(service.listen(QHostAddress::LocalHost));
    ScriptedRtsp camera;
    camera.answers["DESCRIBE"] = "404 Not Found\r\n\r\n";
    OnvifConfig config;
    config.servicePort = service.serverPort();
    TalkProbe probe(camera.address(), CameraSettings(), QString(), QString(), config);
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    QVERIFY2(probe.refusedAfter >= 1900, qPrintable(QString::number(probe.refusedAfter)));
    QVERIFY2(probe.refusedAfter < 2900, qPrintable(QString::number(probe.refusedAfter)));
}

/** Of several that suit, the first; codecs are named in either case. */
void TestOnvifScripts::choosesStreams()
{
    const RtpFormat mu{"PCMU", 0, 8000};
    const RtpFormat a{"PCMA", 8, 8000};
    const std::vector<SdpFormats::Sound> sounds{
        {1, false, true, {mu}}, {2, true, true, {a, mu}}, {3, false, true, {mu}}, {4, true, true, {mu}}};
    const StreamChoice any = StreamChoice::of(sounds, QString());
    QCOMPARE(any.talkStream, 2U);
    QCOMPARE(any.talkFormat->encoding, QString("PCMA"));
    QCOMPARE(*any.heardStream, 1U);
    const StreamChoice named = StreamChoice::of(sounds, "pcmu");
    QCOMPARE(named.talkStream, 2U);
    QCOMPARE(named.talkFormat->encoding, QString("PCMU"));
}

/** RFC 3550, clause 5.1: at random. */
void TestOnvifScripts::timestampsStartAnywhere()
{
    gst_init(nullptr, nullptr);
    const GstPtr<GstSample> sample(RtpSample::make({QByteArray(160, 'x'), 320, true, 20}, {8, 7, 1000, 5}));
    const auto voice = RtpSample::read(sample.get());
    QVERIFY(voice);
    QCOMPARE(voice->timestamp, 1320U);
    QCOMPARE(voice->payloadType, 8);
    QCOMPARE(voice->payload, QByteArray(160, 'x'));
    QVERIFY(voice->marker);
}

QTEST_GUILESS_MAIN(TestOnvifScripts)
#include "tst_onvifscripts.moc"
