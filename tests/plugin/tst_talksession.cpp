#include "tests/plugin/PluginFixture.h"

#include <QTest>

class TestTalkSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stopInIdle();
    void startSendsTheRequest();
    void startWithoutCapture();
    void startRefusedByTheHost();
    void startWithoutAFramework();
    void startWhileTalking();
    void startTwiceBeforeTheReply();
    void stopWhileRequested();
    void hostNeverReplies();
    void successfulReply();
    void repliesBecomeTexts();
    void replyWithoutKeys();
    void refusedReply();
    void refusalWhileTalkingStopsCaptureOnly();
    void racingReplies();
    void stopClosesEachTargetInOrder();
    void failedStopReplyChangesNothing();
    void stopTalkRefusedByTheHost();
    void disconnectionOfAKnownTarget();
    void disconnectionWithoutTheFlag();
    void disconnectionOfAnUnknownTarget_data();
    void disconnectionOfAnUnknownTarget();
    void emptyTokenIsAToken();
    void microphoneVolumeLimits_data();
    void microphoneVolumeLimits();
    void muteOnAndOff();
    void volumeAndMuteWithoutATalk();
    void setTalkingEmitsChangesOnly();
    void forcedTalkingStopsCapture();
    void setTalkTargetListSwaps();
    void replacedWrapperIsUsedAndReleased();
    void secondStartAfterAFailedStart();
};

namespace {

QVariantMap reply(const QString& token)
{
    return {{"camId", "cam"}, {"talkToken", token}, {"relayPath", "relay"}};
}

} // namespace

void TestTalkSession::stopInIdle()
{
    PluginFixture f;
    FakeFrameSmith::clearCalls();
    QVERIFY(f.plugin->stopTalk());
    QVERIFY(f.framework.commands.empty());
    QVERIFY(FakeFrameSmith::functions().isEmpty());
}

void TestTalkSession::startSendsTheRequest()
{
    PluginFixture f;
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkResponse);
    QVERIFY(f.plugin->startTalk("camera 7", "relay/1"));
    QCOMPARE(FakeFrameSmith::functions().last(), QStringLiteral("FrameSmith_StartAudioCapture"));
    QCOMPARE(f.framework.commands.size(), std::size_t{1});
    const auto& command = f.framework.commands[0];
    QCOMPARE(command.command, QStringLiteral("StartTalk"));
    COMPARE_VARIANTS(command.map(), (QVariantMap{{"camId", "camera 7"}, {"relayPath", "relay/1"}}));
    QCOMPARE(command.pluginHandle, &f.handle);
    QCOMPARE(command.pluginId, QStringLiteral("710EF4C43CF94BB2A4A359E0796BC4F5"));
    QCOMPARE(command.userData, nullptr);
    QCOMPARE(command.flag, false);
    QVERIFY(command.extra.isEmpty());
    QVERIFY(!f.plugin->talking());
    QCOMPARE(response.count(), 0);
}

void TestTalkSession::startWithoutCapture()
{
    PluginFixture f;
    FakeFrameSmith::fail("FrameSmith_StartAudioCapture", -5);
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkResponse);
    QVERIFY(!f.plugin->startTalk("cam", ""));
    QCOMPARE(f.log.errors().last(), QStringLiteral("PluginVoiceDesk::startTalk, start audio capture failed"));
    QVERIFY(f.framework.commands.empty());
    QCOMPARE(response.count(), 0);
}

void TestTalkSession::startRefusedByTheHost()
{
    PluginFixture f;
    f.framework.accepts = false;
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkResponse);
    QVERIFY(!f.plugin->startTalk("cam", ""));
    QVERIFY(!FakeFrameSmith::functions().contains("FrameSmith_StopAudioCapture")); // capture is left running
    QCOMPARE(response.count(), 0);
    QVERIFY(f.log.errors().isEmpty());
}

void TestTalkSession::startWithoutAFramework()
{
    FakeFrameSmith::reset();
    LogCapture log;
    PluginVoiceDesk plugin;
    QVERIFY(plugin.InitialPluginBase(nullptr, nullptr, nullptr));
    QVERIFY(!plugin.startTalk("cam", ""));
    QVERIFY(FakeFrameSmith::functions().contains("FrameSmith_StartAudioCapture"));
    QVERIFY(!FakeFrameSmith::functions().contains("FrameSmith_StopAudioCapture"));
    QVERIFY(log.errors().isEmpty());
}

