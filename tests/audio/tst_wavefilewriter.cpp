// Recordings: what is in the file at which moment, after a crash and on a full disk.

#include "audio/WaveFileWriter.h"
#include "tests/support/FullDisk.h"
#include "tests/support/RunningThreads.h"
#include "tests/support/WavFiles.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

class TestWaveFileWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void completeAtItsEnd();
    void valid();
    void notWithEachPacket();
    void idleFileIsWrittenWithinASecond();
    void validWhileItGrows();
    void afterACrash();
    void muchAtOnce();
    void flush();
    void stereo();
    void cannotBeCreated();
    void fullDiskIsNoticed();
    void fullDiskOfMuchAtOnce();
    void oneThreadForAllFiles();

private:
    QString path() const { return m_folder.filePath(QLatin1String(QTest::currentTestFunction()) + ".wav"); }

    QTemporaryDir m_folder;
};

namespace {

constexpr int rate = 8000; // Hz
constexpr int headerSize = 44;
constexpr std::size_t packetSamples = 640;

/** Samples that show where they belong. */
WavFiles::Samples count(std::size_t from, std::size_t number = packetSamples)
{
    WavFiles::Samples samples;
    for (std::size_t i = from; i < from + number; ++i) {
        samples.push_back(static_cast<std::int16_t>(i * 7 % 60000));
    }
    return samples;
}

/** Whether a file has exactly the first so many of these samples. */
bool hasCounted(const QString& path, std::size_t number)
{
    return WavFiles::read(path) == count(0, number);
}

const char* const crashing = "VOICEDESK_TEST_CRASH";

/** Writes a packet every 80 ms until it is killed, and the number of samples after each. */
int writeUntilKilled(const QString& path)
{
    WaveFileWriter writer(path, rate);
    for (std::size_t i = 0; i < 1000; ++i) { // not forever, should nobody kill it
        if (!writer.write(count(i * packetSamples))) {
            return 1;
        }
        std::printf("%d\n", static_cast<int>((i + 1) * packetSamples));
        std::fflush(stdout);
        std::this_thread::sleep_for(std::chrono::milliseconds(80));
    }
    return 1;
}

} // namespace

void TestWaveFileWriter::completeAtItsEnd()
{
    std::size_t written = 0;
    {
        WaveFileWriter writer(path(), rate);
        for (const std::size_t size : {1U, 640U, 0U, 12345U, 7U}) {
            QVERIFY(writer.write(count(written, size)));
            written += size;
        }
    }
    int read = 0;
    QCOMPARE(WavFiles::read(path(), &read).size(), written);
    QCOMPARE(read, rate);
    QVERIFY(hasCounted(path(), written));
}

void TestWaveFileWriter::valid()
{
    const WaveFileWriter writer(path(), rate);
    QVERIFY(writer.isOpen());
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll(); // before anything is written
    QCOMPARE(bytes.size(), headerSize);
    QCOMPARE(bytes.mid(8, 4), QByteArray("WAVE"));
}

void TestWaveFileWriter::notWithEachPacket()
{
    QElapsedTimer elapsed;
    elapsed.start();
    WaveFileWriter writer(path(), rate);
    for (std::size_t i = 0; i < 12; ++i) {
        QVERIFY(writer.write(count(i * packetSamples)));
    }
    const auto size = QFileInfo(path()).size();
    if (elapsed.elapsed() > 500) {
        QSKIP("This machine is too busy.");
    }
    QCOMPARE(size, headerSize);
}

void TestWaveFileWriter::idleFileIsWrittenWithinASecond()
{
    WaveFileWriter writer(path(), rate);
    for (std::size_t round = 0; round < 3; ++round) {
        QElapsedTimer elapsed;
        elapsed.start();
        QVERIFY(writer.write(count(round * packetSamples)));
        // Nothing follows, and no event loop runs.
        while (!hasCounted(path(), (round + 1) * packetSamples) && elapsed.elapsed() < 10000) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        QVERIFY2(elapsed.elapsed() < 1500, qPrintable(QString::number(elapsed.elapsed())));
    }
}

