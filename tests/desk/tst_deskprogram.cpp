// The program itself, in a process of its own, by the keys of a real display.

#include "tests/desk/QmlComplaints.h"
#include "tests/support/PulseServer.h"
#include "tests/support/VirtualDisplay.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

class TestDeskProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void talkByKeys();
    void recordsOutliveTheProgram();
    void fileIsChosen();
    void soundWaitsInAShortQueue();
    void wrongUsage_data();
    void wrongUsage();
    void help();

private:
    /** Starts the program and waits for its window. */
    /** @param data the folder of the records */
    std::unique_ptr<QProcess> start(const QStringList& options = {}, const char* data = "data");
    /** Ends the program; fails when its QML has complained. */
    static void end(QProcess& program);
    static QByteArray xdotool(const QStringList& arguments);
    static void keys(const QStringList& names) { xdotool(QStringList{"key", "--delay", "60"} + names); }

    /** The texts of a query on the records while the program has them open. */
    QStringList stored(const char* query) const;

    QTemporaryDir m_folder;
    std::unique_ptr<PulseServer> m_pulse;
};

void TestDeskProgram::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY(m_pulse->ready());
}

QStringList TestDeskProgram::stored(const char* query) const
{
    QStringList texts;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "records");
        database.setDatabaseName(m_folder.filePath("data/records.sqlite"));
        database.setConnectOptions("QSQLITE_OPEN_READONLY");
        database.open();
        QSqlQuery rows(database);
        rows.exec(QString::fromLatin1(query));
        while (rows.next()) {
            texts.append(rows.value(0).toString());
        }
    }
    QSqlDatabase::removeDatabase("records");
    return texts;
}

QByteArray TestDeskProgram::xdotool(const QStringList& arguments)
{
    QProcess process;
    process.start("xdotool", arguments);
    if (!process.waitForFinished(20000)) {
        process.kill();
        process.waitForFinished();
    }
    return process.readAllStandardOutput().trimmed();
}

std::unique_ptr<QProcess> TestDeskProgram::start(const QStringList& options, const char* data)
{
    auto program = std::make_unique<QProcess>();
    program->setProcessChannelMode(QProcess::ForwardedOutputChannel);
    program->start(PROGRAM_DIR "/voicedesk-desk",
                   QStringList{"--simulate", "--data", m_folder.filePath(data), "--output",
                               m_folder.filePath("recordings"), "--source", ANNOUNCEMENT_WAV} +
                       options);
    const QByteArray window =
        xdotool({"search", "--sync", "--onlyvisible", "--name", "VoiceDesk"}).split('\n').last();
    if (window.isEmpty()) {
        return nullptr;
    }
    xdotool({"windowfocus", "--sync", QString::fromLatin1(window)});
    return program;
}

void TestDeskProgram::end(QProcess& program)
{
    program.terminate();
    QVERIFY(program.waitForFinished(20000));
    const QByteArray errors = program.readAllStandardError();
    std::fputs(errors.constData(), stderr);
    QStringList complaints = QString::fromUtf8(errors).split('\n');
    complaints.erase(std::remove_if(complaints.begin(), complaints.end(),
                                    [](const QString& line) { return !QmlComplaints::isOne(line); }),
                     complaints.end());
    QCOMPARE(complaints, QStringList());
}

void TestDeskProgram::talkByKeys()
{
    const auto program = start();
    QVERIFY(program);
    keys({"ctrl+f"});
    xdotool({"type", "--delay", "40", "front"});
    keys({"Down", "Return"});
    xdotool({"keydown", "space"});
    const QDir recordings(m_folder.filePath("recordings"));
    const auto recorded = [&] {
        const QStringList files = recordings.entryList({"camera-1*.wav"}, QDir::Files);
        const auto heard =
            files.isEmpty() ? WavFiles::Samples() : WavFiles::read(recordings.filePath(files.first()));
        return std::any_of(heard.begin(), heard.end(),
                           [](std::int16_t sample) { return std::abs(sample) > 3000; });
    };
    QTRY_VERIFY_WITH_TIMEOUT(recorded(), 20000);
    xdotool({"keyup", "space"});
    QTest::qWait(1000);
    const auto size = [&] {
        return QFileInfo(recordings.filePath(recordings.entryList({"camera-1*.wav"}).first())).size();
    };
    const qint64 ended = size();
    QTest::qWait(500);
    QCOMPARE(size(), ended); // the talk is over
    QCOMPARE(program->state(), QProcess::Running);
    end(*program);
}

