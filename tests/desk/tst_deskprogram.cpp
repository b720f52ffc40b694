// The program itself, in a process of its own, by the keys of a real display.

#include "tests/desk/QmlComplaints.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PulseServer.h"
#include "tests/support/VirtualDisplay.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
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
    void rendererWithoutGraphics_data();
    void rendererWithoutGraphics();
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

    /** Presses keys; returns whether the screen has changed after a while, and has come to rest. */
    static bool keysChangeTheScreen(const QStringList& names);
    /** Returns whether a program has a file open. */
    static bool hasOpen(const QProcess& program, const QString& path);

    /** Returns the names of a program's threads. */
    static QStringList threadsOf(const QProcess& program);

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

bool TestDeskProgram::keysChangeTheScreen(const QStringList& names)
{
    const auto screen = [] { return QGuiApplication::primaryScreen()->grabWindow(0).toImage(); };
    const QImage before = screen();
    keys(names);
    QImage last = before;
    return QTest::qWaitFor(
        [&] {
            const QImage now = screen();
            const bool atRest = now == last && now != before;
            last = now;
            return atRest;
        },
        20000);
}

bool TestDeskProgram::hasOpen(const QProcess& program, const QString& path)
{
    const QDir open(QStringLiteral("/proc/%1/fd").arg(program.processId()));
    const QFileInfoList files = open.entryInfoList(QDir::Files | QDir::System);
    const QString file = QFileInfo(path).canonicalFilePath();
    return std::any_of(files.begin(), files.end(),
                       [&](const QFileInfo& each) { return each.symLinkTarget() == file; });
}

QStringList TestDeskProgram::threadsOf(const QProcess& program)
{
    QStringList names;
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(program.processId()));
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(tasks.filePath(task + "/comm"));
        if (name.open(QIODevice::ReadOnly)) {
            names.append(QString::fromLatin1(name.readAll()).trimmed());
        }
    }
    return names;
}

std::unique_ptr<QProcess> TestDeskProgram::start(const QStringList& options, const char* data)
{
    auto program = std::make_unique<ChildProcess>();
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
    const QString recording = recordings.filePath(recordings.entryList({"camera-1*.wav"}).first());
    QVERIFY(hasOpen(*program, recording));
    xdotool({"keyup", "space"});
    QTRY_VERIFY_WITH_TIMEOUT(!hasOpen(*program, recording), 20000); // the talk is over
    QCOMPARE(program->state(), QProcess::Running);
    end(*program);
}

void TestDeskProgram::recordsOutliveTheProgram()
{
    auto program = start();
    QVERIFY(program);
    QVERIFY(keysChangeTheScreen({"ctrl+3"}));
    QVERIFY(keysChangeTheScreen({"ctrl+n"})); // the dialog is there
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

void TestDeskProgram::rendererWithoutGraphics_data()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("threaded");
    QTest::newRow("OpenGL by the processor") << QByteArray() << QByteArray() << false;
    QTest::newRow("no OpenGL") << QByteArray("QT_XCB_GL_INTEGRATION") << QByteArray("none") << false;
#ifndef __SANITIZE_THREAD__ // which cannot follow the threads of the system's OpenGL
    QTest::newRow("Qt's choice") << QByteArray("QT_QUICK_BACKEND") << QByteArray("") << true;
    QTest::newRow("another interface") << QByteArray("QSG_RHI") << QByteArray("1") << true;
#endif
}

void TestDeskProgram::rendererWithoutGraphics()
{
    QFETCH(QByteArray, variable);
    QFETCH(QByteArray, value);
    QFETCH(bool, threaded);
    const QByteArray before = qgetenv("QT_QUICK_BACKEND");
    qunsetenv("QT_QUICK_BACKEND");
    if (!variable.isEmpty()) {
        qputenv(variable.constData(), value);
    }
    const auto program = start();
    if (!variable.isEmpty()) {
        qunsetenv(variable.constData());
    }
    qputenv("QT_QUICK_BACKEND", before);
    QVERIFY(program);
    // OpenGL has a thread of its own for drawing, the software renderer none.
    QVERIFY(keysChangeTheScreen({"ctrl+3"}));
    QCOMPARE(threadsOf(*program).contains("QSGRenderThread"), threaded);
    end(*program);
}

void TestDeskProgram::wrongUsage_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("unknown") << QStringList{"--colour"} << 1 << QByteArray();
    QTest::newRow("argument") << QStringList{"talk"} << 1 << QByteArray();
    QTest::newRow("secret of no server") << QStringList{"--secret-file", "/dev/null"} << 1
                                         << QByteArray("--secret-file is for another server");
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
    const QGuiApplication application(argc, argv);
    TestDeskProgram test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_deskprogram.moc"
