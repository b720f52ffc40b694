// Talks as the operator's controls see them, over the real plug-in; the other end of the link is the test.

#include "audio/SoundLevel.h"
#include "audio/TalkPacketDecoder.h"
#include "client/PluginClient.h"
#include "client/PluginHost.h"
#include "desk/RequestTimeouts.h"
#include "desk/TalkControl.h"
#include "protocol/Limits.h"
#include "tests/support/BuiltLibraries.h"

#include <QSignalSpy>
#include <QTest>

namespace {

constexpr double silence = -200.0; // dBFS

} // namespace

class TestTalkControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cameraTalk();
    void refusedCamera();
    void noMicrophone();
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
    void heldKey();
    void keyTwiceInHaste();
    void startWithinTheTail();
    void startWithinTheTailOfACall();
    void chosenWithinTheTail();
    void endedWithinTheTail();
    void muteWithinTheTail();
    void lostWithinTheTail();
    void askedOnce();
    void heldKeyWhileMuted();
    void heldKeyWhileMutedAtRest();
    void heldKeyWithoutATalk();
    void muteWhileTheKeyIsHeld();
    void whileHeld();
    void volumeAndMute();
    void testOfASpeaker();
    void cancelledTest();
    void silentMicrophone();
    void anotherServer();

private:
    /** A link whose other end is the test. */
    class TestLink : public ServerLink
    {
    public:
        void open() override {}
        bool send(const QString& command, const QVariant& payload, quint64 request) override
        {
            if (command != QLatin1String("TalkData")) {
                sent.append(command);
                payloads.append(payload);
                requests.append(request);
            }
            return accepts;
        }
        /** Answers the last command of this name. */
        void answer(const QString& command, const QVariant& result, const QString& code = QStringLiteral("0"),
                    const QString& text = QString())
        {
            const int at = sent.lastIndexOf(command);
            QVERIFY2(at >= 0, qPrintable(command));
            answerAt(at, result, code, text);
        }
        void answerAt(int at, const QVariant& result, const QString& code = QStringLiteral("0"),
                      const QString& text = QString())
        {
            Q_EMIT replied(sent[at], result, requests[at], code, text);
        }

        bool accepts = true;
        QStringList sent;
        QVariantList payloads;
        QVector<quint64> requests;
    };

    void openCamera();
    void openCameraByKey();
    /** Answers the request of a speaker. */
    void answerSpeaker(int id, const QString& error = QString(), const QString& code = QStringLiteral("0"));
    bool talking() const { return m_plugin->talking(); }
    TargetModel::State state(const QString& key) const { return m_targets->find(key)->state; }

    std::unique_ptr<TestLink> m_link;
    std::unique_ptr<PluginHost> m_host;
    std::unique_ptr<PluginClient> m_plugin;
    std::unique_ptr<RequestTimeouts> m_watch;
    std::unique_ptr<TargetModel> m_targets;
    std::unique_ptr<TalkControl> m_talk;
    QList<int> m_packets;
    double m_loudest = silence; ///< Of the packets sent, dBFS.
};

void TestTalkControl::initTestCase()
{
    qputenv("FRAMESMITH_CAPTURE_FILE", ANNOUNCEMENT_WAV);
}

void TestTalkControl::init()
{
    m_link = std::make_unique<TestLink>();
    m_host = std::make_unique<PluginHost>(*m_link);
    QVERIFY2(m_host->load(BuiltLibraries::path("VoiceDesk")), qPrintable(m_host->errorString()));
    m_plugin = std::make_unique<PluginClient>();
    QVERIFY(m_plugin->attach(m_host->plugin()));
    Q_EMIT m_link->connected();
    m_watch = std::make_unique<RequestTimeouts>(300);
    m_watch->setTalkOpeningTime(0);
    m_targets = std::make_unique<TargetModel>();
    connect(m_host.get(), &PluginHost::commandSent, m_watch.get(), &RequestTimeouts::commandSent);
    connect(m_host.get(), &PluginHost::replyArrived, m_watch.get(), &RequestTimeouts::replyArrived);
    m_talk = std::make_unique<TalkControl>(*m_plugin, *m_targets, *m_watch);
    connect(m_host.get(), &PluginHost::commandSent, m_talk.get(),
            [this](const QString& command, const QVariant& payload) {
                if (command == QLatin1String("TalkData")) {
                    m_talk->packetSent();
                    m_packets.append(1);
                    TalkPacketDecoder decoder;
                    const auto sound = decoder.decode(
                        QByteArray::fromBase64(payload.toMap()["talkData"].toString().toLatin1()));
                    QVERIFY(sound);
                    m_loudest = std::max(m_loudest, SoundLevel::rmsDbfs(sound->samples));
                }
            });
    m_packets.clear();
    m_talk->setOnline(true);
    m_targets->setCameras({QVariantMap{{"camId", "gate"}, {"camName", "Gate"}, {"online", true}},
                           QVariantMap{{"camId", "dock"}, {"camName", "Dock"}, {"online", true}}});
    m_targets->setSpeakers(m_plugin->getIPAudioModel(m_host.get()));
    QVariantList records;
    for (const int id : {1, 2, 3}) {
        records.append(
            QVariantMap{{"deviceID", id}, {"deviceName", QString("Speaker %1").arg(id)}, {"ip", "10.0.0.1"}});
    }
    m_link->answer("RetrieveIPAudioModel", records);
    QTRY_COMPARE(m_targets->total(), 5);
}

