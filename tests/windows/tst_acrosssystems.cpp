// A desk on one system, a server on the other, and names that no code page holds all of. Runs outside of
// Wine:
//
//   VOICEDESK_WINDOWS_PROGRAM  what runs a Windows program
//   VOICEDESK_WINDOWS_ARGUMENT the Windows desk

#include "tests/support/ProgramRun.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <memory>

class TestAcrossSystems : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void records_data() { systemRows(); }
    void records();
    void files_data() { systemRows(); }
    void files();
    void talk_data() { systemRows(); }
    void talk();
    void decodersAgree_data();
    void decodersAgree();

private:
    enum System
    {
        Linux,
        Windows
    };

    static void systemRows();
    /** @param program "voicedesk" or "voicedesk-decode" */
    void start(QProcess& process, System system, const QString& program, const QStringList& arguments) const;
    /** Starts the server of this row. */
    void serve();
    ProgramRun run(System system, const QStringList& arguments) const;
    ProgramRun run(const QStringList& arguments) const { return run(m_desk, arguments); }
    QString path(const QString& name) const { return m_folder->filePath(name); }
    /** The tone that a speaker of the server has played, in Hz. */
    double heardBy(int device) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QProcess> m_server;
    QStringList m_serverArguments;
    System m_desk = Linux;
};

namespace {

const QString speakerName = QStringLiteral("Tür Süd 門 😀");
const QString groupName = QStringLiteral("Höfe Ω наружу");
const QString scheduleName = QStringLiteral("Früh «朝»");
const QString fileName = QStringLiteral("Grüße 世界 🔔.wav");
const QString sayName = QStringLiteral("Ansage für 放送 ñ.wav");

} // namespace

void TestAcrossSystems::systemRows()
{
    QTest::addColumn<int>("desk");
    QTest::newRow("Windows desk, Linux server") << int{Windows};
    QTest::newRow("Linux desk, Windows server") << int{Linux};
}

void TestAcrossSystems::initTestCase()
{
    QVERIFY2(qEnvironmentVariableIsSet("VOICEDESK_WINDOWS_ARGUMENT"), "run by ./test --windows");
    qputenv("VOICEDESK_SECRET", "schlüssel 鍵");
}

void TestAcrossSystems::init()
{
    m_folder =
        std::make_unique<QTemporaryDir>(QDir::temp().filePath(QStringLiteral("voicedesk Übung 音 XXXXXX")));
    QVERIFY(m_folder->isValid());
}

void TestAcrossSystems::cleanup()
{
    if (m_server) {
        m_server->terminate();
        QVERIFY(m_server->waitForFinished());
        m_server.reset();
    }
}

void TestAcrossSystems::start(QProcess& process, System system, const QString& program,
                              const QStringList& arguments) const
{
    process.setWorkingDirectory(m_folder->path());
    if (system == Windows) {
        const QDir programs = QFileInfo(qEnvironmentVariable("VOICEDESK_WINDOWS_ARGUMENT")).dir();
        process.start(qEnvironmentVariable("VOICEDESK_WINDOWS_PROGRAM"),
                      QStringList{programs.filePath(program + QStringLiteral(".exe"))} + arguments);
    } else {
        process.start(QStringLiteral(PROGRAM_DIR "/") + program, arguments);
    }
}

void TestAcrossSystems::serve()
{
    QFETCH(int, desk);
    m_desk = static_cast<System>(desk);
    m_server = std::make_unique<QProcess>();
    m_server->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    start(*m_server, m_desk == Windows ? Linux : Windows, QStringLiteral("voicedesk"),
          {"serve", "--listen", "127.0.0.1:0", "--tls", "--simulate", "--add-user", QStringLiteral("Änne"),
           "--data", QStringLiteral("Daten ñ 数"), "--output", QStringLiteral("Aufnahmen ö 録")});
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT(
        (m_server->waitForReadyRead(50), said += m_server->readAllStandardOutput(), said.count('\n') >= 2),
        60000);
    const QString text = QString::fromUtf8(said);
    m_serverArguments =
        QStringList{"--server",      QRegularExpression("serving at (\\S+)").match(text).captured(1),
                    "--user",        QStringLiteral("Änne"),
                    "--fingerprint", QRegularExpression("certificate (\\S+)").match(text).captured(1),
                    "--timeout",     "20"};
}

ProgramRun TestAcrossSystems::run(System system, const QStringList& arguments) const
{
    QProcess process;
    start(process, system, QStringLiteral("voicedesk"), arguments + m_serverArguments);
    return ProgramRun::toTheEnd(process, 120000);
}

double TestAcrossSystems::heardBy(int device) const
{
    int rate = 0;
    auto heard = WavFiles::read(path(QStringLiteral("Aufnahmen ö 録/speaker-%1-1.wav").arg(device)), &rate);
    const auto isLoud = [](std::int16_t sample) { return std::abs(sample) > 1000; };
    heard.erase(heard.begin(), std::find_if(heard.begin(), heard.end(), isLoud));
    heard.erase(std::find_if(heard.rbegin(), heard.rend(), isLoud).base(), heard.end());
    return heard.size() < 4000 ? 0 : SignalMeasure::medianFrequency(heard, rate);
}

