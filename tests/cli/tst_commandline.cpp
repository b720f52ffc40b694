// What the program says of itself and what it refuses: the same for every command.

#include "tests/support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

class TestCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void generalHelp();
    void everyCommandIsDocumented();
    void helpOfEveryCommand();
    void helpOfAGroup();
    void serveHasNoClientOptions();
    void refusals_data();
    void refusals();
    void talkElsewhereWritesWhatIsHeard();
    void optionsBeforeTheVerb();
    void fullOutput_data();
    void fullOutput();
    void oneDecimalSign();

private:
    ProgramRun run(const QStringList& arguments) const
    {
        return ProgramRun::of("voicedesk", m_folder.path(), arguments);
    }
    /** The commands that the general help lists. */
    QStringList commands() const;
    /** The rows of all commands in docs/COMMANDS.md: the cells of each. */
    static QList<QStringList> documented();

    QTemporaryDir m_folder;
};

QStringList TestCommandLine::commands() const
{
    QStringList names;
    auto lines = QRegularExpression(QStringLiteral("^  ([a-z]+(?: [a-z]+)?)  +[a-z]"),
                                    QRegularExpression::MultilineOption)
                     .globalMatch(run({QStringLiteral("--help")}).out);
    while (lines.hasNext()) {
        names.append(lines.next().captured(1));
    }
    return names;
}

QList<QStringList> TestCommandLine::documented()
{
    QFile file(QStringLiteral(PROJECT_FOLDER "/docs/COMMANDS.md"));
    QList<QStringList> rows;
    if (!file.open(QIODevice::ReadOnly)) {
        return rows;
    }
    const QString head = "| Command | What it does | Server | JSON |\n|---|---|---|---|\n";
    for (const QString& line : QString::fromUtf8(file.readAll()).section(head, 1, 1).split('\n')) {
        if (!line.startsWith('|')) {
            break;
        }
        rows.append(line.mid(2, line.size() - 4).split(" | "));
    }
    return rows;
}

void TestCommandLine::generalHelp()
{
    const ProgramRun help = run({"--help"});
    QCOMPARE(help.status, 0);
    QVERIFY(help.out.contains("Usage: voicedesk COMMAND [options] OPERANDS"));
    QVERIFY(help.out.contains("Exit status:"));
    QCOMPARE(run({"help"}).out, help.out);
    const ProgramRun nothing = run({});
    QCOMPARE(nothing.status, 1);
    QCOMPARE(nothing.err, help.out);
    QCOMPARE(run({"--version"}).status, 0);
    for (const char* command :
         {"talk", "cameras", "devices update", "schedules enable", "microphones", "serve"}) {
        QVERIFY2(commands().contains(command), command);
    }
}

void TestCommandLine::everyCommandIsDocumented()
{
    const QStringList all = commands();
    QStringList names;
    const QString list = run({"--help"}).out;
    for (const QStringList& row : documented()) {
        QCOMPARE(row.size(), 4);
        const QString name = row[0].mid(1, row[0].size() - 2);
        names.append(name);
        QVERIFY2(list.contains(
                     QRegularExpression("\n  " + name + " +" + QRegularExpression::escape(row[1]) + "\n")),
                 qPrintable(row.join(", ")));
        const QString help = run(QStringList{"help"} + name.split(' ')).out;
        QVERIFY2((row[2] == "yes") == help.contains("--server") && (row[2] == "yes" || row[2] == "no"),
                 qPrintable(name));
        QVERIFY2((row[3] != "no") == help.contains("--json"), qPrintable(name));
    }
    QCOMPARE(names, all);
}

