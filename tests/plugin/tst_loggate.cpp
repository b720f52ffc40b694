#include "src/vocabulary/LogGate.h"
#include "tests/support/BuiltLibraries.h"
#include "tests/support/LogCapture.h"

#include <QProcess>
#include <QTest>

class TestLogGate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void libraryAtStart_data();
    void libraryAtStart();
    void gateArguments();
    void closedGateDropsTheMessage();
    void nullEntriesSwitchLoggingOff();
    void traceLinesOfAScope();
    void leaveNeverThrows();
};

namespace {

QStringList runProbe(const QString& libraryFolder)
{
    QProcess probe;
    probe.setProcessEnvironment(BuiltLibraries::environmentFor(libraryFolder));
    probe.start(QStringLiteral(PROBE_DIR "/log_probe"), QStringList());
    if (!probe.waitForFinished() || probe.exitStatus() != QProcess::NormalExit || probe.exitCode() != 0) {
        return {"failed", QString::fromLocal8Bit(probe.readAllStandardError())};
    }
    return QString::fromLocal8Bit(probe.readAllStandardOutput()).remove('\r').split('\n', Qt::SkipEmptyParts);
}

} // namespace

void TestLogGate::libraryAtStart_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("start");
    QTest::addColumn<bool>("logs");
    const QString get = "get 0";
    QTest::newRow("complete") << "complete" << QStringList{get, "register log 19 VoiceDesk", "object 1 id 77"}
                              << true;
    QTest::newRow("no library") << "absent" << QStringList{"object 0 id 0"} << false;
    QTest::newRow("no export") << "no_export" << QStringList{"object 0 id 0"} << false;
    QTest::newRow("no object") << "no_object" << QStringList{get, "object 0 id 0"} << false;
    QTest::newRow("no registration") << "no_register" << QStringList{get, "object 1 id 0"} << true;
    QTest::newRow("no context") << "no_context" << QStringList{get, "object 1 id 0"} << false;
    QTest::newRow("no print") << "no_print" << QStringList{get, "register log 19 VoiceDesk", "object 1 id 77"}
                              << false;
    QTest::newRow("no check") << "no_check" << QStringList{get, "register log 19 VoiceDesk", "object 1 id 77"}
                              << false;
}

void TestLogGate::libraryAtStart()
{
    QFETCH(QString, kind);
    QFETCH(QStringList, start);
    QFETCH(bool, logs);
    QStringList lines = runProbe(QStringLiteral(LOG_LIBRARIES_DIR "/") + kind);
    QCOMPARE(lines.mid(0, start.size()), start);
    lines = lines.mid(start.size());
    QCOMPARE(lines.takeLast(), QString("end object 0 library 0"));
    QVERIFY(lines.contains("inside"));
    QCOMPARE(lines.contains("print log Probe::main, went wrong"), logs);
    QCOMPARE(lines.contains("print log traced, Enter"), logs);
    QCOMPARE(lines.contains("print log traced, Leave"), logs);
    if (!logs) {
        const int checks = kind == "no_print" ? 3 : 0; // the gate is asked where it can be
        QCOMPARE(lines.filter("check log").size(), checks);
        QCOMPARE(lines.size(), checks + 1);
    }
}

void TestLogGate::gateArguments()
{
    LogCapture log;
    const int previousId = g_logModuleId;
    g_logModuleId = 5;
    const int line = __LINE__ + 1;
    VOICEDESK_LOG_ERROR("%s, number %d", "Here::there", 42);
    g_logModuleId = previousId;
    QCOMPARE(log.messages(), QStringList{"Here::there, number 42"});
    QCOMPARE(log.checks().size(), std::size_t{1});
    QCOMPARE(log.checks()[0].selector, 5U << 8U | 2U);
    QCOMPARE(log.checks()[0].reserved, 0);
    QCOMPARE(log.checks()[0].line, line);
    QVERIFY(log.checks()[0].file.endsWith("tst_loggate.cpp"));
}

void TestLogGate::closedGateDropsTheMessage()
{
    LogCapture log;
    for (const int result : {1, -1}) {
        log.setCheckResult(result);
        VOICEDESK_LOG_ERROR("%s, unheard", "Here::there");
        QVERIFY(log.messages().isEmpty());
    }
    QCOMPARE(log.checks().size(), std::size_t{2});
}

void TestLogGate::nullEntriesSwitchLoggingOff()
{
    {
        LogCapture log;
        log.object().checkLevel = nullptr;
        VOICEDESK_LOG_ERROR("%s, unheard", "Here::there");
        QVERIFY(log.messages().isEmpty());
        LogPrintf("%s", "straight to the library"); // needs no gate
        QCOMPARE(log.messages().size(), 1);
    }
    {
        LogCapture log;
        log.object().print = nullptr;
        VOICEDESK_LOG_ERROR("%s, unheard", "Here::there");
        QCOMPARE(log.checks().size(), std::size_t{1});
    }
    {
        LogCapture log;
        log.object().context = nullptr;
        VOICEDESK_LOG_ERROR("%s, unheard", "Here::there");
        LogPrintf("%s", "unheard");
        QVERIFY(log.messages().isEmpty());
    }
    LogObject* previous = g_logObject;
    g_logObject = nullptr;
    VOICEDESK_LOG_ERROR("%s, unheard", "Here::there");
    LogPrintf("%s", "unheard");
    g_logObject = previous;
}

void TestLogGate::traceLinesOfAScope()
{
    LogCapture log;
    const int line = __LINE__ + 2;
    {
        VOICEDESK_TRACE("Some::function");
        QCOMPARE(log.messages(), QStringList{"Some::function, Enter"});
    }
    QCOMPARE(log.messages(), (QStringList{"Some::function, Enter", "Some::function, Leave"}));
    QCOMPARE(log.checks()[0].selector & 0xFFU, 5U);
    QCOMPARE(log.checks()[0].line, line);
    QCOMPARE(log.checks()[1].selector & 0xFFU, 5U);
    QCOMPARE(log.checks()[1].line, 0);
}

void TestLogGate::leaveNeverThrows()
{
    LogCapture log;
    bool survived = false;
    {
        VOICEDESK_TRACE("Some::function");
        log.object().print = [](void*, const char*, va_list) { throw 1; };
        survived = true;
    }
    QVERIFY(survived);
}

QTEST_GUILESS_MAIN(TestLogGate)
#include "tst_loggate.moc"
