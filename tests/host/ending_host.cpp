// A host that ends as Qt programs do. Its arguments are the plug-in's path and three words.
//
// The first word says what the plug-in does at the end. With "rest" it does nothing. With "sound" it has
// played, and its output runs on. With "talk" it also captures a microphone, with a talk open.
//
// The second word says what becomes of the plug-in. With "delete" it is deleted, with "unload" it is
// unloaded, with "gone" its loader is destroyed, and with "left" it stays as it is. With "late" it is deleted
// after the application object, and with "again" it is used under a second application object.
//
// The third word says how the program ends: by "return" from main or by "exit".
//
// The exit status is 0 when all went well up to the very end, at which no thread may be left, and 1
// otherwise.

#include "platform/FrameworkWrapperBase.h"
#include "platform/PluginBase.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPluginLoader>
#include <QThread>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

namespace {

constexpr int timeout = 20000; // ms

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::_Exit(1);
}

bool frameworkGone = false;

class Framework : public FrameworkWrapperBase
{
public:
    virtual ~Framework() { frameworkGone = true; }
    void reservedOperation() override {}
    bool SendCommand(void*, const QString&, const QString& command, const QVariant&, void*, bool,
                     const QString&) override
    {
        if (frameworkGone) {
            fail("a command to a framework that is gone");
        }
        talkPackets += command == QLatin1String("TalkData") ? 1 : 0;
        stops += command == QLatin1String("StopTalk") ? 1 : 0;
        return true;
    }

    int talkPackets = 0;
    int stops = 0;
};

/** The threads of this process; 1 where that is not known. */
int threads()
{
#if defined(Q_OS_LINUX) && !defined(__SANITIZE_THREAD__) // which has one of its own
    return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
#else
    return 1;
#endif
}

/** Whether so few threads are left; those that have just been waited for may take a moment to disappear. */
bool threadsFallTo(int count)
{
    QElapsedTimer clock;
    clock.start();
    while (threads() > count) {
        if (clock.elapsed() > 1000) {
            return false;
        }
        QThread::yieldCurrentThread();
    }
    return true;
}

/** Destroyed after the static objects of all libraries that were loaded later, the plug-in's and Qt's sound.
 */
const struct LastWitness
{
    ~LastWitness()
    {
        if (!threadsFallTo(1)) {
            fail("a thread outlives what it needs");
        }
    }
} lastWitness;

void answerTalk(PluginBase& plugin)
{
    plugin.CommandProcessor(QStringLiteral("StartTalk"), QVariantMap{{"camId", "cam"}, {"talkToken", "t"}},
                            nullptr, QStringLiteral("0"), QString(), false, QString());
}

void receiveSound(PluginBase& plugin)
{
    const QByteArray packet(642, '\x55');
    const QVariantMap fields{{"Token", "t"},
                             {"AudioData", QString::fromLatin1(packet.toBase64())},
                             {"BitstreamSize", 642},
                             {"StreamType", 8192},
                             {"AudioSamplingFreq", 8000},
                             {"AudioChannelNum", 1},
                             {"FrameNumber", 1}};
    for (int i = 0; i < 3; ++i) {
        plugin.EventProcessor(QStringLiteral("AudioReceived"), 0, 0, 0,
                              QVariantMap{{"AudioReceived", fields}}, QString());
    }
}

/** Brings the plug-in to what it does at the end. */
void work(PluginBase& plugin, Framework& framework, const QByteArray& what)
{
    if (what == "rest") {
        return;
    }
    if (what == "sound") {
        answerTalk(plugin);
        receiveSound(plugin);
        QMetaObject::invokeMethod(&plugin, "stopTalk");
        return;
    }
    bool started = false;
    QMetaObject::invokeMethod(&plugin, "startTalk", Q_RETURN_ARG(bool, started), Q_ARG(QString, "cam"),
                              Q_ARG(QString, ""));
    if (!started) {
        fail("no microphone");
    }
    answerTalk(plugin);
    receiveSound(plugin);
    const int before = framework.talkPackets;
    QElapsedTimer clock;
    clock.start();
    while (framework.talkPackets == before) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
        if (clock.elapsed() > timeout) {
            fail("the microphone gives no packets");
        }
    }
}

/** Destroys the application object, with which the threads must end that use Qt's sound. */
void endApplication(std::optional<QCoreApplication>& application, const QByteArray& what)
{
    // The output's; the microphone's and the one that makes packets of its sound.
    const int ending = what == "rest" ? 0 : what == "sound" ? 1 : 3;
    const int before = threads();
    application.reset();
    if (before > 1 && !threadsFallTo(before - ending)) {
        fail("a thread outlives the application object");
    }
}

QPluginLoader* volatile left = nullptr; // reachable for a leak checker

int run(int argc, char** argv)
{
    if (argc != 5) {
        fail("ending_host PLUG-IN WHAT BECOMES HOW");
    }
    const QByteArray what = argv[2];
    const QByteArray becomes = argv[3];
    auto application = std::make_optional<QCoreApplication>(argc, argv);
    auto loader = std::make_unique<QPluginLoader>(QString::fromLocal8Bit(argv[1]));
    auto* plugin = qobject_cast<PluginBase*>(loader->instance());
    Framework framework;
    if (plugin == nullptr || !plugin->InitialPluginBase(nullptr, nullptr, &framework)) {
        fail(qPrintable(loader->errorString()));
    }
    work(*plugin, framework, what);

    if (becomes == "delete") {
        delete plugin;
    } else if (becomes == "unload") {
        if (!loader->unload()) {
            fail(qPrintable(loader->errorString()));
        }
    } else if (becomes == "gone") {
        loader.reset();
    } else if (becomes == "left") {
        left = loader.release();
    } else if (becomes == "late") {
        endApplication(application, what);
        receiveSound(*plugin); // dropped
        const int stops = framework.stops;
        delete plugin;
        if (framework.stops - stops != (what == "talk" ? 1 : 0)) {
            fail("the end of the talk was not sent");
        }
    } else if (becomes == "again") {
        endApplication(application, what);
        receiveSound(*plugin);
        const int quiet = threads();
        application.emplace(argc, argv);
        QMetaObject::invokeMethod(plugin, "stopTalk");
        work(*plugin, framework, what);
        if (quiet > 1 && threads() == quiet) { // Qt's own sound thread stays
            fail("no sound under the second application");
        }
        left = loader.release();
    }
    if (QByteArray(argv[4]) == "exit") {
        std::exit(0); // leaves the application object as it is
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    return run(argc, argv);
}
