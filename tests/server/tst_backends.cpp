// Talks over devices that are slow, refuse, lose their line and signal from other threads.

#include "protocol/Words.h"
#include "tests/server/AwkwardServer.h"

#include <optional>

class TestBackends : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensLate();
    void refusesLate();
    void speakerRefusesLate();
    void neverOpens();
    void laterSignalsAreIgnored();
    void losesItsLine();
    void losesItsLineWhileItHears();
    void losesOneOfSeveral();
    void losesOneTwice();
    void lossIsOverWithTheLastStop();
    void namedTwiceHearsOnce();
    void lostWhileAnotherOpens();
    void stopAfterALoss();
    void stoppingASpeakerForgetsTheOthers();
    void stoppingASpeakerForgetsWhatIsLost();
    void stoppingASpeakerSparesWhatOpens();
    void stoppingASpeakerSparesOtherClients();
    void speaksFromAnotherThread();
    void speaksOnWhileAllEnds();
    void answersAClose();
    void neverAnswersAClose();
    void clientLeavesWhileItOpens();
    void stoppedWhileItOpens();
    void openLinesAreLimited();
    void linesThatCloseCount();
    void linesThatCloseDoNotCountForASuccessor();
    void lostTargetsDoNotCount();
    void linesThatCloseAreLimited();
};

namespace {

QVariantMap disconnected(const QString& token)
{
    return {{"TalkDisconnected", QVariantMap{{"Token", token}}}};
}

} // namespace

void TestBackends::opensLate()
{
    Awkward server;
    std::vector<std::pair<quint64, QVariantMap>> answers;
    connect(server.harness->session.get(), &ServerSession::replied, this,
            [&](const QString&, quint64 request, const ServerReply& reply) {
                answers.emplace_back(request, reply.result.toMap());
            });
    const quint64 gateAsked = server.harness->submit("StartTalk", gate);
    const quint64 dockAsked = server.harness->submit("StartTalk", QVariantMap{{"camId", "dock"}});
    QCoreApplication::processEvents();
    QVERIFY(answers.empty()); // the line is not open
    server.talk(1).open();
    QVERIFY(ServerHarness::waitFor([&] { return answers.size() == 1; }));
    server.talk(0).open();
    QVERIFY(ServerHarness::waitFor([&] { return answers.size() == 2; }));
    QCOMPARE(answers[0].first, dockAsked); // each answer belongs to its request
    QCOMPARE(answers[0].second["camId"], QVariant("dock"));
    QCOMPARE(answers[1].first, gateAsked);
    QCOMPARE(answers[1].second["relayPath"], QVariant("r"));
    QVERIFY(answers[0].second["talkToken"] != answers[1].second["talkToken"]);
    QCOMPARE(server.say({answers[1].second["talkToken"].toString()}).returnCode, ReturnCode::success);
    QCOMPARE(server.talk(0).heard, 1);
    QCOMPARE(server.talk(1).heard, 0);
}

void TestBackends::refusesLate()
{
    Awkward server;
    server.harness->submit("StartTalk", gate);
    server.talk(0).refuse(ReturnCode::noVoice, "wrong password");
    QVERIFY(ServerHarness::waitFor([&] { return server.harness->replies.size() == 1; }));
    QCOMPARE(server.harness->replies[0].reply.returnCode, ReturnCode::noVoice);
    QCOMPARE(server.harness->replies[0].reply.errorText, QString("wrong password"));
    QCOMPARE(server.settled(), std::size_t{0});
    QVERIFY(server.isGone(0));
}

void TestBackends::speakerRefusesLate()
{
    Awkward server;
    const int speaker = server.addSpeaker("Hall");
    server.harness->replies.clear();
    server.harness->submit("StartTalkToIPAudio", speaker);
    server.talk(0).refuse(ReturnCode::speakerOffline, "busy");
    QVERIFY(ServerHarness::waitFor([&] { return server.harness->replies.size() == 1; }));
    QCOMPARE(server.devices->passwords, QStringList{"p"});
    // Any other code would end the client's other talks.
    QCOMPARE(server.harness->replies[0].reply.returnCode, ReturnCode::success);
    QCOMPARE(server.harness->replies[0].reply.result.toMap(), (QVariantMap{{"error", "busy"}}));
}

