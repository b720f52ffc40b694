// What a camera of another make, gst-rtsp-server, says: as clients get it, and as it is kept.

#include "audio/AudioFileReader.h"
#include "src/vocabulary/StreamType.h"
#include "system/MediaFiles.h"
#include "tests/server/onvif/TalkProbe.h"
#include "tests/support/SignalMeasure.h"

class TestOnvifVoice : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hears_data();
    void hears();
    void isKept();

private:
    QTemporaryDir m_folder;
};

void TestOnvifVoice::hears_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<bool>("udp");
    QTest::addColumn<uint>("streamType");
    QTest::addColumn<int>("rate");
    QTest::addColumn<double>("likeness");
    QTest::newRow("mu-law over TCP") << "pcmu" << false << StreamType::G711MuLaw << 8000 << 0.999;
    QTest::newRow("mu-law over UDP") << "pcmu" << true << StreamType::G711MuLaw << 8000 << 0.999;
    QTest::newRow("A-law") << "pcma" << false << StreamType::G711ALaw << 8000 << 0.999;
    QTest::newRow("AAC at 8 kHz") << "aac-8" << false << StreamType::Aac << 8000 << 0.9;
    QTest::newRow("AAC at 16 kHz") << "aac-16" << false << StreamType::Aac << 16000 << 0.9;
    QTest::newRow("AAC at 48 kHz") << "aac-48" << false << StreamType::Aac << 48000 << 0.9;
    QTest::newRow("L16, as mu-law") << "l16" << false << StreamType::G711MuLaw << 8000 << 0.99;
    const auto g726 = [](const char* name, const char* codec, double likeness) {
        QTest::newRow(name) << codec << false << StreamType::G711MuLaw << 8000 << likeness;
    };
    g726("G.726 at 16 kbit/s, as mu-law", "g726-16", 0.8);
    g726("G.726 at 24 kbit/s, AAL2, as mu-law", "aal2-g726-24", 0.9);
    g726("G.726 at 32 kbit/s, as mu-law", "g726-32", 0.9);
    g726("G.726 at 40 kbit/s, AAL2, as mu-law", "aal2-g726-40", 0.85);
}

/** Packets as clients get them; an echoing camera that says again what it heard. */
void TestOnvifVoice::hears()
{
    QFETCH(QString, codec);
    QFETCH(bool, udp);
    QFETCH(uint, streamType);
    QFETCH(int, rate);
    QFETCH(double, likeness);
    // The camera hears at the rate at which it speaks.
    const QString back = codec == "l16" || rate == 16000 ? "l16" : rate == 48000 ? "l16-48" : "pcmu";
    TestCamera camera({"--codec", codec, "--back-codec", back, "--jitter", "20"});
    OnvifConfig config;
    if (codec.contains("g726")) {
        config.jitterBuffer = std::chrono::milliseconds(1000); // its encoder makes half a second at once
    }
    TalkProbe probe(camera.address(), TalkProbe::over(udp), QString(), QString(), config);
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(probe.say(25));
    QVERIFY(probe.close());
    QVERIFY(probe.heard.size() > 10);
    QFile adts(m_folder.filePath("heard.aac"));
    QVERIFY(adts.open(QIODevice::WriteOnly));
    WavFiles::Samples heard;
    std::uint32_t expected = probe.heard.front().position;
    QCOMPARE(expected, 0U);
    int gaps = 0;
    for (const VoicePacket& packet : probe.heard) {
        QCOMPARE(packet.streamType, streamType);
        QCOMPARE(packet.sampleRate, rate);
        const QVariantMap fields = packet.toFields();
        QCOMPARE((fields["Offset"].toUInt() + fields["BitstreamSize"].toUInt()) % 3, 0U);
        gaps += packet.position != expected ? 1 : 0;
        expected = packet.position;
        if (streamType == StreamType::Aac) {
            adts.write(packet.bitstream);
            expected += 1024;
            continue;
        }
        const auto samples = streamType == StreamType::G711ALaw ? G711::decodeALaw(packet.bitstream)
                                                                : G711::decodeMuLaw(packet.bitstream);
        heard.insert(heard.end(), samples.begin(), samples.end());
        expected += static_cast<std::uint32_t>(samples.size());
    }
    adts.close();
    if (streamType == StreamType::Aac) {
        AudioFileReader reader;
        QVERIFY(reader.open(adts.fileName()));
        WavFiles::Samples whole;
        reader.read(10 * AudioFileReader::sampleRate, whole);
        for (std::size_t i = 0; i < whole.size(); i += 2) {
            heard.push_back(whole[i]);
        }
    }
    const auto alignment = SignalMeasure::align(TalkProbe::sound(8 * 640), heard, 6000);
    qInfo("%zu packets, %d gaps, likeness %.4f, lag %d", probe.heard.size(), gaps, alignment.correlation,
          alignment.lag);
    QVERIFY(alignment.correlation > likeness);
    // Of other codecs the camera stamps its packets when they are made.
    QVERIFY(!codec.startsWith("pcm") || gaps <= 2);
}

