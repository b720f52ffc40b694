// What a reply answers, by its number alone.

#include "client/RequestNumber.h"
#include "client/SentRequests.h"

#include <QTest>

class TestSentRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void userDataIsGivenOnce();
    void repliesThatNobodyAskedFor();
    void moreThanAreRemembered();
    void cleared();
    void numbersRise();

private:
    int m_first = 0;
    int m_second = 0;
};

void TestSentRequests::userDataIsGivenOnce()
{
    SentRequests sent;
    sent.add(1, "StartTalkToIPAudio", &m_first);
    sent.add(2, "PlayAudio", &m_second);
    for (int round = 0; round < 3; ++round) {
        const SentRequests::Request second = sent.answered(2, "UploadFile");
        QCOMPARE(second.command, QString("PlayAudio"));
        QCOMPARE(second.userData, round == 0 ? static_cast<void*>(&m_second) : nullptr);
        const SentRequests::Request first = sent.answered(1, QString());
        QCOMPARE(first.command, QString("StartTalkToIPAudio"));
        QCOMPARE(first.userData, round == 0 ? static_cast<void*>(&m_first) : nullptr);
    }
}

void TestSentRequests::repliesThatNobodyAskedFor()
{
    SentRequests sent;
    sent.add(5, "StartTalkToIPAudio", &m_first);
    for (const quint64 number : {quint64{0}, quint64{4}, quint64{6}, quint64{5} + 20000, quint64{5} << 32}) {
        const SentRequests::Request request = sent.answered(number, "PlayAudio");
        QCOMPARE(request.command, QString("PlayAudio"));
        QCOMPARE(request.userData, nullptr);
    }
    QCOMPARE(sent.answered(5, QString()).userData, static_cast<void*>(&m_first));
}

void TestSentRequests::moreThanAreRemembered()
{
    SentRequests sent;
    sent.add(1, "StartTalkToIPAudio", &m_first);
    sent.add(2, "PlayAudio", nullptr);
    for (quint64 number = 3; number < 40000; ++number) {
        sent.add(number, "TalkData", nullptr);
    }
    const SentRequests::Request first = sent.answered(1, "UploadFile"); // user data is never forgotten
    QCOMPARE(first.command, QString("StartTalkToIPAudio"));
    QCOMPARE(first.userData, static_cast<void*>(&m_first));
    QCOMPARE(sent.answered(2, "UploadFile").command, QString("UploadFile"));
    QCOMPARE(sent.answered(39999, "UploadFile").command, QString("TalkData"));
}

void TestSentRequests::cleared()
{
    SentRequests sent;
    sent.add(1, "StartTalkToIPAudio", &m_first);
    sent.clear();
    const SentRequests::Request request = sent.answered(1, "PlayAudio");
    QCOMPARE(request.command, QString("PlayAudio"));
    QCOMPARE(request.userData, nullptr);
}

void TestSentRequests::numbersRise()
{
    const quint64 first = nextRequestNumber();
    QVERIFY(first > 0);
    QCOMPARE(nextRequestNumber(), first + 1);
}

QTEST_GUILESS_MAIN(TestSentRequests)
#include "tst_sentrequests.moc"
