#include "CommandLine.h"

#include "InterruptFlag.h"
#include "TalkCommand.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace {

constexpr char help[] = R"(voicedesk - talk to cameras through the VoiceDesk plug-in, without a window

usage: voicedesk COMMAND [options]

commands:
  talk       talk to a camera of a simulated server inside of this program
  cameras    list that server's cameras

voicedesk COMMAND --help tells a command's options.

exit status:
  0  done             3  no microphone      6  the camera was lost
  1  wrong usage      4  talk refused       7  the microphone gave no sound
  2  no plug-in       5  no answer
)";

int usageError(const QString& message)
{
    std::fprintf(stderr, "voicedesk: %s\nTry: voicedesk --help\n", qPrintable(message));
    return ExitUsage;
}

int runCameras()
{
    for (const CameraConfig& camera : defaultCameras()) {
        std::printf("%-12s %-16s %s\n", qPrintable(camera.id), qPrintable(camera.name),
                    camera.online ? "online" : "offline");
    }
    return ExitSuccess;
}

int runTalk(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Talks to a camera and records at the server what the camera hears.\nThe talk lasts as long as the "
        "source file; with a microphone, until Ctrl-C or for --seconds."));
    const QCommandLineOption camera(QStringLiteral("camera"),
                                    QStringLiteral("Camera to talk to (default: camera-1)."),
                                    QStringLiteral("id"), QStringLiteral("camera-1"));
    const QCommandLineOption seconds(QStringLiteral("seconds"), QStringLiteral("Length of the talk."),
                                     QStringLiteral("n"));
    const QCommandLineOption source(QStringLiteral("source"),
                                    QStringLiteral("Sound file that speaks in the microphone's place."),
                                    QStringLiteral("file"));
    const QCommandLineOption mic(QStringLiteral("mic"), QStringLiteral("Use the default microphone."));
    const QCommandLineOption device(
        QStringLiteral("device"), QStringLiteral("Use the microphone of this name."), QStringLiteral("name"));
    const QCommandLineOption volume(QStringLiteral("volume"),
                                    QStringLiteral("Microphone volume, 0 to 100; 50 leaves it as it is."),
                                    QStringLiteral("n"), QStringLiteral("50"));
    const QCommandLineOption output(
        QStringLiteral("output"), QStringLiteral("Folder of the server's recordings (default: recordings)."),
        QStringLiteral("folder"), QStringLiteral("recordings"));
    const QCommandLineOption timeout(QStringLiteral("timeout"),
                                     QStringLiteral("Wait for the server's answer (default: 5)."),
                                     QStringLiteral("seconds"), QStringLiteral("5"));
    const QCommandLineOption fault(
        QStringLiteral("fault"),
        QStringLiteral(
            "Try out a failing server: \"silent\" answers nothing, \"drop\" loses the camera after "
            "a second."),
        QStringLiteral("kind"));
    const QCommandLineOption plugin(QStringLiteral("plugin"),
                                    QStringLiteral("The plug-in (default: found beside this program)."),
                                    QStringLiteral("file"));
    const QCommandLineOption helpOption({QStringLiteral("h"), QStringLiteral("help")},
                                        QStringLiteral("Show this help."));
    parser.addOptions(
        {camera, seconds, source, mic, device, volume, output, timeout, fault, plugin, helpOption});
    if (!parser.parse(arguments)) {
        return usageError(parser.errorText());
    }
    if (parser.isSet(helpOption)) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return ExitSuccess;
    }
    if (!parser.positionalArguments().isEmpty()) {
        return usageError(QStringLiteral("\"%1\" is one word too many").arg(parser.positionalArguments()[0]));
    }
    if (parser.isSet(source) && (parser.isSet(mic) || parser.isSet(device))) {
        return usageError(QStringLiteral("choose either --source or a microphone"));
    }

    TalkOptions options;
    options.cameraId = parser.value(camera);
    options.pluginPath = parser.value(plugin);
    options.sourceFile = parser.value(source);
    options.inputDevice = parser.value(device);
    bool validSeconds = true;
    if (parser.isSet(seconds)) {
        options.seconds = parser.value(seconds).toDouble(&validSeconds);
        validSeconds = validSeconds && options.seconds > 0 && options.seconds <= 86400;
    }
    bool validVolume = false;
    options.volume = parser.value(volume).toInt(&validVolume);
    bool validTimeout = false;
    const double timeoutSeconds = parser.value(timeout).toDouble(&validTimeout);
    if (!validSeconds || !validVolume || options.volume < 0 || options.volume > 100 || !validTimeout ||
        !(timeoutSeconds > 0 && timeoutSeconds <= 3600)) {
        return usageError(
            QStringLiteral("--seconds takes 0 to 86400, --volume 0 to 100, --timeout 0 to 3600 seconds"));
    }
    options.answerTimeout = static_cast<int>(timeoutSeconds * 1000);
    options.server.cameras = defaultCameras();
    options.server.recordingDirectory = QDir(parser.value(output)).absolutePath();
    const QString faultKind = parser.value(fault);
    if (faultKind == QLatin1String("silent")) {
        options.server.answers = false;
    } else if (faultKind == QLatin1String("drop")) {
        constexpr int packetsOfASecond = 12;
        for (CameraConfig& config : options.server.cameras) {
            config.dropAfterPackets = packetsOfASecond;
        }
    } else if (!faultKind.isEmpty()) {
        return usageError(QStringLiteral("--fault takes \"silent\" or \"drop\""));
    }

    InterruptFlag::install();
    return TalkCommand(options).run();
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
    if (command == QLatin1String("talk")) {
        return runTalk(rest);
    }
    if (command == QLatin1String("cameras")) {
        return runCameras();
    }
    return usageError(QStringLiteral("\"%1\" is not a command").arg(command));
}
