// Talks as the operator's controls see them.

#include "protocol/Limits.h"
#include "tests/desk/TalkTest.h"

#include <QSignalSpy>

class TestTalkControl : public TalkTest
{
    Q_OBJECT

private Q_SLOTS:
    void cameraTalk();
    void refusedCamera();
    void refusalInTheServersWords();
    void noMicrophone();
    void refusedByTheLink();
    void noConnection();
    void nobodyChosen();
    void noAnswer();
    void slowDevices();
    void lateRefusalOfTheSameSpeaker();
    void lateAnswerIsClosed();
    void lateAnswerOfAnotherCamera();
    void lateRefusalOfAnotherCamera();
    void lateAnswersWhileTalking();
    void stopBeforeTheAnswer();
    void speakersAndACamera();
    void refusalKeepsTheMicrophone();
    void allSpeakersRefuse();
    void speakerJoinsARunningTalk();
    void lostTarget();
    void lostTargetOfSeveral();
    void lostConnection();
    void askedOnce();
    void volumeAndMute();
    void testOfASpeaker();
    void cancelledTest();
    void silentMicrophone();
    void anotherServer();
};

void TestTalkControl::cameraTalk()
{
    openCamera();
    QCOMPARE(m_talk->partners(), QString("Gate"));
    QCOMPARE(state("camera:gate"), TargetModel::Talking);
    QTRY_VERIFY(!m_packets.isEmpty());
    QTRY_COMPARE(m_talk->seconds(), 1);
    m_talk->toggle();
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QCOMPARE(m_talk->seconds(), 0);
    QCOMPARE(m_link->sent.last(), QString("StopTalk"));
    QCOMPARE(state("camera:gate"), TargetModel::Ready);
    QVERIFY(!talking());
    QVERIFY(m_talk->problem().isEmpty());
}

void TestTalkControl::refusedCamera()
{
    m_targets->choose("camera:gate", true);
    m_talk->start();
    m_link->answer("StartTalk", QVariant(), "202", "the camera is offline");
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QCOMPARE(m_talk->problem(), QString("Gate cannot be talked to: the camera is offline"));
    QVERIFY(!m_talk->advice().isEmpty());
    QCOMPARE(state("camera:gate"), TargetModel::Failed);
    m_talk->dismissProblem();
    QVERIFY(m_talk->problem().isEmpty());
}

/** Who talks, and what the camera says, only the server knows. */
void TestTalkControl::refusalInTheServersWords()
{
    const auto refuse = [&](const QString& code, const QString& text) {
        m_targets->chooseOnly("camera:gate");
        m_talk->start();
        m_link->answer("StartTalk", QVariant(), code, text);
        QCOMPARE(m_talk->phase(), TalkControl::Idle);
    };
    refuse("209", "camera \"Gate\" is in a talk with anna");
    QCOMPARE(
        m_talk->problem(),
        QString("Gate cannot be talked to: the camera is busy with others (the server: camera \"Gate\" is "
                "in a talk with anna)"));
    QVERIFY(!m_talk->advice().contains("power"));
    refuse("211", " none of its\nprofiles " + QString(100000, 'x'));
    QVERIFY(m_talk->problem().contains("(the server: none of its profiles xxx"));
    QVERIFY(m_talk->problem().size() < 300);
    refuse("999", QString(100000, 'x')); // no words of our own
    QVERIFY(m_talk->problem().size() < 300);

    m_targets->chooseOnly("speaker:1");
    m_targets->choose("speaker:2", true);
    m_talk->start();
    answerSpeaker(1);
    answerSpeaker(2, QString(100000, 'x'));
    QVERIFY(m_talk->problem().startsWith("Speaker 2 cannot be talked to: xxx"));
    QVERIFY(m_talk->problem().size() < 300);
    m_talk->targetLost({{"Token", "t1"}, {"deviceID", 1}, {"error", QString(100000, 'y')}});
    QVERIFY(m_talk->problem().startsWith("Speaker 1 was lost: yyy"));
    QVERIFY(m_talk->problem().size() < 300);
}

