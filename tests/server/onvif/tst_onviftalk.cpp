// Talks with a camera of another make, gst-rtsp-server, over loopback.

#include "protocol/ServerReply.h"
#include "tests/server/onvif/TalkProbe.h"
#include "tests/support/SignalMeasure.h"

class TestOnvifTalk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void talks_data();
    void talks();
    void picksTheCodecThatIsSet();
    void pauses();
    void evenPace();
    void waitsForACameraThatNeedsTime();
    void halfDuplex();
    void takesNothingButTalkPackets();
};

void TestOnvifTalk::talks_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<bool>("udp");
    QTest::addColumn<int>("packetTime");
    QTest::addColumn<double>("likeness");
    QTest::newRow("mu-law over TCP") << "pcmu" << false << 20 << 0.999;
    QTest::newRow("mu-law over UDP") << "pcmu" << true << 20 << 0.999;
    QTest::newRow("mu-law in packets of 80 ms") << "pcmu" << false << 80 << 0.999;
    QTest::newRow("A-law in packets of 40 ms") << "pcma" << false << 40 << 0.998;
    QTest::newRow("L16 at 16 kHz") << "l16" << false << 20 << 0.98;
    QTest::newRow("G.726 at 32 kbit/s") << "g726-32" << false << 20 << 0.98;
    QTest::newRow("G.726 at 16 kbit/s") << "g726-16" << false << 20 << 0.9;
    QTest::newRow("G.726 at 24 kbit/s, AAL2") << "aal2-g726-24" << false << 20 << 0.95;
    QTest::newRow("AAC at 16 kHz") << "aac-16" << false << 20 << 0.9;
    QTest::newRow("AAC at 8 kHz") << "aac-8" << false << 20 << 0.9;
    QTest::newRow("AAC at 48 kHz") << "aac-48" << false << 20 << 0.9;
}

void TestOnvifTalk::talks()
{
    QFETCH(QString, codec);
    QFETCH(bool, udp);
    QFETCH(int, packetTime);
    QFETCH(double, likeness);
    TestCamera camera({"--codec", "pcmu", "--back-codec", codec, "--jitter", "20", "--voice", "silent"});
    CameraSettings settings = TalkProbe::over(udp);
    settings.packetTime = packetTime;
    TalkProbe probe(camera.address(), settings);
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    qInfo("open after %lld ms", probe.openedAfter);
    QVERIFY(probe.say(12));
    QVERIFY(probe.close());
    QVERIFY(!camera.waitFor("closed 1").isEmpty());
    QCOMPARE(camera.count("teardown"), 1);
    const int rate = codec.endsWith("48") ? 48000 : codec == "l16" || codec == "aac-16" ? 16000 : 8000;
    WavFiles::Samples heard;
    const WavFiles::Samples all = camera.heard();
    for (std::size_t i = 0; i < all.size(); i += static_cast<std::size_t>(rate / 8000)) {
        heard.push_back(all[i]);
    }
    const auto alignment = SignalMeasure::align(TalkProbe::sound(12 * 640), heard, 1600);
    qInfo("%zu samples, likeness %.4f, lag %d, gain %.2f dB", heard.size(), alignment.correlation,
          alignment.lag, alignment.gainDb);
    QVERIFY(alignment.correlation > likeness);
    QVERIFY(std::abs(alignment.gainDb) < 1);
    if (rate == 8000 && !codec.startsWith("aac")) {
        QCOMPARE(heard.size(), std::size_t{12 * 640});
        const auto packets = camera.packets();
        QCOMPARE(packets.size(), std::size_t(12 * 80 / packetTime));
        for (std::size_t i = 1; i < packets.size(); ++i) {
            QCOMPARE(packets[i].timestamp - packets[i - 1].timestamp, static_cast<quint32>(packetTime * 8));
        }
    }
}

