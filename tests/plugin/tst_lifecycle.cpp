#include "src/models/ItemRoles.h"
#include "tests/plugin/CountedAllocations.h"
#include "tests/plugin/PluginFixture.h"

#include <QAbstractEventDispatcher>
#include <QTest>
#include <QTimerEvent>

#include <stdexcept>

class TestLifecycle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandBeforeInitialisationReportsFalse();
    void replyBeforeInitialisationIsDropped();
    void identity();
    void initialisation();
    void initialisationStartsAnew();
    void wrapperThatThrows();
    void modelThatCannotBeBuilt_data();
    void modelThatCannotBeBuilt();
    void tracedOperations();
    void untracedTalkPath();
    void perServerCallsAreDropped();
    void microphonePollStartsFalse();
    void microphonePollRaisesAndDrops();
    void noPollElsewhere();
    void microphoneLossEndsTheTalkFirst();
    void newMicrophoneLeavesTheTalkAlone();
    void serverConnection();
    void packetOnThePluginsThreadIsServedAtOnce();
    void handlerMayDestroyTheTable();
    void handlerRunsFromACopy();
    void destructionClosesTargets();
    void orderOfDestruction();
};

namespace {

void tick(PluginVoiceDesk& plugin)
{
    QTimerEvent event(12345); // whichever timer it is
    QCoreApplication::sendEvent(&plugin, &event);
}

} // namespace

void TestLifecycle::commandBeforeInitialisationReportsFalse()
{
    FakeFrameSmith::reset();
    LogCapture log;
    PluginVoiceDesk plugin;
    QVERIFY(!plugin.startTalk("cam", ""));
    QVERIFY(!plugin.startTalkToIPAudio(1));
    QVERIFY(!plugin.stopTalkToIPAudio(1));
    QVERIFY(!plugin.startAudioCapture());
    plugin.stopAudioCapture();
    plugin.setMicVolume(10);
    plugin.setMicMute(true);
    plugin.PluginServerConnected();
    QVERIFY(plugin.stopTalk());
}

void TestLifecycle::replyBeforeInitialisationIsDropped()
{
    FakeFrameSmith::reset();
    PluginVoiceDesk plugin;
    QSignalSpy response(&plugin, &PluginVoiceDesk::startTalkResponse);
    plugin.CommandProcessor("StartTalk", QVariantMap{{"talkToken", "t"}}, nullptr, "0", "", false, "");
    QCOMPARE(response.count(), 0);
    QVERIFY(plugin.getTalkTargetList().isEmpty());
}

void TestLifecycle::identity()
{
    struct Named : PluginVoiceDesk
    {
        using PluginBase::m_basePrivate;
        using PluginBase::m_framework;
        using PluginBase::m_pluginHandle;
        using PluginBase::m_pluginId;
        using PluginBase::m_pluginName;
    };
    FakeFrameSmith::reset();
    Named plugin;
    QVERIFY(plugin.m_pluginName.isEmpty() && plugin.m_pluginId.isEmpty());
    QVERIFY(plugin.m_framework == nullptr && plugin.m_pluginHandle == nullptr);
    RecordingFramework framework;
    int handle = 0;
    QVERIFY(plugin.InitialPluginBase(nullptr, &handle, &framework));
    QCOMPARE(plugin.m_pluginName, QStringLiteral("VoiceDeskPlugin"));
    QCOMPARE(plugin.m_pluginId, QStringLiteral("710EF4C43CF94BB2A4A359E0796BC4F5"));
    QCOMPARE(plugin.m_pluginHandle, static_cast<void*>(&handle));
    QCOMPARE(plugin.m_framework, static_cast<FrameworkWrapperBase*>(&framework));
    QCOMPARE(plugin.m_basePrivate, nullptr);
}

