// Capture from a real sound server: what is spoken into its virtual microphone arrives as packets.

#include "standins/framesmith/FrameSmithErrors.h"
#include "tests/standins/CaptureHarness.h"
#include "tests/support/PulseServer.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/SoundTest.h"

#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace framesmith;

class TestMicrophone : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void defaultMicrophone();
    void namedMicrophone();
    void unknownName();

private:
    void speakAndListen();

    std::unique_ptr<PulseServer> m_pulse;
    QTemporaryDir m_folder;
};

namespace {

WavFiles::Samples decode(const std::vector<CaptureHarness::Packet>& packets)
{
    WavFiles::Samples samples;
    for (const auto& packet : packets) {
        for (const char byte : packet.bitstream()) {
            const int code = ~byte & 0xFF;
            const int magnitude = ((((code & 0x0F) << 3) + 0x84) << ((code & 0x70) >> 4)) - 0x84;
            samples.push_back(static_cast<std::int16_t>((code & 0x80) != 0 ? -magnitude : magnitude));
        }
    }
    return samples;
}

/** The longest run of the recording that is louder than silence. */
WavFiles::Samples loudPart(const WavFiles::Samples& samples)
{
    constexpr std::size_t block = 80;
    std::size_t begin = samples.size();
    std::size_t end = 0;
    for (std::size_t i = 0; i + block <= samples.size(); i += block) {
        const WavFiles::Samples part(samples.begin() + static_cast<std::ptrdiff_t>(i),
                                     samples.begin() + static_cast<std::ptrdiff_t>(i + block));
        if (SignalMeasure::levelDbfs(part) > -30) {
            begin = std::min(begin, i);
            end = i + block;
        }
    }
    if (begin + 2 * block >= end) {
        return {};
    }
    return {samples.begin() + static_cast<std::ptrdiff_t>(begin + block),
            samples.begin() + static_cast<std::ptrdiff_t>(end - block)};
}

} // namespace

void TestMicrophone::initTestCase()
{
    qunsetenv("FRAMESMITH_CAPTURE_FILE");
    qunsetenv("FRAMESMITH_CAPTURE_DEVICE");
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY2(m_pulse->ready(), "no PulseAudio server; is pulseaudio installed?");
}

void TestMicrophone::speakAndListen()
{
    const QString path = m_folder.filePath("tone.wav");
    QVERIFY(WavFiles::write(path, WavFiles::sine(700, 0.5, 1.5, 44100), 44100));
    CaptureHarness harness;
    QCOMPARE(FrameSmith_StartAudioCapture(harness.channel), std::int32_t{Success});
    QVERIFY(harness.waitForPackets(1));
    const auto speaking = m_pulse->speak(path);
    QVERIFY(harness.waitForPackets(38)); // about three seconds
    FrameSmith_StopAudioCapture(harness.channel);
    const auto tone = loudPart(decode(harness.taken()));
    QVERIFY2(tone.size() > 8000, qPrintable(QString::number(tone.size())));
    const double frequency = SignalMeasure::medianFrequency(tone, 8000);
    QVERIFY2(std::abs(frequency - 700.0) < 4.0, qPrintable(QString::number(frequency)));
    const double level = SignalMeasure::levelDbfs(tone);
    QVERIFY2(std::abs(level - (20.0 * std::log10(0.5) - 3.01)) < 0.5, qPrintable(QString::number(level)));
    // In real time: as many samples as time has passed.
    const auto packets = harness.taken();
    const double seconds = std::chrono::duration<double>(packets.back().time - packets.front().time).count();
    const double spoken = static_cast<double>(packets.size() - 1) * 0.08;
    QVERIFY2(std::abs(seconds - spoken) < 0.4, qPrintable(QString("%1 %2").arg(seconds).arg(spoken)));
}

void TestMicrophone::defaultMicrophone()
{
    speakAndListen();
}

void TestMicrophone::namedMicrophone()
{
    qputenv("FRAMESMITH_CAPTURE_DEVICE", "virtmic");
    speakAndListen();
}

void TestMicrophone::unknownName()
{
    qputenv("FRAMESMITH_CAPTURE_DEVICE", "no such microphone");
    CaptureHarness harness;
    QCOMPARE(FrameSmith_StartAudioCapture(harness.channel), std::int32_t{NoInputDevice});
    qunsetenv("FRAMESMITH_CAPTURE_DEVICE");
}

SOUND_TEST_MAIN(TestMicrophone)
#include "tst_microphone.moc"