void TestTalkControl::noMicrophone()
{
    qputenv("FRAMESMITH_CAPTURE_FILE", "/nonexistent.wav");
    m_targets->choose("camera:gate", true);
    m_talk->start();
    QCOMPARE(m_talk->problem(), QString("The microphone cannot be opened."));
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(!m_link->sent.contains("StartTalk"));
    m_talk->dismissProblem();
    m_targets->chooseOnly("speaker:1");
    m_talk->start();
    QCOMPARE(m_talk->problem(), QString("The microphone cannot be opened."));
    QVERIFY(!m_link->sent.contains("StartTalkToIPAudio"));
    qputenv("FRAMESMITH_CAPTURE_FILE", ANNOUNCEMENT_WAV);
}

void TestTalkControl::refusedByTheLink()
{
    m_link->accepts = false;
    for (const char* key : {"camera:gate", "speaker:1"}) {
        m_targets->chooseOnly(key);
        m_talk->start();
        QCOMPARE(m_talk->problem(), QString("The server cannot be asked."));
        QCOMPARE(m_talk->phase(), TalkControl::Idle);
        m_talk->dismissProblem();
    }
}

void TestTalkControl::noConnection()
{
    m_talk->start(); // to nobody
    m_talk->setOnline(false);
    QCOMPARE(m_talk->problem(), QString()); // of before
    m_targets->choose("camera:gate", true);
    m_talk->start();
    QCOMPARE(m_talk->problem(), QString("There is no connection to the server."));
    m_talk->setOnline(false); // still
    QCOMPARE(m_talk->problem(), QString("There is no connection to the server."));
    QVERIFY(!m_link->sent.contains("StartTalk"));
    m_talk->setOnline(true);
    QCOMPARE(m_talk->problem(), QString());
}

void TestTalkControl::nobodyChosen()
{
    m_talk->start();
    QCOMPARE(m_talk->problem(), QString("Nobody is chosen."));
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
}

void TestTalkControl::noAnswer()
{
    m_targets->choose("camera:gate", true);
    m_talk->start();
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    QCOMPARE(m_talk->problem(), QString("The server did not answer in time."));
    QCOMPARE(state("camera:gate"), TargetModel::Failed);
}

/** A device may take its time to open, as long as a server may wait for it. */
void TestTalkControl::slowDevices()
{
    m_watch->setTalkOpeningTime(Limits::maxTalkOpeningTime);
    QSignalSpy timedOut(m_watch.get(), &RequestTimeouts::timedOut);
    m_targets->choose("speaker:1", true);
    m_targets->choose("camera:gate", true);
    const auto waitLongerThanForARecord = [&] {
        timedOut.clear();
        m_plugin->getNetworkAudioGroup(); // nobody answers that
        QVERIFY(timedOut.wait());
    };
    m_talk->start();
    waitLongerThanForARecord();
    QCOMPARE(m_talk->phase(), TalkControl::Asking);
    QCOMPARE(state("camera:gate"), TargetModel::Asked);
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "token"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
    waitLongerThanForARecord();
    QCOMPARE(state("speaker:1"), TargetModel::Asked);
    answerSpeaker(1);
    QCOMPARE(m_talk->partners(), QString("Gate, Speaker 1"));
    QVERIFY(m_talk->problem().isEmpty());
    m_talk->stop();

    QVERIFY(m_talk->test(2));
    waitLongerThanForARecord();
    QCOMPARE(m_talk->testing(), 2);
    QSignalSpy tested(m_talk.get(), &TalkControl::tested);
    answerSpeaker(2);
    QCOMPARE(tested.size(), 1);
    QVERIFY(tested[0][1].toBool());
    QCOMPARE(m_talk->testing(), 0);
}

/** What is asked again counts, not the refusal of what was given up. */
void TestTalkControl::lateRefusalOfTheSameSpeaker()
{
    m_targets->choose("speaker:1", true);
    m_talk->start();
    const int first = m_link->sent.lastIndexOf("StartTalkToIPAudio");
    m_talk->stop();
    m_talk->start();
    m_link->answerAt(first, QVariantMap{{"deviceID", 1}, {"talkToken", ""}, {"error", "asleep"}});
    QCOMPARE(m_talk->phase(), TalkControl::Asking);
    QVERIFY(m_talk->problem().isEmpty());
    answerSpeaker(1);
    QCOMPARE(m_talk->partners(), QString("Speaker 1"));
    QTRY_VERIFY(!m_packets.isEmpty()); // a refusal has stopped the microphone meanwhile
}

