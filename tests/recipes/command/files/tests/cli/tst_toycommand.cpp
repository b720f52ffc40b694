// The command "toy".

#include "tests/support/ProgramRun.h"

#include <QTemporaryDir>
#include <QTest>

class TestToyCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printsItsWord();
};

void TestToyCommand::printsItsWord()
{
    const QTemporaryDir folder;
    const ProgramRun text = ProgramRun::of("voicedesk", folder.path(), {"toy"});
    QCOMPARE(text.status, 0);
    QCOMPARE(text.out, QString("toy\n"));
    const ProgramRun json = ProgramRun::of("voicedesk", folder.path(), {"toy", "--json"});
    QCOMPARE(json.json(), QJsonArray{"toy"});
}

QTEST_GUILESS_MAIN(TestToyCommand)
#include "tst_toycommand.moc"
