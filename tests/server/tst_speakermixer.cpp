// What the simulated speakers do for many: one sound read once, files that come and go on a thread of their
// own.

#include "server/devices/simulated/SpeakerMixer.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

class TestSpeakerMixer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void oneSoundIsReadOnceForAll();
    void severalAreAddedUpAndLimited();
    void stepsThatAreCaughtUpWaitForTheFile();
    void nothingIsLostBeforeTheFileIsThere();
    void lateRecordingsBeginWithTheirSound();
    void restClosesTheFile();
    void aShortPauseKeepsTheFile();

private:
    using Samples = std::vector<std::int16_t>;
    static constexpr std::size_t stepSamples = SpeakerMixer::sampleRate * SpeakerMixer::stepTime / 1000;

    QString path(int speaker) const { return m_written->speakers.value(speaker); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::shared_ptr<SimulatedRecordings> m_written;
};

namespace {

/** A source of so many steps of one value. */
SpeakerMixer::Source constant(std::int16_t value, int steps, int* reads = nullptr)
{
    return [value, steps, reads, read = 0](std::size_t count, std::vector<std::int16_t>& out) mutable {
        out.insert(out.end(), count, value);
        if (reads != nullptr) {
            ++*reads;
        }
        return ++read < steps;
    };
}

/** Without the silence before and behind the sound. */
std::vector<std::int16_t> soundOf(const QString& path)
{
    std::vector<std::int16_t> samples = WavFiles::read(path);
    const auto sounds = [](std::int16_t sample) { return sample != 0; };
    samples.erase(std::find_if(samples.rbegin(), samples.rend(), sounds).base(), samples.end());
    samples.erase(samples.begin(), std::find_if(samples.begin(), samples.end(), sounds));
    return samples;
}

} // namespace

void TestSpeakerMixer::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_written = std::make_shared<SimulatedRecordings>();
}

void TestSpeakerMixer::oneSoundIsReadOnceForAll()
{
    constexpr int speakers = 60;
    constexpr int steps = 5;
    int reads = 0;
    {
        SpeakerMixer mixer(m_folder->path(), false, m_written);
        QList<int> all;
        for (int id = 1; id <= speakers; ++id) {
            all.append(id);
        }
        const QSignalSpy ended(&mixer, &SpeakerMixer::sourceEnded);
        mixer.addSource(all, constant(1000, steps, &reads));
        QTRY_COMPARE(ended.size(), 1);
    }
    QCOMPARE(reads, steps);
    QCOMPARE(m_written->speakers.size(), speakers);
    for (const QString& each : qAsConst(m_written->speakers)) {
        QCOMPARE(soundOf(each), Samples(steps * stepSamples, 1000));
    }
}

void TestSpeakerMixer::severalAreAddedUpAndLimited()
{
    {
        SpeakerMixer mixer(m_folder->path(), false, m_written);
        const QSignalSpy ended(&mixer, &SpeakerMixer::sourceEnded);
        mixer.addSource({1, 2, 3}, constant(20000, 4));
        mixer.addSource({1}, constant(-5000, 4));
        mixer.addSource({2}, constant(20000, 4));
        QTRY_COMPARE(ended.size(), 3);
    }
    QCOMPARE(soundOf(path(1)), Samples(4 * stepSamples, 15000));
    QCOMPARE(soundOf(path(2)), Samples(4 * stepSamples, 32767));
    QCOMPARE(soundOf(path(3)), Samples(4 * stepSamples, 20000));
}

void TestSpeakerMixer::stepsThatAreCaughtUpWaitForTheFile()
{
    Samples expected;
    {
        SpeakerMixer mixer(m_folder->path(), false, m_written);
        const QSignalSpy ended(&mixer, &SpeakerMixer::sourceEnded);
        mixer.addSource({1, 2}, [&expected, step = 0](std::size_t count, Samples& out) mutable {
            out.insert(out.end(), count, static_cast<std::int16_t>(++step));
            expected.insert(expected.end(), out.begin(), out.end());
            return step < 20;
        });
        QElapsedTimer held; // the thread is busy: the steps after it come at once, before any report
        held.start();
        while (held.elapsed() < 10 * SpeakerMixer::stepTime) {
        }
        QTRY_COMPARE(ended.size(), 1);
    }
    QCOMPARE(expected.size(), 20 * stepSamples);
    QCOMPARE(soundOf(path(1)), expected);
    QCOMPARE(soundOf(path(2)), expected);
}

