// The binary contract with the host: the order of virtual operations and of members. A host that was built
// from other headers calls through the table by place, so these tests do, too.

#include "platform/ConfigBase.h"
#include "platform/FrameSmith.h"
#include "tests/plugin/PluginFixture.h"

#include <QTest>

#include <type_traits>

class TestPlatform : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void membersOfPluginBase();
    void pluginBaseThroughTheTable();
    void onlyOneOperationBehindPluginBase();
    void frameworkThroughTheTable();
    void captureWrapperThroughTheTable();
};

namespace {

#ifdef Q_OS_WIN
static_assert(std::is_same_v<DWORD, unsigned long>, "the type of windows.h");
static_assert(std::is_same_v<FrameSmithHandle, HANDLE>, "the type of windows.h");
#endif

#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#endif

struct MemberProbe : PluginVoiceDesk
{
    static constexpr std::size_t basePrivate() { return offsetof(MemberProbe, m_basePrivate); }
    static constexpr std::size_t name() { return offsetof(MemberProbe, m_pluginName); }
    static constexpr std::size_t id() { return offsetof(MemberProbe, m_pluginId); }
    static constexpr std::size_t handle() { return offsetof(MemberProbe, m_pluginHandle); }
    static constexpr std::size_t framework() { return offsetof(MemberProbe, m_framework); }

    QString pluginName() const { return m_pluginName; }
    QString pluginId() const { return m_pluginId; }
    void* basePrivateValue() const { return m_basePrivate; }
};

// Places in the table of an object that derives from QObject: QObject's own come first. The destructor takes
// two places with GCC and clang, one with MSVC.
#ifdef _MSC_VER
constexpr std::size_t qobjectOperations = 11;
#else
constexpr std::size_t qobjectOperations = 12;
#endif

template<typename Function>
Function tableEntry(void* object, std::size_t place)
{
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<Function>(table[place]);
}

/** Notes which of its operations ran. */
class ProbePlugin : public PluginBase
{
public:
    bool InitialPluginBase(QQmlContext*, void* handle, FrameworkWrapperBase*) override
    {
        log << QStringLiteral("InitialPluginBase");
        return handle != nullptr;
    }
    void EventProcessor(QString event, qint64, int, int, QVariant, const QString&) override
    {
        log << QStringLiteral("EventProcessor ") + event;
    }
    void EventProcessorEx(QString event, ConfigBase*, qint64, int, int, QVariant, const QString&) override
    {
        log << QStringLiteral("EventProcessorEx ") + event;
    }
    void CommandProcessor(QString, QVariant, void*, QString code, QString, bool,
                          const QString& extra) override
    {
        log << QStringLiteral("CommandProcessor ") + code + extra;
    }
    void CommandProcessorEx(QString, ConfigBase*, QVariant, void*, QString code, QString, bool,
                            const QString&) override
    {
        log << QStringLiteral("CommandProcessorEx ") + code;
    }
    bool Init(QQmlContext*) override
    {
        log << QStringLiteral("Init");
        return true;
    }
    void reservedHookA() override { log << QStringLiteral("A"); }
    void reservedHookB() override { log << QStringLiteral("B"); }
    void PluginServerConnected() override { log << QStringLiteral("PluginServerConnected"); }
    void reservedHookC() override { log << QStringLiteral("C"); }

    QStringList log;
};

using Plain = void (*)(void*);
using WithContext = bool (*)(void*, QQmlContext*);
using Initial = bool (*)(void*, QQmlContext*, void*, FrameworkWrapperBase*);
using Event = void (*)(void*, QString, qint64, int, int, QVariant, const QString&);
using EventEx = void (*)(void*, QString, ConfigBase*, qint64, int, int, QVariant, const QString&);
using Command = void (*)(void*, QString, QVariant, void*, QString, QString, bool, const QString&);
using CommandEx = void (*)(void*, QString, ConfigBase*, QVariant, void*, QString, QString, bool,
                           const QString&);

} // namespace

void TestPlatform::membersOfPluginBase()
{
    static_assert(MemberProbe::basePrivate() == sizeof(QObject));
    static_assert(MemberProbe::name() == sizeof(QObject) + 1 * sizeof(void*));
    static_assert(MemberProbe::id() == sizeof(QObject) + 2 * sizeof(void*));
    static_assert(MemberProbe::handle() == sizeof(QObject) + 3 * sizeof(void*));
    static_assert(MemberProbe::framework() == sizeof(QObject) + 4 * sizeof(void*));
    static_assert(sizeof(PluginBase) == sizeof(QObject) + 5 * sizeof(void*));

    FakeFrameSmith::reset();
    MemberProbe plugin;
    QVERIFY(plugin.pluginName().isNull());
    QVERIFY(plugin.InitialPluginBase(nullptr, nullptr, nullptr));
    QCOMPARE(plugin.pluginName(), QStringLiteral("VoiceDeskPlugin"));
    QCOMPARE(plugin.pluginId(), QStringLiteral("710EF4C43CF94BB2A4A359E0796BC4F5"));
    QCOMPARE(plugin.basePrivateValue(), nullptr);
}