/** One file: what is said left, and right, later, what an echoing camera says. */
void TestOnvifVoice::isKept()
{
    TestCamera camera({"--codec", "pcma", "--jitter", "20"});
    OnvifConfig config;
    config.recordingDirectory = m_folder.filePath("kept");
    TalkProbe probe(camera.address(), CameraSettings(), QString(), QString(), config);
    QVERIFY(probe.open());
    const qint64 opened = TalkProbe::microseconds();
    QVERIFY(probe.say(10));
    probe.position += 4000; // a pause
    probe.due += 500;
    QVERIFY(TalkProbe::waitFor([&] { return probe.clock.elapsed() >= probe.due; }));
    QVERIFY(probe.say(20));
    const qint64 ended = TalkProbe::microseconds();
    QVERIFY(probe.close());
    SF_INFO info{};
    SNDFILE* file = MediaFiles::open(m_folder.filePath("kept/talk-1-1.wav"), SFM_READ, &info);
    QVERIFY(file != nullptr);
    QCOMPARE(info.channels, 2);
    QCOMPARE(info.samplerate, 8000);
    std::vector<std::int16_t> frames(static_cast<std::size_t>(info.frames) * 2);
    sf_readf_short(file, frames.data(), info.frames);
    sf_close(file);
    const qint64 length = static_cast<qint64>(info.frames) * 125; // microseconds
    QVERIFY(std::abs(length - (ended - opened)) < 300000);
    WavFiles::Samples left;
    WavFiles::Samples right;
    for (std::size_t i = 0; i < frames.size(); i += 2) {
        left.push_back(frames[i]);
        right.push_back(frames[i + 1]);
    }
    WavFiles::Samples said = TalkProbe::sound(30 * 640 + 4000);
    std::fill(said.begin() + 10 * 640, said.begin() + 10 * 640 + 4000, std::int16_t{0});
    const auto saidAt = SignalMeasure::align(said, left, 4000);
    qInfo("said: %.4f at %d", saidAt.correlation, saidAt.lag);
    QVERIFY(saidAt.correlation > 0.999);
    QVERIFY(std::abs(saidAt.lag) < 8 * 120);
    // The camera's delay may change in the pause.
    for (const std::size_t start : {std::size_t{0}, std::size_t{10 * 640 + 4000}}) {
        const auto part = [start](const WavFiles::Samples& side) {
            const auto from = side.begin() + static_cast<std::ptrdiff_t>(start);
            return WavFiles::Samples(from, from + 11 * 640);
        };
        const auto echo = SignalMeasure::align(part(left), part(right), 3000);
        qInfo("echo: %.4f after %d ms", echo.correlation, echo.lag / 8);
        QVERIFY(echo.correlation > 0.95);
        QVERIFY(echo.lag > 0 && echo.lag < 8 * 300);
    }
}

QTEST_GUILESS_MAIN(TestOnvifVoice)
#include "tst_onvifvoice.moc"