void TestTalkControl::cleanup()
{
    m_talk.reset();
    m_targets.reset();
    m_watch.reset();
    m_plugin.reset();
    m_host.reset();
    m_link.reset();
}

void TestTalkControl::openCamera()
{
    m_targets->choose("camera:gate", true);
    m_talk->start();
    QCOMPARE(m_talk->phase(), TalkControl::Asking);
    QCOMPARE(state("camera:gate"), TargetModel::Asked);
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "token"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
}

void TestTalkControl::openCameraByKey()
{
    m_targets->choose("camera:gate", true);
    m_talk->press();
    QCOMPARE(m_talk->phase(), TalkControl::Asking);
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "token"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
}

void TestTalkControl::answerSpeaker(int id, const QString& error, const QString& code)
{
    for (int at = m_link->sent.size() - 1; at >= 0; --at) {
        if (m_link->sent[at] == "StartTalkToIPAudio" && m_link->payloads[at].toInt() == id) {
            m_link->answerAt(
                at, QVariantMap{{"deviceID", id}, {"talkToken", QString("t%1").arg(id)}, {"error", error}},
                code);
            return;
        }
    }
    QFAIL("it was not asked for");
}

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

void TestTalkControl::noConnection()
{
    m_talk->setOnline(false);
    m_targets->choose("camera:gate", true);
    m_talk->start();
    QCOMPARE(m_talk->problem(), QString("There is no connection to the server."));
    QVERIFY(!m_link->sent.contains("StartTalk"));
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
    m_packets.clear();
    QTest::qWait(200);
    QVERIFY(m_packets.isEmpty());
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
}

void TestTalkControl::heldKey()
{
    m_targets->choose("camera:gate", true);
    m_talk->press();
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "t"}});
    QVERIFY(talking());
    m_talk->release();
    QVERIFY(talking()); // the last sound goes out
    QTRY_VERIFY(!talking());
    QCOMPARE(m_talk->phase(), TalkControl::Idle);
    // A talk that the button opened does not end with the key.
    openCamera();
    m_talk->press();
    m_talk->release();
    QTest::qWait(600);
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
}

void TestTalkControl::keyTwiceInHaste()
{
    m_targets->choose("camera:gate", true);
    m_talk->press();
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "t"}});
    m_talk->release();
    m_talk->press(); // the same talk goes on
    QTest::qWait(600);
    QVERIFY(talking());
    QCOMPARE(m_link->sent.count("StartTalk"), 1);
    m_talk->release();
    QTRY_VERIFY(!talking());
}

void TestTalkControl::startWithinTheTail()
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

void TestTalkControl::startWithinTheTailOfACall()
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

void TestTalkControl::chosenWithinTheTail()
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

void TestTalkControl::endedWithinTheTail()
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

void TestTalkControl::muteWithinTheTail()
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

void TestTalkControl::lostWithinTheTail()
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

void TestTalkControl::heldKeyWhileMuted()
{
    openCamera();
    m_talk->setMuted(true);
    m_talk->press();
    QVERIFY(!m_talk->isMuted());
    m_talk->release();
    QVERIFY(m_talk->isMuted());
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
}

void TestTalkControl::heldKeyWhileMutedAtRest()
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

void TestTalkControl::heldKeyWithoutATalk()
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

void TestTalkControl::muteWhileTheKeyIsHeld()
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

void TestTalkControl::whileHeld()
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
