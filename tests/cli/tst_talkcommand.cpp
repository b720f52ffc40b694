// The program as people use it: started with arguments, judged by what it prints, records and returns.

#include "tests/support/ChildProcess.h"
#include "tests/support/ProgramInterrupt.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class TestTalkCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.filePath("home"))); }
    void announcementArrivesAsMuLawCarriesIt();
    void eightKilohertzFileArrivesToTheSample();
    void failures_data();
    void failures();
    void awkwardCameras_data();
    void awkwardCameras();
    void interruptEndsInGoodOrder();

private:
    ProgramRun run(const QStringList& arguments) const
    {
        return ProgramRun::of("voicedesk", m_folder.path(), arguments);
    }
    static QString recording(const ProgramRun& result) { return result.line("recording"); }

    QTemporaryDir m_folder;
};

void TestTalkCommand::announcementArrivesAsMuLawCarriesIt()
{
    const ProgramRun result = run({"talk", "--source", ANNOUNCEMENT_WAV, "--output", "out"});
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QCOMPARE(recording(result), QDir(m_folder.path()).filePath("out/camera-1-1.wav"));
    QVERIFY(result.out.contains("packets sent"));
    QVERIFY(result.out.contains("out of order 0, not accepted 0"));
    QVERIFY(result.err.contains("sequence"));
    QVERIFY(result.err.contains("dBFS ["));

    const auto spoken =
        WavFiles::throughMuLaw(WavFiles::resample(WavFiles::read(ANNOUNCEMENT_WAV), 16000, 8000));
    const auto heard = WavFiles::read(recording(result));
    QVERIFY(heard.size() >= spoken.size());
    const auto match = SignalMeasure::align(spoken, heard, 400);
    QVERIFY2(match.correlation > 0.999, qPrintable(QString::number(match.correlation)));
    QVERIFY2(qAbs(match.gainDb) < 0.1, qPrintable(QString::number(match.gainDb)));
    QCOMPARE(match.lag, 0); // from the first sample on

    // The next talk leaves it alone.
    const ProgramRun next =
        run({"talk", "--source", ANNOUNCEMENT_WAV, "--output", "out", "--seconds", "0.5"});
    QCOMPARE(recording(next), QDir(m_folder.path()).filePath("out/camera-1-2.wav"));
    QCOMPARE(WavFiles::read(recording(result)).size(), heard.size());
}

void TestTalkCommand::eightKilohertzFileArrivesToTheSample()
{
    const auto samples = WavFiles::resample(WavFiles::read(ANNOUNCEMENT_WAV), 16000, 8000);
    const WavFiles::Samples second(samples.begin(), samples.begin() + 8000);
    const QString source = m_folder.filePath("eight.wav");
    QVERIFY(WavFiles::write(source, second, 8000));
    const ProgramRun result = run({"talk", "--camera", "camera-2", "--source", source, "--output", "eight"});
    QVERIFY2(result.status == 0, qPrintable(result.err));
    auto heard = WavFiles::read(recording(result));
    QVERIFY(heard.size() >= 8000);
    heard.resize(8000);
    QVERIFY(heard == WavFiles::throughMuLaw(second));
}

void TestTalkCommand::failures_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");
    const QString source = QStringLiteral(ANNOUNCEMENT_WAV);
    QTest::newRow("no such camera") << QStringList{"--source", source, "--camera", "x"} << 4
                                    << "no camera has the id or name \"x\"";
    QTest::newRow("offline camera") << QStringList{"--source", source, "--camera", "camera-3"} << 4
                                    << "is offline";
    QTest::newRow("camera by its name")
        << QStringList{"--source", source, "--camera", "Car park"} << 4 << "Calling Car park";
    QTest::newRow("no plug-in") << QStringList{"--source", source, "--plugin", "/nonexistent.so"} << 2
                                << "the plug-in does not load";
    QTest::newRow("no file") << QStringList{"--source", "absent.wav"} << 3 << "not a sound file";
    QTest::newRow("no microphone") << QStringList{"--mic"} << 3 << "microphone does not start";
    QTest::newRow("unknown microphone")
        << QStringList{"--device", "none of this name"} << 3 << "microphone does not start";
    QTest::newRow("unwritable output")
        << QStringList{"--source", source, "--output", "/proc/none"} << 4 << "cannot be written";
    QTest::newRow("unwritable file") << QStringList{"--source", source, "--heard", "/nonexistent/x.wav"} << 9
                                     << "/nonexistent/x.wav cannot be written";
}

void TestTalkCommand::failures()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QString, message);
    const ProgramRun result = run(QStringList{"talk"} + arguments);
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    QVERIFY2(!result.err.contains("Talking to"), qPrintable(result.err)); // no line opened
    QCOMPARE(result.status, status);
}

void TestTalkCommand::awkwardCameras_data()
{
    QTest::addColumn<QString>("camera");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");
    QTest::newRow("never opens its line") << "silent" << 5 << "did not answer within 0.5 s";
    QTest::newRow("loses its line") << "drop" << 6 << "the camera was lost";
}

void TestTalkCommand::awkwardCameras()
{
    QFETCH(QString, camera);
    QFETCH(int, status);
    QFETCH(QString, message);
    ChildProcess server;
    server.start(QStringLiteral(AWKWARD_SERVER), {camera});
    QVERIFY(server.waitForReadyRead(20000));
    const QString url = QString::fromUtf8(server.readLine()).trimmed();
    qputenv("VOICEDESK_SECRET", "right");
    const ProgramRun result = run({"talk", "--server", url, "--camera", "gate", "--source", ANNOUNCEMENT_WAV,
                                   "--timeout", camera == "silent" ? "0.5" : "5"});
    qunsetenv("VOICEDESK_SECRET");
    server.closeWriteChannel();
    QVERIFY(server.waitForFinished(20000));
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    QCOMPARE(result.status, status);
}

void TestTalkCommand::interruptEndsInGoodOrder()
{
    QProcess program;
    program.setWorkingDirectory(m_folder.path());
    program.start(QStringLiteral(PROGRAM_DIR "/voicedesk"),
                  {"talk", "--source", ANNOUNCEMENT_WAV, "--output", "interrupted"});
    program.setReadChannel(QProcess::StandardError);
    QByteArray progress;
    while (!progress.contains("packets") && program.waitForReadyRead(20000)) {
        progress += program.readAllStandardError();
    }
    QVERIFY(progress.contains("packets"));
    QVERIFY(interruptProgram(program));
    QVERIFY(program.waitForFinished(10000));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    const QString out = QString::fromUtf8(program.readAllStandardOutput()).remove('\r');
    QVERIFY(out.contains("recording"));
    const auto heard = WavFiles::read(m_folder.filePath("interrupted/camera-1-1.wav"));
    QVERIFY2(heard.size() >= 640 && heard.size() < 59000, qPrintable(out));
}

QTEST_GUILESS_MAIN(TestTalkCommand)
#include "tst_talkcommand.moc"