void TestDeskProgram::recordsOutliveTheProgram()
{
    auto program = start();
    QVERIFY(program);
    keys({"ctrl+3", "ctrl+n"});
    QTest::qWait(600); // the dialog comes up
    xdotool({"type", "--delay", "40", "Hall"});
    keys({"Tab"});
    xdotool({"type", "--delay", "40", "10.0.0.7"});
    keys({"Return"});
    QTRY_COMPARE_WITH_TIMEOUT(stored("SELECT ip FROM devices"), QStringList{"10.0.0.7"}, 20000);
    end(*program);
    // Not before: the data folder is the running program's.
    QProcess list;
    list.start(PROGRAM_DIR "/voicedesk", {"devices", "list", "--data", m_folder.filePath("data")});
    QVERIFY(list.waitForFinished(20000));
    const QByteArray devices = list.readAllStandardOutput();
    QVERIFY2(devices.contains("10.0.0.7") && devices.contains("Hall"), devices.constData());
}

void TestDeskProgram::fileIsChosen()
{
    const auto program = start();
    QVERIFY(program);
    keys({"ctrl+4", "ctrl+n"});
    const QByteArray dialog =
        xdotool({"search", "--sync", "--onlyvisible", "--name", "Send audio files to the server"});
    QVERIFY(!dialog.isEmpty());
    xdotool({"windowfocus", "--sync", QString::fromLatin1(dialog.split('\n').last())});
    xdotool({"type", "--delay", "20", ANNOUNCEMENT_WAV});
    keys({"Return"});
    QTRY_COMPARE_WITH_TIMEOUT(stored("SELECT name FROM files"), QStringList{"announcement.wav"}, 20000);
    end(*program);
}

void TestDeskProgram::soundWaitsInAShortQueue()
{
    const QStringList ownData{"--data", m_folder.filePath("aloud")};
    QCOMPARE(QProcess::execute(PROGRAM_DIR "/voicedesk",
                               QStringList{"devices", "add", "Hall", "10.0.0.7", "554"} + ownData),
             0);
    qunsetenv("PULSE_LATENCY_MSEC"); // which the program leaves as the user has set it
    const auto program = start({"--aloud"}, "aloud");
    QVERIFY(program);
    keys({"ctrl+f"});
    xdotool({"type", "--delay", "40", "Hall"});
    keys({"Down", "Return"});
    xdotool({"keydown", "space"});
    // As the sound server sees it, several times: a queue is short while it fills.
    const QRegularExpression queued("Buffer Latency: ([1-9][0-9]*) usec");
    int longest = 0; // us
    int looks = 0;
    const auto enoughLooks = [&] {
        const auto match = queued.match(QString::fromLatin1(m_pulse->control({"list", "sink-inputs"})));
        longest = std::max(longest, match.captured(1).toInt());
        looks += match.hasMatch() ? 1 : 0;
        return looks >= 20;
    };
    QTRY_VERIFY_WITH_TIMEOUT(enoughLooks(), 20000);
    xdotool({"keyup", "space"});
    end(*program);
    QVERIFY2(longest <= 100000, qPrintable(QString::number(longest)));
}

void TestDeskProgram::wrongUsage_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("unknown") << QStringList{"--colour"} << 1 << QByteArray();
    QTest::newRow("argument") << QStringList{"talk"} << 1 << QByteArray();
    QTest::newRow("server") << QStringList{"--server", "http://nowhere"} << 1 << QByteArray();
    // Qt has an option of this name, too.
    QTest::newRow("plug-in") << QStringList{"--plugin", "/nonexistent", "--data", m_folder.filePath("none")}
                             << 2 << QByteArray("the plug-in does not load");
    QTest::newRow("source") << QStringList{"--source", "/nonexistent"} << 3
                            << QByteArray("/nonexistent is not a sound file that can be read");
}

void TestDeskProgram::wrongUsage()
{
    QFETCH(QStringList, options);
    QFETCH(int, status);
    QFETCH(QByteArray, message);
    QProcess program;
    program.start(PROGRAM_DIR "/voicedesk-desk", options);
    QVERIFY(program.waitForFinished(20000));
    QCOMPARE(program.exitCode(), status);
    const QByteArray errors = program.readAllStandardError();
    QVERIFY2(errors.contains("voicedesk-desk: " + message), errors.constData());
}

void TestDeskProgram::help()
{
    QProcess program;
    program.start(PROGRAM_DIR "/voicedesk-desk", {"--help"});
    QVERIFY(program.waitForFinished(20000));
    QCOMPARE(program.exitCode(), 0);
    QVERIFY(program.readAllStandardOutput().contains("--server"));
}

int main(int argc, char** argv)
{
    const VirtualDisplay display(1400, 900);
    if (!display.ready()) {
        qFatal("Xvfb does not start. Is the package xvfb installed?");
    }
    QCoreApplication application(argc, argv);
    TestDeskProgram test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_deskprogram.moc"
