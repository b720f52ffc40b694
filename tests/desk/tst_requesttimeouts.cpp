#include "desk/ErrorMessages.h"
#include "desk/RequestTimeouts.h"
#include "protocol/ServerReply.h"

#include <QSignalSpy>
#include <QTest>
#include <QTranslator>

class TestRequestTimeouts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answeredInTime();
    void unanswered();
    void theLateAnswerPutsTheBannerAway();
    void whatIsNotWatched();
    void lossOfTheConnection();
    void lastOnes();
    void wordsForEveryCode();
    void sameWordsInAnotherLanguage();
};

void TestRequestTimeouts::answeredInTime()
{
    RequestTimeouts watch(100);
    QSignalSpy timedOut(&watch, &RequestTimeouts::timedOut);
    watch.commandSent("AddIPAudio", QVariant(), true, 4);
    watch.commandSent("AddIPAudio", QVariant(), true, 5);
    watch.replyArrived("AddIPAudio", "0", QString(), 5); // of two by one name, not the older one
    QTRY_COMPARE(timedOut.size(), 1);
    QCOMPARE(timedOut[0][0], QVariant(quint64{4}));
}

void TestRequestTimeouts::unanswered()
{
    RequestTimeouts watch(100);
    QSignalSpy timedOut(&watch, &RequestTimeouts::timedOut);
    QSignalSpy changed(&watch, &RequestTimeouts::overdueChanged);
    watch.commandSent("AddIPAudio", QVariant(), true, 1);
    watch.commandSent("DeleteFile", QVariant(), true, 2);
    QTRY_COMPARE(timedOut.size(), 2);
    QCOMPARE(timedOut[0][0], QVariant(quint64{1}));
    QVERIFY(watch.isOverdue());
    QCOMPARE(changed.size(), 1);
    watch.dismiss();
    QVERIFY(!watch.isOverdue());
}

void TestRequestTimeouts::theLateAnswerPutsTheBannerAway()
{
    RequestTimeouts watch(50);
    QSignalSpy timedOut(&watch, &RequestTimeouts::timedOut);
    QSignalSpy changed(&watch, &RequestTimeouts::overdueChanged);
    watch.commandSent("AddIPAudio", QVariant(), true, 1);
    watch.commandSent("DeleteIPAudio", QVariant(), true, 2);
    QTRY_COMPARE(timedOut.size(), 2);
    QVERIFY(watch.isOverdue());
    watch.replyArrived("GetCameraPicture", "0", QString(), 3); // each second
    QVERIFY(watch.isOverdue());
    watch.replyArrived("AddIPAudio", "0", QString(), 1);
    QVERIFY(watch.isOverdue()); // the other one still is
    QCOMPARE(changed.size(), 1);
    watch.replyArrived("DeleteIPAudio", "401", QString(), 2);
    QVERIFY(!watch.isOverdue());
    QCOMPARE(changed.size(), 2);
    // What was closed by hand stays closed, whoever else is late comes back.
    watch.commandSent("AddIPAudio", QVariant(), true, 4);
    QTRY_VERIFY(watch.isOverdue());
    watch.dismiss();
    watch.replyArrived("AddIPAudio", "0", QString(), 4);
    QCOMPARE(changed.size(), 4);
    watch.commandSent("AddIPAudio", QVariant(), true, 5);
    QTRY_VERIFY(watch.isOverdue());
    watch.forget();
    QVERIFY(!watch.isOverdue());
}

void TestRequestTimeouts::whatIsNotWatched()
{
    RequestTimeouts watch(50);
    QSignalSpy timedOut(&watch, &RequestTimeouts::timedOut);
    watch.commandSent("TalkData", QVariant(), true, 1);
    watch.commandSent("AddIPAudio", QVariant(), false, 2); // it never left
    watch.commandSent("AddIPAudio", QVariant(), true, 3);
    // A large file takes its time.
    watch.commandSent("UploadFile", QVariant(), true, 4);
    QTRY_COMPARE(timedOut.size(), 1);
    QCOMPARE(timedOut[0][0], QVariant(quint64{3}));
    QTRY_COMPARE(timedOut.size(), 2);
    QCOMPARE(timedOut[1][0], QVariant(quint64{4}));
}