void TestTalkSession::startWhileTalking()
{
    PluginFixture f;
    f.openCameraTalk("t");
    f.framework.commands.clear();
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkResponse);
    QVERIFY(f.plugin->startTalk("another", ""));
    QVERIFY(f.framework.commands.empty());
    QCOMPARE(response.count(), 0);
    QCOMPARE(f.plugin->getTalkTargetList().size(), 1);
}

void TestTalkSession::startTwiceBeforeTheReply()
{
    PluginFixture f;
    QVERIFY(f.plugin->startTalk("one", ""));
    FakeFrameSmith::clearCalls();
    QVERIFY(f.plugin->startTalk("two", ""));
    QVERIFY(FakeFrameSmith::functions().isEmpty()); // capture runs already
    QCOMPARE(f.framework.names(), (QStringList{"StartTalk", "StartTalk"}));
}

void TestTalkSession::stopWhileRequested()
{
    PluginFixture f;
    f.plugin->startTalk("cam", "");
    f.framework.commands.clear();
    FakeFrameSmith::clearCalls();
    QVERIFY(f.plugin->stopTalk());
    QVERIFY(f.framework.commands.empty());
    QVERIFY(FakeFrameSmith::functions().isEmpty());
    f.reply("StartTalk", "0", reply("t")); // the request is still good
    QVERIFY(f.plugin->talking());
}

void TestTalkSession::hostNeverReplies()
{
    PluginFixture f;
    f.plugin->startTalk("cam", "");
    f.framework.commands.clear();
    for (int i = 0; i < 5; ++i) {
        FakeFrameSmith::deliver(QByteArray(660, 'x'), 20, 8192, 0);
    }
    QCoreApplication::processEvents();
    QVERIFY(f.framework.commands.empty());
    QVERIFY(!f.plugin->talking());
    QVERIFY(!FakeFrameSmith::functions().contains("FrameSmith_StopAudioCapture"));
}

void TestTalkSession::successfulReply()
{
    PluginFixture f;
    QStringList order;
    connect(f.plugin.get(), &PluginVoiceDesk::talkingChanged, this,
            [&] { order << QStringLiteral("talkingChanged %1").arg(f.plugin->getTalkTargetList().size()); });
    connect(f.plugin.get(), &PluginVoiceDesk::startTalkResponse, this,
            [&](bool success) { order << QStringLiteral("startTalkResponse %1").arg(success); });
    f.plugin->startTalk("asked", "asked");
    f.reply("StartTalk", "0", reply("token"));
    QCOMPARE(order, (QStringList{"talkingChanged 1", "startTalkResponse 1"}));
    // What counts is the server's word, not the request's.
    COMPARE_VARIANTS(
        f.plugin->getTalkTargetList(),
        (QList<QVariant>{QVariantMap{{"camId", "cam"}, {"talkToken", "token"}, {"relayPath", "relay"}}}));
}

void TestTalkSession::repliesBecomeTexts()
{
    PluginFixture f;
    f.reply("StartTalk", "0", QVariantMap{{"camId", 7}, {"talkToken", 8}, {"relayPath", 9}});
    COMPARE_VARIANTS(f.plugin->getTalkTargetList(),
                     (QVariantList{QVariantMap{{"camId", "7"}, {"talkToken", "8"}, {"relayPath", "9"}}}));
}

void TestTalkSession::replyWithoutKeys()
{
    PluginFixture f;
    for (const QVariant& result : {QVariant(), QVariant(5), QVariant(QVariantMap{{"camid", "x"}})}) {
        f.plugin->setTalkTargetList(*std::make_unique<QList<QVariant>>());
        f.reply("StartTalk", "0", result);
        const QVariantMap entry = f.plugin->getTalkTargetList().value(0).toMap();
        COMPARE_VARIANTS(entry, (QVariantMap{{"camId", ""}, {"talkToken", ""}, {"relayPath", ""}}));
    }
}

