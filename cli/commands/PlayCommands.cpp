#include "cli/AwaitedSignal.h"
#include "cli/InterruptFlag.h"
#include "cli/commands/CommandArguments.h"
#include "cli/commands/Commands.h"
#include "protocol/Limits.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <cstdio>

namespace {

/** What is to be played on: a device or a group; false, after a complaint, for neither or both. */
bool readTarget(CommandArguments& arguments, bool* group, int* id)
{
    *group = arguments.isSet("group");
    if (*group == arguments.isSet("device")) {
        arguments.usage(QStringLiteral("give either --device or --group"));
        return false;
    }
    const auto number = arguments.number(arguments.value(*group ? "group" : "device"), "id");
    *id = number.value_or(0);
    return number.has_value();
}

/** Starts a playback and follows it to its end. */
template<class Request>
int follow(PluginSession& session, const Request& request)
{
    AwaitedSignal responses(session, &PluginClient::playAudioResponse);
    AwaitedSignal failures(session, &PluginClient::playAudioError);
    request(session.plugin());
    int progress = 0;
    while (progress < Limits::maxProgressPercent) {
        if (InterruptFlag::raised()) {
            return PluginSession::fail(ExitSuccess, QStringLiteral("interrupted; the server plays on"));
        }
        const auto response = responses.wait();
        if (const auto failure = failures.takeNow()) {
            const auto& [device, file, error, alarm] = *failure;
            PluginSession::fail(ExitRefused, QStringLiteral("%1: %2").arg(device, error));
            if (!response) {
                return ExitRefused;
            }
        }
        if (!response) {
            return PluginSession::fail(ExitNoAnswer, QStringLiteral("the playback ended without a word"));
        }
        const auto& [success, percent, error, id] = *response;
        if (!success) {
            return PluginSession::fail(ExitRefused, error);
        }
        progress = percent;
        std::fprintf(stderr, "\r%3d %%", progress);
        std::fflush(stderr);
    }
    std::fputs("\n", stderr);
    return ExitSuccess;
}

} // namespace

int runPlay(const QStringList& words)
{
    CommandArguments arguments(QStringLiteral("Plays an audio file of the server on a device or a group."));
    arguments.option("file", "Id of the audio file.", "id");
    arguments.option("device", "Id of the device.", "id");
    arguments.option("group", "Id of the group.", "id");
    if (!arguments.read(words)) {
        return arguments.exitStatus();
    }
    bool group = false;
    int target = 0;
    const auto file = arguments.number(arguments.value("file"), "file id (--file)");
    if (!file || !readTarget(arguments, &group, &target)) {
        return ExitUsage;
    }
    InterruptFlag::install();
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    return follow(session, [&](PluginClient& plugin) {
        if (group) {
            plugin.playGroupAudio(target, *file);
        } else {
            plugin.playAudio(target, *file);
        }
    });
}

int runStop(const QStringList& words)
{
    CommandArguments arguments(QStringLiteral("Stops what a device or a group plays."));
    arguments.option("device", "Id of the device.", "id");
    arguments.option("group", "Id of the group.", "id");
    if (!arguments.read(words)) {
        return arguments.exitStatus();
    }
    bool group = false;
    int target = 0;
    if (!readTarget(arguments, &group, &target)) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    if (group) {
        session.plugin().stopCurrentGroupAudio(target);
    } else {
        session.plugin().stopCurrentAudio(target);
    }
    const QString code =
        session.waitForReply(group ? Vocabulary::StopCurrentGroupAudio : Vocabulary::StopCurrentAudio);
    if (code.isEmpty()) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    return code == ReturnCode::success
               ? static_cast<int>(ExitSuccess)
               : PluginSession::fail(ExitRefused,
                                     QStringLiteral("%1 (code %2)").arg(session.errorText(), code));
}
