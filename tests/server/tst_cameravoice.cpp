// What simulated cameras say: their packets are decoded again and compared with what they heard or read.

#include "audio/PacketHeader.h"
#include "server/devices/simulated/CameraVoice.h"
#include "src/decoders/PcmBlock.h"
#include "src/playback/DecoderSlot.h"
#include "tests/support/MediaPackets.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/WavFiles.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

class TestCameraVoice : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void echo_data();
    void echo();
    void echoIsDelayed();
    void echoKeepsThePosition();
    void file_data();
    void file();
    void fileKeepsThePaceOfSound();
    void recordedStream();
    void recordedFramesOfManyLengths();
    void silentCamera();
    void missingFile();
};

namespace {

struct Packet
{
    MediaPacketPtr media;
    PacketHeader header;
};

QVariantMap fieldsOf(const QVariant& packet)
{
    return packet.value<VoicePacket>().toFields();
}

Packet packetOf(const QVariantMap& fields)
{
    const QByteArray bytes = QByteArray::fromBase64(fields["AudioData"].toString().toLatin1());
    const auto offset = fields["Offset"].toUInt();
    const auto size = fields["BitstreamSize"].toUInt();
    [&] {
        QCOMPARE(static_cast<uint>(bytes.size()), offset + size);
        QCOMPARE(bytes.size() % 3, 0);
        QCOMPARE(fields["FrameNumber"].toUInt(), 1U);
        QCOMPARE(fields["AudioChannelNum"].toUInt(), 1U);
    }();
    const auto header = PacketHeader::fromBytes(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                                static_cast<std::size_t>(bytes.size()));
    [&] {
        QVERIFY(header);
        QCOMPARE(uint{header->length}, offset);
        QCOMPARE(header->streamType, fields["StreamType"].toUInt());
        QCOMPARE(header->sampleRate, fields["AudioSamplingFreq"].toUInt());
    }();
    const MediaPackets::Format format{fields["StreamType"].toUInt(), fields["AudioSamplingFreq"].toUInt()};
    return {MediaPackets::make(bytes.mid(static_cast<int>(offset)), format), *header};
}

WavFiles::Samples decode(const QSignalSpy& spy)
{
    DecoderSlot slot;
    std::vector<std::int16_t> pcm(pcmBlockSize / 2);
    WavFiles::Samples samples;
    for (const auto& arguments : spy) {
        const Packet packet = packetOf(fieldsOf(arguments[0]));
        std::uint32_t size = pcmBlockSize;
        if (slot.Decode(reinterpret_cast<std::uint8_t*>(pcm.data()), &size, *packet.media) == 0) {
            samples.insert(samples.end(), pcm.begin(), pcm.begin() + size / 2);
        }
    }
    return samples;
}

void codecRows()
{
    QTest::addColumn<unsigned>("streamType");
    QTest::addColumn<int>("rate");
    QTest::addColumn<double>("likeness"); // AMR keeps the sound of speech, not its waveform
    QTest::newRow("mu-law") << 8192U << 8000 << 0.995;
    QTest::newRow("A-law") << 16384U << 8000 << 0.995;
    QTest::newRow("AAC") << 1024U << 16000 << 0.97;
    QTest::newRow("AMR") << 4096U << 8000 << 0.75;
}

CameraVoiceConfig config(CameraVoiceConfig::Kind kind, unsigned streamType = 8192, int delay = 0)
{
    CameraVoiceConfig made;
    made.kind = kind;
    made.codec = Codec::byType(streamType);
    made.echoDelay = delay;
    return made;
}

} // namespace

void TestCameraVoice::echo_data()
{
    codecRows();
}