void TestCommandLine::helpOfEveryCommand()
{
    const QStringList all = commands();
    QVERIFY(all.size() > 20);
    for (const QString& command : all) {
        const ProgramRun help = run(command.split(' ') + QStringList{"--help"});
        QCOMPARE(help.status, 0);
        QVERIFY2(help.out.startsWith("Usage: voicedesk " + command + " [options]"), qPrintable(help.out));
        QCOMPARE(run(QStringList{"help"} + command.split(' ')).out, help.out);
        const ProgramRun unknown = run(command.split(' ') + QStringList{"--loud"});
        QCOMPARE(unknown.status, 1);
        QVERIFY2(unknown.err.contains("loud"), qPrintable(unknown.err));
        const ProgramRun surplus = run(command.split(' ') + QStringList{"1", "2", "3", "4", "surplus"});
        QCOMPARE(surplus.status, 1);
        QVERIFY2(surplus.err.contains("is one word too many"), qPrintable(surplus.err));
    }
    QCOMPARE(run({"help", "shout"}).status, 1);
}

void TestCommandLine::helpOfAGroup()
{
    const ProgramRun help = run({"schedules", "--help"});
    QCOMPARE(help.status, 0);
    QVERIFY(help.out.contains("schedules disable"));
    QVERIFY(!help.out.contains("devices"));
    QCOMPARE(run({"help", "schedules"}).out, help.out);
}

void TestCommandLine::serveHasNoClientOptions()
{
    const QString help = run({"serve", "--help"}).out;
    for (const char* option : {"--server", "--user ", "--fingerprint", "--timeout", "--plugin", "--json"}) {
        QVERIFY2(!help.contains(option), option);
    }
    QVERIFY(help.contains("--data") && help.contains("--listen"));
    QCOMPARE(run({"serve", "--json"}).status, 1);
}