void TestLifecycle::initialisation()
{
    PluginFixture f;
    QVERIFY(f.initialised);
    QVERIFY(!f.plugin->talking());
    QVERIFY(!f.plugin->audioInDevAvailable());
    QVERIFY(f.plugin->audioFileList().isEmpty());
    const auto models = f.plugin->findChildren<QStandardItemModel*>();
    QCOMPARE(models.size(), 3);
    QCOMPARE(models[0]->roleNames(), ipAudioRoleNames());
    QCOMPARE(models[1]->roleNames(), networkAudioGroupRoleNames());
    QCOMPARE(models[2]->roleNames(), networkAudioScheduleRoleNames());
    QCOMPARE(FakeFrameSmith::functions(), (QStringList{"FrameSmith_Initial", "FrameSmith_CreateChannel"}));
    QVERIFY(f.framework.commands.empty());
}

void TestLifecycle::initialisationStartsAnew()
{
    PluginFixture f;
    f.openCameraTalk("t");
    for (int i = 0; i < 3; ++i) {
        FakeFrameSmith::deliver(QByteArray(660, 'x'), 20, 8192, 0);
    }
    QCoreApplication::processEvents();
    COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], 3U);
    QVERIFY(f.plugin->talking());
    QVERIFY(f.plugin->Init(nullptr));
    QVERIFY(!f.plugin->talking());
    f.plugin->startAudioCapture();
    FakeFrameSmith::deliver(QByteArray(660, 'x'), 20, 8192, 0);
    QCoreApplication::processEvents();
    COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], 1U);
}

void TestLifecycle::wrapperThatThrows()
{
    FakeFrameSmith::reset();
    FakeFrameSmith::setInitialHook([] { throw std::runtime_error("no capture"); });
    LogCapture log;
    RecordingFramework framework;
    PluginVoiceDesk plugin;
    QVERIFY(!plugin.InitialPluginBase(nullptr, nullptr, &framework));
    QCOMPARE(log.errors(), QStringList{"PluginVoiceDesk::Init, new frame smith wrapper failed"});
    QVERIFY(plugin.findChildren<QStandardItemModel*>().isEmpty());
    plugin.CommandProcessor("StartTalk", QVariant(), nullptr, "0", "", false, ""); // no table yet
    QVERIFY(plugin.getTalkTargetList().isEmpty());
    QVERIFY(!plugin.startTalk("cam", ""));
}

void TestLifecycle::modelThatCannotBeBuilt_data()
{
    QTest::addColumn<int>("allocations");
    QTest::addColumn<QString>("message");
    QTest::newRow("devices") << 0 << "PluginVoiceDesk::Init, create ip audio list model failed";
    QTest::newRow("groups") << 1 << "PluginVoiceDesk::Init, create network audio group list model failed";
    QTest::newRow("schedules") << 2
                               << "PluginVoiceDesk::Init, create network audio schedule list model failed";
}

void TestLifecycle::modelThatCannotBeBuilt()
{
    QFETCH(int, allocations);
    QFETCH(QString, message);
    FakeFrameSmith::reset();
    LogCapture log;
    RecordingFramework framework;
    PluginVoiceDesk plugin;
    CountedAllocations::untilFailure = allocations;
    const bool initialised = plugin.InitialPluginBase(nullptr, nullptr, &framework);
    CountedAllocations::untilFailure = -1;
    QVERIFY(!initialised);
    QCOMPARE(log.errors(), QStringList{message});
    QCOMPARE(plugin.findChildren<QStandardItemModel*>().size(), allocations);
    QVERIFY(!FakeFrameSmith::functions().isEmpty()); // what came before stays
}

