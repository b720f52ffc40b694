// "cameras find" and "cameras ask" as people and scripts use them: against a scripted camera, a terminal, and
// an independent responder in a network of its own.

#include "tests/onvif/ScriptedCamera.h"
#include "tests/support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr char secret[] = "not for the screen";

} // namespace

class TestCameraCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void asks();
    void asksForJson();
    void refusals_data();
    void refusals();
    void nobodyThere();
    void passwordIsMissing();
    void passwordAtATerminal();
    void interruptedAtATerminal();
    void findsAnIndependentDevice();
    void findsNothing();

private:
    /** Runs the program while the camera answers. */
    ProgramRun run(const QStringList& arguments, const char* password = secret)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("VOICEDESK_CAMERA_SECRET");
        if (password != nullptr) {
            environment.insert("VOICEDESK_CAMERA_SECRET", password);
        }
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_folder.path());
        process.setStandardInputFile(QProcess::nullDevice());
        process.start(QStringLiteral(PROGRAM_DIR "/voicedesk"), arguments);
        return finish(process);
    }

    static ProgramRun finish(QProcess& process)
    {
        [&process] { QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 20000); }();
        if (process.state() != QProcess::NotRunning) {
            return ProgramRun::toTheEnd(process, 0);
        }
        ProgramRun run;
        run.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        run.out = QString::fromUtf8(process.readAllStandardOutput());
        run.err = QString::fromUtf8(process.readAllStandardError());
        return run;
    }

    QString address() const { return m_camera->url().toString(); }

    QTemporaryDir m_folder;
    std::unique_ptr<ScriptedCamera> m_camera;
};

void TestCameraCommands::init()
{
    m_camera = std::make_unique<ScriptedCamera>();
    m_camera->user = "anna";
    m_camera->password = secret;
}

void TestCameraCommands::asks()
{
    m_camera->clockOffset = -90500;
    const ProgramRun good = run({"cameras", "ask", address(), "--user", "anna"});
    QCOMPARE(good.err, QString());
    QCOMPARE(good.status, 0);
    QCOMPARE(good.line("camera"), QString("Nobody Test & camera"));
    QCOMPARE(good.line("firmware"), QString("1.2"));
    QCOMPARE(good.line("is heard"), QString("yes: PCMU/8000, MPEG4-GENERIC/16000"));
    QCOMPARE(good.line("plays talks"),
             QString("yes: PCMU/8000, MPEG4-GENERIC/8000, MPEG4-GENERIC/16000, MPEG4-GENERIC/48000"));
    QCOMPARE(good.line("stream"),
             QString("rtsp://127.0.0.1:8554/live?profile=1 (Main: picture, voice, loudspeaker)"));
    QVERIFY2(good.line("clock").endsWith("s behind"), qPrintable(good.out));
    QVERIFY(!good.out.contains(secret));

    m_camera->setBody("GetStreamUri", "<tr2:R><tr2:Uri>rtsp://127.0.0.1/%C2%9B31m</tr2:Uri></tr2:R>");
    const ProgramRun plain = run({"cameras", "ask", address(), "--user", "anna"});
    QVERIFY2(plain.line("stream").startsWith("rtsp://127.0.0.1/%C2%9B31m"), qPrintable(plain.out));

    m_camera->hasLoudspeaker = false;
    m_camera->clockOffset = 0;
    const ProgramRun deaf = run({"cameras", "ask", address(), "--user", "anna"});
    QCOMPARE(deaf.line("plays talks"), QString("no: the camera has no loudspeaker"));
    QVERIFY(!deaf.out.contains("clock"));
}

void TestCameraCommands::asksForJson()
{
    const ProgramRun result = run({"cameras", "ask", "--json", "--user", "anna", address()});
    QCOMPARE(result.status, 0);
    const QJsonObject object = QJsonDocument::fromJson(result.out.toUtf8()).object();
    QCOMPARE(object.value("model"), QJsonValue("Test & camera"));
    QCOMPARE(object.value("speaks"), QJsonValue("yes"));
    QCOMPARE(object.value("hears"), QJsonValue("yes"));
    QCOMPARE(object.value("talkCodecs").toArray().first().toObject(),
             (QJsonObject{{"name", "PCMU"}, {"ratesHz", QJsonArray{8000}}}));
    const QJsonObject stream = object.value("streams").toArray().first().toObject();
    QCOMPARE(stream.value("address"), QJsonValue("rtsp://127.0.0.1:8554/live?profile=1"));
    QCOMPARE(stream.value("loudspeaker"), QJsonValue(true));
    QVERIFY(!result.out.contains(secret));
}

