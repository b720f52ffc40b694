// The commands on records, as people and scripts use them: against the server inside the program, and
// against one in another process.

#include "tests/support/ChildProcess.h"
#include "tests/support/FullDisk.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

class TestRecordCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void devices_data() { serverRows(); }
    void devices();
    void files_data() { serverRows(); }
    void files();
    void groups_data() { serverRows(); }
    void groups();
    void schedules_data() { serverRows(); }
    void schedules();
    void playAndStop();
    void offlineSpeaker();
    void sayToSpeakers_data() { serverRows(); }
    void sayToSpeakers();
    void serverThatCannotStart();
    void oneServerForADataFolder_data();
    void oneServerForADataFolder();
    void killedServerKeepsNobodyOut();
    void userOnAFullDisk();
    void serverWithoutUsers();
    void wrongSecret();
    void fingerprints();
    void serverIsKilledUnderLoad();

private:
    static void serverRows()
    {
        QTest::addColumn<QString>("server");
        QTest::newRow("inside the program") << "";
        QTest::newRow("another process") << "ws";
        QTest::newRow("another process, with TLS") << "wss";
    }

    /** Starts "voicedesk serve" for the data of this test, or nothing for the embedded server. */
    void startServer(const QString& kind, const QStringList& more = QStringList());
    ProgramRun run(QStringList arguments, bool withServer = true);
    QString path(const char* name) const { return m_folder->filePath(QString::fromLatin1(name)); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QProcess> m_server;
    QStringList m_serverArguments;
};

namespace {

const QString program = QStringLiteral(PROGRAM_DIR "/voicedesk");

} // namespace

void TestRecordCommands::initTestCase()
{
    qputenv("VOICEDESK_SECRET", "right");
}

void TestRecordCommands::cleanup()
{
    if (m_server) {
#ifdef Q_OS_WIN
        m_server->kill(); // what terminate sends, only programs with a window take
#else
        m_server->terminate();
#endif
        m_server->waitForFinished();
        m_server.reset();
    }
}

void TestRecordCommands::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_serverArguments.clear();
}

void TestRecordCommands::startServer(const QString& kind, const QStringList& more)
{
    if (kind.isEmpty()) {
        return;
    }
    m_server = std::make_unique<ChildProcess>();
    m_server->setWorkingDirectory(m_folder->path());
    QStringList arguments{"serve", "--listen", "127.0.0.1:0", "--add-user",
                          "anna",  "--data",   "data",        "--simulate"};
    if (kind == "wss") {
        arguments.append("--tls");
    }
    m_server->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_server->start(program, arguments + more);
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT((m_server->waitForReadyRead(50), said += m_server->readAllStandardOutput(),
                              said.count('\n') >= (kind == "wss" ? 2 : 1)),
                             20000);
    const QString text = QString::fromUtf8(said);
    m_serverArguments = QStringList{
        "--server", QRegularExpression("serving at (\\S+)").match(text).captured(1), "--user", "anna"};
    const QString fingerprint = QRegularExpression("certificate (\\S+)").match(text).captured(1);
    if (!fingerprint.isEmpty()) {
        m_serverArguments += QStringList{"--fingerprint", fingerprint};
    }
}

ProgramRun TestRecordCommands::run(QStringList arguments, bool withServer)
{
    if (withServer) {
        arguments +=
            m_serverArguments.isEmpty() ? QStringList{"--data", "data", "--simulate"} : m_serverArguments;
    }
    return ProgramRun::of("voicedesk", m_folder->path(), arguments);
}