void TestCommandLine::refusals_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named");
    QTest::newRow("unknown command") << QStringList{"shout"} << "\"shout\" is not a command";
    QTest::newRow("no verb") << QStringList{"devices"} << "list, add, update, delete";
    QTest::newRow("unknown verb") << QStringList{"devices", "paint"} << "\"devices paint\"";
    QTest::newRow("too few words") << QStringList{"devices", "add", "x"} << "ADDRESS is missing";
    QTest::newRow("surplus word") << QStringList{"play", "--file", "2", "--device", "2", "extra"}
                                  << "\"extra\"";
    QTest::newRow("surplus word of talk") << QStringList{"talk", "now"} << "\"now\"";
    QTest::newRow("empty word") << QStringList{"groups", "add", ""} << "NAME is empty";
    QTest::newRow("port") << QStringList{"devices", "add", "x", "10.0.0.1", "http"} << "\"http\" is no port";
    QTest::newRow("option of another command") << QStringList{"cameras", "--tls"} << "'tls'";
    QTest::newRow("interface") << QStringList{"cameras", "find", "--interface", "nowhere7"} << "--interface";
    QTest::newRow("search of no time") << QStringList{"cameras", "find", "--seconds", "0"} << "--seconds";
    QTest::newRow("no camera") << QStringList{"cameras", "ask"} << "ADDRESS is missing";
    QTest::newRow("a stream") << QStringList{"cameras", "ask", "rtsp://10.0.0.5/live"} << "host:port";
    QTest::newRow("empty entry") << QStringList{"groups", "add", "x", "--devices", "1,,2"} << "--devices";
    QTest::newRow("play nothing") << QStringList{"play", "--device", "1"} << "--file";
    QTest::newRow("play on both") << QStringList{"play", "--file", "1", "--device", "1", "--group", "1"}
                                  << "either --device or --group";
    QTest::newRow("say to nobody") << QStringList{"say", "--mic"} << "--device";
    QTest::newRow("say nothing") << QStringList{"say", "--device", "1"} << "--source";
    QTest::newRow("server") << QStringList{"devices", "list", "--server", "http://x"} << "--server";
    QTest::newRow("timeout") << QStringList{"devices", "list", "--timeout", "0"} << "--timeout";
    QTest::newRow("timeout of talk") << QStringList{"talk", "--timeout", "nan"} << "--timeout";
    QTest::newRow("listen") << QStringList{"serve", "--listen", "here"} << "--listen";
    QTest::newRow("data") << QStringList{"devices", "list", "--data", ""} << "--data is empty";
    QTest::newRow("data of a server") << QStringList{"serve", "--data="} << "--data is empty";
    QTest::newRow("data of a talk") << QStringList{"talk", "--data", ""} << "--data is empty";
    QTest::newRow("source") << QStringList{"talk", "--source", ""} << "--source is empty";
    QTest::newRow("source of say") << QStringList{"say", "--device", "1", "--source="} << "--source is empty";
    QTest::newRow("heard") << QStringList{"talk", "--heard", ""} << "--heard is empty";
    QTest::newRow("empty secret file")
        << QStringList{"devices", "list", "--secret-file", ""} << "--secret-file is empty";
    QTest::newRow("secret file") << QStringList{"devices", "list", "--secret-file", "/nonexistent"}
                                 << "/nonexistent";
    QTest::newRow("bad seconds") << QStringList{"talk", "--seconds", "soon"} << "--seconds";
    QTest::newRow("no seconds") << QStringList{"talk", "--seconds", "0"} << "--seconds";
    QTest::newRow("bad volume") << QStringList{"talk", "--volume", "101"} << "--volume";
    QTest::newRow("two sources") << QStringList{"talk", "--mic", "--source", "x.wav"} << "--source and --mic";
    QTest::newRow("unknown codec") << QStringList{"talk", "--codec", "mp3"} << "--codec";
    QTest::newRow("another server's cameras")
        << QStringList{"talk", "--server", "ws://127.0.0.1:1", "--codec", "aac"} << "--codec";
    QTest::newRow("nothing to change") << QStringList{"groups", "update", "1"} << "nothing is named";
    QTest::newRow("no device to change") << QStringList{"devices", "update", "1"} << "nothing is named";
    QTest::newRow("no schedule to change") << QStringList{"schedules", "update", "1"} << "nothing is named";
    QTest::newRow("option twice") << QStringList{"groups", "add", "x", "--devices", "1", "--devices", "2"}
                                  << "--devices is given more than once";
    QTest::newRow("shared option twice")
        << QStringList{"devices", "list", "--data", "a", "--data=b"} << "--data is given more than once";
    QTest::newRow("user of no server")
        << QStringList{"devices", "delete", "1", "--user", "anna"} << "--user is for another server";
    QTest::newRow("secret of no server") << QStringList{"devices", "list", "--secret-file", ANNOUNCEMENT_WAV}
                                         << "--secret-file is for another server";
    QTest::newRow("fingerprint of no server")
        << QStringList{"devices", "list", "--fingerprint", QString(64, 'a')}
        << "--fingerprint is for another";
    const QStringList elsewhere{"devices", "list", "--server", "ws://127.0.0.1:1"};
    QTest::newRow("data of another server")
        << elsewhere + QStringList{"--data", "here"} << "--server and --data exclude";
    QTest::newRow("output of another server")
        << elsewhere + QStringList{"--output", "here"} << "--server and --output exclude";
    QTest::newRow("simulation of another server")
        << elsewhere + QStringList{"--simulate"} << "--server and --simulate exclude";
    QTest::newRow("data of a talk elsewhere")
        << QStringList{"talk", "--server", "ws://127.0.0.1:1", "--data", "x"}
        << "--server and --data exclude";
    QTest::newRow("malformed fingerprint")
        << elsewhere + QStringList{"--fingerprint", QString(63, 'a')} << "--fingerprint takes the 64";
    QTest::newRow("long fingerprint")
        << elsewhere + QStringList{"--fingerprint", QString(65, 'a')} << "--fingerprint takes the 64";
    QTest::newRow("name of a user") << QStringList{"serve", "--add-user", "anna b"}
                                    << "a name without blanks, not \"anna b\"";
    QTest::newRow("a user with the token's name")
        << QStringList{"serve", "--add-user", "token"} << "no user named \"token\"";
    QTest::newRow("local file") << QStringList{"play", "--device", "1", "--file", "./nope.wav"}
                                << "./nope.wav is not a file that can be read";
    QTest::newRow("address twice") << QStringList{"devices",  "update",    "1",       "x",
                                                  "10.0.0.1", "--address", "10.0.0.2"}
                                   << "twice";
}