void TestBackends::neverOpens()
{
    TalkLimits limits;
    limits.opening = 50;
    Awkward server(limits);
    QElapsedTimer clock;
    clock.start();
    const ServerReply reply = server.harness->ask("StartTalk", gate);
    QVERIFY(clock.elapsed() >= 49);
    QCOMPARE(reply.returnCode, ReturnCode::cameraOffline);
    QVERIFY(reply.errorText.contains("in time"));
}

void TestBackends::laterSignalsAreIgnored()
{
    Awkward server;
    const QString token = server.open();
    server.harness->replies.clear();
    server.talk(0).open();
    server.talk(0).refuse(ReturnCode::noVoice, "too late");
    QCOMPARE(server.settled(), std::size_t{0});
    QVERIFY(server.harness->replies.empty());
    QCOMPARE(server.say({token}).returnCode, ReturnCode::success);
    server.talk(0).lose();
    server.talk(0).lose();
    server.talk(0).open();
    QVERIFY(server.waitForEvents(1));
}

void TestBackends::losesItsLine()
{
    Awkward server;
    const QString token = server.open();
    server.talk(0).lose();
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(server.harness->events[0].name, QString("TalkDisconnected"));
    QCOMPARE(server.harness->events[0].payload, disconnected(token));
    QVERIFY(server.isGone(0));
    QCOMPARE(server.say({token}).returnCode, ReturnCode::noSuchTalk);
}

void TestBackends::losesItsLineWhileItHears()
{
    Awkward server;
    server.devices->losesAfter = 2;
    const QString first = server.open();
    const QString second = server.open("StartTalk", QVariantMap{{"camId", "dock"}});
    QCOMPARE(server.say({first, second}).returnCode, ReturnCode::success);
    QCOMPARE(server.settled(), std::size_t{0});
    QCOMPARE(server.say({first, second}).returnCode, ReturnCode::success);
    QVERIFY(server.waitForEvents(2));
    QCOMPARE(server.harness->events[0].name, Words::TalkTargetLost);
    QCOMPARE(server.harness->events[1].payload, disconnected(second));
}

void TestBackends::losesOneOfSeveral()
{
    Awkward server;
    const int hall = server.addSpeaker("Hall");
    const QString camera = server.open();
    const QString speaker = server.openSpeaker(hall);
    server.talk(1).lose("the line is cut");
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(server.harness->events[0].name, Words::TalkTargetLost);
    const QVariantMap expected{{"Token", speaker}, {"deviceID", hall}, {"error", "the line is cut"}};
    QCOMPARE(server.harness->events[0].payload, expected);
    // The client goes on sending to both.
    QCOMPARE(server.say({camera, speaker}).returnCode, ReturnCode::success);
    QCOMPARE(server.talk(0).heard, 1);
    server.talk(0).lose();
    QVERIFY(server.waitForEvents(2));
    QCOMPARE(server.harness->events[1].name, QString("TalkDisconnected"));
    QCOMPARE(server.harness->events[1].payload, disconnected(camera));
    // A new talk knows nothing of the old one.
    server.open();
    server.talk(2).lose();
    QVERIFY(server.waitForEvents(3));
    QCOMPARE(server.harness->events[2].name, QString("TalkDisconnected"));
}

void TestBackends::losesOneTwice()
{
    Awkward server;
    server.open();
    const QString dock = server.open("StartTalk", QVariantMap{{"camId", "dock"}});
    server.talk(0).lose();
    server.talk(0).lose(); // on its way before the first is handled
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(server.harness->events[0].name, Words::TalkTargetLost);
    QCOMPARE(server.say({dock}).returnCode, ReturnCode::success);
}

void TestBackends::lossIsOverWithTheLastStop()
{
    Awkward server;
    server.open();
    const QString dock = server.open("StartTalk", QVariantMap{{"camId", "dock"}});
    server.talk(0).lose();
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(server.stop(dock).returnCode, ReturnCode::success);
    // The next talk fails to open, and has lost nothing.
    const quint64 request = server.harness->submit("StartTalk", gate);
    server.talk(2).refuse(ReturnCode::cameraOffline, "off");
    QCOMPARE(server.harness->waitForReply(request).returnCode, ReturnCode::cameraOffline);
    QCOMPARE(server.settled(), std::size_t{1});
}

void TestBackends::namedTwiceHearsOnce()
{
    Awkward server;
    const QString token = server.open();
    QCOMPARE(server.say({token, token}).returnCode, ReturnCode::success);
    QCOMPARE(server.talk(0).heard, 1);
}