void TestRecordCommands::devices()
{
    QFETCH(QString, server);
    startServer(server);
    const ProgramRun added =
        run({"devices", "add", QString::fromUtf8("Größe"), "10.0.0.5", "554", "--cameras", "a,b"});
    QVERIFY2(added.status == 0, qPrintable(added.err));
    QCOMPARE(added.out, QString("added device 1\n"));
    QCOMPARE(run({"devices", "add", "Alley", "speaker.local", "80"}).out, QString("added device 2\n"));
    const QString table = run({"devices", "list"}).out;
    QVERIFY(table.startsWith("id"));
    QVERIFY(table.indexOf("Alley") < table.indexOf(QString::fromUtf8("Größe"))); // sorted by name
    QCOMPARE(run({"devices", "update", "1", "Dock", "10.0.0.6", "81"}).out, QString("updated device 1\n"));
    const QJsonArray json = run({"devices", "list", "--json"}).json();
    QCOMPARE(json.size(), 2);
    QCOMPARE(json[1].toObject()["name"].toString(), QString("Dock"));
    QCOMPARE(json[1].toObject()["port"].toInt(), 81);
    QCOMPARE(json[1].toObject()["cameras"].toArray().size(), 2); // as it was
    const ProgramRun taken = run({"devices", "add", "Dock", "10.0.0.6", "81"});
    QCOMPARE(taken.status, 4);
    QVERIFY(taken.err.contains("412") && taken.err.contains("Dock"));
    QCOMPARE(run({"devices", "delete", "1"}).out, QString("deleted device 1\n"));
    QCOMPARE(run({"devices", "delete", "1"}).status, 4);
    QCOMPARE(run({"devices", "list", "--json"}).json().size(), 1);
}

void TestRecordCommands::files()
{
    QFETCH(QString, server);
    startServer(server);
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(440, 0.5, 1.5, 16000), 16000));
    const ProgramRun added = run({"files", "add", "tone.wav"});
    QVERIFY2(added.status == 0, qPrintable(added.err));
    QCOMPARE(added.out, QString("added file 1\n"));
    QVERIFY(added.err.contains("Uploading"));
    const QJsonObject file = run({"files", "list", "--json"}).json()[0].toObject();
    QCOMPARE(file["name"].toString(), QString("tone.wav"));
    QCOMPARE(file["seconds"].toDouble(), 1.5);
    QCOMPARE(file["status"].toString(), QString("ready"));
    QFile junk(path("junk.wav"));
    QVERIFY(junk.open(QIODevice::WriteOnly));
    junk.write(QByteArray(3000, 'x'));
    junk.close();
    const ProgramRun refused = run({"files", "add", "junk.wav"});
    QCOMPARE(refused.status, 4);
    QVERIFY(refused.err.contains("code -2"));
    QCOMPARE(run({"files", "add", "absent.wav"}).status, 1);
    QCOMPARE(run({"files", "delete", "1"}).out, QString("deleted file 1\n"));
    QCOMPARE(run({"files", "delete", "1"}).status, 4);
    QCOMPARE(run({"files", "list", "--json"}).json().size(), 0);
}

void TestRecordCommands::groups()
{
    QFETCH(QString, server);
    startServer(server);
    run({"devices", "add", "Gate", "10.0.0.5", "554"});
    run({"devices", "add", "Dock", "10.0.0.6", "554"});
    QCOMPARE(run({"groups", "add", "Yard", "--devices", "2,1"}).out, QString("added group 1\n"));
    QCOMPARE(run({"groups", "add", "Hall"}).out, QString("added group 2\n"));
    const QJsonArray json = run({"groups", "list", "--json"}).json();
    QCOMPARE(json[1].toObject()["devices"].toArray().size(), 2);
    QCOMPARE(json[1].toObject()["deviceNames"].toArray()[0].toString(), QString("Dock"));
    QCOMPARE(run({"groups", "list", "--json", "--filter", "DOCK"}).json().size(), 1);
    QCOMPARE(run({"groups", "update", "2", "Attic", "--devices", "1"}).out, QString("updated group 2\n"));
    QCOMPARE(run({"groups", "add", "x", "--devices", "9"}).status, 4);
    QCOMPARE(run({"groups", "delete", "1"}).out, QString("deleted group 1\n"));
    QCOMPARE(run({"groups", "list", "--json"}).json().size(), 1);
}