void TestTalkSession::refusedReply()
{
    PluginFixture f;
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkResponse);
    QSignalSpy changed(f.plugin.get(), &PluginVoiceDesk::talkingChanged);
    QStringList callsBefore;
    connect(f.plugin.get(), &PluginVoiceDesk::startTalkResponse, this,
            [&callsBefore] { callsBefore = FakeFrameSmith::functions(); });
    f.plugin->startTalk("cam", "");
    f.reply("StartTalk", "201", reply("token"));
    QVERIFY(callsBefore.contains("FrameSmith_StopAudioCapture")); // silent before the front end hears of it
    QCOMPARE(response.count(), 1);
    QCOMPARE(response[0][0].toBool(), false);
    QCOMPARE(changed.count(), 0);
    QVERIFY(f.plugin->getTalkTargetList().isEmpty());
    QCOMPARE(FakeFrameSmith::functions().mid(FakeFrameSmith::functions().size() - 2),
             (QStringList{"FrameSmith_StopAudioCapture", "FrameSmith_DeleteAudioCaptureChannel"}));
    QVERIFY(f.log.errors().isEmpty());
}

void TestTalkSession::refusalWhileTalkingStopsCaptureOnly()
{
    PluginFixture f;
    f.plugin->startTalk("one", "");
    f.plugin->startTalk("two", "");
    f.reply("StartTalk", "0", reply("t"));
    FakeFrameSmith::clearCalls();
    f.reply("StartTalk", "202");
    QVERIFY(FakeFrameSmith::functions().contains("FrameSmith_StopAudioCapture"));
    QVERIFY(f.plugin->talking());
    QCOMPARE(f.plugin->getTalkTargetList().size(), 1);
}

void TestTalkSession::racingReplies()
{
    PluginFixture f;
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkResponse);
    QSignalSpy changed(f.plugin.get(), &PluginVoiceDesk::talkingChanged);
    f.plugin->startTalk("one", "");
    f.plugin->startTalk("two", "");
    f.reply("StartTalk", "0", reply("first"));
    f.reply("StartTalk", "0", reply("second"));
    QCOMPARE(f.plugin->getTalkTargetList().size(), 2);
    QCOMPARE(f.plugin->getTalkTargetList()[1].toMap()["talkToken"].toString(), QStringLiteral("second"));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(response.count(), 2);
}

void TestTalkSession::stopClosesEachTargetInOrder()
{
    PluginFixture f;
    f.plugin->startTalk("one", "");
    f.plugin->startTalk("two", "");
    f.reply("StartTalk", "0", reply("first"));
    f.reply("StartTalk", "0", QVariantMap{{"camId", "c"}, {"talkToken", "second"}});
    f.framework.commands.clear();
    FakeFrameSmith::clearCalls();
    QStringList order;
    f.framework.onCommand = [&](const RecordingFramework::Command& command) {
        order << QStringLiteral("%1 capture calls %2, targets %3, talking %4")
                     .arg(command.map()["talkToken"].toString())
                     .arg(FakeFrameSmith::calls().size())
                     .arg(f.plugin->getTalkTargetList().size())
                     .arg(f.plugin->talking());
    };
    connect(f.plugin.get(), &PluginVoiceDesk::talkingChanged, this, [&] {
        order << QStringLiteral("talkingChanged %1, targets %2")
                     .arg(f.plugin->talking())
                     .arg(f.plugin->getTalkTargetList().size());
    });
    QVERIFY(f.plugin->stopTalk());
    QCOMPARE(order,
             (QStringList{"first capture calls 2, targets 2, talking 1",
                          "second capture calls 2, targets 2, talking 1", "talkingChanged 0, targets 0"}));
    QCOMPARE(f.framework.names(), (QStringList{"StopTalk", "StopTalk"}));
    COMPARE_VARIANTS(f.framework.commands[0].map(),
                     (QVariantMap{{"talkToken", "first"}, {"relayPath", "relay"}}));
    COMPARE_VARIANTS(f.framework.commands[1].map(),
                     (QVariantMap{{"talkToken", "second"}, {"relayPath", ""}}));
    QCOMPARE(f.framework.commands[0].userData, nullptr);
}

void TestTalkSession::failedStopReplyChangesNothing()
{
    PluginFixture f;
    f.openCameraTalk("t");
    f.plugin->stopTalk();
    f.openCameraTalk("u");
    f.framework.commands.clear();
    FakeFrameSmith::clearCalls();
    for (const char* code : {"0", "203", "-2"}) {
        f.reply("StopTalk", code);
        f.reply("TalkData", code);
    }
    QVERIFY(f.plugin->talking());
    QCOMPARE(f.plugin->getTalkTargetList().size(), 1);
    QVERIFY(f.framework.commands.empty());
    QVERIFY(FakeFrameSmith::functions().isEmpty());
}

