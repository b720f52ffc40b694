#include "cli/AwaitedSignal.h"
#include "cli/InterruptFlag.h"
#include "cli/TalkProgress.h"
#include "cli/commands/CommandArguments.h"
#include "cli/commands/Commands.h"
#include "client/measure/TalkMonitor.h"
#include "protocol/Words.h"
#include "system/EnvironmentVariable.h"
#include "system/MediaFiles.h"

#include <QElapsedTimer>
#include <QThread>

#include <cstdio>

namespace {

constexpr double fileTail = 0.3;    // s; lets the last packets of a file out
constexpr unsigned long pause = 20; // ms between looks

/** Opens the talk to each device; how many were opened. */
int openTalks(PluginSession& session, const QVariantList& devices)
{
    AwaitedSignal answers(session, &PluginClient::startTalkToIPAudioResponse);
    int opened = 0;
    for (const QVariant& device : devices) {
        const bool accepted = session.plugin().startTalkToIPAudio(device.toInt());
        const auto response = accepted ? answers.wait() : std::nullopt;
        if (response && std::get<0>(*response)) {
            ++opened;
        } else {
            const QString reason = response ? std::get<1>(*response) : QStringLiteral("no answer");
            PluginSession::fail(ExitRefused, QStringLiteral("device %1: %2").arg(device.toInt()).arg(reason));
        }
    }
    return opened;
}

} // namespace

int runSay(const QStringList& words)
{
    CommandArguments arguments(QStringLiteral("Talks to one or several devices at once."));
    arguments.option("device", "Ids of the devices, joined with commas.", "ids");
    arguments.option("source", "Sound file that speaks in the microphone's place.", "file");
    arguments.flag("mic", "Use the default microphone.");
    arguments.option("seconds", "Length of the talk (default: the file's; with a microphone until Ctrl-C).",
                     "n", "0");
    if (!arguments.read(words)) {
        return arguments.exitStatus();
    }
    const auto devices = arguments.ids("device");
    bool validSeconds = false;
    double seconds = arguments.value("seconds").toDouble(&validSeconds);
    if (!devices || devices->isEmpty() || !validSeconds || seconds < 0 ||
        arguments.isSet("source") == arguments.isSet("mic")) {
        return arguments.usage(QStringLiteral("give --device, and either --source or --mic"));
    }
    if (arguments.isSet("source")) {
        const double duration = MediaFiles::duration(arguments.value("source"));
        if (duration < 0) {
            return PluginSession::fail(
                ExitMicrophoneFailed,
                QStringLiteral("%1 is not a sound file that can be read").arg(arguments.value("source")));
        }
        seconds = seconds > 0 ? seconds : duration + fileTail;
        setEnvironmentVariable("FRAMESMITH_CAPTURE_FILE", arguments.value("source"));
    }
    InterruptFlag::install();
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    TalkMonitor monitor;
    QObject::connect(&session.host(), &PluginHost::commandSent, &monitor, &TalkMonitor::commandSent);
    AwaitedSignal disconnections(session, &PluginClient::talkDisconnected);
    QObject::connect(&session.host(), &PluginHost::eventArrived, &monitor,
                     [](const QString& event, const QVariant& payload) {
                         if (event == Words::TalkTargetLost) {
                             const QVariantMap fields = payload.toMap();
                             PluginSession::fail(ExitTalkLost,
                                                 QStringLiteral("device %1 was lost: %2")
                                                     .arg(fields.value(Vocabulary::deviceID).toInt())
                                                     .arg(fields.value(Vocabulary::error).toString()));
                         }
                     });
    if (openTalks(session, *devices) == 0) {
        return ExitRefused;
    }
    if (!session.plugin().startAudioCapture()) {
        return PluginSession::fail(ExitMicrophoneFailed, QStringLiteral("the microphone does not start"));
    }
    TalkProgress progress(monitor);
    progress.start();
    bool lost = false;
    while (!lost && !InterruptFlag::raised() && (seconds <= 0 || progress.elapsed() < seconds)) {
        lost = disconnections.takeNow().has_value();
        progress.update();
        QThread::msleep(pause);
    }
    progress.finish();
    session.plugin().stopTalk();
    session.waitForReply(Vocabulary::StopTalk);
    std::printf("packets sent  %d\n", monitor.packets());
    if (lost) {
        return PluginSession::fail(ExitTalkLost, QStringLiteral("the talk was lost"));
    }
    return monitor.packets() > 0
               ? static_cast<int>(ExitSuccess)
               : PluginSession::fail(ExitNothingSent, QStringLiteral("the microphone gave no sound"));
}