void TestCameraVoice::echo()
{
    QFETCH(unsigned, streamType);
    QFETCH(int, rate);
    QFETCH(double, likeness);
    CameraVoice voice(config(CameraVoiceConfig::Echo, streamType), std::make_shared<AlarmClock>());
    QVERIFY(voice.start());
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    const auto speech = WavFiles::resample(WavFiles::read(ANNOUNCEMENT_WAV), 16000, 8000);
    const WavFiles::Samples said(speech.begin(), speech.begin() + 640 * 30);
    for (std::size_t i = 0; i < said.size(); i += 640) {
        const auto begin = said.begin() + static_cast<std::ptrdiff_t>(i);
        voice.hear(static_cast<std::uint32_t>(i), WavFiles::Samples(begin, begin + 640));
        QCoreApplication::processEvents(); // in order also when timers fire together
    }
    // All but what the codec and its frame hold back.
    const int least = static_cast<int>(said.size()) * rate / 8000 - 4096;
    QTRY_VERIFY(static_cast<int>(decode(spy).size()) >= least);
    const auto fields = fieldsOf(spy[0][0]);
    QCOMPARE(fields["StreamType"].toUInt(), streamType);
    QCOMPARE(fields["AudioSamplingFreq"].toInt(), rate);
    const auto heard = WavFiles::resample(decode(spy), rate, 8000);
    const auto match = SignalMeasure::align(said, heard, 1200);
    QVERIFY2(match.correlation > likeness, qPrintable(QString::number(match.correlation)));
    QVERIFY2(std::abs(match.gainDb) < 1.0, qPrintable(QString::number(match.gainDb)));
}

void TestCameraVoice::echoIsDelayed()
{
    CameraVoice voice(config(CameraVoiceConfig::Echo, 8192, 200), std::make_shared<AlarmClock>());
    QVERIFY(voice.start());
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    QElapsedTimer clock;
    clock.start();
    voice.hear(0, WavFiles::sine(440, 0.5, 0.08, 8000));
    QVERIFY(spy.isEmpty());
    QVERIFY(spy.wait(5000));
    QVERIFY(clock.elapsed() >= 199);
}

void TestCameraVoice::echoKeepsThePosition()
{
    CameraVoice voice(config(CameraVoiceConfig::Echo), std::make_shared<AlarmClock>());
    QVERIFY(voice.start());
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    const auto sound = WavFiles::sine(440, 0.5, 0.08, 8000);
    voice.hear(6400, sound);
    QTRY_COMPARE(spy.size(), 1);
    voice.hear(7040, sound);
    QTRY_COMPARE(spy.size(), 2);
    QCOMPARE(packetOf(fieldsOf(spy[0][0])).header.position, 6400U);
    QCOMPARE(packetOf(fieldsOf(spy[1][0])).header.position, 7040U);
    QVERIFY(packetOf(fieldsOf(spy[1][0])).header.captureTime >=
            packetOf(fieldsOf(spy[0][0])).header.captureTime);
}

void TestCameraVoice::file_data()
{
    codecRows();
}

void TestCameraVoice::file()
{
    QFETCH(unsigned, streamType);
    QFETCH(int, rate);
    QFETCH(double, likeness);
    QTemporaryDir folder;
    const auto speech = WavFiles::read(ANNOUNCEMENT_WAV);
    const WavFiles::Samples said(speech.begin(), speech.begin() + 16000);
    CameraVoiceConfig voiceConfig = config(CameraVoiceConfig::File, streamType);
    voiceConfig.file = folder.filePath("said.wav");
    QVERIFY(WavFiles::write(voiceConfig.file, said, 16000));
    CameraVoice voice(voiceConfig, std::make_shared<AlarmClock>());
    QVERIFY(voice.start());
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    QTRY_VERIFY_WITH_TIMEOUT(static_cast<int>(decode(spy).size()) >= rate - 2048, 10000);
    const auto match = SignalMeasure::align(WavFiles::resample(said, 16000, 8000),
                                            WavFiles::resample(decode(spy), rate, 8000), 1200);
    QVERIFY2(match.correlation > likeness, qPrintable(QString::number(match.correlation)));
}

void TestCameraVoice::fileKeepsThePaceOfSound()
{
    QTemporaryDir folder;
    CameraVoiceConfig voiceConfig = config(CameraVoiceConfig::File);
    voiceConfig.file = folder.filePath("tone.wav");
    QVERIFY(WavFiles::write(voiceConfig.file, WavFiles::sine(440, 0.5, 1.0, 8000), 8000));
    CameraVoice voice(voiceConfig, std::make_shared<AlarmClock>());
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(voice.start());
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 13, 10000); // twelve whole packets and a filled one
    QVERIFY(clock.elapsed() >= 960);
    QVERIFY(!spy.wait(200)); // once
}

