#include "client/ExitStatus.h"
#include "desk/DeskWindow.h"
#include "system/EnvironmentVariable.h"
#include "system/ProgramEnd.h"
#include "system/ProgramStart.h"

#include <QApplication>
#include <QDir>

#include <cstdio>

extern "C" {
#include <libavutil/log.h>
}

namespace {

int fail(int status, const QString& message)
{
    std::fprintf(stderr, "voicedesk-desk: %s\n", qUtf8Printable(message));
    return status;
}

std::optional<ClientOptions> readOptions(int* status)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "A window for everything that the VoiceDesk plug-in does: talks, speakers, audio files, "
        "groups, schedules."));
    ClientOptions::addTo(parser);
    parser.addOptions(
        {{QStringLiteral("source"), QStringLiteral("Sound file that speaks in the microphone's place."),
          QStringLiteral("file")},
         {QStringLiteral("aloud"), QStringLiteral("The simulated speakers are also heard on this machine.")},
         {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")}});
    QString error;
    if (!parser.parse(QCoreApplication::arguments()) || !parser.positionalArguments().isEmpty()) {
        *status = fail(ExitUsage, parser.errorText().isEmpty()
                                      ? QStringLiteral("no arguments are taken, only options")
                                      : parser.errorText());
        return std::nullopt;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        std::fputs(qUtf8Printable(parser.helpText()), stdout);
        *status = ExitSuccess;
        return std::nullopt;
    }
    auto options = ClientOptions::read(parser, &error);
    if (!options) {
        *status = fail(ExitUsage, error);
        return std::nullopt;
    }
    if (parser.isSet(QStringLiteral("source"))) {
        setEnvironmentVariable("FRAMESMITH_CAPTURE_FILE", parser.value(QStringLiteral("source")));
    }
    options->simulated.speakersAloud = parser.isSet(QStringLiteral("aloud"));
    return options;
}

int run(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("voicedesk"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("VoiceDesk"));
    av_log_set_level(AV_LOG_QUIET); // a bad packet is silence, not a message
    int status = ExitSuccess;
    const auto options = readOptions(&status);
    if (!options) {
        return status;
    }
    DeskWindow::registerTypes();
    QDir().mkpath(options->embedded.dataDirectory);
    Desk desk(*options, QDir(options->embedded.dataDirectory).filePath(QStringLiteral("desk.ini")));
    if (!desk.load()) {
        return fail(ExitPluginFailed,
                    QStringLiteral("the plug-in does not load: %1").arg(desk.errorString()));
    }
    DeskWindow window(desk);
    if (!window.show()) {
        return fail(ExitPluginFailed, QStringLiteral("the window cannot be shown"));
    }
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    prepareProgram();
    endProgram(run(argc, argv));
}