void TestTalkSession::stopTalkRefusedByTheHost()
{
    PluginFixture f;
    f.openCameraTalk("t");
    f.framework.accepts = false;
    QVERIFY(f.plugin->stopTalk());
    QVERIFY(!f.plugin->talking());
    QVERIFY(f.plugin->getTalkTargetList().isEmpty());
}

void TestTalkSession::disconnectionOfAKnownTarget()
{
    PluginFixture f;
    f.plugin->startTalk("one", "");
    f.plugin->startTalk("two", "");
    f.reply("StartTalk", "0", reply("first"));
    f.reply("StartTalk", "0", reply("second"));
    f.framework.commands.clear();
    QStringList order;
    connect(f.plugin.get(), &PluginVoiceDesk::talkingChanged, this, [&] { order << "talkingChanged"; });
    connect(f.plugin.get(), &PluginVoiceDesk::talkDisconnected, this, [&] { order << "talkDisconnected"; });
    f.event("TalkDisconnected", PluginFixture::disconnected("second"));
    // The whole talk ends; the lost target gets its StopTalk, too.
    QCOMPARE(f.framework.names(), (QStringList{"StopTalk", "StopTalk"}));
    QCOMPARE(order, (QStringList{"talkingChanged", "talkDisconnected"}));
    QVERIFY(f.plugin->getTalkTargetList().isEmpty());
    QVERIFY(FakeFrameSmith::functions().contains("FrameSmith_StopAudioCapture"));
}

void TestTalkSession::disconnectionWithoutTheFlag()
{
    // The token alone decides: a stop that finds nothing to do is still reported.
    PluginFixture f;
    QList<QVariant> targets{QVariantMap{{"talkToken", "t"}}};
    f.plugin->setTalkTargetList(targets);
    QVERIFY(!f.plugin->talking());
    QSignalSpy disconnected(f.plugin.get(), &PluginVoiceDesk::talkDisconnected);
    f.event("TalkDisconnected", PluginFixture::disconnected("t"));
    QCOMPARE(disconnected.count(), 1);
    QVERIFY(f.framework.commands.empty());
    QCOMPARE(f.plugin->getTalkTargetList().size(), 1);
}

void TestTalkSession::disconnectionOfAnUnknownTarget_data()
{
    QTest::addColumn<QVariant>("payload");
    QTest::newRow("another token") << PluginFixture::disconnected("other");
    QTest::newRow("empty token") << PluginFixture::disconnected("");
    QTest::newRow("token in another case") << PluginFixture::disconnected("T");
    QTest::newRow("no inner map") << QVariant(QVariantMap{{"Token", "t"}});
    QTest::newRow("key in another case")
        << QVariant(QVariantMap{{"TalkDisconnected", QVariantMap{{"token", "t"}}}});
    QTest::newRow("no map") << QVariant("t");
    QTest::newRow("invalid") << QVariant();
    QTest::newRow("inner text") << QVariant(QVariantMap{{"TalkDisconnected", "t"}});
}

void TestTalkSession::disconnectionOfAnUnknownTarget()
{
    QFETCH(QVariant, payload);
    PluginFixture f;
    f.openCameraTalk("t");
    f.framework.commands.clear();
    QSignalSpy disconnected(f.plugin.get(), &PluginVoiceDesk::talkDisconnected);
    f.event("TalkDisconnected", payload);
    QVERIFY(f.plugin->talking());
    QVERIFY(f.framework.commands.empty());
    QCOMPARE(disconnected.count(), 0);
}

void TestTalkSession::emptyTokenIsAToken()
{
    PluginFixture f;
    f.reply("StartTalk", "0", QVariantMap());
    QSignalSpy disconnected(f.plugin.get(), &PluginVoiceDesk::talkDisconnected);
    f.event("TalkDisconnected", PluginFixture::disconnected(""));
    QCOMPARE(disconnected.count(), 1);
}

void TestTalkSession::microphoneVolumeLimits_data()
{
    QTest::addColumn<int>("given");
    QTest::addColumn<qint64>("passed");
    QTest::newRow("below") << -5 << qint64{0};
    QTest::newRow("lowest") << 0 << qint64{0};
    QTest::newRow("inside") << 30 << qint64{30};
    QTest::newRow("highest") << 100 << qint64{100};
    QTest::newRow("above") << 101 << qint64{100};
    QTest::newRow("smallest int") << std::numeric_limits<int>::min() << qint64{0};
    QTest::newRow("largest int") << std::numeric_limits<int>::max() << qint64{100};
}