void TestRequestTimeouts::lossOfTheConnection()
{
    RequestTimeouts watch(60000);
    QSignalSpy timedOut(&watch, &RequestTimeouts::timedOut);
    watch.commandSent("AddIPAudio", QVariant(), true, 7);
    watch.forget();
    QCOMPARE(timedOut.size(), 1); // who waits is told at once
    QCOMPARE(timedOut[0][0], QVariant(quint64{7}));
    watch.forget();
    QCOMPARE(timedOut.size(), 1);
}

void TestRequestTimeouts::lastOnes()
{
    RequestTimeouts watch;
    watch.commandSent("StartTalk", QVariant(), true, 7);
    watch.commandSent("TalkData", QVariant(), true, 8); // comes between any two others
    QCOMPARE(watch.lastSent(), quint64{7});
    watch.commandSent("StopTalk", QVariant(), false, 9);
    QCOMPARE(watch.lastSent(), quint64{9});
    watch.replyArrived("StartTalk", "202", "asleep", 7);
    QCOMPARE(watch.lastAnswered(), quint64{7});
    QCOMPARE(watch.errorCode(), QString("202"));
    QCOMPARE(watch.errorText(), QString("asleep"));
    watch.replyArrived("StartTalk", "0", QString(), 10);
    QCOMPARE(watch.lastAnswered(), quint64{10});
    QCOMPARE(watch.errorText(), QString());
}

void TestRequestTimeouts::wordsForEveryCode()
{
    const QString detail = "the text of the server";
    QSet<QString> words;
    for (const QString* code : ReturnCode::all) {
        if (*code != ReturnCode::success) {
            words.insert(ErrorMessages::of(*code, detail));
            QVERIFY2(ErrorMessages::of(*code, detail) != detail, qPrintable(*code));
        }
    }
    QCOMPARE(words.size(), static_cast<int>(std::size(ReturnCode::all)) - 1); // no two say the same
    QCOMPARE(ErrorMessages::of("202"), QString("the camera is offline"));
    QCOMPARE(ErrorMessages::of("202", "something"), QString("the camera is offline"));
    QCOMPARE(ErrorMessages::of("999", "the cat is out"), QString("the cat is out"));
    QCOMPARE(ErrorMessages::of("999"), QString("error 999"));
    QCOMPARE(ErrorMessages::of(""), QString("the server refuses it"));
    QCOMPARE(ErrorMessages::of("", "no"), QString("no"));
    QCOMPARE(ErrorMessages::withDetail("209", "anna talks"),
             QString("the camera is busy with others (the server: anna talks)"));
    QCOMPARE(ErrorMessages::withDetail("209", " "), QString("the camera is busy with others"));
    QCOMPARE(ErrorMessages::withDetail("999", "the cat is out"), QString("the cat is out"));
}

/** The server speaks English. */
void TestRequestTimeouts::sameWordsInAnotherLanguage()
{
    class German : public QTranslator
    {
    public:
        QString translate(const char* /*context*/, const char* source, const char* /*comment*/,
                          int /*number*/) const override
        {
            return QString::fromUtf8(source).startsWith("the ") ? QStringLiteral("auf Deutsch") : QString();
        }
        bool isEmpty() const override { return false; }
    };
    German german;
    QVERIFY(QCoreApplication::installTranslator(&german));
    QCOMPARE(ErrorMessages::withDetail("202", "the camera is offline"), QString("auf Deutsch"));
    QCOMPARE(ErrorMessages::withDetail("202", "no route"), QString("auf Deutsch (the server: no route)"));
}

QTEST_GUILESS_MAIN(TestRequestTimeouts)
#include "tst_requesttimeouts.moc"
