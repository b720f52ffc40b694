// A password is asked for at a terminal: here the slave of a pseudo terminal, whose other end is the test.

#include <QProcess>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <termios.h>
#include <unistd.h>

namespace {

/** A terminal, at which the test types. */
class Terminal
{
public:
    Terminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK))
    {
        if (m_master >= 0 && grantpt(m_master) == 0 && unlockpt(m_master) == 0) {
            m_slave = open(ptsname(m_master), O_RDWR | O_NOCTTY); // or its settings would end with a program
        }
    }
    ~Terminal()
    {
        close(m_slave);
        close(m_master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    QString path() const { return QString::fromLocal8Bit(ptsname(m_master)); }
    bool hasEcho() const
    {
        termios state{};
        return tcgetattr(m_slave, &state) == 0 && (state.c_lflag & ECHO) != 0;
    }
    bool type(const QByteArray& text) const
    {
        return write(m_master, text.constData(), text.size()) == text.size();
    }
    /** What is on the screen since the last call. */
    QByteArray shown() const
    {
        QByteArray bytes(1024, 0);
        const auto count = read(m_master, bytes.data(), bytes.size());
        return bytes.left(static_cast<int>(std::max<ssize_t>(count, 0)));
    }

private:
    int m_master;
    int m_slave = -1;
};

} // namespace

class TestConsole : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void passwordIsNotShown();
    void inputEnds();
    void signalsEndTheProgram_data();
    void signalsEndTheProgram();
    void signalsAreSurvived_data();
    void signalsAreSurvived();
    void ignoredSignals();
    void noTerminal();

private:
    void ask(const QString& mode = QString());
    bool signal(int number) const { return ::kill(static_cast<pid_t>(m_program->processId()), number) == 0; }

    std::unique_ptr<Terminal> m_terminal;
    std::unique_ptr<QProcess> m_program;
};

void TestConsole::init()
{
    m_terminal = std::make_unique<Terminal>();
    QVERIFY(m_terminal->hasEcho());
    m_program = std::make_unique<QProcess>();
}

void TestConsole::cleanup()
{
    m_program->kill();
    m_program->waitForFinished();
}

/** Starts the program, and waits until it reads. */
void TestConsole::ask(const QString& mode)
{
    m_program->setStandardInputFile(m_terminal->path());
    m_program->start(QStringLiteral(TESTS_DIR "/asking_program"), {mode});
    QTRY_VERIFY(!m_terminal->hasEcho());
    QByteArray prompt;
    QTRY_VERIFY((prompt += m_program->readAllStandardError()) == "Password: ");
}

void TestConsole::passwordIsNotShown()
{
    ask();
    QVERIFY(m_terminal->type("s3cret and more\n"));
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->readAllStandardOutput(), QByteArray("s3cret and more 0\n"));
    QCOMPARE(m_terminal->shown(), QByteArray());
    QVERIFY(m_terminal->hasEcho());
}

void TestConsole::inputEnds()
{
    ask();
    QVERIFY(m_terminal->type("\x04")); // Ctrl-D
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->readAllStandardOutput(), QByteArray("none 0\n"));
    QVERIFY(m_terminal->hasEcho());
}

void TestConsole::signalsEndTheProgram_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("SIGQUIT") << SIGQUIT;
}

void TestConsole::signalsEndTheProgram()
{
    QFETCH(int, number);
    ask();
    QVERIFY(m_terminal->type("half"));
    QVERIFY(signal(number));
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->exitStatus(), QProcess::CrashExit);
    QCOMPARE(m_program->exitCode(), number);
    QVERIFY(m_terminal->hasEcho());
}

void TestConsole::signalsAreSurvived_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
}

/** A program that ends in order after a signal is not held up by its question. */
void TestConsole::signalsAreSurvived()
{
    QFETCH(int, number);
    ask("survives");
    QVERIFY(signal(number));
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->readAllStandardOutput(), QStringLiteral("none %1\n").arg(number).toLatin1());
    QVERIFY(m_terminal->hasEcho());
}

void TestConsole::ignoredSignals()
{
    ask("ignores");
    QVERIFY(signal(SIGINT));
    QVERIFY(m_terminal->type("s3cret\n"));
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->readAllStandardOutput(), QByteArray("s3cret 0\n"));
}

void TestConsole::noTerminal()
{
    m_program->start(QStringLiteral(TESTS_DIR "/asking_program"), QStringList());
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->readAllStandardOutput(), QByteArray("none 0\n"));
    QCOMPARE(m_program->readAllStandardError(), QByteArray());
}

QTEST_GUILESS_MAIN(TestConsole)
#include "tst_console.moc"