void TestWaveFileWriter::validWhileItGrows()
{
    WaveFileWriter writer(path(), rate);
    QElapsedTimer elapsed;
    elapsed.start();
    std::size_t written = 0;
    std::size_t seen = 0;
    int changes = 0;
    while (changes < 3 && elapsed.elapsed() < 20000) {
        QVERIFY(writer.write(count(written, 80)));
        written += 80;
        const WavFiles::Samples read = WavFiles::read(path());
        QVERIFY(read.size() >= seen && read.size() <= written);
        QVERIFY(read == count(0, read.size()));
        changes += read.size() > seen ? 1 : 0;
        seen = read.size();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    QCOMPARE(changes, 3);
}

void TestWaveFileWriter::afterACrash()
{
    QProcess program;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(crashing, path());
    program.setProcessEnvironment(environment);
    program.start(QCoreApplication::applicationFilePath(), QStringList());
    std::vector<std::pair<qint64, int>> told; // when, and how many samples it had written
    QElapsedTimer elapsed;
    elapsed.start();
    while (elapsed.elapsed() < 20000 && (told.empty() || told.back().second < 3 * rate)) {
        QVERIFY(program.canReadLine() || program.waitForReadyRead(20000));
        while (program.canReadLine()) {
            told.emplace_back(elapsed.elapsed(), program.readLine().trimmed().toInt());
        }
    }
    const qint64 killed = elapsed.elapsed();
    program.kill();
    QVERIFY(program.waitForFinished(20000));
    const WavFiles::Samples read = WavFiles::read(path());
    QVERIFY(read == count(0, read.size()));
    int second = 0; // what was written a second before the end, and half of one for a busy machine
    for (const auto& [time, samples] : told) {
        second = time <= killed - 1500 ? samples : second;
    }
    QVERIFY(second > 0);
    QVERIFY2(static_cast<int>(read.size()) >= second,
             qPrintable(QStringLiteral("%1 of %2").arg(read.size()).arg(second)));
}

void TestWaveFileWriter::muchAtOnce()
{
    WaveFileWriter writer(path(), rate);
    const std::size_t much = WaveFileWriter::maxBuffered; // twice what waits
    QVERIFY(writer.write(count(0, much)));
    QVERIFY(hasCounted(path(), much));
}

void TestWaveFileWriter::flush()
{
    WaveFileWriter writer(path(), rate);
    QVERIFY(writer.flush());
    QVERIFY(writer.write(count(0)));
    QVERIFY(writer.flush());
    QVERIFY(hasCounted(path(), packetSamples));
}

void TestWaveFileWriter::stereo()
{
    {
        WaveFileWriter writer(path(), rate, 2);
        QVERIFY(writer.write(count(0)));
    }
    QCOMPARE(QFileInfo(path()).size(), headerSize + 2 * static_cast<qint64>(packetSamples));
}

void TestWaveFileWriter::cannotBeCreated()
{
    WaveFileWriter writer(m_folder.filePath("none/file.wav"), rate);
    QVERIFY(!writer.isOpen());
    QVERIFY(!writer.write(count(0)));
    QVERIFY(!writer.flush());
}

void TestWaveFileWriter::fullDiskIsNoticed()
{
    if (!FullDisk::possible) {
        QSKIP("Files cannot be kept small here.");
    }
    std::size_t accepted = 0;
    {
        WaveFileWriter writer(path(), rate);
        {
            const FullDisk disk(headerSize + 2001); // in the middle of a sample
            QVERIFY(writer.write(count(0)));        // it waits
            accepted = packetSamples;
            QElapsedTimer elapsed;
            elapsed.start();
            while (elapsed.elapsed() < 10000 && writer.write(count(accepted))) {
                accepted += packetSamples;
                std::this_thread::sleep_for(std::chrono::milliseconds(80));
            }
            QVERIFY2(elapsed.elapsed() < 2000, qPrintable(QString::number(elapsed.elapsed())));
            QVERIFY(!writer.write(count(accepted))); // until there is room
            QVERIFY(!writer.flush());
        }
        QVERIFY(writer.write(count(accepted)));
        accepted += packetSamples;
    }
    QVERIFY(hasCounted(path(), accepted)); // nothing that was accepted is missing, and nothing is there twice
}

void TestWaveFileWriter::fullDiskOfMuchAtOnce()
{
    if (!FullDisk::possible) {
        QSKIP("Files cannot be kept small here.");
    }
    WaveFileWriter writer(path(), rate);
    const FullDisk disk(headerSize + 2000);
    QVERIFY(!writer.write(count(0, WaveFileWriter::maxBuffered)));
}

void TestWaveFileWriter::oneThreadForAllFiles()
{
    const int before = runningThreads();
    if (before == 0) {
        QSKIP("Nobody counts the threads here.");
    }
    std::vector<std::unique_ptr<WaveFileWriter>> writers;
    for (int i = 0; i < 100; ++i) {
        writers.push_back(
            std::make_unique<WaveFileWriter>(m_folder.filePath(QStringLiteral("many-%1.wav").arg(i)), rate));
        QVERIFY(writers.back()->write(count(0)));
    }
    QCOMPARE(runningThreads(), before + 1);
    writers.clear();
    QTRY_COMPARE(runningThreads(), before); // the system takes it out of its list a bit later
    for (int i = 0; i < 100; ++i) {
        QVERIFY(hasCounted(m_folder.filePath(QStringLiteral("many-%1.wav").arg(i)), packetSamples));
    }
}

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsSet(crashing)) {
        return writeUntilKilled(qEnvironmentVariable(crashing));
    }
    const QCoreApplication application(argc, argv);
    TestWaveFileWriter test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_wavefilewriter.moc"