void TestCommandLine::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);
    const ProgramRun result = run(arguments);
    QCOMPARE(result.status, 1);
    QVERIFY2(result.err.startsWith("voicedesk: ") && result.err.contains(named), qPrintable(result.err));
    QCOMPARE(result.out, QString());
    QVERIFY(!QFile::exists(m_folder.filePath("records.sqlite"))); // the current folder is not the data folder
}

void TestCommandLine::talkElsewhereWritesWhatIsHeard()
{
    // The output is the command's own here: the connection fails, not the option.
    const ProgramRun result =
        run({"talk", "--server", "ws://127.0.0.1:1", "--output", "heard", "--source", ANNOUNCEMENT_WAV});
    QVERIFY2(result.status == 5, qPrintable(result.err));
}

void TestCommandLine::optionsBeforeTheVerb()
{
    const ProgramRun list = run({"groups", "--data", "list", "--json", "list"});
    QVERIFY2(list.status == 0, qPrintable(list.err));
    QCOMPARE(list.json().size(), 0);
    QVERIFY(QFile::exists(m_folder.filePath("list/records.sqlite")));
}

void TestCommandLine::fullOutput_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("help") << QStringList{"--help"};
    QTest::newRow("a list") << QStringList{"devices", "list", "--json", "--data", "full"};
    QTest::newRow("cameras") << QStringList{"cameras"};
    QTest::newRow("a server") << QStringList{"serve", "--listen",   "127.0.0.1:0", "--data",
                                             "full",  "--add-user", "anna"};
}

void TestCommandLine::fullOutput()
{
    if (!QFile::exists("/dev/full")) {
        QSKIP("Needs /dev/full.");
    }
    QFETCH(QStringList, arguments);
    QProcess program;
    program.setWorkingDirectory(m_folder.path());
    program.setStandardOutputFile("/dev/full");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("VOICEDESK_SECRET", "password");
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(PROGRAM_DIR "/voicedesk"), arguments);
    const ProgramRun result = ProgramRun::toTheEnd(program, 30000);
    QCOMPARE(result.status, 9);
    QVERIFY2(result.err.contains("the output cannot be written"), qPrintable(result.err));
}

void TestCommandLine::oneDecimalSign()
{
    QProcess localedef;
    localedef.start("localedef", {"-i", "de_DE", "-f", "UTF-8", m_folder.filePath("de_DE.UTF-8")});
    if (!localedef.waitForFinished() || !QFile::exists(m_folder.filePath("de_DE.UTF-8/LC_NUMERIC"))) {
        QSKIP("Needs the sources of a German locale.");
    }
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LOCPATH", m_folder.path());
    environment.insert("LC_ALL", "de_DE.UTF-8");
    environment.insert("ASAN_OPTIONS", "detect_leaks=0"); // the C library keeps what it made of LOCPATH
    program.setProcessEnvironment(environment);
    program.setWorkingDirectory(m_folder.path());
    program.start(QStringLiteral(PROGRAM_DIR "/voicedesk"),
                  {"talk", "--source", ANNOUNCEMENT_WAV, "--seconds", "0.5", "--output", "out"});
    const ProgramRun result = ProgramRun::toTheEnd(program, 30000);
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QVERIFY2(QRegularExpression("^talked +0\\.\\d s$", QRegularExpression::MultilineOption)
                 .match(result.out)
                 .hasMatch(),
             qPrintable(result.out));
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
