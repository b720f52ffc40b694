#include "desk/CommandWatch.h"
#include "desk/ErrorWords.h"
#include "protocol/ServerReply.h"

#include <QSignalSpy>
#include <QTest>

class TestCommandWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answeredInTime();
    void unanswered();
    void anAnswerPutsTheBannerAway();
    void whatIsNotWatched();
    void lossOfTheConnection();
    void errorsAreKept();
    void wordsForEveryCode();
};

void TestCommandWatch::answeredInTime()
{
    CommandWatch watch(100);
    QSignalSpy timedOut(&watch, &CommandWatch::timedOut);
    watch.commandSent("AddIPAudio", QVariant(), true);
    QVERIFY(watch.isWaiting("AddIPAudio"));
    watch.replyArrived("AddIPAudio", "0", QString());
    QVERIFY(!watch.isWaiting("AddIPAudio"));
    QVERIFY(!timedOut.wait(700));
    QVERIFY(!watch.isOverdue());
}

void TestCommandWatch::unanswered()
{
    CommandWatch watch(100);
    QSignalSpy timedOut(&watch, &CommandWatch::timedOut);
    QSignalSpy changed(&watch, &CommandWatch::overdueChanged);
    watch.commandSent("AddIPAudio", QVariant(), true);
    watch.commandSent("DeleteFile", QVariant(), true);
    QTRY_COMPARE(timedOut.size(), 2);
    QCOMPARE(timedOut[0][0].toString(), QString("AddIPAudio"));
    QVERIFY(watch.isOverdue());
    QCOMPARE(changed.size(), 1);
    watch.dismiss();
    QVERIFY(!watch.isOverdue());
}

void TestCommandWatch::anAnswerPutsTheBannerAway()
{
    CommandWatch watch(50);
    watch.commandSent("AddIPAudio", QVariant(), true);
    QTRY_VERIFY(watch.isOverdue());
    watch.replyArrived("AddIPAudio", "0", QString());
    QVERIFY(!watch.isOverdue());
}

void TestCommandWatch::whatIsNotWatched()
{
    CommandWatch watch(50);
    watch.commandSent("TalkData", QVariant(), true);
    watch.commandSent("AddIPAudio", QVariant(), false); // it never left
    QVERIFY(!watch.isWaiting("TalkData"));
    QVERIFY(!watch.isWaiting("AddIPAudio"));
    // A large file takes its time.
    watch.commandSent("UploadFile", QVariant(), true);
    QSignalSpy timedOut(&watch, &CommandWatch::timedOut);
    QVERIFY(!timedOut.wait(400));
    QTRY_COMPARE(timedOut.size(), 1);
}

void TestCommandWatch::lossOfTheConnection()
{
    CommandWatch watch(60000);
    QSignalSpy timedOut(&watch, &CommandWatch::timedOut);
    watch.commandSent("AddIPAudio", QVariant(), true);
    watch.forget();
    QCOMPARE(timedOut.size(), 1); // who waits is told at once
    QVERIFY(!watch.isWaiting("AddIPAudio"));
}

void TestCommandWatch::errorsAreKept()
{
    CommandWatch watch;
    watch.replyArrived("StartTalk", "202", "asleep");
    watch.replyArrived("StartTalk", "0", QString());
    QCOMPARE(watch.errorCode("StartTalk"), QString("202"));
    QCOMPARE(watch.errorText("StartTalk"), QString("asleep"));
    QCOMPARE(watch.errorCode("StopTalk"), QString());
}

void TestCommandWatch::wordsForEveryCode()
{
    QCOMPARE(ErrorWords::of("202"), QString("the camera is offline"));
    QCOMPARE(ErrorWords::of("202", "something"), QString("the camera is offline"));
    QCOMPARE(ErrorWords::of("999", "the cat is out"), QString("the cat is out"));
    QCOMPARE(ErrorWords::of("999"), QString("error 999"));
    QCOMPARE(ErrorWords::of(""), QString("the server refuses it"));
    QCOMPARE(ErrorWords::of("", "no"), QString("no"));
}

QTEST_GUILESS_MAIN(TestCommandWatch)
#include "tst_commandwatch.moc"
