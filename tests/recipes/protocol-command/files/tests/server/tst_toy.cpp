// The time of a server, by its command.

#include "protocol/Words.h"
#include "tests/server/ServerHarness.h"

#include <QDateTime>

class TestToy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isThatOfNow();
};

void TestToy::isThatOfNow()
{
    ServerHarness harness;
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const ServerReply reply = harness.ask(Words::GetToyTime);
    QCOMPARE(reply.returnCode, QString("0"));
    const QString text = reply.result.toMap()[Words::toyTime].toString();
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    QVERIFY(time >= before && time <= QDateTime::currentDateTimeUtc());
}

QTEST_GUILESS_MAIN(TestToy)
#include "tst_toy.moc"