void TestSpeakerMixer::nothingIsLostBeforeTheFileIsThere()
{
    // The first steps come before the file, and the end may, too.
    SpeakerRecordings::Sound sound = std::make_shared<Samples>(stepSamples, 7);
    {
        SpeakerRecordings recordings(m_folder->path(), m_written, SpeakerMixer::restTime);
        for (int speaker = 1; speaker <= 50; ++speaker) {
            recordings.write(speaker, 0, sound);
            recordings.write(speaker, stepSamples, std::make_shared<Samples>(stepSamples, 8));
            QVERIFY(!m_written->speakers.contains(speaker)); // its thread has not reported
        }
    }
    Samples both(stepSamples, 7);
    both.resize(2 * stepSamples, 8);
    for (int speaker = 1; speaker <= 50; ++speaker) {
        QCOMPARE(WavFiles::read(path(speaker)), both);
    }
}

void TestSpeakerMixer::lateRecordingsBeginWithTheirSound()
{
    const auto sound = std::make_shared<Samples>(stepSamples, 7);
    const std::uint64_t early = SpeakerRecording::maxPause;
    const std::uint64_t late = early + stepSamples;
    {
        SpeakerRecordings recordings(m_folder->path(), m_written, SpeakerMixer::restTime);
        recordings.write(1, early, sound);
        recordings.write(2, late, sound);
        recordings.write(2, late + 3 * stepSamples, sound);
    }
    Samples first(early);
    first.resize(early + stepSamples, 7);
    QVERIFY(WavFiles::read(path(1)) == first); // on the time line from the server's start
    Samples second(stepSamples, 7);
    second.resize(3 * stepSamples, 0);
    second.resize(4 * stepSamples, 7);
    QCOMPARE(WavFiles::read(path(2)), second);
}

void TestSpeakerMixer::restClosesTheFile()
{
    const QDir descriptors("/proc/self/fd"); // where there are some to count
    const auto openFiles = [&] {
        const QFileInfoList all = descriptors.entryInfoList(QDir::Files | QDir::System);
        return std::count_if(all.begin(), all.end(), [&](const QFileInfo& each) {
            return each.symLinkTarget().startsWith(QFileInfo(m_folder->path()).canonicalFilePath());
        });
    };
    SpeakerMixer mixer(m_folder->path(), false, m_written, std::chrono::milliseconds(100));
    const QSignalSpy ended(&mixer, &SpeakerMixer::sourceEnded);
    mixer.addSource({1, 2}, constant(1000, 3));
    QTRY_COMPARE(m_written->speakers.size(), 2);
    const QString first = path(1);
    QTRY_COMPARE(ended.size(), 1);
    QTRY_COMPARE(openFiles(), 0);
    QTRY_COMPARE(soundOf(first), Samples(3 * stepSamples, 1000));
    // Another sound begins another file, unless the rest was not over yet.
    QTRY_VERIFY([&] {
        mixer.addSource({1}, constant(2000, 1));
        return QTest::qWaitFor([&] { return path(1) != first; }, 500);
    }());
    QCOMPARE(soundOf(first), Samples(3 * stepSamples, 1000));
}

void TestSpeakerMixer::aShortPauseKeepsTheFile()
{
    SpeakerMixer mixer(m_folder->path(), false, m_written);
    const QSignalSpy ended(&mixer, &SpeakerMixer::sourceEnded);
    mixer.addSource({1}, constant(1000, 1));
    QTRY_COMPARE(ended.size(), 1);
    mixer.addSource({1}, constant(2000, 1));
    QTRY_COMPARE(ended.size(), 2);
    QCOMPARE(QDir(m_folder->path()).entryList({"*.wav"}, QDir::Files).size(), 1);
}

QTEST_GUILESS_MAIN(TestSpeakerMixer)
#include "tst_speakermixer.moc"