void TestBackends::lostWhileAnotherOpens()
{
    Awkward server;
    const int hall = server.addSpeaker("Hall");
    const QString camera = server.open();
    server.harness->submit("StartTalkToIPAudio", hall);
    server.talk(0).lose();
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(server.harness->events[0].name, Words::TalkTargetLost);
    QCOMPARE(server.harness->events[0].payload["camId"], QVariant("gate"));
    server.talk(1).refuse(ReturnCode::speakerOffline, "busy"); // nobody is left
    QVERIFY(server.waitForEvents(2));
    QCOMPARE(server.harness->events[1].name, QString("TalkDisconnected"));
    QCOMPARE(server.harness->events[1].payload, disconnected(camera));
}

void TestBackends::stopAfterALoss()
{
    Awkward server;
    const QString first = server.open();
    const QString second = server.open("StartTalk", QVariantMap{{"camId", "dock"}});
    server.talk(0).lose();
    QVERIFY(server.waitForEvents(1));
    // The client ends its talk with a stop for each target.
    QCOMPARE(server.stop(first).returnCode, ReturnCode::success);
    QCOMPARE(server.stop(second).returnCode, ReturnCode::success);
    QCOMPARE(server.stop(first).returnCode, ReturnCode::noSuchTalk);
    QCOMPARE(server.settled(), std::size_t{1});
}

// A client that stops one speaker drops all targets that it has.
void TestBackends::stoppingASpeakerForgetsTheOthers()
{
    Awkward server;
    ServerHarness& harness = *server.harness;
    const int hall = server.addSpeaker("Hall");
    const int roof = server.addSpeaker("Roof");
    const QString camera = server.open();
    server.openSpeaker(hall);
    server.openSpeaker(roof);
    QCOMPARE(harness.ask("StopTalkToIPAudio", hall).returnCode, ReturnCode::success);
    QCOMPARE(server.talk(0).closes, 0); // deliberate: only the one speaker is closed
    QCOMPARE(server.say({camera}).returnCode, ReturnCode::success);
    const QString fresh = server.openSpeaker(hall);
    server.talk(3).lose();
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(harness.events[0].name, QString("TalkDisconnected"));
    QCOMPARE(harness.events[0].payload, disconnected(fresh));
    // The loss of one that the client does not know is no news.
    server.talk(0).lose();
    QVERIFY(ServerHarness::waitFor([&] { return server.isGone(0); }));
    QCOMPARE(server.settled(), std::size_t{1});
    QCOMPARE(server.say({camera}).returnCode, ReturnCode::noSuchTalk);
    // The others can still be closed.
    QCOMPARE(harness.ask("StopTalkToIPAudio", roof).returnCode, ReturnCode::success);
    QVERIFY(ServerHarness::waitFor([&] { return server.isGone(2); }));
}

void TestBackends::stoppingASpeakerForgetsWhatIsLost()
{
    Awkward server;
    ServerHarness& harness = *server.harness;
    const int hall = server.addSpeaker("Hall");
    server.open();
    server.openSpeaker(hall);
    server.talk(0).lose();
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(harness.ask("StopTalkToIPAudio", hall).returnCode, ReturnCode::success);
    const quint64 request = harness.submit("StartTalk", gate);
    server.talk(2).refuse(ReturnCode::cameraOffline, "off");
    QCOMPARE(harness.waitForReply(request).returnCode, ReturnCode::cameraOffline);
    QCOMPARE(server.settled(), std::size_t{1}); // the talk of the lost camera was over before
}

void TestBackends::stoppingASpeakerSparesWhatOpens()
{
    Awkward server;
    ServerHarness& harness = *server.harness;
    const int hall = server.addSpeaker("Hall");
    server.openSpeaker(hall);
    const quint64 camera = harness.submit("StartTalk", gate);
    QCOMPARE(harness.ask("StopTalkToIPAudio", hall).returnCode, ReturnCode::success);
    // The client gets this target after it has dropped the others.
    server.talk(1).open();
    const QString token = harness.waitForReply(camera).result.toMap()["talkToken"].toString();
    server.talk(1).lose();
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(harness.events[0].payload, disconnected(token));
}

