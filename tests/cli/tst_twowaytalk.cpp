// The main job: a talk there and back. What came out of the output is recorded and held against what was
// said.

#include "tests/support/ProgramRun.h"
#include "tests/support/PulseServer.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>

class TestTwoWayTalk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void echo_data();
    void echo();
    void echoDelayIsKept();
    void speakingCamera();
    void recordedSpeech_data();
    void recordedSpeech();
    void microphone();
    void soundLibraryIsNotTornDown();

private:
    ProgramRun talk(const QStringList& arguments) const
    {
        return ProgramRun::of(
            "voicedesk", m_folder.path(),
            QStringList{QStringLiteral("talk"), QStringLiteral("--output"), QStringLiteral("out")} +
                arguments);
    }

    std::unique_ptr<PulseServer> m_pulse;
    QTemporaryDir m_folder;
};

void TestTwoWayTalk::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY(m_pulse->ready());
}

void TestTwoWayTalk::echo_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<double>("likeness"); // at 8 kHz, up to half a sample off; AMR keeps no waveform
    QTest::addColumn<int>("leastReceived");
    QTest::addColumn<int>("latestSound"); // ms; some 200 more with a queue of PulseAudio's own size
    QTest::newRow("mu-law") << "pcmu" << 0.9 << 90 << 150;
    QTest::newRow("A-law") << "pcma" << 0.9 << 90 << 150;
    QTest::newRow("AAC") << "aac" << 0.8 << 110 << 330; // its coder begins with a frame and more of nothing
    QTest::newRow("AMR") << "amr" << 0.65 << 360 << 150;
}

void TestTwoWayTalk::echo()
{
    QFETCH(QString, codec);
    QFETCH(double, likeness);
    QFETCH(int, leastReceived);
    QFETCH(int, latestSound);
    const ProgramRun result = talk({"--source", ANNOUNCEMENT_WAV, "--codec", codec});
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QVERIFY2(result.value("packets sent") > 90, qPrintable(result.out));
    QVERIFY2(result.value("packets received") >= leastReceived, qPrintable(result.out));
    QVERIFY2(result.value("capture to send") >= 0, qPrintable(result.out));
    QVERIFY2(result.value("capture to send", 1) < 400, qPrintable(result.out));
    // A packet of 80 ms, half a second at the camera, and the output's own buffer, less the piece that the
    // sound server has made up before it plays.
    QVERIFY2(result.value("mouth to ear") > 530, qPrintable(result.out));
    QVERIFY2(result.value("mouth to ear", 1) < 1200, qPrintable(result.out));
    QVERIFY2(result.value("event to sound") > -60, qPrintable(result.out));
    QVERIFY2(result.value("event to sound") < latestSound, qPrintable(result.out));
    QVERIFY2(result.value("gaps", 1) < 250, qPrintable(result.out));
    QVERIFY2(result.value("likeness") > likeness, qPrintable(result.out));

    // The same by hand, on the file that was left: the second half, where the output runs steadily.
    int rate = 0;
    const auto heard = WavFiles::read(result.line("heard"), &rate);
    QCOMPARE(rate, 16000);
    const auto said = WavFiles::resample(WavFiles::read(ANNOUNCEMENT_WAV), 16000, 8000);
    const auto heardAt8000 = WavFiles::resample(heard, 16000, 8000);
    double best = 0;
    double gain = 0;
    // One of several pieces: a busy machine may tear one.
    for (std::ptrdiff_t at = 32000; at <= 44000 && best <= likeness; at += 4000) {
        const WavFiles::Samples piece(said.begin() + at, said.begin() + at + 8000);
        for (std::size_t from = 0; from + piece.size() <= heardAt8000.size(); from += 4000) {
            const auto begin = heardAt8000.begin() + static_cast<std::ptrdiff_t>(from);
            const auto match = SignalMeasure::align(
                piece, WavFiles::Samples(begin, begin + static_cast<std::ptrdiff_t>(piece.size())), 4000);
            if (match.correlation > best) {
                best = match.correlation;
                gain = match.gainDb;
            }
        }
    }
    QVERIFY2(best > likeness, qPrintable(QString::number(best)));
    QVERIFY2(std::abs(gain) < 1.5, qPrintable(QString::number(gain)));
}

void TestTwoWayTalk::echoDelayIsKept()
{
    const ProgramRun soon = talk({"--source", ANNOUNCEMENT_WAV, "--echo-delay", "100"});
    const ProgramRun late = talk({"--source", ANNOUNCEMENT_WAV, "--echo-delay", "1100"});
    QVERIFY2(soon.status == 0, qPrintable(soon.err));
    QVERIFY2(late.status == 0, qPrintable(late.err));
    const double difference = late.value("mouth to ear") - soon.value("mouth to ear");
    QVERIFY2(std::abs(difference - 1000) < 250,
             qPrintable(soon.line("mouth to ear") + "; " + late.line("mouth to ear")));
}

void TestTwoWayTalk::speakingCamera()
{
    const QString source = m_folder.filePath("short.wav");
    QVERIFY(WavFiles::write(source, WavFiles::sine(440, 0.3, 0.5, 8000), 8000));
    const QString speech = m_folder.filePath("speech.wav");
    QVERIFY(WavFiles::write(speech, WavFiles::sine(1000, 0.5, 2.0, 8000), 8000));
    const ProgramRun result = talk({"--camera", "camera-2", "--source", source, "--speech", speech});
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QVERIFY(result.value("packets received") >= 25);
    QVERIFY(result.value("talked") >= 3.0); // as long as the camera speaks
    auto heard = WavFiles::read(result.line("heard"));
    const auto isLoud = [](std::int16_t sample) { return std::abs(sample) > 1000; };
    heard.erase(heard.begin(), std::find_if(heard.begin(), heard.end(), isLoud));
    heard.erase(std::find_if(heard.rbegin(), heard.rend(), isLoud).base(), heard.end());
    const double seconds = static_cast<double>(heard.size()) / 16000;
    QVERIFY2(std::abs(seconds - 2.0) < 0.25, qPrintable(QString::number(seconds)));
    const WavFiles::Samples end(heard.end() - 12000, heard.end() - 2000);
    QVERIFY(std::abs(SignalMeasure::medianFrequency(end, 16000) - 1000) < 5);
}