void TestCameraCommands::refusals_data()
{
    QTest::addColumn<QStringList>("more");
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<QString>("words");
    QTest::newRow("no user") << QStringList() << QByteArray(secret) << "wants a login";
    QTest::newRow("wrong user") << QStringList{"--user", "otto"} << QByteArray(secret) << "refuses the login";
    QTest::newRow("wrong password") << QStringList{"--user", "anna"} << QByteArray("wrong one")
                                    << "refuses the login";
    QTest::newRow("an empty password")
        << QStringList{"--user", "anna"} << QByteArray("") << "refuses the login";
}

void TestCameraCommands::refusals()
{
    QFETCH(QStringList, more);
    QFETCH(QByteArray, password);
    QFETCH(QString, words);
    const ProgramRun result =
        run(QStringList{"cameras", "ask", "--json", address()} + more, password.constData());
    QCOMPARE(result.status, 4);
    QCOMPARE(result.out, QString());
    QVERIFY2(result.err.contains(words), qPrintable(result.err));
    QVERIFY(!result.err.contains(secret) && !result.err.contains("wrong one"));
}

void TestCameraCommands::nobodyThere()
{
    const QString gone = address();
    m_camera.reset();
    const ProgramRun result = run({"cameras", "ask", gone});
    QCOMPARE(result.status, 5);
    QVERIFY2(result.err.contains("cannot be reached"), qPrintable(result.err));
}

void TestCameraCommands::passwordIsMissing()
{
    const ProgramRun result = run({"cameras", "ask", address(), "--user", "anna"}, nullptr);
    QCOMPARE(result.status, 1);
    QVERIFY2(result.err.contains("VOICEDESK_CAMERA_SECRET"), qPrintable(result.err));
    QCOMPARE(m_camera->requests.size(), 0);
}

void TestCameraCommands::passwordAtATerminal()
{
    const QString script = QStandardPaths::findExecutable("script");
    if (script.isEmpty()) {
        QSKIP("Needs the program script.");
    }
    QProcess terminal;
    terminal.setProcessChannelMode(QProcess::MergedChannels);
    terminal.start(
        script,
        {"-qec",
         QStringLiteral("'" PROGRAM_DIR "/voicedesk' cameras ask %1 --user anna; stty -a").arg(address()),
         "/dev/null"});
    QByteArray out;
    const auto shows = [&](const char* text) {
        out += terminal.readAll();
        return out.contains(text);
    };
    QTRY_VERIFY_WITH_TIMEOUT(shows("Password of anna at http://127.0.0.1"), 20000);
    terminal.write(QByteArray(secret) + "\n");
    QTRY_VERIFY_WITH_TIMEOUT(shows(" echo "), 20000); // the terminal is as it was
    QVERIFY2(out.contains("Nobody Test & camera"), out.constData());
    QVERIFY2(!out.contains(secret), out.constData());
    [&terminal] { QTRY_COMPARE(terminal.state(), QProcess::NotRunning); }();
}

void TestCameraCommands::interruptedAtATerminal()
{
    const QString script = QStandardPaths::findExecutable("script");
    if (script.isEmpty()) {
        QSKIP("Needs the program script.");
    }
    QProcess terminal;
    terminal.setProcessChannelMode(QProcess::MergedChannels);
    terminal.start(script, {"-qec",
                            QStringLiteral("trap '' INT; (trap - INT; exec '" PROGRAM_DIR
                                           "/voicedesk' cameras ask %1 --user anna); stty -a")
                                .arg(address()),
                            "/dev/null"});
    QByteArray out;
    const auto shows = [&](const char* text) {
        out += terminal.readAll();
        return out.contains(text);
    };
    QTRY_VERIFY_WITH_TIMEOUT(shows("Password of anna"), 20000);
    terminal.write("\x03");
    QTRY_VERIFY_WITH_TIMEOUT(shows(" echo "), 20000);
    QCOMPARE(m_camera->requests.size(), 0);
    [&terminal] { QTRY_COMPARE(terminal.state(), QProcess::NotRunning); }();
}