void TestLifecycle::tracedOperations()
{
    PluginFixture f;
    const auto lines = [&f](const QString& function) {
        const QStringList expected{function + ", Enter", function + ", Leave"};
        const bool matches = f.log.messages() == expected;
        if (!matches) {
            qWarning() << f.log.messages() << "instead of" << expected;
        }
        f.log.clear();
        return matches;
    };
    f.plugin->CommandProcessor("unknown", QVariant(), nullptr, "0", "", false, "");
    QVERIFY(lines("PluginVoiceDesk::CommandProcessor"));
    f.plugin->CommandProcessorEx("StartTalk", nullptr, QVariant(), nullptr, "0", "", false, "");
    QVERIFY(lines("PluginVoiceDesk::CommandProcessorEx"));
    f.plugin->EventProcessor("unknown", 0, 0, 0, QVariant(), "");
    QVERIFY(lines("PluginVoiceDesk::EventProcessor"));
    f.plugin->EventProcessorEx("unknown", nullptr, 0, 0, 0, QVariant(), "");
    QVERIFY(lines("PluginVoiceDesk::EventProcessorEx"));
    f.plugin->ErrorProcessor("", nullptr, "");
    QVERIFY(lines("PluginVoiceDesk::ErrorProcessor"));
    f.plugin->startAudioCapture(); // so that volume and mute have a channel to go to
    f.log.clear();
    f.plugin->setMicVolume(5);
    QVERIFY(lines("PluginVoiceDesk::setMicVolume"));
    f.plugin->setMicMute(true);
    QVERIFY(lines("PluginVoiceDesk::setMicMute"));
    f.plugin->Init(nullptr);
    QVERIFY(lines("PluginVoiceDesk::Init"));
    f.plugin.reset();
    QVERIFY(lines("PluginVoiceDesk::~PluginVoiceDesk"));
}

void TestLifecycle::untracedTalkPath()
{
    PluginFixture f;
    f.plugin->startTalk("cam", "");
    f.plugin->PluginServerConnected();
    QVERIFY(f.log.messages().isEmpty());
    f.openCameraTalk("t");
    f.log.clear();
    FakeFrameSmith::deliver(QByteArray(660, 'x'), 20, 8192, 0);
    QCoreApplication::processEvents();
    QCOMPARE(f.framework.commands.back().command, QStringLiteral("TalkData"));
    QVERIFY(f.log.messages().isEmpty());
    f.plugin->stopTalk();
    QVERIFY(f.log.messages().isEmpty());
}

void TestLifecycle::perServerCallsAreDropped()
{
    PluginFixture f;
    f.openCameraTalk("t");
    f.plugin->EventProcessorEx("TalkDisconnected", nullptr, 0, 0, 0, PluginFixture::disconnected("t"), "");
    QVERIFY(f.plugin->talking());
    f.plugin->CommandProcessorEx("StopTalkToIPAudio", nullptr, QVariant(), nullptr, "0", "", false, "");
    QVERIFY(f.plugin->talking());
}

void TestLifecycle::microphonePollStartsFalse()
{
    FakeFrameSmith::reset();
    SystemOverrides::setProductType("windows");
    SystemOverrides::setMicrophones(1);
    RecordingFramework framework;
    PluginVoiceDesk plugin;
    QSignalSpy changed(&plugin, &PluginVoiceDesk::audioInDevAvailableChanged);
    QVERIFY(plugin.InitialPluginBase(nullptr, nullptr, &framework));
    QVERIFY(!plugin.audioInDevAvailable());
    QCOMPARE(SystemOverrides::microphoneListings(), 0);
    QCOMPARE(changed.count(), 0);
    QElapsedTimer clock;
    clock.start();
    QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, 5000);
    QVERIFY2(clock.elapsed() >= 900, "a coarse timer of 1000 ms may tick 5 % early");
    QVERIFY(plugin.audioInDevAvailable());
    QTRY_VERIFY_WITH_TIMEOUT(SystemOverrides::microphoneListings() >= 2, 5000);
    QCOMPARE(changed.count(), 1); // an unchanged state emits nothing
}

