// The talk key, and the mute that it lifts.

#include "tests/desk/TalkTest.h"

#include <QSignalSpy>

class TestPushToTalk : public TalkTest
{
    Q_OBJECT

private Q_SLOTS:
    void heldKey();
    void keyTwiceInHaste();
    void startWithinTheTail();
    void startWithinTheTailOfACall();
    void chosenWithinTheTail();
    void endedWithinTheTail();
    void muteWithinTheTail();
    void lostWithinTheTail();
    void heldKeyWhileMuted();
    void heldKeyWhileMutedAtRest();
    void heldKeyWithoutATalk();
    void muteWhileTheKeyIsHeld();
    void whileHeld();
};

void TestPushToTalk::heldKey()
{
    m_targets->choose("camera:gate", true);
    m_talk->press();
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "t"}});
    QVERIFY(talking());
    QVERIFY(!m_tail->isActive());
    m_talk->release();
    QVERIFY(talking()); // the last sound goes out
    QVERIFY(m_tail->isActive());
    QCOMPARE(m_tail->interval(), 400);
    QTRY_VERIFY(!talking());
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    // A talk that the button opened does not end with the key.
    openCamera();
    m_talk->press();
    m_talk->release();
    QVERIFY(!m_tail->isActive());
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
}

void TestPushToTalk::keyTwiceInHaste()
{
    m_targets->choose("camera:gate", true);
    m_talk->press();
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "t"}});
    m_talk->release();
    m_talk->press(); // the same talk goes on
    QVERIFY(!m_tail->isActive());
    QVERIFY(talking());
    QCOMPARE(m_link->sent.count("StartTalk"), 1);
    m_talk->release();
    QTRY_VERIFY(!talking());
}

void TestPushToTalk::startWithinTheTail()
{
    m_talk->setMuted(true);
    openCameraByKey();
    m_talk->release();
    m_targets->choose("speaker:1", true);
    m_talk->start(); // as a click on the speaker does
    QVERIFY(!m_link->sent.contains("StartTalkToIPAudio"));
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(!talking());
    QVERIFY(m_talk->isMuted());
    QVERIFY(!m_talk->isWhileHeld());
}

void TestPushToTalk::startWithinTheTailOfACall()
{
    m_talk->setMuted(true);
    m_targets->choose("camera:gate", true);
    m_talk->press();
    m_talk->release();
    m_talk->start();
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "token"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(m_talk->isMuted());
}

void TestPushToTalk::chosenWithinTheTail()
{
    m_talk->setMuted(true);
    openCameraByKey();
    m_talk->release();
    m_targets->choose("speaker:1", true);
    m_talk->start();
    m_talk->press(); // now it is meant
    answerSpeaker(1);
    QCOMPARE(m_talk->partners(), QString("Gate, Speaker 1"));
    QTRY_COMPARE(m_talk->seconds(), 1); // longer than a tail
    QVERIFY(!m_talk->isMuted());
    QVERIFY(m_talk->isWhileHeld());
    QCOMPARE(m_link->sent.count("StartTalk"), 1);
    m_talk->release();
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(m_talk->isMuted());
}

void TestPushToTalk::endedWithinTheTail()
{
    m_talk->setMuted(true);
    openCameraByKey();
    m_talk->release();
    m_talk->toggle();
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(m_talk->isMuted());
    // The next talk is the button's, whatever the key did before.
    openCamera();
    QVERIFY(m_talk->isMuted());
    QTRY_COMPARE(m_talk->seconds(), 1);
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
    QVERIFY(m_talk->isMuted());
}

void TestPushToTalk::muteWithinTheTail()
{
    m_talk->setMuted(true);
    openCameraByKey();
    m_talk->release();
    m_talk->setMuted(true);
    QVERIFY(!m_talk->isWhileHeld());
    m_talk->press();
    QVERIFY(!m_talk->isMuted());
    QVERIFY(m_talk->isWhileHeld());
    m_talk->release();
    m_talk->setMuted(false);
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(!m_talk->isMuted()); // as it was set last
}