void TestTalkControl::lateAnswerIsClosed()
{
    m_targets->choose("camera:gate", true);
    m_talk->start();
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "late"}});
    QVERIFY(!talking());
    QCOMPARE(m_link->sent.last(), QString("StopTalk"));
    QCOMPARE(m_link->payloads.last().toMap()["talkToken"].toString(), QString("late"));
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
}

void TestTalkControl::lateAnswerOfAnotherCamera()
{
    m_targets->choose("camera:gate", true);
    m_talk->start();
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    m_targets->choose("camera:dock", true);
    m_talk->start();
    QCOMPARE(m_talk->phase(), TalkControl::Asking);
    const int first = m_link->sent.indexOf("StartTalk");
    m_link->answerAt(first, QVariantMap{{"camId", "gate"}, {"talkToken", "late"}});
    QCOMPARE(m_talk->phase(), TalkControl::Asking);
    QCOMPARE(m_link->sent.last(), QString("StopTalk"));
    QCOMPARE(m_link->payloads.last().toMap()["talkToken"].toString(), QString("late"));
    m_link->answer("StartTalk", QVariantMap{{"camId", "dock"}, {"talkToken", "right"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
    QCOMPARE(m_talk->partners(), QString("Dock"));
    QTRY_VERIFY(!m_packets.isEmpty());
    QCOMPARE(m_link->sent.count("StopTalk"), 1);
}

void TestTalkControl::lateRefusalOfAnotherCamera()
{
    m_targets->choose("camera:gate", true);
    m_talk->start();
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    m_targets->choose("camera:dock", true);
    m_talk->start();
    m_link->answerAt(m_link->sent.indexOf("StartTalk"), QVariant(), "202", "asleep");
    QCOMPARE(m_talk->phase(), TalkControl::Asking);
    QVERIFY(m_talk->problem().isEmpty());
    m_link->answer("StartTalk", QVariantMap{{"camId", "dock"}, {"talkToken", "right"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
    QTRY_VERIFY(!m_packets.isEmpty());
}

/** The plug-in takes whoever answers into the talk that runs. */
void TestTalkControl::lateAnswersWhileTalking()
{
    m_targets->choose("camera:gate", true);
    m_talk->start();
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle);
    const int first = m_link->sent.indexOf("StartTalk");
    m_targets->choose("camera:dock", true);
    m_talk->start();
    m_link->answer("StartTalk", QVariantMap{{"camId", "dock"}, {"talkToken", "right"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
    m_link->answerAt(first, QVariantMap{{"camId", "gate"}, {"talkToken", "late"}});
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QCOMPARE(m_link->sent.count("StopTalk"), 2);
    QVERIFY(!talking());
    QVERIFY(m_talk->problem().contains("too late"));

    m_targets->choose("speaker:1", true);
    m_targets->choose("camera:dock", false);
    m_talk->start();
    QTRY_COMPARE(m_talk->phase(), TalkControl::Idle); // no answer
    m_targets->choose("speaker:1", false);
    m_targets->choose("camera:dock", true);
    m_talk->start();
    m_link->answer("StartTalk", QVariantMap{{"camId", "dock"}, {"talkToken", "right"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
    answerSpeaker(1);
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(!talking());
}

void TestTalkControl::stopBeforeTheAnswer()
{
    m_targets->choose("camera:gate", true);
    m_talk->toggle();
    m_talk->toggle();
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "t"}});
    QVERIFY(!talking());
    QVERIFY(m_talk->problem().isEmpty());
}

void TestTalkControl::speakersAndACamera()
{
    m_targets->choose("speaker:2", true);
    m_targets->choose("speaker:1", true);
    openCamera();
    // The camera comes first: the plug-in opens none during a talk.
    QCOMPARE(m_link->sent.mid(m_link->sent.indexOf("StartTalk")),
             (QStringList{"StartTalk", "StartTalkToIPAudio", "StartTalkToIPAudio"}));
    answerSpeaker(1);
    answerSpeaker(2);
    QCOMPARE(m_talk->partners(), QString("Gate, Speaker 1, Speaker 2"));
    m_talk->stop();
    QCOMPARE(m_link->sent.count("StopTalk"), 3);
}

void TestTalkControl::refusalKeepsTheMicrophone()
{
    m_targets->choose("speaker:1", true);
    m_targets->choose("speaker:2", true);
    m_talk->start();
    answerSpeaker(1);
    answerSpeaker(2, QString(), "401"); // the plug-in stops the microphone now
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
    QCOMPARE(m_talk->partners(), QString("Speaker 1"));
    QVERIFY(m_talk->problem().startsWith("Speaker 2 cannot be talked to"));
    QCOMPARE(m_talk->advice(), QString("The talk goes on with the others."));
    m_packets.clear();
    QTRY_VERIFY(m_packets.size() > 3); // and the desk has started it again
}

void TestTalkControl::allSpeakersRefuse()
{
    m_targets->choose("speaker:1", true);
    m_talk->start();
    answerSpeaker(1, "it sleeps");
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QCOMPARE(m_talk->problem(), QString("Speaker 1 cannot be talked to: it sleeps"));
    // The microphone is off: the next talk starts it, and its packets count from there. One that was left on
    // would have captured some until the time of another request is over.
    m_plugin->getNetworkAudioGroup();
    QTRY_VERIFY(m_watch->isOverdue());
    QVERIFY(m_packets.isEmpty());
    m_targets->choose("speaker:1", false);
    openCamera();
    QTRY_VERIFY(!m_packets.isEmpty());
    QCOMPARE(m_packets.first(), 0U);
}

void TestTalkControl::speakerJoinsARunningTalk()
{
    openCamera();
    m_targets->choose("speaker:3", true);
    m_talk->start();
    QCOMPARE(m_link->sent.count("StartTalk"), 1);
    answerSpeaker(3);
    QCOMPARE(m_talk->partners(), QString("Gate, Speaker 3"));
    m_talk->start(); // nobody new
    QCOMPARE(m_link->sent.count("StartTalkToIPAudio"), 1);
}

void TestTalkControl::lostTarget()
{
    openCamera();
    Q_EMIT m_link->eventRaised("TalkDisconnected",
                               QVariantMap{{"TalkDisconnected", QVariantMap{{"Token", "token"}}}});
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QCOMPARE(m_talk->problem(), QString("The other side was lost; the talk has ended."));
    QVERIFY(m_talk->partners().isEmpty());
}

void TestTalkControl::lostTargetOfSeveral()
{
    openCamera();
    m_targets->choose("speaker:3", true);
    m_talk->start();
    answerSpeaker(3);
    QCOMPARE(m_talk->partners(), QString("Gate, Speaker 3"));
    m_talk->targetLost({{"Token", "speaker"}, {"deviceID", 3}, {"error", "the line is cut"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
    QCOMPARE(m_talk->partners(), QString("Gate"));
    QCOMPARE(state("speaker:3"), TargetModel::Failed);
    QCOMPARE(m_talk->problem(), QString("Speaker 3 was lost: the line is cut"));
    QCOMPARE(m_talk->advice(), QString("The talk goes on with the others."));
    QVERIFY(talking());
    m_talk->dismissProblem();
    m_talk->targetLost({{"Token", "speaker"}, {"deviceID", 3}}); // it is known
    QVERIFY(m_talk->problem().isEmpty());
    // The plug-in would say that it is open.
    const int asked = m_link->sent.count("StartTalkToIPAudio");
    m_talk->start();
    QCOMPARE(m_link->sent.count("StartTalkToIPAudio"), asked);
    QCOMPARE(m_talk->partners(), QString("Gate"));
    QCOMPARE(m_talk->problem(), QString("Speaker 3 was lost."));
    // In the next talk it may be asked again.
    m_talk->stop();
    m_talk->start();
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "token"}});
    QCOMPARE(m_link->sent.count("StartTalkToIPAudio"), asked + 1);
    // The camera is a target like any other.
    answerSpeaker(3);
    QCOMPARE(m_talk->partners(), QString("Gate, Speaker 3"));
    m_talk->targetLost({{"Token", "token"}, {"camId", m_targets->chosen().front().id}, {"error", "dark"}});
    QCOMPARE(m_talk->partners(), QString("Speaker 3"));
    QCOMPARE(m_talk->problem(), QString("Gate was lost: dark"));
}

void TestTalkControl::lostConnection()
{
    openCamera();
    m_talk->setOnline(false);
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QCOMPARE(m_talk->problem(), QString("The connection to the server was lost; the talk has ended."));
    QVERIFY(m_talk->advice().startsWith("It is being made again."));
    m_talk->setOnline(true);
    QCOMPARE(m_talk->problem(), QString("The connection to the server was lost; the talk has ended."));
    QCOMPARE(m_talk->advice(), QString("It is there again: press Talk."));
}

void TestTalkControl::askedOnce()
{
    openCamera();
    m_targets->choose("speaker:1", true);
    m_talk->start();
    m_targets->choose("speaker:2", true);
    m_talk->start();
    QCOMPARE(m_link->sent.count("StartTalkToIPAudio"), 2);
    answerSpeaker(2);
    answerSpeaker(1);
    QCOMPARE(m_talk->partners(), QString("Gate, Speaker 2, Speaker 1"));
}

void TestTalkControl::volumeAndMute()
{
    QSignalSpy volumes(m_talk.get(), &TalkControl::volumeChanged);
    m_talk->setVolume(150);
    QCOMPARE(m_talk->volume(), 100);
    m_talk->setVolume(-3);
    QCOMPARE(m_talk->volume(), 0);
    m_talk->setVolume(0);
    QCOMPARE(volumes.size(), 2);
}

void TestTalkControl::testOfASpeaker()
{
    QSignalSpy tested(m_talk.get(), &TalkControl::tested);
    QVERIFY(m_talk->test(2));
    QVERIFY(!m_talk->test(1)); // one at a time
    answerSpeaker(2);
    QCOMPARE(tested.size(), 1);
    QCOMPARE(tested[0][0].toInt(), 2);
    QVERIFY(tested[0][1].toBool());
    QVERIFY(!talking());
    QCOMPARE(m_link->sent.last(), QString("StopTalk"));
    QCOMPARE(m_talk->phase(), TalkControl::Idle);

    QVERIFY(m_talk->test(3));
    answerSpeaker(3, "no route");
    QVERIFY(!tested[1][1].toBool());
    QCOMPARE(tested[1][2].toString(), QString("The speaker does not answer: no route"));

    QVERIFY(m_talk->test(1));
    QTRY_COMPARE(tested.size(), 3); // no answer at all
    QVERIFY(!tested[2][1].toBool());

    openCamera();
    QVERIFY(!m_talk->test(1)); // its end would end the talk
}

void TestTalkControl::cancelledTest()
{
    QSignalSpy tested(m_talk.get(), &TalkControl::tested);
    QVERIFY(m_talk->test(2));
    QCOMPARE(m_talk->testing(), 2);
    m_talk->cancelTest();
    QCOMPARE(m_talk->testing(), 0);
    m_talk->cancelTest();
    answerSpeaker(2); // after all
    QVERIFY(!talking());
    QCOMPARE(m_link->sent.last(), QString("StopTalk"));
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QCOMPARE(tested.size(), 0);

    QVERIFY(m_talk->test(3));
    const int first = m_link->sent.lastIndexOf("StartTalkToIPAudio");
    m_talk->cancelTest();
    QVERIFY(m_talk->test(3));
    m_link->answerAt(first, QVariantMap{{"deviceID", 3}, {"talkToken", ""}, {"error", "asleep"}});
    QCOMPARE(m_talk->testing(), 3); // the answer to this test is still to come
    answerSpeaker(3);
    QCOMPARE(tested.size(), 1);
    QVERIFY(tested[0][1].toBool());
}

void TestTalkControl::silentMicrophone()
{
    openCamera();
    disconnect(m_host.get(), &PluginHost::commandSent, m_talk.get(), nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(m_talk->problem(), QString("The microphone gives no sound."), 10000);
    m_talk->packetSent();
    QTRY_VERIFY(m_talk->problem().isEmpty());
}

void TestTalkControl::anotherServer()
{
    // A test of the last server's speaker ends without a result, and its late answer without a talk.
    QSignalSpy tested(m_talk.get(), &TalkControl::tested);
    QVERIFY(m_talk->test(2));
    m_talk->forgetServer();
    answerSpeaker(2);
    QVERIFY(!talking());
    QCOMPARE(tested.size(), 0);
    openCamera();
    m_talk->forgetServer();
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    QVERIFY(!talking());
    m_talk->stop();
    m_talk->setOnline(false);
    m_talk->start();
    QVERIFY(!m_talk->problem().isEmpty());
    m_talk->forgetServer();
    QVERIFY(m_talk->problem().isEmpty());
    m_talk->setOnline(true);
    QVERIFY(m_talk->test(2)); // the next server's
    answerSpeaker(2);
    QCOMPARE(tested.size(), 1);
}

QTEST_GUILESS_MAIN(TestTalkControl)
#include "tst_talkcontrol.moc"