void TestOnvifTalk::picksTheCodecThatIsSet()
{
    TestCamera camera({"--codec", "pcma"});
    CameraSettings settings;
    settings.talkCodec = "pcmu";
    TalkProbe refused(camera.address(), settings);
    QVERIFY(refused.refuse());
    QCOMPARE(refused.returnCode, ReturnCode::talkRefused);
    QVERIFY2(refused.reason.contains("PCMA/8000, not pcmu"), qPrintable(refused.reason));
    settings.talkCodec = "PCMA";
    TalkProbe probe(camera.address(), settings);
    QVERIFY(probe.open());
}

/** Who pauses leaves a gap in the RTP time, and a mark behind it. */
void TestOnvifTalk::pauses()
{
    TestCamera camera({"--jitter", "20"});
    TalkProbe probe(camera.address());
    QVERIFY(probe.open());
    QVERIFY(probe.say(3));
    probe.position += 8000;
    probe.due += 1000;
    QVERIFY(TalkProbe::waitFor([&] { return probe.clock.elapsed() >= probe.due; }));
    QVERIFY(probe.say(2));
    QVERIFY(probe.close());
    const auto packets = camera.packets();
    QCOMPARE(packets.size(), std::size_t{20});
    for (std::size_t i = 1; i < packets.size(); ++i) {
        QCOMPARE(packets[i].timestamp - packets[i - 1].timestamp, i == 12 ? 8160U : 160U);
        QCOMPARE(packets[i].marker, i == 12);
    }
}

/** However slow the machine is, no packet comes before its turn; without the setting three of four do. */
void TestOnvifTalk::evenPace()
{
    TestCamera camera({"--jitter", "0"});
    CameraSettings settings;
    settings.evenPace = true;
    TalkProbe probe(camera.address(), settings);
    QVERIFY(probe.open());
    QVERIFY(probe.say(8));
    QVERIFY(TalkProbe::waitFor([&] { return camera.packets().size() >= 30; }));
    const auto packets = camera.packets();
    for (const TestCamera::Packet& packet : packets) {
        const qint64 turn = (packet.timestamp - packets.front().timestamp) / 8 * 1000;
        QVERIFY2(packet.time - probe.saidAt.front() >= turn, qPrintable(QString::number(turn)));
    }
}

void TestOnvifTalk::waitsForACameraThatNeedsTime()
{
    TestCamera camera;
    CameraSettings settings;
    settings.readinessDelay = 600;
    TalkProbe probe(camera.address(), settings);
    QVERIFY(probe.open());
    QVERIFY(probe.openedAfter >= 600);
}

void TestOnvifTalk::halfDuplex()
{
    TestCamera camera({"--voice", "tone"});
    CameraSettings settings;
    settings.halfDuplex = true;
    TalkProbe probe(camera.address(), settings);
    QVERIFY(probe.open());
    QVERIFY(TalkProbe::waitFor([&] { return probe.heard.size() > 5; })); // nobody talks
    QVERIFY(probe.say(1));
    const std::size_t before = probe.heard.size();
    QVERIFY(probe.say(4)); // loud
    QVERIFY(probe.heard.size() - before <= 4);
    const std::size_t silent = probe.heard.size();
    QVERIFY(TalkProbe::waitFor([&] { return probe.heard.size() > silent + 5; })); // silent again
    const std::size_t after = probe.heard.size(); // an open microphone in silence
    QVERIFY(TalkProbe::waitFor([&] {
        probe.talk->hear(TalkProbe::packet(probe.position, QByteArray(640, '\xFF')));
        probe.position += 640;
        return probe.heard.size() > after + 5;
    }));
}

void TestOnvifTalk::takesNothingButTalkPackets()
{
    TestCamera camera;
    TalkProbe probe(camera.address());
    QVERIFY(probe.open());
    QVERIFY(!probe.talk->hear(QByteArray()));
    QVERIFY(!probe.talk->hear(QByteArray(672, 'x')));
    QVERIFY(!probe.talk->hear(TalkProbe::packet(0, QByteArray(1 << 17, 'x'))));
    QVERIFY(probe.talk->hear(TalkProbe::packet(0, QByteArray())));
}

QTEST_GUILESS_MAIN(TestOnvifTalk)
#include "tst_onviftalk.moc"