void TestPushToTalk::lostWithinTheTail()
{
    m_talk->setMuted(true);
    openCameraByKey();
    m_talk->release();
    Q_EMIT m_link->eventRaised("TalkDisconnected",
                               QVariantMap{{"TalkDisconnected", QVariantMap{{"Token", "token"}}}});
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(m_talk->isMuted());
    QVERIFY(!m_talk->isWhileHeld());
    openCamera();
    QTRY_COMPARE(m_talk->seconds(), 1);
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
}

void TestPushToTalk::heldKeyWhileMuted()
{
    openCamera();
    m_talk->setMuted(true);
    m_talk->press();
    QVERIFY(!m_talk->isMuted());
    m_talk->release();
    QVERIFY(m_talk->isMuted());
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
}

void TestPushToTalk::heldKeyWhileMutedAtRest()
{
    m_talk->setMuted(true);
    openCameraByKey();
    QVERIFY(!m_talk->isMuted());
    m_loudest = silence;
    QTRY_VERIFY(m_loudest > -40); // what goes out is speech, not silence
    m_talk->release();
    QVERIFY(!m_talk->isMuted()); // the last sound goes out, too
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(m_talk->isMuted());
    // A talk by the button stays muted.
    openCamera();
    m_packets.clear();
    m_loudest = silence;
    QTRY_VERIFY(m_packets.size() > 20);
    QVERIFY(m_loudest < -80);
}

void TestPushToTalk::heldKeyWithoutATalk()
{
    m_talk->setMuted(true);
    m_talk->press();
    QCOMPARE(m_talk->problem(), QString("Nobody is chosen."));
    QVERIFY(m_talk->isMuted());
    QVERIFY(!m_talk->isWhileHeld());
    m_talk->release();
    m_targets->choose("camera:gate", true);
    m_talk->press();
    QVERIFY(!m_talk->isMuted());
    QVERIFY(!m_talk->isWhileHeld()); // not yet
    m_link->answer("StartTalk", QVariant(), "202", "the camera is offline");
    QVERIFY(m_talk->isMuted()); // though the key is still down
    QVERIFY(!m_talk->isWhileHeld());
    m_talk->release();
    QVERIFY(m_talk->isMuted());
    // While a speaker is tested there is no talk either, and that is said.
    QVERIFY(m_talk->test(2));
    m_talk->press();
    QCOMPARE(m_talk->problem(), QString("A speaker is being tested."));
    QVERIFY(m_talk->isMuted());
    m_talk->release();
}

void TestPushToTalk::muteWhileTheKeyIsHeld()
{
    m_talk->setMuted(true);
    openCameraByKey();
    m_talk->setMuted(true);
    QVERIFY(!m_talk->isWhileHeld());
    m_talk->setMuted(false);
    QVERIFY(m_talk->isWhileHeld());
    m_talk->release();
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(!m_talk->isMuted()); // as it was set last
}

void TestPushToTalk::whileHeld()
{
    QSignalSpy changed(m_talk.get(), &TalkControl::whileHeldChanged);
    openCameraByKey();
    QVERIFY(m_talk->isWhileHeld());
    QCOMPARE(changed.size(), 1);
    m_talk->release();
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(!m_talk->isWhileHeld());
    QCOMPARE(changed.size(), 2);
    // A talk that the button opened goes on after the key.
    openCamera();
    m_talk->press();
    QVERIFY(!m_talk->isWhileHeld());
    m_talk->release();
    m_talk->setMuted(true);
    m_talk->press();
    QVERIFY(m_talk->isWhileHeld());
    m_talk->release();
    QVERIFY(!m_talk->isWhileHeld());
    // An end of the mute that is set meanwhile lasts.
    m_talk->press();
    m_talk->setMuted(false);
    QVERIFY(!m_talk->isWhileHeld());
    m_talk->release();
    QVERIFY(!m_talk->isMuted());
    m_talk->setMuted(true);
    // A talk that is lost.
    m_talk->press();
    Q_EMIT m_link->eventRaised("TalkDisconnected",
                               QVariantMap{{"TalkDisconnected", QVariantMap{{"Token", "token"}}}});
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(!m_talk->isWhileHeld());
    QVERIFY(m_talk->isMuted());
    m_talk->release();
}

QTEST_GUILESS_MAIN(TestPushToTalk)
#include "tst_pushtotalk.moc"
