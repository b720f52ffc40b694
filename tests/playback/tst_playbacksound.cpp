// Playback through a real sound server: what is played is recorded from the output's monitor and measured.

#include "src/playback/AudioRenderer.h"
#include "src/playback/SystemProbe.h"
#include "tests/support/MediaPackets.h"
#include "tests/support/MonitorRecorder.h"
#include "tests/support/PulseServer.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/SoundTest.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cmath>

class TestPlaybackSound : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void systemIsWhatQtSays();
    void toneArrivesAsItIs();
    void wideStereoIsHeard();
    void formatChangesInMidStream();
    void twoTalkers();
    void outputOutlivesTheStream();
    void vanishingDevice();
    void vanishingServer();

private:
    std::unique_ptr<PulseServer> m_pulse;
};

namespace {

constexpr int packetSamples = 640;

/** A tone as G.711 mu-law packets of 640 samples a channel. */
std::vector<MediaPacketPtr> tonePackets(double frequency, double seconds, int rate = 8000)
{
    const QByteArray bytes = WavFiles::toMuLaw(WavFiles::sine(frequency, 0.5, seconds, rate));
    std::vector<MediaPacketPtr> packets;
    for (int i = 0; i + packetSamples <= bytes.size(); i += packetSamples) {
        packets.push_back(
            MediaPackets::make(bytes.mid(i, packetSamples), {8192, static_cast<std::uint32_t>(rate), 1}));
    }
    return packets;
}

/** Plays packets at the pace of a network stream, two of them ahead. */
void play(AudioRenderer& renderer, const std::vector<MediaPacketPtr>& packets, int packetTime = 80)
{
    constexpr int ahead = 2;
    constexpr int longest = 60000; // ms
    std::size_t played = 0;
    QElapsedTimer clock;
    clock.start();
    const auto playDue = [&] {
        const auto due = static_cast<std::size_t>(clock.elapsed() / packetTime + ahead + 1);
        for (; played < std::min(due, packets.size()); ++played) {
            renderer.SetAudioOn(true);
            renderer.SetVolume(100.0);
            renderer.Play(packets[played], true);
        }
    };
    QTimer pace;
    pace.setTimerType(Qt::PreciseTimer);
    QObject::connect(&pace, &QTimer::timeout, playDue);
    playDue();
    pace.start(packetTime);
    QVERIFY(QTest::qWaitFor([&] { return played == packets.size(); }, longest));
}

#ifdef Q_OS_WIN
constexpr double startLoss = 0.5; // s; Wine's output may take so long to open, and the queue holds no more
#else
constexpr double startLoss = 0.2;
#endif
constexpr std::size_t window = MonitorRecorder::sampleRate / 50; // 20 ms

/** Frequencies of the sound in steps of 20 ms. */
std::vector<double> frequencies(const WavFiles::Samples& sound)
{
    std::vector<double> steps;
    for (std::size_t i = 0; i + window <= sound.size(); i += window) {
        const auto begin = sound.begin() + static_cast<std::ptrdiff_t>(i);
        steps.push_back(SignalMeasure::toneFrequency(
            WavFiles::Samples(begin, begin + static_cast<std::ptrdiff_t>(window)),
            MonitorRecorder::sampleRate));
    }
    return steps;
}

double medianFrequency(const WavFiles::Samples& sound)
{
    return SignalMeasure::medianFrequency(sound, MonitorRecorder::sampleRate);
}

WavFiles::Samples secondsOf(const WavFiles::Samples& sound, double begin, double end)
{
    const auto at = [&](double seconds) {
        const auto index = static_cast<std::size_t>(seconds * MonitorRecorder::sampleRate);
        return sound.begin() + static_cast<std::ptrdiff_t>(std::min(index, sound.size()));
    };
    return WavFiles::Samples(at(begin), at(end));
}

double durationOf(const WavFiles::Samples& sound)
{
    return static_cast<double>(sound.size()) / MonitorRecorder::sampleRate;
}

} // namespace

void TestPlaybackSound::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY(m_pulse->ready());
}

