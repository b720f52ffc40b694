#include "tests/support/ProgramRun.h"

#include <QTest>

class TestProgramEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutStaticDestructors();
};

void TestProgramEnd::withoutStaticDestructors()
{
    // Into a pipe, which the C library writes to only when it must.
    const ProgramRun run = ProgramRun::of(TESTS_DIR "/ending_program", QStringLiteral("."), {});
    QCOMPARE(run.status, 7);
    QCOMPARE(run.out, QStringLiteral("the program ends\n"));
}

QTEST_GUILESS_MAIN(TestProgramEnd)
#include "tst_programend.moc"