void TestTwoWayTalk::recordedSpeech_data()
{
    QTest::addColumn<QString>("frames");
    QTest::addColumn<QString>("pcm");
    QTest::addColumn<int>("rate");
    QTest::newRow("g7221") << TEST_DATA_DIR "/g7221/speech5_24000.g7221"
                           << TEST_DATA_DIR "/g7221/speech5_24000.pcm" << 16000;
    QTest::newRow("g729a") << TEST_DATA_DIR "/g729a/speech1_dtx1.g729f"
                           << TEST_DATA_DIR "/g729a/speech1_dtx1.pcm" << 8000;
}

void TestTwoWayTalk::recordedSpeech()
{
    // A camera that sends a recorded stream of speech: it is heard as its frames decode.
    QFETCH(QString, frames);
    QFETCH(QString, pcm);
    QFETCH(int, rate);
    const QString codec = QString::fromLatin1(QTest::currentDataTag());
    QFile stream(frames);
    QVERIFY(stream.open(QIODevice::ReadOnly));
    QFile dump(m_folder.filePath("speech.rec"));
    QVERIFY(dump.open(QIODevice::WriteOnly));
    while (!stream.atEnd()) {
        const char type = stream.peek(1)[0];
        const QByteArray frame = stream.read(codec == "g7221" ? 60 : type == 1 ? 11 : type == 2 ? 3 : 1);
        dump.write(QByteArray(1, static_cast<char>(frame.size())) + QByteArray(3, '\0') + frame);
    }
    dump.close();
    const QString source = m_folder.filePath("short.wav");
    QVERIFY(WavFiles::write(source, WavFiles::sine(440, 0.01, 0.3, 8000), 8000));
    const ProgramRun result =
        talk({"--camera", "camera-2", "--codec", codec, "--speech", dump.fileName(), "--source", source});
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QFile file(pcm);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    const auto* samples = reinterpret_cast<const std::int16_t*>(bytes.constData());
    const auto said = WavFiles::resample(WavFiles::Samples(samples, samples + bytes.size() / 2), rate, 8000);
    const auto heard = WavFiles::resample(WavFiles::read(result.line("heard")), 16000, 8000);
    // Half a second of its second half, where the output runs steadily: the loudest.
    WavFiles::Samples piece;
    for (std::size_t from = said.size() / 2; from + 4000 <= said.size(); from += 2000) {
        const auto begin = said.begin() + static_cast<std::ptrdiff_t>(from);
        const WavFiles::Samples other(begin, begin + 4000);
        piece = piece.empty() || SignalMeasure::levelDbfs(other) > SignalMeasure::levelDbfs(piece) ? other
                                                                                                   : piece;
    }
    double best = 0;
    for (std::size_t from = 0; from + piece.size() <= heard.size(); from += 2000) {
        const auto begin = heard.begin() + static_cast<std::ptrdiff_t>(from);
        best = std::max(
            best,
            SignalMeasure::align(
                piece, WavFiles::Samples(begin, begin + static_cast<std::ptrdiff_t>(piece.size())), 2000)
                .correlation);
    }
    QVERIFY2(best > 0.8, qPrintable(QString::number(best)));
}

void TestTwoWayTalk::microphone()
{
    QFile earlier(m_folder.filePath("out/heard-1.wav"));
    QVERIFY(QDir(m_folder.path()).mkpath("out") && earlier.open(QIODevice::WriteOnly));
    QCOMPARE(earlier.write("an earlier talk"), qint64{15});
    earlier.close();
    const auto speaker = m_pulse->speak(QStringLiteral(ANNOUNCEMENT_WAV));
    const ProgramRun result = talk({"--mic", "--seconds", "5"});
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QVERIFY2(result.value("likeness") > 0.8, qPrintable(result.out));
    QVERIFY(result.line("heard") != earlier.fileName());
    QCOMPARE(earlier.size(), qint64{15});
}

void TestTwoWayTalk::soundLibraryIsNotTornDown()
{
#ifndef __GLIBC__
    QSKIP("Needs a loader that tells what it does.");
#endif
    const QString source = m_folder.filePath("short.wav");
    QVERIFY(WavFiles::write(source, WavFiles::sine(440, 0.3, 0.1, 8000), 8000));
    const QString trace = m_folder.filePath("loader");
    qputenv("LD_DEBUG", "files");
    qputenv("LD_DEBUG_OUTPUT", trace.toUtf8());
    const ProgramRun result = talk({"--source", source});
    qunsetenv("LD_DEBUG");
    qunsetenv("LD_DEBUG_OUTPUT");
    QVERIFY2(result.status == 0, qPrintable(result.err));
    const QStringList traces = QDir(m_folder.path()).entryList({"loader.*"});
    QCOMPARE(traces.size(), 1);
    QFile file(m_folder.filePath(traces.first()));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString steps = QString::fromUtf8(file.readAll());
    QVERIFY(QRegularExpression("calling init: .*qtmedia_pulse").match(steps).hasMatch());
    QVERIFY(!QRegularExpression("calling fini: .*qtmedia_pulse").match(steps).hasMatch());
}

QTEST_GUILESS_MAIN(TestTwoWayTalk)
#include "tst_twowaytalk.moc"
