#include "tests/plugin/PluginFixture.h"

#include <QTest>

class TestTalkToIPAudio : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestCarriesTheDevice();
    void refusedRequestFreesItsBlock();
    void noFramework();
    void captureIsTheCallersOwn();
    void captureFailure();
    void deviceInTheListAnswersAtOnce();
    void deviceZeroBesideACamera();
    void twoRequestsBeforeTheReply();
    void successfulReply();
    void replyWithAnError();
    void refusedReply();
    void replyWithoutABlock();
    void stopRequest();
    void stopReplyClosesEverything();
    void refusedStopReply();
    void stopTalkTreatsDevicesAlike();
    void disconnection();
};

namespace {

/** Asks for a talk to the device and gives the server's reply to it. */
void open(PluginFixture& f, int device, const QString& token)
{
    f.plugin->startTalkToIPAudio(device);
    f.reply("StartTalkToIPAudio", "0", QVariantMap{{"talkToken", token}},
            f.framework.commands.back().userData);
}

} // namespace

void TestTalkToIPAudio::requestCarriesTheDevice()
{
    PluginFixture f;
    QVERIFY(f.plugin->startTalkToIPAudio(42));
    QCOMPARE(f.framework.names(), QStringList{"StartTalkToIPAudio"});
    const auto& command = f.framework.commands[0];
    COMPARE_VARIANTS(command.param, QVariant(42));
    QVERIFY(command.userData != nullptr);
    QCOMPARE(*static_cast<int*>(command.userData), 42);
    QCOMPARE(command.flag, false);
    f.reply("StartTalkToIPAudio", "1", QVariant(), command.userData); // frees the block
}

void TestTalkToIPAudio::refusedRequestFreesItsBlock()
{
    PluginFixture f;
    f.framework.accepts = false;
    QVERIFY(!f.plugin->startTalkToIPAudio(42)); // the leak checker watches the block
}

void TestTalkToIPAudio::noFramework()
{
    FakeFrameSmith::reset();
    PluginVoiceDesk plugin;
    QVERIFY(plugin.InitialPluginBase(nullptr, nullptr, nullptr));
    QVERIFY(!plugin.startTalkToIPAudio(1));
    QVERIFY(!plugin.stopTalkToIPAudio(1));
}

void TestTalkToIPAudio::captureIsTheCallersOwn()
{
    PluginFixture f;
    FakeFrameSmith::clearCalls();
    open(f, 1, "t");
    QVERIFY(FakeFrameSmith::functions().isEmpty());
    QVERIFY(f.plugin->startAudioCapture());
    QVERIFY(FakeFrameSmith::functions().contains("FrameSmith_StartAudioCapture"));
    f.plugin->stopAudioCapture();
    QVERIFY(FakeFrameSmith::functions().contains("FrameSmith_StopAudioCapture"));
    QVERIFY(f.plugin->talking());
}

void TestTalkToIPAudio::captureFailure()
{
    PluginFixture f;
    FakeFrameSmith::fail("FrameSmith_CreateAudioCaptureChannel", -2);
    QVERIFY(!f.plugin->startAudioCapture());
    QCOMPARE(f.log.errors().last(),
             QStringLiteral("PluginVoiceDesk::startAudioCapture, start audio capture failed"));
    f.log.clear();
    f.plugin->stopAudioCapture();
    QVERIFY(f.log.errors().isEmpty());
}

void TestTalkToIPAudio::deviceInTheListAnswersAtOnce()
{
    PluginFixture f;
    open(f, 7, "t");
    f.framework.commands.clear();
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
    QVERIFY(f.plugin->startTalkToIPAudio(7));
    QCOMPARE(response.count(), 1); // before it returned
    COMPARE_VARIANTS(response[0], (QVariantList{true, "", 7}));
    QVERIFY(f.framework.commands.empty());
}

void TestTalkToIPAudio::deviceZeroBesideACamera()
{
    PluginFixture f;
    f.openCameraTalk("t");
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
    f.framework.commands.clear();
    QVERIFY(f.plugin->startTalkToIPAudio(0));
    QCOMPARE(response.count(), 1);
    QVERIFY(f.framework.commands.empty());
}

void TestTalkToIPAudio::twoRequestsBeforeTheReply()
{
    PluginFixture f;
    QVERIFY(f.plugin->startTalkToIPAudio(3));
    QVERIFY(f.plugin->startTalkToIPAudio(3));
    QCOMPARE(f.framework.commands.size(), std::size_t{2});
    for (const auto& command : std::vector<RecordingFramework::Command>(f.framework.commands)) {
        f.reply("StartTalkToIPAudio", "0", QVariantMap{{"talkToken", "t"}}, command.userData);
    }
    QCOMPARE(f.plugin->getTalkTargetList().size(), 2);
}

void TestTalkToIPAudio::successfulReply()
{
    PluginFixture f;
    QStringList order;
    connect(f.plugin.get(), &PluginVoiceDesk::talkingChanged, this, [&] { order << "talkingChanged"; });
    connect(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse, this,
            [&](bool success, const QString& code, int id) {
                order << QStringLiteral("%1 '%2' %3").arg(success).arg(code).arg(id);
            });
    open(f, 9, "token");
    QCOMPARE(order, (QStringList{"talkingChanged", "1 '' 9"}));
    COMPARE_VARIANTS(f.plugin->getTalkTargetList(),
                     (QList<QVariant>{QVariantMap{{"deviceID", 9}, {"talkToken", "token"}}}));
}