void TestLifecycle::microphonePollRaisesAndDrops()
{
    PluginFixture f("windows");
    QSignalSpy changed(f.plugin.get(), &PluginVoiceDesk::audioInDevAvailableChanged);
    tick(*f.plugin);
    QCOMPARE(changed.count(), 0);
    SystemOverrides::setMicrophones(2);
    tick(*f.plugin);
    QCOMPARE(changed.count(), 1);
    QVERIFY(f.plugin->audioInDevAvailable());
    SystemOverrides::setMicrophones(1);
    tick(*f.plugin);
    QCOMPARE(changed.count(), 1);
    SystemOverrides::setMicrophones(0); // pulled out while nobody talks
    tick(*f.plugin);
    QCOMPARE(changed.count(), 2);
    QVERIFY(!f.plugin->audioInDevAvailable());
    QVERIFY(f.framework.commands.empty());
}

void TestLifecycle::noPollElsewhere()
{
    const auto* dispatcher = QAbstractEventDispatcher::instance();
    for (const char* type : {"debian", "Windows", "winrt", "unknown", ""}) {
        const PluginFixture f(type);
        QVERIFY(dispatcher->registeredTimers(f.plugin.get()).isEmpty());
        QVERIFY(!f.plugin->audioInDevAvailable());
    }
    const PluginFixture f("windows");
    const auto timers = dispatcher->registeredTimers(f.plugin.get());
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers[0].interval, 1000);
    QCOMPARE(timers[0].timerType, Qt::CoarseTimer);
}

void TestLifecycle::microphoneLossEndsTheTalkFirst()
{
    PluginFixture f("windows");
    SystemOverrides::setMicrophones(1);
    tick(*f.plugin);
    f.openCameraTalk("t");
    FakeFrameSmith::clearCalls();
    f.framework.commands.clear();
    QStringList order;
    connect(f.plugin.get(), &PluginVoiceDesk::talkingChanged, this,
            [&] { order << QStringLiteral("talkingChanged %1").arg(f.plugin->audioInDevAvailable()); });
    connect(f.plugin.get(), &PluginVoiceDesk::audioInDevAvailableChanged, this, [&] {
        order << QStringLiteral("audioInDevAvailableChanged %1").arg(f.plugin->audioInDevAvailable());
    });
    QSignalSpy disconnected(f.plugin.get(), &PluginVoiceDesk::talkDisconnected);
    SystemOverrides::setMicrophones(0);
    tick(*f.plugin);
    QCOMPARE(order, (QStringList{"talkingChanged 1", "audioInDevAvailableChanged 0"}));
    QCOMPARE(f.framework.names(), QStringList{"StopTalk"});
    QVERIFY(FakeFrameSmith::functions().contains("FrameSmith_StopAudioCapture"));
    QCOMPARE(disconnected.count(), 0);
}

void TestLifecycle::newMicrophoneLeavesTheTalkAlone()
{
    PluginFixture f("windows");
    f.openCameraTalk("t");
    f.framework.commands.clear();
    SystemOverrides::setMicrophones(1);
    tick(*f.plugin);
    QVERIFY(f.plugin->audioInDevAvailable());
    QVERIFY(f.plugin->talking());
    QVERIFY(f.framework.commands.empty());
}

void TestLifecycle::serverConnection()
{
    PluginFixture f;
    f.plugin->PluginServerConnected();
    f.plugin->PluginServerConnected();
    QCOMPARE(f.framework.names(),
             (QStringList{"RetrieveIPAudioModel", "GetAudioFile", "RetrieveIPAudioModel", "GetAudioFile"}));
    for (const auto& command : f.framework.commands) {
        QVERIFY(!command.param.isValid());
        QCOMPARE(command.userData, nullptr);
        QCOMPARE(command.flag, false);
        QVERIFY(command.extra.isEmpty());
        QCOMPARE(command.pluginHandle, &f.handle);
        QCOMPARE(command.pluginId, QStringLiteral("710EF4C43CF94BB2A4A359E0796BC4F5"));
    }
    f.framework.accepts = false;
    f.plugin->PluginServerConnected(); // a refusal of the first does not keep the second back
    QCOMPARE(f.framework.commands.size(), std::size_t{6});
}