namespace {

/** Runs a shell script inside a network of its own, that has one other host, with wsdd on it. */
ProgramRun inNetwork(const QString& folder, const QString& command)
{
    const QString script = QString::fromLatin1(R"sh(
set -e
unshare -n sleep 60 & host=$!
inside() { nsenter -t $host -n "$@"; }
for i in $(seq 100); do [ "$(readlink /proc/$host/ns/net)" != "$(readlink /proc/self/ns/net)" ] && break; sleep 0.02; done
ip link add name desk type veth peer name gate netns $host
ip addr add 10.77.0.1/24 dev desk; ip link set desk up; ip link set lo up
inside ip addr add 10.77.0.2/24 dev gate; inside ip link set gate up; inside ip link set lo up
inside wsdd -4 -v -s -i gate -U 11111111-2222-3333-4444-555555555555 -n gate 2>wsdd.log &
for i in $(seq 250); do inside grep -q ':0E76 ' /proc/$host/net/udp && break; sleep 0.02; done
set +e
)sh") + command;
    QProcess process;
    process.setWorkingDirectory(folder);
    // With the shell ends all that it started.
    process.start("unshare", {"-n", "--pid", "--fork", "--kill-child", "--mount-proc", "sh", "-c", script});
    return ProgramRun::toTheEnd(process, 40000);
}

/** Why there can be no network of our own here; empty where there can. */
QString missingForNetworks()
{
    for (const char* program : {"unshare", "nsenter", "ip", "wsdd"}) {
        if (QStandardPaths::findExecutable(program).isEmpty()) {
            return QStringLiteral("Needs the program %1.").arg(QLatin1String(program));
        }
    }
    QProcess probe;
    probe.start("unshare", {"-n", "--pid", "--fork", "--kill-child", "--mount-proc", "ip", "link", "add",
                            "name", "desk", "type", "veth", "peer", "name", "gate"});
    probe.waitForFinished();
    return probe.exitCode() == 0 ? QString() : QStringLiteral("Needs the right to make networks (root).");
}

} // namespace

void TestCameraCommands::findsAnIndependentDevice()
{
    if (const QString missing = missingForNetworks(); !missing.isEmpty()) {
        QSKIP(qPrintable(missing));
    }
    const QString find = QStringLiteral("'" PROGRAM_DIR "/voicedesk' cameras find --json --seconds 2 ");
    const ProgramRun all = inNetwork(m_folder.path(), find + "--all --interface desk");
    QVERIFY2(all.status == 0, qPrintable(all.err));
    QCOMPARE(all.json().size(), 1);
    const QJsonObject device = all.json().first().toObject();
    QCOMPARE(device.value("endpoint"), QJsonValue("urn:uuid:11111111-2222-3333-4444-555555555555"));
    QCOMPARE(device.value("hosts"), QJsonValue(QJsonArray{"10.77.0.2"}));
    QCOMPARE(device.value("interface"), QJsonValue("desk"));
    QCOMPARE(device.value("camera"), QJsonValue(false));
    QCOMPARE(device.value("remark"), QJsonValue(""));
    // On the usual interfaces, too; and it is no camera.
    const ProgramRun usual = inNetwork(m_folder.path(), find + "--all");
    QCOMPARE(usual.json(), all.json());
    const ProgramRun cameras = inNetwork(m_folder.path(), find);
    QCOMPARE(cameras.status, 5);
    QCOMPARE(cameras.json().size(), 0);
}

void TestCameraCommands::findsNothing()
{
    if (const QString missing = missingForNetworks(); !missing.isEmpty()) {
        QSKIP(qPrintable(missing));
    }
    QProcess alone;
    alone.start("unshare", {"-n", PROGRAM_DIR "/voicedesk", "cameras", "find"});
    const ProgramRun result = ProgramRun::toTheEnd(alone, 20000);
    QCOMPARE(result.status, 5);
    QVERIFY2(result.err.contains("no network interface"), qPrintable(result.err));
}

QTEST_GUILESS_MAIN(TestCameraCommands)
#include "tst_cameracommands.moc"
