// Ends that a command does not choose: Ctrl-C while it waits, a server that goes, does not answer or refuses.

#include "tests/cli/ScriptedServer.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ProgramInterrupt.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class TestInterruptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void waitForAConnection_data();
    void waitForAConnection();
    void waitForAnAnswer_data() { waitForAConnection_data(); }
    void waitForAnAnswer();
    void serverIsKilled_data();
    void serverIsKilled();
    void wrongPassword();
    void camerasOfAServer();
    void localFileIsTakenBack();
    void serverInsideEndsWithThePlayback();
    void repliesGoByTheirNumber();

private:
    void startServer();
    ProgramRun run(const QStringList& arguments) const
    {
        return ProgramRun::of("voicedesk", m_folder->path(),
                              arguments + QStringList{"--server", m_url, "--user", "anna"});
    }
    void start(QProcess& program, const QStringList& arguments) const
    {
        program.setWorkingDirectory(m_folder->path());
        program.start(QStringLiteral(PROGRAM_DIR "/voicedesk"), arguments);
    }
    /** Serves events until a program has ended. */
    static ProgramRun endOf(QProcess& program);

    std::unique_ptr<QTemporaryDir> m_folder;
    ChildProcess m_server;
    QString m_url;
};

void TestInterruptions::initTestCase()
{
    qputenv("VOICEDESK_SECRET", "right");
}

void TestInterruptions::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(WavFiles::write(m_folder->filePath("long.wav"), WavFiles::sine(440, 0.5, 30.0, 8000), 8000));
}

void TestInterruptions::cleanup()
{
    if (m_server.state() != QProcess::NotRunning) {
        m_server.kill();
        m_server.waitForFinished();
    }
}

void TestInterruptions::startServer()
{
    m_server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    start(m_server,
          {"serve", "--listen", "127.0.0.1:0", "--add-user", "anna", "--data", "data", "--simulate"});
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT(
        (m_server.waitForReadyRead(50), said += m_server.readAllStandardOutput(), said.contains('\n')),
        20000);
    m_url = QRegularExpression("serving at (\\S+)").match(QString::fromUtf8(said)).captured(1);
}

ProgramRun TestInterruptions::endOf(QProcess& program)
{
    ProgramRun result;
    if (QTest::qWaitFor([&] { return program.state() == QProcess::NotRunning; }, 20000) &&
        program.exitStatus() == QProcess::NormalExit) {
        result.status = program.exitCode();
    }
    program.kill();
    program.waitForFinished();
    result.out = QString::fromUtf8(program.readAllStandardOutput()).remove('\r');
    result.err = QString::fromUtf8(program.readAllStandardError()).remove('\r');
    return result;
}

void TestInterruptions::waitForAConnection_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("say") << QStringList{"say", "--device", "1", "--source", "long.wav"};
    QTest::newRow("play") << QStringList{"play", "--device", "1", "--file", "1"};
    QTest::newRow("a list") << QStringList{"devices", "list"};
    QTest::newRow("a change") << QStringList{"groups", "add", "x"};
    QTest::newRow("talk") << QStringList{"talk", "--source", "long.wav"};
    QTest::newRow("cameras") << QStringList{"cameras"};
}

void TestInterruptions::waitForAConnection()
{
    QFETCH(QStringList, arguments);
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    QProcess program;
    start(program, arguments + QStringList{"--timeout", "3600", "--server",
                                           QStringLiteral("ws://127.0.0.1:%1").arg(silent.serverPort())});
    QTRY_VERIFY_WITH_TIMEOUT(silent.hasPendingConnections(), 20000);
    QVERIFY(interruptProgram(program));
    const ProgramRun result = endOf(program);
    QVERIFY2(result.status == 5 && result.err.count("interrupted") == 1,
             qPrintable(QString::number(result.status) + result.err));
}

void TestInterruptions::waitForAnAnswer()
{
    // It lets everybody in and answers nothing.
    QFETCH(QStringList, arguments);
    QSet<QString> asked;
    ScriptedServer silent([&asked](const WireMessage& command) {
        asked.insert(command.name);
        return QList<WireMessage>();
    });
    QVERIFY(silent.listening);
    QProcess program;
    start(program, arguments + QStringList{"--timeout", "3600", "--server", silent.url()});
    QTRY_VERIFY_WITH_TIMEOUT(asked.size() >= 2, 20000); // what the plug-in asks by itself
    QVERIFY(interruptProgram(program));
    const ProgramRun result = endOf(program);
    QVERIFY2(result.status == 5 && result.err.count("interrupted") == 1,
             qPrintable(QString::number(result.status) + result.err));
}

void TestInterruptions::serverIsKilled_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::newRow("say") << QStringList{"say", "--device", "Gate", "--source", "long.wav"} << 6;
    QTest::newRow("talk") << QStringList{"talk", "--source", "long.wav"} << 6;
    QTest::newRow("play") << QStringList{"play", "--device", "Gate", "--file", "long.wav"} << 5;
}