void TestRecordCommands::schedules()
{
    QFETCH(QString, server);
    startServer(server);
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(440, 0.5, 0.5, 16000), 16000));
    run({"files", "add", "tone.wav"});
    run({"devices", "add", "Gate", "10.0.0.5", "554"});
    const QStringList rest{"--at", "2099-03-01T08:30:00", "--file", "1", "--devices", "1"};
    QCOMPARE(
        run(QStringList{"schedules", "add", "Noon", "--daily", "--until", "2099-04-01T00:00:00"} + rest).out,
        QString("added schedule 1\n"));
    const QJsonObject schedule = run({"schedules", "list", "--json"}).json()[0].toObject();
    QCOMPARE(schedule["type"].toString(), QString("daily"));
    QCOMPARE(schedule["enabled"].toBool(), true);
    QCOMPARE(schedule["end"].toString(), QString("2099-04-01T00:00:00"));
    QCOMPARE(
        run(QStringList{"schedules", "update", "1", "Night", "--weekdays", "1,7", "--disabled"} + rest).out,
        QString("updated schedule 1\n"));
    const QString table = run({"schedules", "list"}).out;
    QVERIFY(table.contains("weekly") && table.contains("1, 7") && table.contains("no"));
    QCOMPARE(run({"schedules", "add", "x", "--at", "tomorrow", "--file", "1", "--devices", "1"}).status, 1);
    QCOMPARE(run({"schedules", "delete", "1"}).out, QString("deleted schedule 1\n"));
    QCOMPARE(run({"schedules", "list", "--json"}).json().size(), 0);
}

void TestRecordCommands::playAndStop()
{
    startServer("ws");
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(440, 0.5, 1.0, 16000), 16000));
    QVERIFY(WavFiles::write(path("long.wav"), WavFiles::sine(440, 0.5, 60.0, 16000), 16000));
    run({"files", "add", "tone.wav"});
    run({"files", "add", "long.wav"});
    run({"devices", "add", "Gate", "10.0.0.5", "554"});
    run({"devices", "add", "Dock", "10.0.0.6", "554"});
    run({"groups", "add", "Yard", "--devices", "1,2"});
    const ProgramRun played = run({"play", "--device", "1", "--file", "1"});
    QVERIFY2(played.status == 0, qPrintable(played.err));
    QCOMPARE(played.err, QString("100 %\n")); // one line where nothing can be overwritten
    QCOMPARE(run({"play", "--group", "1", "--file", "1"}).status, 0);
    QVERIFY(WavFiles::read(path("recordings/speaker-2-1.wav")).size() >= 16000);
    QProcess longPlay;
    longPlay.setWorkingDirectory(m_folder->path());
    longPlay.start(program, QStringList{"play", "--group", "1", "--file", "2"} + m_serverArguments);
    const auto size = [this] { return WavFiles::read(path("recordings/speaker-1-1.wav")).size(); };
    const auto before = size();
    QTRY_VERIFY_WITH_TIMEOUT(size() > before + 8000, 20000);
    QCOMPARE(run({"stop", "--group", "1"}).status, 0);
    QVERIFY(longPlay.waitForFinished(20000));
    QCOMPARE(longPlay.exitCode(), 4); // the server says at once that it was stopped
    QVERIFY(longPlay.readAllStandardError().contains("the playback was stopped"));
    QCOMPARE(run({"stop", "--device", "9"}).status, 4);
    QCOMPARE(run({"play", "--device", "1", "--file", "9"}).status, 4);
}

void TestRecordCommands::offlineSpeaker()
{
    startServer("ws", {"--offline", "10.0.0.66"});
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(440, 0.5, 0.5, 16000), 16000));
    run({"files", "add", "tone.wav"});
    run({"devices", "add", "Gate", "10.0.0.66", "554"});
    const ProgramRun played = run({"play", "--device", "1", "--file", "1"});
    QCOMPARE(played.status, 4);
    QVERIFY2(played.err.contains("offline"), qPrintable(played.err));
    const ProgramRun said = run({"say", "--device", "1", "--source", "tone.wav"});
    QCOMPARE(said.status, 4);
    QVERIFY(said.err.contains("\"Gate\" is offline"));
    // One of a group: the others play, and the status says that not all did.
    run({"devices", "add", "Dock", "10.0.0.6", "554"});
    run({"groups", "add", "Yard", "--devices", "1,2"});
    const ProgramRun group = run({"play", "--group", "Yard", "--file", "1"});
    QCOMPARE(group.status, 4);
    QVERIFY2(group.err.contains("Gate: the device is offline") && group.err.contains("100 %"),
             qPrintable(group.err));
}