void TestLifecycle::packetOnThePluginsThreadIsServedAtOnce()
{
    PluginFixture f;
    f.openCameraTalk("t");
    f.framework.commands.clear();
    QByteArray packet(660, 'x');
    TMediaDataPacketInfo record{};
    record.Buffer = reinterpret_cast<std::uint8_t*>(packet.data());
    record.BitstreamSize = 660;
    record.StreamType = 8192;
    const FrameSmithCaptureOptions options = FakeFrameSmith::captureOptions();
    options.packetCallback(options.context, &record, 0);
    QCOMPARE(f.framework.names(), QStringList{"TalkData"});
}

void TestLifecycle::handlerMayDestroyTheTable()
{
    PluginFixture f;
    connect(f.plugin.get(), &PluginVoiceDesk::startTalkResponse, this,
            [&f] { f.plugin->Init(nullptr); }); // fills the table anew while an entry of it runs
    f.reply("StartTalk", "0", QVariantMap{{"talkToken", "t"}});
    QVERIFY(f.plugin->findChildren<QStandardItemModel*>().size() == 3);
}

void TestLifecycle::handlerRunsFromACopy()
{
    // Nothing reads a function any more that its table has let go while it ran, so what shows the copy is
    // the memory that it takes.
    struct Captured
    {
        void* object;
        void (Captured::*handler)();
    };
    const Captured captured{};
    const std::function<void()> sample = [captured] { static_cast<void>(captured); };
    int before = CountedAllocations::made;
    const std::function<void()> copy = sample;
    if (CountedAllocations::made == before) {
        QSKIP("functions of this size take no memory here");
    }
    PluginFixture f;
    f.log.object().context = nullptr; // keeping messages takes memory
    const QString command = QStringLiteral("StopTalk");
    const QString code = QStringLiteral("0");
    before = CountedAllocations::made;
    f.plugin->CommandProcessor(command, QVariant(), nullptr, code, QString(), false, QString());
    QVERIFY(CountedAllocations::made > before);
}

void TestLifecycle::destructionClosesTargets()
{
    PluginFixture f;
    f.openCameraTalk("one", "relay");
    QList<QVariant> targets = f.plugin->getTalkTargetList();
    targets.append(QVariantMap{{"deviceID", 5}, {"talkToken", "two"}});
    f.plugin->setTalkTargetList(targets);
    f.framework.commands.clear();
    f.plugin.reset();
    QCOMPARE(f.framework.names(), (QStringList{"StopTalk", "StopTalk"}));
    COMPARE_VARIANTS(f.framework.commands[0].map(),
                     (QVariantMap{{"talkToken", "one"}, {"relayPath", "relay"}}));
    COMPARE_VARIANTS(f.framework.commands[1].map(), (QVariantMap{{"talkToken", "two"}, {"relayPath", ""}}));
}

void TestLifecycle::orderOfDestruction()
{
    PluginFixture f;
    f.openCameraTalk("t");
    FakeFrameSmith::clearCalls();
    QStringList order;
    f.framework.onCommand = [&order](const RecordingFramework::Command& command) {
        order << command.command + QStringLiteral(" with ") + QString::number(FakeFrameSmith::calls().size());
    };
    const auto models = f.plugin->findChildren<QStandardItemModel*>();
    const QStringList names{"devices", "groups", "schedules"};
    for (int i = 0; i < models.size(); ++i) {
        connect(models[i], &QObject::destroyed, this, [&order, name = names[i]] {
            order << name + QStringLiteral(" with ") + QString::number(FakeFrameSmith::calls().size());
        });
    }
    f.plugin.reset();
    QCOMPARE(order, (QStringList{"StopTalk with 0", "schedules with 0", "groups with 0", "devices with 0"}));
    // Capture is not stopped by itself: deleting the channel ends it.
    QCOMPARE(FakeFrameSmith::functions(),
             (QStringList{"FrameSmith_DeleteChannel", "FrameSmith_DeleteAudioCaptureChannel",
                          "FrameSmith_Release"}));
}

QTEST_GUILESS_MAIN(TestLifecycle)
#include "tst_lifecycle.moc"