void TestPlaybackSound::systemIsWhatQtSays()
{
    const SystemProbe& system = SystemProbe::current();
    QCOMPARE(system.productType(), QSysInfo::productType());
    const auto outputs = system.audioDevices(QAudio::AudioOutput);
    const auto inputs = system.audioDevices(QAudio::AudioInput);
    QVERIFY(!outputs.isEmpty() && !inputs.isEmpty());
    QVERIFY(outputs == QAudioDeviceInfo::availableDevices(QAudio::AudioOutput));
    QVERIFY(inputs == QAudioDeviceInfo::availableDevices(QAudio::AudioInput));
    QVERIFY(outputs != inputs);
    QAudioFormat odd = outputs.first().preferredFormat();
    odd.setSampleSize(12);
    QVERIFY(system.nearestFormat(outputs.first(), odd) != odd);
    QVERIFY(system.nearestFormat(outputs.first(), odd) == outputs.first().nearestFormat(odd));
}

void TestPlaybackSound::toneArrivesAsItIs()
{
    MonitorRecorder recorder;
    QVERIFY(recorder.running());
    AudioRenderer renderer;
    play(renderer, tonePackets(440, 2.0));
    QVERIFY(renderer.state() == AudioRenderer::State::Playing);
    QTRY_VERIFY_WITH_TIMEOUT(recorder.silentFor(0.3), 10000);
    // The output fills its buffer in one burst at the start, which may tear a hole; after that it is whole.
    const auto heard = recorder.sound();
    QVERIFY2(std::abs(durationOf(heard) - 2.0) < 0.2, qPrintable(QString::number(durationOf(heard))));
    const auto steady = secondsOf(heard, 0.5, durationOf(heard) - 0.1);
    QVERIFY(std::abs(medianFrequency(steady) - 440) < 2);
    const double expected = 20 * std::log10(0.5 / std::sqrt(2.0));
    QVERIFY(std::abs(SignalMeasure::levelDbfs(steady) - expected) < 0.5);
}

void TestPlaybackSound::wideStereoIsHeard()
{
    // Two channels of A-law at 16 kHz, the same tone in both.
    const auto tone = WavFiles::sine(1000, 0.5, 1.0, 16000);
    std::vector<MediaPacketPtr> packets;
    const QByteArray mono = WavFiles::toMuLaw(tone);
    for (int i = 0; i + packetSamples <= mono.size(); i += packetSamples) {
        QByteArray stereo;
        for (const char code : mono.mid(i, packetSamples)) {
            stereo.append(2, code);
        }
        packets.push_back(MediaPackets::make(stereo, {8192, 16000, 2}));
    }
    MonitorRecorder recorder;
    AudioRenderer renderer;
    play(renderer, packets, 40);
    QTRY_VERIFY_WITH_TIMEOUT(recorder.silentFor(0.3), 10000);
    const auto heard = recorder.sound();
    QVERIFY2(std::abs(durationOf(heard) - 1.0) < startLoss, qPrintable(QString::number(durationOf(heard))));
    QVERIFY(std::abs(medianFrequency(heard) - 1000) < 3);
}

void TestPlaybackSound::formatChangesInMidStream()
{
    MonitorRecorder recorder;
    AudioRenderer renderer;
    play(renderer, tonePackets(440, 1.0));
    play(renderer, tonePackets(1500, 1.04, 16000), 40);
    QTRY_VERIFY_WITH_TIMEOUT(recorder.silentFor(0.3), 10000);
    const auto heard = recorder.sound();
    QVERIFY(std::abs(medianFrequency(secondsOf(heard, 0, 0.6)) - 440) < 3);
    QVERIFY(std::abs(medianFrequency(secondsOf(heard, durationOf(heard) - 0.6, durationOf(heard))) - 1500) <
            3);
}