void TestRecordCommands::sayToSpeakers()
{
    QFETCH(QString, server);
    startServer(server);
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(700, 0.5, 1.5, 8000), 8000));
    run({"devices", "add", "Gate", "10.0.0.5", "554"});
    run({"devices", "add", "Dock", "10.0.0.6", "554"});
    const ProgramRun said = run({"say", "--device", "1,2", "--source", "tone.wav"});
    QVERIFY2(said.status == 0, qPrintable(said.err));
    if (server.isEmpty()) {
        // The next server's recording is another one.
        QCOMPARE(run({"say", "--device", "1", "--source", "tone.wav", "--seconds", "0.5"}).status, 0);
        QVERIFY(QFile::exists(path("recordings/speaker-1-2.wav")));
    }
    for (const char* recording : {"recordings/speaker-1-1.wav", "recordings/speaker-2-1.wav"}) {
        auto heard = WavFiles::read(path(recording));
        const auto isLoud = [](std::int16_t sample) { return std::abs(sample) > 1000; };
        heard.erase(heard.begin(), std::find_if(heard.begin(), heard.end(), isLoud));
        QVERIFY2(heard.size() > 20000, recording);
        QVERIFY(std::abs(SignalMeasure::medianFrequency(
                             WavFiles::Samples(heard.begin(), heard.begin() + 16000), 16000) -
                         700) < 5);
    }
}

void TestRecordCommands::serverThatCannotStart()
{
    QVERIFY(QDir(m_folder->path()).mkpath("data/records.sqlite")); // a folder in the database's place
    const ProgramRun embedded = run({"devices", "list"});
    QCOMPARE(embedded.status, 8);
    QVERIFY(!embedded.err.isEmpty());
    const ProgramRun alone = run({"serve", "--listen", "127.0.0.1:0", "--add-user", "anna"});
    QCOMPARE(alone.status, 8);
}

void TestRecordCommands::oneServerForADataFolder_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("another server") << QStringList{"serve", "--listen", "127.0.0.1:0", "--add-user", "bert"};
    QTest::newRow("a list") << QStringList{"devices", "list"};
    QTest::newRow("a change") << QStringList{"devices", "add", "Dock", "10.0.0.6", "554"};
    QTest::newRow("a talk") << QStringList{"say", "--device", "1", "--source", ANNOUNCEMENT_WAV};
}

void TestRecordCommands::oneServerForADataFolder()
{
    QFETCH(QStringList, arguments);
    startServer("ws");
    QCOMPARE(run({"devices", "add", "Gate", "10.0.0.5", "554"}).status, 0);
    // However long it has been running.
    QFile lock(path("data/server.lock"));
    QVERIFY(lock.open(QIODevice::ReadWrite));
    QVERIFY(lock.setFileTime(QDateTime::currentDateTime().addYears(-1), QFileDevice::FileModificationTime));
    lock.close();
    const auto state = [this] {
        QStringList entries;
        for (const QFileInfo& entry : QDir(path("data")).entryInfoList(QDir::Files)) {
            entries += QStringLiteral("%1 %2 %3")
                           .arg(entry.fileName())
                           .arg(entry.size())
                           .arg(entry.lastModified().toMSecsSinceEpoch());
        }
        return entries;
    };
    const QStringList before = state();
    const ProgramRun second = run(arguments + QStringList{"--data", "data"}, false);
    QCOMPARE(second.status, 8);
    const QString holder = QStringLiteral("in use by voicedesk (process %1 on %2)")
                               .arg(m_server->processId())
                               .arg(QSysInfo::machineHostName());
    QVERIFY2(second.err.contains(holder), qPrintable(second.err));
    QCOMPARE(state(), before);
    QCOMPARE(run({"devices", "list", "--json"}).json().size(), 1); // the first one goes on
}

void TestRecordCommands::killedServerKeepsNobodyOut()
{
    startServer("ws");
    QCOMPARE(run({"devices", "add", "Gate", "10.0.0.5", "554"}).status, 0);
    m_server->kill();
    QVERIFY(m_server->waitForFinished());
    m_server.reset();
    QVERIFY(QFile::exists(path("data/server.lock")));
    const ProgramRun list = run({"devices", "list", "--json", "--data", "data"}, false);
    QVERIFY2(list.status == 0, qPrintable(list.err));
    QCOMPARE(list.json().size(), 1);
    QVERIFY(!QFile::exists(path("data/server.lock"))); // it ended by itself
}

