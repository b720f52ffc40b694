#include "cli/CommandLine.h"

#include "cli/InterruptFlag.h"
#include "cli/TalkCommand.h"
#include "cli/TalkOptionReader.h"
#include "cli/commands/Commands.h"

#include <cstdio>

namespace {

constexpr char help[] =
    R"(voicedesk - talk to cameras and speakers through the VoiceDesk plug-in, without a window

usage: voicedesk COMMAND [options]

commands:
  talk       talk to a camera of a simulated server inside of this program
  cameras    list that server's cameras
  devices    list, add, update, delete network speakers
  files      list, add, delete audio files
  groups     list, add, update, delete groups of speakers
  schedules  list, add, update, delete schedules
  play       play an audio file on a speaker or group
  stop       stop what a speaker or group plays
  say        talk to one or several speakers
  serve      run the server alone, for other programs

voicedesk COMMAND --help tells a command's options.

exit status:
  0  done             3  no microphone      6  the talk was lost
  1  wrong usage      4  refused            7  the microphone gave no sound
  2  no plug-in       5  no answer          8  the server cannot start
)";

int usageError(const QString& message)
{
    std::fprintf(stderr, "voicedesk: %s\nTry: voicedesk --help\n", qUtf8Printable(message));
    return ExitUsage;
}

int runCameras()
{
    for (const SimulatedCamera& camera : defaultCameras()) {
        std::printf("%-12s %-16s %s\n", qUtf8Printable(camera.id), qUtf8Printable(camera.name),
                    camera.online ? "online" : "offline");
    }
    return ExitSuccess;
}

int runTalk(const QStringList& arguments)
{
    TalkOptionReader reader;
    const auto options = reader.read(arguments);
    if (!reader.help.isEmpty()) {
        std::fputs(qUtf8Printable(reader.help), stdout);
        return ExitSuccess;
    }
    if (!options) {
        return usageError(reader.error);
    }
    InterruptFlag::install();
    return TalkCommand(*options).run();
}

} // namespace

int runCommandLine(const QStringList& arguments)
{
    const QString command = arguments.value(1);
    if (command.isEmpty()) {
        std::fputs(help, stderr);
        return ExitUsage;
    }
    if (command == QLatin1String("--help") || command == QLatin1String("-h")) {
        std::fputs(help, stdout);
        return ExitSuccess;
    }
    if (command == QLatin1String("--version")) {
        std::puts("voicedesk " VOICEDESK_VERSION);
        return ExitSuccess;
    }
    QStringList rest = arguments.mid(1);
    rest[0] = QStringLiteral("voicedesk ") + command;
    const QList<QPair<QString, int (*)(const QStringList&)>> commands{
        {QStringLiteral("talk"), runTalk},           {QStringLiteral("devices"), runDevices},
        {QStringLiteral("files"), runFiles},         {QStringLiteral("groups"), runGroups},
        {QStringLiteral("schedules"), runSchedules}, {QStringLiteral("play"), runPlay},
        {QStringLiteral("stop"), runStop},           {QStringLiteral("say"), runSay},
        {QStringLiteral("serve"), runServe},
    };
    for (const auto& [name, run] : commands) {
        if (command == name) {
            return run(rest);
        }
    }
    if (command == QLatin1String("cameras")) {
        return runCameras();
    }
    return usageError(QStringLiteral("\"%1\" is not a command").arg(command));
}
