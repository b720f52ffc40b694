#include "tests/support/ChildProcess.h"

#include <QFile>
#include <QTest>

#include <cstdio>

namespace {

constexpr int forEver = 600000; // ms

/** A test that has started a child, says its number, and never ends by itself. */
int runParent()
{
    ChildProcess child;
    child.start(QStringLiteral("sleep"), {QStringLiteral("600")});
    if (!child.waitForStarted()) {
        return 1;
    }
    std::printf("%lld\n", child.processId());
    std::fflush(stdout);
    child.waitForFinished(forEver);
    return 0;
}

/** Whether a process runs: one that has ended may wait for its new parent to take notice. */
bool isRunning(int process)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(process));
    return stat.open(QIODevice::ReadOnly) && !stat.readAll().contains(") Z ");
}

} // namespace

class TestChildProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsWithACrashedTest();
};

void TestChildProcess::endsWithACrashedTest()
{
    QProcess parent;
    parent.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--parent")});
    while (!parent.canReadLine() && parent.waitForReadyRead()) {
    }
    const auto child = parent.readLine().trimmed().toInt();
    QVERIFY(child > 0);
    QVERIFY(isRunning(child));
    parent.kill();
    QVERIFY(parent.waitForFinished());
    QTRY_VERIFY(!isRunning(child));
}

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().contains(QStringLiteral("--parent"))) {
        return runParent();
    }
    TestChildProcess test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_childprocess.moc"