void TestBackends::stoppingASpeakerSparesOtherClients()
{
    Awkward server;
    ServerHarness& harness = *server.harness;
    const int hall = server.addSpeaker("Hall");
    ServerSession other(*harness.server);
    QSignalSpy replies(&other, &ServerSession::replied);
    QSignalSpy events(&other, &ServerSession::eventRaised);
    other.submit("StartTalk", gate, 1);
    server.talk(0).open();
    QVERIFY(ServerHarness::waitFor([&] { return replies.size() == 1; }));
    server.openSpeaker(hall);
    QCOMPARE(harness.ask("StopTalkToIPAudio", hall).returnCode, ReturnCode::success);
    server.talk(0).lose();
    QVERIFY(ServerHarness::waitFor([&] { return events.size() == 1; }));
    QCOMPARE(events[0][0].toString(), QString("TalkDisconnected"));
    QCOMPARE(server.settled(), std::size_t{0});
}

void TestBackends::speaksFromAnotherThread()
{
    Awkward server;
    server.harness->submit("StartTalk", gate);
    VoicePacket packet;
    packet.bitstream = "sound";
    packet.streamType = 8192;
    packet.sampleRate = 8000;
    packet.frames = 3;
    server.talk(0).speak(packet); // too early: the client has no token
    server.talk(0).open();
    QVERIFY(ServerHarness::waitFor([&] { return !server.harness->replies.empty(); }));
    const QString token = server.harness->replies[0].reply.result.toMap()["talkToken"].toString();
    server.talk(0).speak(packet);
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(server.harness->events[0].name, QString("AudioReceived"));
    const QVariantMap fields = server.harness->events[0].payload["AudioReceived"].toMap();
    QCOMPARE(fields["Token"], QVariant(token));
    QCOMPARE(fields["StreamType"], QVariant(8192U));
    QCOMPARE(fields["FrameNumber"], QVariant(3U));
    QCOMPARE(fields["BitstreamSize"], QVariant(5U));
    QVERIFY(QByteArray::fromBase64(fields["AudioData"].toString().toLatin1()).endsWith("sound"));
    server.devices->answersClose = false;
    server.stop(token);
    server.talk(0).speak(packet);
    QCOMPARE(server.settled(), std::size_t{1});
}

void TestBackends::speaksOnWhileAllEnds()
{
    for (const bool answersClose : {true, false}) {
        TalkLimits limits;
        limits.closing = 20;
        Awkward server(limits);
        server.devices->answersClose = answersClose;
        const QString token = server.open();
        server.talk(0).speakOn();
        QVERIFY(ServerHarness::waitFor([&] { return server.harness->events.size() > 20; }));
        server.stop(token);
        QVERIFY(ServerHarness::waitFor([&] { return server.isGone(0); }));
        server.open();
        server.talk(1).speakOn();
        server.harness.reset(); // the server ends in the middle of it
        QVERIFY(server.isGone(1));
    }
}

void TestBackends::answersAClose()
{
    Awkward server;
    const QString token = server.open();
    QCOMPARE(server.stop(token).returnCode, ReturnCode::success);
    QVERIFY(ServerHarness::waitFor([&] { return server.isGone(0); }, 2000));
}

void TestBackends::neverAnswersAClose()
{
    TalkLimits limits;
    limits.closing = 100;
    Awkward server(limits);
    server.devices->answersClose = false;
    const QString token = server.open();
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(server.stop(token).returnCode, ReturnCode::success); // the client does not wait for it
    QCOMPARE(server.talk(0).closes, 1);
    QVERIFY(!server.open().isEmpty());
    QVERIFY(ServerHarness::waitFor([&] { return server.isGone(0); }));
    QVERIFY(clock.elapsed() >= 99);
}

void TestBackends::clientLeavesWhileItOpens()
{
    Awkward server;
    server.devices->answersClose = false;
    server.harness->submit("StartTalk", gate);
    server.harness->session.reset();
    QCOMPARE(server.talk(0).closes, 1);
    server.talk(0).open();
    server.talk(0).lose();
    QCOMPARE(server.settled(), std::size_t{0});
    QVERIFY(server.harness->replies.empty());
}

void TestBackends::stoppedWhileItOpens()
{
    Awkward server;
    const int hall = server.addSpeaker("Hall");
    server.harness->replies.clear();
    server.harness->submit("StartTalkToIPAudio", hall);
    server.harness->submit("StopTalkToIPAudio", hall);
    QVERIFY(ServerHarness::waitFor([&] { return server.harness->replies.size() == 2; }));
    QCOMPARE(server.harness->replies[0].command, QString("StartTalkToIPAudio"));
    QVERIFY(!server.harness->replies[0].reply.result.toMap()["error"].toString().isEmpty());
    QCOMPARE(server.harness->replies[1].reply.returnCode, ReturnCode::success);
}