void TestInterruptions::serverIsKilled()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    startServer();
    run({"devices", "add", "Gate", "10.0.0.5", "554"});
    run({"files", "add", "long.wav"});
    const auto size = [this] {
        qint64 sum = 0;
        const auto entries = QDir(m_folder->filePath("recordings")).entryInfoList(QDir::Files);
        for (const QFileInfo& entry : entries) {
            sum += entry.size();
        }
        return sum;
    };
    const qint64 before = size();
    QProcess program;
    start(program, arguments + QStringList{"--server", m_url, "--user", "anna"});
    QTRY_VERIFY_WITH_TIMEOUT(size() > before + 16000, 20000); // it is heard
    m_server.kill();
    QElapsedTimer clock;
    clock.start();
    const ProgramRun result = endOf(program);
    QVERIFY2(result.status == status, qPrintable(QString::number(result.status) + result.err));
    QVERIFY2(clock.elapsed() < 10000, "not at the loss"); // of thirty seconds
    QVERIFY(result.err.contains("lost"));
}

void TestInterruptions::wrongPassword()
{
    startServer();
    qputenv("VOICEDESK_SECRET", "wrong");
    for (const QStringList& arguments : {QStringList{"devices", "list"}, QStringList{"cameras"},
                                         QStringList{"talk", "--source", "long.wav"}}) {
        const ProgramRun result = run(arguments);
        QCOMPARE(result.status, 4);
        QVERIFY2(result.err.contains("password"), qPrintable(result.err));
    }
    qputenv("VOICEDESK_SECRET", "right");
}

void TestInterruptions::camerasOfAServer()
{
    const QVariantList cameras{QVariantMap{{"camId", "yard-7"}, {"camName", "Yard"}, {"online", false}}};
    const ScriptedServer server([&cameras](const WireMessage& command) {
        return QList<WireMessage>{
            ScriptedServer::replyTo(command, command.name == "GetCamera" ? cameras : QVariant())};
    });
    QVERIFY(server.listening);
    QProcess program;
    start(program, {"cameras", "--json", "--server", server.url()});
    const ProgramRun result = endOf(program);
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QCOMPARE(result.json().size(), 1);
    QCOMPARE(result.json()[0].toObject()["id"].toString(), QString("yard-7"));
    QCOMPARE(result.json()[0].toObject()["online"].toBool(true), false);
}

void TestInterruptions::localFileIsTakenBack()
{
    startServer();
    run({"devices", "add", "Yard", "10.0.0.7", "554"});
    const int before = run({"files", "list", "--json"}).json().size();
    QProcess program;
    start(program, {"play", "--device", "1", "--file", "./long.wav", "--server", m_url, "--user", "anna"});
    QTRY_VERIFY_WITH_TIMEOUT(
        !QDir(m_folder->filePath("recordings")).entryList({"speaker-1-*"}, QDir::Files).isEmpty(), 20000);
    QVERIFY(interruptProgram(program));
    const ProgramRun result = endOf(program);
    QVERIFY2(result.status == 0 && result.err.contains("interrupted"), qPrintable(result.err));
    QCOMPARE(run({"files", "list", "--json"}).json().size(), before);
}

void TestInterruptions::serverInsideEndsWithThePlayback()
{
    const auto runInside = [this](const QStringList& arguments) {
        return ProgramRun::of("voicedesk", m_folder->path(), arguments + QStringList{"--data", "data"});
    };
    QCOMPARE(runInside({"devices", "add", "Yard", "10.0.0.7", "554"}).status, 0);
    QCOMPARE(runInside({"files", "add", "long.wav"}).status, 0);
    QProcess program;
    start(program, {"play", "--device", "1", "--file", "1", "--data", "data", "--simulate"});
    QTRY_VERIFY_WITH_TIMEOUT(
        !QDir(m_folder->filePath("recordings")).entryList({"speaker-1-*"}, QDir::Files).isEmpty(), 20000);
    QVERIFY(interruptProgram(program));
    const ProgramRun result = endOf(program);
    QVERIFY2(result.status == 0 && result.err.contains("interrupted"), qPrintable(result.err));
    QVERIFY2(!result.err.contains("plays on"), qPrintable(result.err));
}

void TestInterruptions::repliesGoByTheirNumber()
{
    // A refusal of the same name that nobody asked for comes first.
    const ScriptedServer server([](const WireMessage& command) {
        WireMessage other = ScriptedServer::replyTo(command, 3);
        other.id += 1000;
        other.code = QStringLiteral("404");
        return QList<WireMessage>{other, ScriptedServer::replyTo(command, 7)};
    });
    QVERIFY(server.listening);
    QProcess program;
    start(program, {"schedules", "delete", "7", "--server", server.url()});
    const ProgramRun result = endOf(program);
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QCOMPARE(result.out, QString("deleted schedule 7\n"));
}

QTEST_GUILESS_MAIN(TestInterruptions)
#include "tst_interruptions.moc"