void TestAcrossSystems::records()
{
    serve();
    if (QTest::currentTestFailed()) {
        return;
    }
    const ProgramRun added = run({"devices", "add", speakerName, "10.0.0.5", "554", "--cameras", "camera-1"});
    QVERIFY2(added.status == 0, qPrintable(added.err));
    QCOMPARE(run({"groups", "add", groupName, "--devices", "1"}).status, 0);
    const QString file = path(fileName);
    QVERIFY(WavFiles::write(file, WavFiles::sine(700, 0.5, 1.0, 8000), 8000));
    QCOMPARE(run({"files", "add", fileName}).status, 0);
    const ProgramRun planned = run({"schedules", "add", scheduleName, "--at", "2031-03-01T08:00:00",
                                    "--weekdays", "1,2", "--file", "1", "--groups", "1"});
    QVERIFY2(planned.status == 0, qPrintable(planned.err));
    const QList<QPair<QString, QString>> names{
        {"devices", speakerName}, {"groups", groupName}, {"files", fileName}, {"schedules", scheduleName}};
    for (const auto& [command, name] : names) {
        // Both systems say the same of the same server.
        const ProgramRun windows = run(Windows, {command, "list", "--json"});
        const ProgramRun native = run(Linux, {command, "list", "--json"});
        QVERIFY2(windows.status == 0, qPrintable(windows.err));
        QCOMPARE(windows.json().size(), 1);
        QCOMPARE(windows.json()[0].toObject()["name"].toString(), name);
        QCOMPARE(windows.out, native.out);
        QCOMPARE(run(Windows, {command, "list"}).out, run(Linux, {command, "list"}).out);
    }
}

void TestAcrossSystems::files()
{
    serve();
    if (QTest::currentTestFailed()) {
        return;
    }
    QCOMPARE(run({"devices", "add", speakerName, "10.0.0.5", "554"}).status, 0);
    QVERIFY(WavFiles::write(path(fileName), WavFiles::sine(700, 0.5, 1.5, 8000), 8000));
    const ProgramRun sent = run({"files", "add", fileName});
    QVERIFY2(sent.status == 0, qPrintable(sent.err));
    const QJsonObject listed = run({"files", "list", "--json"}).json()[0].toObject();
    QCOMPARE(listed["name"].toString(), fileName);
    QVERIFY2(std::abs(listed["seconds"].toDouble() - 1.5) < 0.05,
             qPrintable(QString::number(listed["seconds"].toDouble())));
    const ProgramRun played = run({"play", "--device", "1", "--file", "1"});
    QVERIFY2(played.status == 0, qPrintable(played.err));
    QVERIFY2(std::abs(heardBy(1) - 700) < 4, qPrintable(QString::number(heardBy(1))));
}

void TestAcrossSystems::talk()
{
    serve();
    if (QTest::currentTestFailed()) {
        return;
    }
    QCOMPARE(run({"devices", "add", speakerName, "10.0.0.5", "554"}).status, 0);
    QVERIFY(WavFiles::write(path(sayName), WavFiles::sine(900, 0.5, 1.5, 8000), 8000));
    const ProgramRun said = run({"say", "--device", "1", "--source", sayName});
    QVERIFY2(said.status == 0, qPrintable(said.err));
    QVERIFY2(std::abs(heardBy(1) - 900) < 4, qPrintable(QString::number(heardBy(1))));
}

void TestAcrossSystems::decodersAgree_data()
{
    QTest::addColumn<QString>("dump");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<int>("tolerance");
    QTest::newRow("mu-law") << "g711/ulaw.rec"
                            << "pcmu" << 0;
    QTest::newRow("A-law") << "g711/alaw.rec"
                           << "pcma" << 0;
    QTest::newRow("AAC, 16 kHz") << "aac/mono16k.rec"
                                 << "aac" << 0;
    QTest::newRow("AAC, stereo") << "aac/stereo48k.rec"
                                 << "aac" << 0;
    // libavcodec's AMR reckons in floating point, with the functions of the C library.
    QTest::newRow("AMR, lowest rate") << "amr/amr_mode0.rec"
                                      << "amr" << 1;
    QTest::newRow("AMR, highest rate") << "amr/amr_mode7.rec"
                                       << "amr" << 1;
    QTest::newRow("G.726") << "g726/random1_16k_left.rec"
                           << "g726" << 0;
    QTest::newRow("G.722.1") << "g7221/packets.rec"
                             << "g7221" << 0;
}

void TestAcrossSystems::decodersAgree()
{
    // Whatever the compiler, and with the same features of the processor.
    QFETCH(QString, dump);
    QFETCH(QString, codec);
    QFETCH(int, tolerance);
    QByteArray pcm[2];
    int status[2] = {-1, -1};
    for (const System system : {Linux, Windows}) {
        QProcess process;
        start(process, system, QStringLiteral("voicedesk-decode"),
              {"--codec", codec, "--raw", QStringLiteral(TEST_DATA_DIR "/") + dump, "out.pcm"});
        QVERIFY(process.waitForFinished(60000));
        status[system] = process.exitCode();
        QFile file(path("out.pcm"));
        QVERIFY2(file.open(QIODevice::ReadOnly), process.readAllStandardError().constData());
        pcm[system] = file.readAll();
        QVERIFY(file.remove());
    }
    QCOMPARE(status[Windows], status[Linux]);
    QVERIFY(pcm[Linux].size() > 8000);
    QCOMPARE(pcm[Windows].size(), pcm[Linux].size());
    const auto* windows = reinterpret_cast<const std::int16_t*>(pcm[Windows].constData());
    const auto* native = reinterpret_cast<const std::int16_t*>(pcm[Linux].constData());
    for (int i = 0; i < pcm[Linux].size() / 2; ++i) {
        QVERIFY2(std::abs(windows[i] - native[i]) <= tolerance,
                 qPrintable(QStringLiteral("sample %1: %2, %3").arg(i).arg(windows[i]).arg(native[i])));
    }
}

QTEST_GUILESS_MAIN(TestAcrossSystems)
#include "tst_acrosssystems.moc"