void TestRecordCommands::userOnAFullDisk()
{
    if (!FullDisk::possible) {
        QSKIP("Needs a limit of a file's size.");
    }
    QCOMPARE(run({"devices", "list"}).status, 0);
    QFile users(path("data/users"));
    QVERIFY(users.open(QIODevice::WriteOnly));
    for (int i = 0; i < 4000; ++i) {
        users.write(QStringLiteral("user%1 $argon2id$v=19$m=65536,t=2,p=1$c2FsdA$aGFzaA\n").arg(i).toUtf8());
    }
    users.close();
    const qint64 size = users.size();
    // The records have room, the users, one more than before, have not.
    const FullDisk disk(static_cast<unsigned long>(size) + 20);
    const ProgramRun result =
        run({"serve", "--listen", "127.0.0.1:0", "--add-user", "anna", "--data", "data"}, false);
    QCOMPARE(result.status, 8);
    QVERIFY2(result.err.contains(path("data/users") + " cannot be written: "), qPrintable(result.err));
    QCOMPARE(users.size(), size);
}

void TestRecordCommands::serverWithoutUsers()
{
    const ProgramRun result = run({"serve", "--listen", "127.0.0.1:0"});
    QCOMPARE(result.status, 1);
    QVERIFY(result.err.contains("--add-user"));
}

void TestRecordCommands::wrongSecret()
{
    startServer("ws");
    qputenv("VOICEDESK_SECRET", "wrong");
    const ProgramRun result = run({"devices", "list"});
    qputenv("VOICEDESK_SECRET", "right");
    QCOMPARE(result.status, 4);
    QVERIFY(result.err.contains("password"));
}

void TestRecordCommands::fingerprints()
{
    startServer("wss");
    const QString right = m_serverArguments.takeLast();
    QString withColons = right.toUpper();
    for (int at = withColons.size() - 2; at > 0; at -= 2) {
        withColons.insert(at, ':');
    }
    const ProgramRun accepted =
        run(QStringList{"devices", "list", "--fingerprint", withColons, "--user", "anna"} +
                m_serverArguments.mid(0, 2),
            false);
    QVERIFY2(accepted.status == 0, qPrintable(accepted.err));
    const QString wrong(64, 'a');
    const ProgramRun refused =
        run(QStringList{"devices", "list"} + m_serverArguments + QStringList{wrong}, false);
    QCOMPARE(refused.status, 5);
    QVERIFY2(refused.err.contains(right) && refused.err.contains(wrong), qPrintable(refused.err));
}

void TestRecordCommands::serverIsKilledUnderLoad()
{
    // Again and again the server dies in the middle of its work; what it confirmed is there when it comes
    // back.
    QSet<QString> confirmed;
    int number = 0;
    for (int round = 0; round < 6; ++round) {
        startServer("ws");
        std::vector<std::unique_ptr<QProcess>> clients;
        QStringList names;
        for (int i = 0; i < 6; ++i) {
            names.append(QStringLiteral("device-%1").arg(++number));
            clients.push_back(std::make_unique<QProcess>());
            clients.back()->start(
                program, QStringList{"devices", "add", names.last(), "10.0.0.5", "554", "--timeout", "60"} +
                             m_serverArguments);
        }
        // Kill at a different moment each time: after so many confirmations.
        QElapsedTimer clock;
        clock.start();
        const auto confirmations = [&] {
            int count = 0;
            for (const auto& client : clients) {
                count += client->state() == QProcess::NotRunning && client->exitCode() == 0 ? 1 : 0;
            }
            return count;
        };
        QVERIFY(QTest::qWaitFor([&] { return confirmations() >= round; }, 30000));
        m_server->kill();
        m_server->waitForFinished();
        for (int i = 0; i < 6; ++i) {
            QProcess& client = *clients[static_cast<std::size_t>(i)];
            QVERIFY(client.state() == QProcess::NotRunning || client.waitForFinished(30000));
            if (client.exitCode() == 0) {
                confirmed.insert(names[i]);
            }
        }
    }
    startServer("ws");
    const QJsonArray devices = run({"devices", "list", "--json"}).json();
    QSet<QString> kept;
    for (const auto& device : devices) {
        kept.insert(device.toObject()["name"].toString());
    }
    QVERIFY(!confirmed.isEmpty());
    QVERIFY2(kept.contains(confirmed), qPrintable(QStringList((confirmed - kept).values()).join(' ')));
}

QTEST_GUILESS_MAIN(TestRecordCommands)
#include "tst_recordcommands.moc"