void TestPlaybackSound::twoTalkers()
{
    // There is no mixing: the packets of both follow each other in the order of arrival.
    const auto low = tonePackets(400, 0.8);
    const auto high = tonePackets(1600, 0.8);
    std::vector<MediaPacketPtr> both;
    for (std::size_t i = 0; i < low.size(); ++i) {
        both.push_back(low[i]);
        both.push_back(high[i]);
    }
    MonitorRecorder recorder;
    AudioRenderer renderer;
    play(renderer, both);
    QTRY_VERIFY_WITH_TIMEOUT(recorder.silentFor(0.3), 10000);
    const auto heard = recorder.sound();
    QVERIFY(std::abs(durationOf(heard) - 1.6) < 0.2);
    int lowSteps = 0;
    int highSteps = 0;
    int changes = 0;
    double last = 0;
    for (const double frequency : frequencies(heard)) {
        const bool isLow = std::abs(frequency - 400) < 30;
        const bool isHigh = std::abs(frequency - 1600) < 60;
        if (isLow || isHigh) { // a step across a change of packets is neither
            lowSteps += isLow ? 1 : 0;
            highSteps += isHigh ? 1 : 0;
            const double tone = isLow ? 400 : 1600;
            changes += tone != last ? 1 : 0;
            last = tone;
        }
    }
    // Four steps a packet, of which one may lie across its end.
    QVERIFY2(lowSteps >= 25 && lowSteps <= 40, qPrintable(QString::number(lowSteps)));
    QVERIFY2(highSteps >= 25 && highSteps <= 40, qPrintable(QString::number(highSteps)));
    QCOMPARE(changes, static_cast<int>(both.size()));
}

void TestPlaybackSound::outputOutlivesTheStream()
{
    MonitorRecorder recorder;
    AudioRenderer renderer;
    play(renderer, tonePackets(440, 0.5));
    QTRY_VERIFY_WITH_TIMEOUT(recorder.silentFor(0.5), 10000);
    QVERIFY(renderer.state() == AudioRenderer::State::Playing);
    play(renderer, tonePackets(440, 0.5)); // the same output goes on
    QTRY_VERIFY_WITH_TIMEOUT(!recorder.silentFor(0.01), 5000);
    QTRY_VERIFY_WITH_TIMEOUT(recorder.silentFor(0.5), 10000);
    const auto streams = [this] {
        return m_pulse
            ->control({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")})
            .trimmed();
    };
    QVERIFY(!streams().isEmpty());
    renderer.SetAudioOn(false);
    QTRY_COMPARE(streams(), QByteArray());
}

void TestPlaybackSound::vanishingDevice()
{
#ifdef Q_OS_WIN
    QSKIP("Wine looks for sound devices once in the life of a process");
#endif
    const QByteArray index =
        m_pulse->control({QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
                          QStringLiteral("sink_name=aaa_passing"), QStringLiteral("rate=48000")});
    QVERIFY(!index.isEmpty());
    AudioRenderer renderer;
    play(renderer, tonePackets(440, 0.5));
    // Whichever output plays: take all of them away but one, while it plays.
    m_pulse->control({QStringLiteral("unload-module"), QString::fromLatin1(index.trimmed())});
    const QByteArray modules =
        m_pulse->control({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("modules")});
    for (const QByteArray& line : modules.split('\n')) {
        if (line.contains("sink_name=out")) {
            m_pulse->control({QStringLiteral("unload-module"), QString::fromLatin1(line.split('\t')[0])});
        }
    }
    play(renderer, tonePackets(440, 0.5)); // into nothing, or wherever the server moved the stream
    // Another format picks an output that is still there.
    MonitorRecorder recorder(QStringLiteral("mic"));
    play(renderer, tonePackets(1000, 1.0, 16000), 40);
    QTRY_VERIFY_WITH_TIMEOUT(recorder.silentFor(0.3), 10000);
    const auto heard = recorder.sound();
    const auto ending = secondsOf(heard, durationOf(heard) - 0.6, durationOf(heard));
    QVERIFY(std::abs(medianFrequency(ending) - 1000) < 3);
}

void TestPlaybackSound::vanishingServer()
{
    // What plays ends in silence, and nothing hangs.
    AudioRenderer renderer;
    play(renderer, tonePackets(440, 0.5));
    m_pulse.reset();
    play(renderer, tonePackets(440, 0.5));
    renderer.SetAudioOn(false);
    QVERIFY(renderer.state() == AudioRenderer::State::Off);
}

SOUND_TEST_MAIN(TestPlaybackSound)
#include "tst_playbacksound.moc"