void TestTalkToIPAudio::replyWithAnError()
{
    PluginFixture f;
    f.plugin->startAudioCapture();
    FakeFrameSmith::clearCalls();
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
    f.plugin->startTalkToIPAudio(9);
    f.reply("StartTalkToIPAudio", "0", QVariantMap{{"talkToken", "t"}, {"error", "speaker busy"}},
            f.framework.commands.back().userData);
    QCOMPARE(response.count(), 1);
    COMPARE_VARIANTS(response[0], (QVariantList{false, "speaker busy", 9}));
    QVERIFY(f.plugin->getTalkTargetList().isEmpty());
    QVERIFY(!f.plugin->talking());
    QVERIFY(FakeFrameSmith::functions().isEmpty()); // capture goes on
}

void TestTalkToIPAudio::refusedReply()
{
    PluginFixture f;
    f.openCameraTalk("camera");
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
    QStringList callsBefore;
    connect(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse, this,
            [&callsBefore] { callsBefore = FakeFrameSmith::functions(); });
    f.plugin->startTalkToIPAudio(9);
    f.reply("StartTalkToIPAudio", "202", QVariantMap{{"error", "text"}},
            f.framework.commands.back().userData);
    QVERIFY(callsBefore.contains("FrameSmith_StopAudioCapture")); // silent before the front end hears of it
    COMPARE_VARIANTS(response[0], (QVariantList{false, "", 9}));  // the code is not passed on
    QVERIFY(FakeFrameSmith::functions().contains("FrameSmith_StopAudioCapture"));
    QCOMPARE(f.plugin->getTalkTargetList().size(), 1);
    QVERIFY(f.plugin->talking());
}

void TestTalkToIPAudio::replyWithoutABlock()
{
    PluginFixture f;
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
    f.reply("StartTalkToIPAudio", "0", QVariantMap{{"talkToken", "t"}}, nullptr);
    QCOMPARE(response.count(), 0);
    QVERIFY(f.plugin->getTalkTargetList().isEmpty());
}

void TestTalkToIPAudio::stopRequest()
{
    PluginFixture f;
    open(f, 5, "t");
    f.framework.commands.clear();
    QVERIFY(f.plugin->stopTalkToIPAudio(5));
    QCOMPARE(f.framework.names(), QStringList{"StopTalkToIPAudio"});
    COMPARE_VARIANTS(f.framework.commands[0].param, QVariant(5));
    QCOMPARE(f.framework.commands[0].userData, nullptr);
    QVERIFY(f.plugin->talking());
    QCOMPARE(f.plugin->getTalkTargetList().size(), 1);
    f.framework.accepts = false;
    QVERIFY(!f.plugin->stopTalkToIPAudio(5));
}

void TestTalkToIPAudio::stopReplyClosesEverything()
{
    PluginFixture f;
    f.openCameraTalk("camera");
    open(f, 5, "device");
    FakeFrameSmith::clearCalls();
    f.framework.commands.clear();
    QSignalSpy changed(f.plugin.get(), &PluginVoiceDesk::talkingChanged);
    int targetsAtTheChange = -1;
    connect(f.plugin.get(), &PluginVoiceDesk::talkingChanged, this,
            [&] { targetsAtTheChange = f.plugin->getTalkTargetList().size(); });
    f.reply("StopTalkToIPAudio", "0");
    QCOMPARE(targetsAtTheChange, 2); // the list is emptied behind the signal
    QVERIFY(f.plugin->getTalkTargetList().isEmpty());
    QVERIFY(!f.plugin->talking());
    QCOMPARE(changed.count(), 1);
    QVERIFY(FakeFrameSmith::functions().isEmpty()); // capture runs on
    QVERIFY(f.framework.commands.empty());
}

void TestTalkToIPAudio::refusedStopReply()
{
    PluginFixture f;
    open(f, 5, "device");
    f.plugin->startAudioCapture();
    f.log.clear();
    FakeFrameSmith::clearCalls();
    f.framework.commands.clear();
    const QSignalSpy changed(f.plugin.get(), &PluginVoiceDesk::talkingChanged);
    const QSignalSpy disconnected(f.plugin.get(), &PluginVoiceDesk::talkDisconnected);
    const QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
    const QSignalSpy stopped(f.plugin.get(), &PluginVoiceDesk::stopCurrentAudioResponse);
    f.reply("StopTalkToIPAudio", "203");
    QCOMPARE(changed.size() + disconnected.size() + response.size() + stopped.size(), 0);
    QVERIFY(f.log.errors().isEmpty());
    QVERIFY(f.framework.commands.empty());
    QVERIFY(FakeFrameSmith::functions().isEmpty());
    QVERIFY(f.plugin->talking());
    QCOMPARE(f.plugin->getTalkTargetList().size(), 1);
}

void TestTalkToIPAudio::stopTalkTreatsDevicesAlike()
{
    PluginFixture f;
    open(f, 5, "device");
    f.framework.commands.clear();
    f.plugin->stopTalk();
    QCOMPARE(f.framework.names(), QStringList{"StopTalk"});
    COMPARE_VARIANTS(f.framework.commands[0].map(),
                     (QVariantMap{{"talkToken", "device"}, {"relayPath", ""}}));
}

void TestTalkToIPAudio::disconnection()
{
    PluginFixture f;
    open(f, 5, "device");
    QSignalSpy disconnected(f.plugin.get(), &PluginVoiceDesk::talkDisconnected);
    f.event("TalkDisconnected", PluginFixture::disconnected("device"));
    QCOMPARE(disconnected.count(), 1);
    QVERIFY(!f.plugin->talking());
}

QTEST_GUILESS_MAIN(TestTalkToIPAudio)
#include "tst_talktoipaudio.moc"
