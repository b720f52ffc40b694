#include "platform/TrelLogUtl.h"
#include "tests/support/BuiltLibraries.h"

#include <QFile>
#include <QLibrary>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <cstdarg>

class TestTrelLogUtl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void oneObject();
    void badCalls();
    void levels();
    void lines();

private:
    QTemporaryDir m_folder;
    LogObject* m_log = nullptr;
    LogTraceGetGlobalObject m_getGlobalObject = nullptr;
};

namespace {

void print(LogObject* log, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    log->print(log->context, format, args);
    va_end(args);
}

} // namespace

void TestTrelLogUtl::initTestCase()
{
    qputenv("TRELLOG_LEVEL", "3");
    qputenv("TRELLOG_FILE", QFile::encodeName(m_folder.filePath("log.txt")));
    QLibrary library(BuiltLibraries::path("TrelLogUtl"));
    m_getGlobalObject =
        reinterpret_cast<LogTraceGetGlobalObject>(library.resolve("LogTrace_GetGlobalObject"));
    QVERIFY2(m_getGlobalObject != nullptr, qPrintable(library.errorString()));
    QCOMPARE(m_getGlobalObject(0, &m_log), 0);
    QVERIFY(m_log != nullptr && m_log->context != nullptr);
}

void TestTrelLogUtl::oneObject()
{
    LogObject* again = nullptr;
    QCOMPARE(m_getGlobalObject(0, &again), 0);
    QCOMPARE(again, m_log);
}

void TestTrelLogUtl::badCalls()
{
    LogObject* untouched = nullptr;
    QVERIFY(m_getGlobalObject(1, &untouched) != 0);
    QVERIFY(m_getGlobalObject(0, nullptr) != 0);
    QCOMPARE(untouched, nullptr);
    int id = 5;
    QVERIFY(m_log->registerModule(nullptr, 19, "x", &id) != 0);
    QVERIFY(m_log->registerModule(m_log->context, 19, "x", nullptr) != 0);
    QCOMPARE(id, 5);
    QVERIFY(m_log->checkLevel(nullptr, 2, 0, "f", 1) != 0);
}

void TestTrelLogUtl::levels()
{
    for (unsigned level = 0; level <= 3; ++level) {
        QCOMPARE(m_log->checkLevel(m_log->context, 1U << 8U | level, 0, "f", 1), 0);
    }
    for (const unsigned level : {4U, 5U, 255U}) {
        QVERIFY(m_log->checkLevel(m_log->context, 1U << 8U | level, 0, "f", 1) != 0);
    }
}

void TestTrelLogUtl::lines()
{
    int first = 0;
    int second = 0;
    QCOMPARE(m_log->registerModule(m_log->context, 19, "First", &first), 0);
    QCOMPARE(m_log->registerModule(m_log->context, 19, "Second", &second), 0);
    QVERIFY(first != second && first > 0 && second > 0);
    m_log->checkLevel(m_log->context, static_cast<unsigned>(first) << 8U | 2U, 0, "f", 1);
    print(m_log, "%s, number %d", "A::b", 7);
    m_log->checkLevel(m_log->context, static_cast<unsigned>(second) << 8U | 3U, 0, "f", 1);
    print(m_log, "plain");
    QFile file(m_folder.filePath("log.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
    const QList<QByteArray> lines = file.readAll().split('\n');
    QCOMPARE(lines.size(), 3);
    static const QRegularExpression time(
        QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z "));
    QVERIFY(time.match(lines[0]).hasMatch());
    QVERIFY2(lines[0].endsWith("Z First 2 A::b, number 7"), lines[0].constData());
    QVERIFY2(lines[1].endsWith("Z Second 3 plain"), lines[1].constData());
}

QTEST_APPLESS_MAIN(TestTrelLogUtl)
#include "tst_trellogutl.moc"