void TestBackends::openLinesAreLimited()
{
    Awkward server;
    server.devices->answersClose = false;
    for (int i = 0; i < 4096; ++i) {
        server.harness->submit("StartTalk", gate); // none of them opens
    }
    QCOMPARE(server.harness->ask("StartTalk", gate).returnCode, ReturnCode::malformedRequest);
    const int hall = server.addSpeaker("Hall");
    const ServerReply speaker = server.harness->ask("StartTalkToIPAudio", hall);
    QCOMPARE(speaker.returnCode, ReturnCode::success);
    QVERIFY(!speaker.result.toMap()["error"].toString().isEmpty());
    QCOMPARE(server.devices->talks.size(), std::size_t{4096});
}

void TestBackends::linesThatCloseCount()
{
    TalkLimits limits;
    limits.closing = 600000;
    Awkward server(limits);
    server.devices->answersClose = false;
    const int hall = server.addSpeaker("Hall");
    for (int i = 0; i < 4096; ++i) {
        server.harness->submit("StartTalkToIPAudio", hall);
    }
    QCOMPARE(server.harness->ask("StopTalkToIPAudio", hall).returnCode, ReturnCode::success);
    QCOMPARE(server.devices->closedTalks, 4096);
    QCOMPARE(server.harness->ask("StartTalk", gate).returnCode, ReturnCode::malformedRequest);
    QCOMPARE(server.devices->talks.size(), std::size_t{4096});
}

// Its session may have the address of the one before.
void TestBackends::linesThatCloseDoNotCountForASuccessor()
{
    TalkLimits limits;
    limits.closing = 600000;
    Awkward server(limits);
    server.devices->answersClose = false;
    std::optional<ServerSession> client(std::in_place, *server.harness->server);
    for (quint64 i = 1; i <= 4096; ++i) {
        client->submit("StartTalk", gate, i);
    }
    QCOMPARE(server.devices->talks.size(), std::size_t{4096});
    client.emplace(*server.harness->server);
    QCOMPARE(server.devices->closedTalks, 4096);
    client->submit("StartTalk", gate, 1);
    QCOMPARE(server.devices->talks.size(), std::size_t{4097});
}

void TestBackends::lostTargetsDoNotCount()
{
    Awkward server;
    const QString kept = server.open();
    QStringList lost;
    for (int i = 1; i <= 4100; ++i) {
        const quint64 request = server.harness->submit("StartTalk", gate);
        AwkwardTalk& talk = server.talk(static_cast<std::size_t>(i));
        Q_EMIT talk.opened();
        QCoreApplication::processEvents();
        lost.append(server.harness->waitForReply(request).result.toMap()["talkToken"].toString());
        QVERIFY2(!lost.back().isEmpty(), qPrintable(QString::number(i)));
        server.harness->replies.clear();
        Q_EMIT talk.lost("the line is cut");
    }
    QVERIFY(server.waitForEvents(4100));
    // Those that are still known swallow what is said to them; they are not kept without an end.
    server.harness->replies.clear();
    for (const QString& token : qAsConst(lost)) {
        server.harness->submit("StopTalk", QVariantMap{{"talkToken", token}});
    }
    QVERIFY(ServerHarness::waitFor([&] { return server.harness->replies.size() == 4100; }));
    QCOMPARE(std::count_if(server.harness->replies.begin(), server.harness->replies.end(),
                           [](const auto& each) { return each.reply.returnCode == ReturnCode::success; }),
             std::ptrdiff_t{4096});
    QCOMPARE(server.say({kept}).returnCode, ReturnCode::success);
    server.talk(0).lose();
    QVERIFY(server.waitForEvents(4101));
    QCOMPARE(server.harness->events.back().payload, disconnected(kept));
}

void TestBackends::linesThatCloseAreLimited()
{
    TalkLimits limits;
    limits.maxClosing = 3;
    Awkward server(limits);
    server.devices->answersClose = false;
    for (std::size_t i = 0; i < 5; ++i) {
        QCOMPARE(server.stop(server.open()).returnCode, ReturnCode::success);
        QCOMPARE(server.isGone(i) || server.talk(i).closes == 1, true);
    }
    QVERIFY(ServerHarness::waitFor([&] { return server.isGone(3) && server.isGone(4); }, 2000));
    QVERIFY(!server.isGone(0) && !server.isGone(1) && !server.isGone(2));
    QCOMPARE(server.devices->closedTalks, 5); // each line is closed, also one that is left to itself
}

QTEST_GUILESS_MAIN(TestBackends)
#include "tst_backends.moc"
