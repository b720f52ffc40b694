#include "cli/InterruptFlag.h"
#include "cli/RecordFinder.h"
#include "cli/TalkProgress.h"
#include "cli/TalkSource.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"
#include "client/measure/TalkMonitor.h"
#include "protocol/Words.h"

#include <cstdio>

namespace {

/** Opens the talk to each device, and appends those that were opened; returns the status of the worst. */
ExitStatus openTalks(PluginSession& session, const QVariantList& devices, QVariantList* opened)
{
    ExitStatus worst = ExitSuccess;
    for (const QVariant& device : devices) {
        const int id = device.toInt();
        const quint64 request = session.send([id](PluginClient& plugin) { plugin.startTalkToIPAudio(id); });
        const auto reply = session.nextReply(request);
        if (!reply) {
            return session.noAnswer();
        }
        const QString error =
            reply->success() ? reply->result.toMap().value(Vocabulary::error).toString() : reply->refusal();
        if (error.isEmpty()) {
            opened->append(id);
        } else {
            worst = PluginSession::fail(ExitRefused, QStringLiteral("device %1: %2").arg(id).arg(error));
        }
    }
    return worst;
}

/** Prints the report of a talk to the devices that were @p opened, of which some were @p lost. */
void printResult(const CommandArguments& arguments, const TalkMonitor& monitor, const QVariantList& opened,
                 const QVariantList& lost)
{
    if (arguments.json()) {
        QVariantList devices = opened;
        for (const QVariant& id : lost) {
            devices.removeAll(id);
        }
        printJson({{"packetsSent", monitor.packets()}, {"devices", devices}, {"lost", lost}});
    } else {
        std::printf("packets sent  %d\n", monitor.packets());
    }
}

/** Talks until the end; returns how it ended. */
ExitStatus talk(PluginSession& session, const TalkMonitor& monitor, double seconds)
{
    bool ended = false;
    const QObject life; // the connection ends with this call
    QObject::connect(&session.plugin(), &PluginClient::talkDisconnected, &life, [&ended] { ended = true; });
    if (!session.plugin().startAudioCapture()) {
        return PluginSession::fail(ExitMicrophoneFailed, QStringLiteral("the microphone does not start"));
    }
    TalkProgress progress(monitor);
    progress.start();
    session.wait(
        [&] {
            progress.update();
            return ended || (seconds > 0 && progress.elapsed() >= seconds);
        },
        PluginSession::forever);
    progress.finish();
    if (ended || session.isLost()) {
        session.plugin().stopAudioCapture();
        return PluginSession::fail(ExitTalkLost, QStringLiteral("the talk was lost"));
    }
    InterruptFlag::lower(); // for the last request; another Ctrl-C ends its wait
    session.nextReply(session.send([](PluginClient& plugin) { plugin.stopTalk(); }));
    // Behind the last reply: those to all packets came before it.
    if (!monitor.refusal().isEmpty()) {
        return PluginSession::fail(ExitRefused, TalkProgress::refusal(monitor));
    }
    return monitor.packets() > 0
               ? ExitSuccess
               : PluginSession::fail(ExitNothingSent, QStringLiteral("the microphone gave no sound"));
}

int say(const CommandArguments& arguments)
{
    const auto names = arguments.list("device");
    if (!names) {
        return ExitUsage;
    }
    if (names->isEmpty() ||
        (!arguments.isSet("source") && !arguments.isSet("mic") && !arguments.isSet("microphone"))) {
        return arguments.usage(QStringLiteral("give --device, and --source, --mic or --microphone"));
    }
    int usageStatus = ExitSuccess;
    const auto source = TalkSource::read(arguments, &usageStatus);
    if (!source) {
        return usageStatus;
    }
    source->use();
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto found = finder.findAll(RecordFinder::Device, *names);
    if (!found) {
        return finder.status();
    }
    QVariantList devices;
    for (const QVariant& id : *found) {
        if (!devices.contains(id)) { // a device that is in the talk already is not asked again
            devices.append(id);
        }
    }
    TalkMonitor monitor;
    QObject::connect(&session.host(), &PluginHost::commandSent, &monitor, &TalkMonitor::commandSent);
    QObject::connect(&session.host(), &PluginHost::replyArrived, &monitor, &TalkMonitor::replyArrived);
    QVariantList lost;
    QObject::connect(&session.host(), &PluginHost::eventArrived, &monitor,
                     [&devices, &lost](const QString& event, const QVariant& payload) {
                         const QVariantMap fields = payload.toMap();
                         const int id = fields.value(Vocabulary::deviceID).toInt();
                         if (event == Words::TalkTargetLost && devices.contains(id) && !lost.contains(id)) {
                             PluginSession::fail(ExitTalkLost,
                                                 QStringLiteral("device %1 was lost: %2")
                                                     .arg(id)
                                                     .arg(fields.value(Vocabulary::error).toString()));
                             lost.append(id);
                         }
                     });
    QVariantList opened;
    const ExitStatus refused = openTalks(session, devices, &opened);
    if (opened.isEmpty() || (refused != ExitSuccess && refused != ExitRefused)) {
        return refused;
    }
    const ExitStatus status = talk(session, monitor, source->seconds);
    if (status != ExitMicrophoneFailed) {
        printResult(arguments, monitor, opened, lost);
    }
    if (status != ExitSuccess && (status != ExitRefused || lost.isEmpty())) {
        return status;
    }
    return lost.isEmpty() ? refused : ExitTalkLost;
}

} // namespace

std::vector<Command> sayCommands()
{
    std::vector<CommandOption> options{{"device", "DEVICE,...", "The devices.", ""}};
    const std::vector<CommandOption> source = TalkSource::options();
    options.insert(options.end(), source.begin(), source.end());
    options.push_back(jsonOption);
    return {{"say", "", "talk to one or several speakers at once", "", options, Command::Server, say}};
}