void TestTalkSession::microphoneVolumeLimits()
{
    QFETCH(int, given);
    QFETCH(qint64, passed);
    PluginFixture f;
    f.plugin->startAudioCapture();
    f.plugin->setMicVolume(given);
    const auto call = FakeFrameSmith::calls().back();
    QCOMPARE(call.function, QStringLiteral("FrameSmith_UpdateChannelSettings"));
    QCOMPARE(call.arguments, (std::vector<qint64>{1, passed, 0}));
}

void TestTalkSession::muteOnAndOff()
{
    PluginFixture f;
    f.plugin->startAudioCapture();
    for (const bool mute : {true, false, true, false}) {
        f.plugin->setMicMute(mute);
        const auto call = FakeFrameSmith::calls().back();
        QCOMPARE(call.function, QStringLiteral("FrameSmith_SetAudioCaptureChannelOption"));
        QCOMPARE(call.arguments, (std::vector<qint64>{6, mute ? 1 : 0, 0}));
    }
}

void TestTalkSession::volumeAndMuteWithoutATalk()
{
    PluginFixture f;
    f.plugin->setMicVolume(70);
    f.plugin->setMicMute(true);
    FakeFrameSmith::clearCalls();
    f.plugin->startTalk("cam", "");
    QCOMPARE(FakeFrameSmith::calls()[1].arguments, (std::vector<qint64>{1, 70, 0}));
    QCOMPARE(FakeFrameSmith::calls()[2].arguments, (std::vector<qint64>{6, 1, 0}));
}

void TestTalkSession::setTalkingEmitsChangesOnly()
{
    PluginFixture f;
    QSignalSpy changed(f.plugin.get(), &PluginVoiceDesk::talkingChanged);
    f.reply("StartTalk", "0", reply("a"));
    f.reply("StartTalk", "0", reply("b"));
    QCOMPARE(changed.count(), 1);
    f.plugin->stopTalk();
    f.plugin->stopTalk();
    QCOMPARE(changed.count(), 2);
}

void TestTalkSession::forcedTalkingStopsCapture()
{
    PluginFixture f;
    f.plugin->startAudioCapture();
    f.plugin->tst_setTalking(true);
    FakeFrameSmith::clearCalls();
    QVERIFY(f.plugin->stopTalk());
    QVERIFY(FakeFrameSmith::functions().contains("FrameSmith_StopAudioCapture"));
    QVERIFY(f.framework.commands.empty());
    QVERIFY(!f.plugin->talking());
}

void TestTalkSession::setTalkTargetListSwaps()
{
    PluginFixture f;
    f.openCameraTalk("t");
    QList<QVariant> other{QVariantMap{{"talkToken", "x"}}};
    const QList<QVariant> before = f.plugin->getTalkTargetList();
    const QList<QVariant> after = other;
    QSignalSpy changed(f.plugin.get(), &PluginVoiceDesk::talkingChanged);
    f.plugin->setTalkTargetList(other);
    COMPARE_VARIANTS(other, before);
    COMPARE_VARIANTS(f.plugin->getTalkTargetList(), after);
    QList<QVariant> empty;
    f.plugin->setTalkTargetList(empty);
    QVERIFY(f.plugin->talking()); // not derived from the list
    QCOMPARE(changed.count(), 0);
}

void TestTalkSession::replacedWrapperIsUsedAndReleased()
{
    PluginFixture f;
    FakeFrameSmith::clearCalls();
    const auto wrapper = QSharedPointer<FrameSmithWrapper>::create();
    f.plugin->setFrameSmithWrapper(wrapper);
    QVERIFY(FakeFrameSmith::functions().contains("FrameSmith_Release")); // the old one's end
    f.plugin->startTalk("cam", "");
    QVERIFY(wrapper->AudioCapturing());
}

void TestTalkSession::secondStartAfterAFailedStart()
{
    PluginFixture f;
    FakeFrameSmith::fail("FrameSmith_StartAudioCapture", -5);
    QVERIFY(!f.plugin->startTalk("cam", ""));
    FakeFrameSmith::fail("FrameSmith_StartAudioCapture", 0);
    QVERIFY(f.plugin->startTalk("cam", ""));
    QCOMPARE(f.framework.names(), QStringList{"StartTalk"});
}

QTEST_GUILESS_MAIN(TestTalkSession)
#include "tst_talksession.moc"
