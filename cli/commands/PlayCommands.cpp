#include "cli/InterruptFlag.h"
#include "cli/RecordFinder.h"
#include "cli/commands/CommandArguments.h"
#include "cli/commands/Commands.h"
#include "cli/commands/FileUpload.h"
#include "protocol/Limits.h"
#include "protocol/Words.h"
#include "system/Console.h"

#include <QFileInfo>

#include <cstdio>

namespace {

/** What is played on. */
struct Target
{
    bool group = false;
    int id = 0;
};

/** Returns whether exactly one of --device and --group is there; prints an error otherwise. */
bool hasTarget(const CommandArguments& arguments)
{
    if (arguments.isSet("group") == arguments.isSet("device")) {
        arguments.usage(QStringLiteral("give either --device or --group"));
        return false;
    }
    return true;
}

std::optional<Target> findTarget(const CommandArguments& arguments, RecordFinder& finder)
{
    Target target;
    target.group = arguments.isSet("group");
    const auto id = finder.find(target.group ? RecordFinder::Group : RecordFinder::Device,
                                arguments.value(target.group ? "group" : "device"));
    target.id = id.value_or(0);
    return id ? std::optional(target) : std::nullopt;
}

quint64 sendStop(PluginSession& session, const Target& target)
{
    return session.send([&](PluginClient& plugin) {
        if (target.group) {
            plugin.stopCurrentGroupAudio(target.id);
        } else {
            plugin.stopCurrentAudio(target.id);
        }
    });
}

/**
 * Starts a playback and follows it to its end; prints @p interruption after Ctrl-C. A device of a group that
 * did not play makes it a refusal, though the others have played.
 */
int follow(PluginSession& session, const Target& target, int file, const char* interruption)
{
    QStringList failures; // of devices of a group, which have no reply of their own
    const QObject life;   // the connection ends with this call
    QObject::connect(&session.plugin(), &PluginClient::playAudioError, &life,
                     [&](const QString& device, const QString&, const QString& error, const QString& alarm) {
                         if (alarm.isEmpty()) { // else it is a schedule's
                             failures.append(QStringLiteral("%1: %2").arg(device, error));
                         }
                     });
    const quint64 request = session.send([&](PluginClient& plugin) {
        if (target.group) {
            plugin.playGroupAudio(target.id, file);
        } else {
            plugin.playAudio(target.id, file);
        }
    });
    const bool terminal = Console::isTerminal(stderr);
    int progress = 0;
    bool started = false;
    ExitStatus status = ExitSuccess;
    while (progress < Limits::maxProgressPercent) {
        const auto reply = session.nextReply(request);
        for (const QString& failure : qAsConst(failures)) {
            status = PluginSession::fail(ExitRefused, failure);
        }
        failures.clear();
        if (!reply) {
            if (status == ExitRefused) {
                return status;
            }
            if (InterruptFlag::raised() && started) {
                return PluginSession::fail(ExitSuccess, QString::fromLatin1(interruption));
            }
            return InterruptFlag::raised() || session.isLost() || request == 0
                       ? session.noAnswer()
                       : PluginSession::fail(ExitNoAnswer,
                                             QStringLiteral("the playback was ended before its time"));
        }
        if (!reply->success()) {
            return PluginSession::fail(ExitRefused, reply->refusal());
        }
        started = true;
        progress = reply->result.toMap().value(Words::progress).toInt();
        if (terminal) {
            std::fprintf(stderr, "\r%3d %%", progress);
            std::fflush(stderr);
        }
    }
    std::fprintf(stderr, terminal ? "\n" : "%d %%\n", progress);
    return status;
}

int play(const CommandArguments& arguments)
{
    if (!hasTarget(arguments)) {
        return ExitUsage;
    }
    const QString file = arguments.value("file");
    if (file.isEmpty()) {
        return arguments.usage(QStringLiteral("--file is missing"));
    }
    const bool here = file.startsWith(QLatin1String("./")); // whatever the server has
    if (here && !isUploadable(file)) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto target = findTarget(arguments, finder);
    if (!target) {
        return finder.status();
    }
    // Of other names, a file of the server comes first.
    const bool local = here || (!finder.has(RecordFinder::File, file) && QFileInfo(file).isFile());
    if (finder.status() != ExitSuccess) {
        return finder.status();
    }
    if (!local) {
        const auto id = finder.find(RecordFinder::File, file);
        const bool endsWithUs = arguments.client().serverUrl.isEmpty();
        return id ? follow(session, *target, *id,
                           endsWithUs ? "interrupted" : "interrupted; the server plays on")
                  : finder.status();
    }
    int id = 0;
    if (const ExitStatus status = uploadFile(session, file, &id); status != ExitSuccess) {
        return status;
    }
    const int status = follow(session, *target, id, "interrupted");
    if (InterruptFlag::raised()) {
        InterruptFlag::lower(); // for the last two requests; another Ctrl-C ends their wait
        session.nextReply(sendStop(session, *target));
    }
    const ExitStatus deleted =
        session.receive(session.send([&](PluginClient& plugin) { plugin.deleteAudioFile(id); }));
    return status == ExitSuccess ? static_cast<int>(deleted) : status;
}

int stop(const CommandArguments& arguments)
{
    if (!hasTarget(arguments)) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto target = findTarget(arguments, finder);
    return target ? session.receive(sendStop(session, *target)) : finder.status();
}

} // namespace

std::vector<Command> playCommands()
{
    const CommandOption device{"device", "DEVICE", "The device.", ""};
    const CommandOption group{"group", "GROUP", "The group of devices.", ""};
    const CommandOption file{
        "file", "FILE", "The audio file of the server; or a file here, which is sent, played and deleted.",
        ""};
    return {
        {"play",
         "",
         "play an audio file on a speaker or group",
         "",
         {file, device, group},
         Command::Server,
         play},
        {"stop", "", "stop what a speaker or group plays", "", {device, group}, Command::Server, stop},
    };
}