namespace {

/** A packet dump of one packet again and again. */
void writeDump(const QString& path, const QByteArray& packet, int count)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    for (int i = 0; i < count; ++i) {
        file.write(QByteArray(1, static_cast<char>(packet.size())) + QByteArray(3, '\0') + packet);
    }
}

} // namespace

void TestCameraVoice::recordedStream()
{
    // Two packets of three frames, sixty milliseconds each, at the pace of sound, and what a client decodes.
    QTemporaryDir folder;
    CameraVoiceConfig voiceConfig = config(CameraVoiceConfig::File, 256);
    voiceConfig.file = folder.filePath("stream.rec");
    writeDump(voiceConfig.file, QByteArray(180, 'x'), 2);
    CameraVoice voice(voiceConfig, std::make_shared<AlarmClock>());
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(voice.start());
    QTRY_COMPARE(spy.size(), 2);
    QVERIFY(clock.elapsed() >= 120);
    const QVariantMap fields = fieldsOf(spy[1][0]);
    QCOMPARE(fields["StreamType"].toUInt(), 256U);
    QCOMPARE(fields["AudioSamplingFreq"].toUInt(), 16000U);
    QCOMPARE(fields["FrameNumber"].toUInt(), 3U);
    QCOMPARE((fields["Offset"].toUInt() + fields["BitstreamSize"].toUInt()) % 3, 0U);
    CameraVoiceConfig broken = voiceConfig;
    broken.file = "/nonexistent.rec";
    QVERIFY(!CameraVoice(broken, std::make_shared<AlarmClock>()).start());
    broken = voiceConfig;
    broken.kind = CameraVoiceConfig::Echo; // there is nothing to encode an echo with
    QVERIFY(!CameraVoice(broken, std::make_shared<AlarmClock>()).start());
}

void TestCameraVoice::recordedFramesOfManyLengths()
{
    // Speech, a SID frame and three without transmission: five frames, 50 ms, whatever their bytes.
    QTemporaryDir folder;
    CameraVoiceConfig voiceConfig = config(CameraVoiceConfig::File, 512);
    voiceConfig.file = folder.filePath("stream.rec");
    const QByteArray packet = '\1' + QByteArray(10, 'x') + QByteArray("\2xx", 3) + QByteArray(3, '\0');
    writeDump(voiceConfig.file, packet, 5);
    CameraVoice voice(voiceConfig, std::make_shared<AlarmClock>());
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(voice.start());
    QTRY_COMPARE(spy.size(), 5);
    QVERIFY2(clock.elapsed() >= 200, qPrintable(QString::number(clock.elapsed())));
    const QVariantMap fields = fieldsOf(spy[4][0]);
    QCOMPARE(fields["StreamType"].toUInt(), 512U);
    QCOMPARE(fields["AudioSamplingFreq"].toUInt(), 8000U);
    QCOMPARE(fields["FrameNumber"].toUInt(), 1U); // so that a frame may take all that it needs
    QCOMPARE(fields["BitstreamSize"].toUInt(), 17U);
}

void TestCameraVoice::silentCamera()
{
    CameraVoice voice(config(CameraVoiceConfig::Silent), std::make_shared<AlarmClock>());
    QVERIFY(voice.start());
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    voice.hear(0, WavFiles::sine(440, 0.5, 1, 8000));
    QVERIFY(!spy.wait(100));
}

void TestCameraVoice::missingFile()
{
    CameraVoiceConfig voiceConfig = config(CameraVoiceConfig::File);
    voiceConfig.file = QStringLiteral("/nonexistent.wav");
    CameraVoice voice(voiceConfig, std::make_shared<AlarmClock>());
    QVERIFY(!voice.start());
}

QTEST_GUILESS_MAIN(TestCameraVoice)
#include "tst_cameravoice.moc"
