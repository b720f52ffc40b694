// Talks with a camera of another make, gst-rtsp-server, over loopback.

#include "protocol/ServerReply.h"
#include "src/vocabulary/StreamType.h"
#include "tests/server/onvif/TalkProbe.h"
#include "tests/support/SignalMeasure.h"

class TestOnvifTalk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void talks_data();
    void talks();
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
    QTest::newRow("G.726 at 40 kbit/s, AAL2") << "aal2-g726-40" << false << 20 << 0.98;
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
    CameraSettings settings;
    settings.transport = udp ? CameraTransport::Udp : CameraTransport::Tcp;
    settings.packetTime = packetTime;
    TalkProbe probe(camera.address(), settings);
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    qInfo("open after %lld ms", probe.openedAfter);
    QVERIFY(probe.say(18));
    QVERIFY(probe.close());
    QVERIFY(!camera.waitFor("closed 1").isEmpty());
    QCOMPARE(camera.count("teardown"), 1);
    const int rate = codec.endsWith("48") ? 48000 : codec == "l16" || codec == "aac-16" ? 16000 : 8000;
    WavFiles::Samples heard;
    const WavFiles::Samples all = camera.heard();
    for (std::size_t i = 0; i < all.size(); i += static_cast<std::size_t>(rate / 8000)) {
        heard.push_back(all[i]);
    }
    const auto alignment = SignalMeasure::align(TalkProbe::sound(18 * 640), heard, 1600);
    qInfo("%zu samples, likeness %.4f, lag %d, gain %.2f dB", heard.size(), alignment.correlation,
          alignment.lag, alignment.gainDb);
    QVERIFY(alignment.correlation > likeness);
    QVERIFY(std::abs(alignment.gainDb) < 1);
    if (rate == 8000 && !codec.startsWith("aac")) {
        QCOMPARE(heard.size(), std::size_t{18 * 640});
        const auto packets = camera.packets();
        QCOMPARE(packets.size(), std::size_t(18 * 80 / packetTime));
        for (std::size_t i = 1; i < packets.size(); ++i) {
            QCOMPARE(packets[i].timestamp - packets[i - 1].timestamp, static_cast<quint32>(packetTime * 8));
        }
    }
}

QTEST_GUILESS_MAIN(TestOnvifTalk)
#include "tst_onviftalk.moc"