void TestPlatform::pluginBaseThroughTheTable()
{
    ProbePlugin plugin;
    void* object = &plugin;
    const QString extra = QStringLiteral("x");
    std::size_t place = qobjectOperations;
    int handle = 0;
    QVERIFY(tableEntry<Initial>(object, place++)(object, nullptr, &handle, nullptr));
    tableEntry<Event>(object, place++)(object, "e", 0, 0, 0, QVariant(), extra);
    tableEntry<EventEx>(object, place++)(object, "ex", nullptr, 0, 0, 0, QVariant(), extra);
    tableEntry<Command>(object, place++)(object, "c", QVariant(), nullptr, "0", "", false, extra);
    tableEntry<CommandEx>(object, place++)(object, "c", nullptr, QVariant(), nullptr, "1", "", false, extra);
    QVERIFY(tableEntry<WithContext>(object, place++)(object, nullptr));
    tableEntry<Plain>(object, place++)(object);
    tableEntry<Plain>(object, place++)(object);
    tableEntry<Plain>(object, place++)(object);
    tableEntry<Plain>(object, place++)(object);
    QCOMPARE(plugin.log, (QStringList{"InitialPluginBase", "EventProcessor e", "EventProcessorEx ex",
                                      "CommandProcessor 0x", "CommandProcessorEx 1", "Init", "A", "B",
                                      "PluginServerConnected", "C"}));
}

void TestPlatform::onlyOneOperationBehindPluginBase()
{
    PluginFixture f;
    SystemOverrides::setOutputDevices(1);
    using Ask = bool (*)(void*);
    void* object = f.plugin.get();
    constexpr std::size_t isAudioDeviceAvailable = qobjectOperations + 10;
    QVERIFY(tableEntry<Ask>(object, isAudioDeviceAvailable)(object));
    SystemOverrides::setOutputDevices(0);
    QVERIFY(!tableEntry<Ask>(object, isAudioDeviceAvailable)(object));
}

void TestPlatform::frameworkThroughTheTable()
{
    RecordingFramework framework;
    FrameworkWrapperBase* base = &framework;
    using Send =
        bool (*)(void*, void*, const QString&, const QString&, const QVariant&, void*, bool, const QString&);
    int handle = 0;
    int userData = 0;
    const auto send = tableEntry<Send>(base, 1);
    QVERIFY(send(base, &handle, "id", "command", QVariant(7), &userData, false, "extra"));
    QCOMPARE(framework.commands.size(), std::size_t{1});
    QCOMPARE(framework.commands[0].pluginHandle, &handle);
    QCOMPARE(framework.commands[0].pluginId, QStringLiteral("id"));
    QCOMPARE(framework.commands[0].command, QStringLiteral("command"));
    COMPARE_VARIANTS(framework.commands[0].param, QVariant(7));
    QCOMPARE(framework.commands[0].userData, &userData);
    QCOMPARE(framework.commands[0].extra, QStringLiteral("extra"));
}

void TestPlatform::captureWrapperThroughTheTable()
{
    class Probe : public FrameSmithWrapper
    {
    public:
        void Reset() override { log << QStringLiteral("Reset"); }
        bool AudioCapturing() override { return true; }
        bool StartAudioCapture() override
        {
            log << QStringLiteral("Start");
            return true;
        }
        void StopAudioCapture() override { log << QStringLiteral("Stop"); }
        void SetMicVolume(int volume) override { log << QString::number(volume); }
        void SetMicMute(bool mute) override { log << (mute ? QStringLiteral("mute") : QString()); }
        DWORD ParseWaveToPacket(TMediaDataPacketInfo*, const QString& path) override
        {
            log << path;
            return 9;
        }
        QStringList log;
    };
    FakeFrameSmith::reset();
    Probe probe;
    void* object = static_cast<FrameSmithWrapper*>(&probe);
    using Ask = bool (*)(void*);
    using SetInt = void (*)(void*, int);
    using SetBool = void (*)(void*, bool);
    using Parse = DWORD (*)(void*, TMediaDataPacketInfo*, const QString&);
    std::size_t place = qobjectOperations;
    tableEntry<Plain>(object, place++)(object);
    QVERIFY(tableEntry<Ask>(object, place++)(object));
    QVERIFY(tableEntry<Ask>(object, place++)(object));
    tableEntry<Plain>(object, place++)(object);
    tableEntry<SetInt>(object, place++)(object, 33);
    tableEntry<SetBool>(object, place++)(object, true);
    QCOMPARE(tableEntry<Parse>(object, place++)(object, nullptr, "path"), DWORD{9});
    QCOMPARE(probe.log, (QStringList{"Reset", "Start", "Stop", "33", "mute", "path"}));
}

QTEST_GUILESS_MAIN(TestPlatform)
#include "tst_platform.moc"
