#include "client/ExitStatus.h"
#include "desk/DeskWindow.h"
#include "desk/SceneRenderer.h"
#include "system/EnvironmentVariable.h"
#include "system/MediaFiles.h"
#include "system/ProgramEnd.h"
#include "system/ProgramStart.h"

#include <QApplication>
#include <QDir>

#include <algorithm>
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
    if (options && options->serverUrl.isEmpty() && parser.isSet(QStringLiteral("secret-file"))) {
        error = QStringLiteral("--secret-file is for another server: give --server, too");
        options.reset();
    }
    if (!options) {
        *status = fail(ExitUsage, error);
        return std::nullopt;
    }
    const QString source = parser.value(QStringLiteral("source"));
    if (!source.isEmpty()) {
        if (MediaFiles::duration(source) < 0) {
            *status = fail(ExitMicrophoneFailed,
                           QStringLiteral("%1 is not a sound file that can be read").arg(source));
            return std::nullopt;
        }
        setEnvironmentVariable("FRAMESMITH_CAPTURE_FILE", source);
    }
    options->simulated.speakersAloud = parser.isSet(QStringLiteral("aloud"));
    return options;
}

int run(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setApplicationName(QStringLiteral("voicedesk"));
    av_log_set_level(AV_LOG_QUIET); // a bad packet is silence, not a message
    int status = ExitSuccess;
    std::optional<ClientOptions> options;
    {
        // A QApplication takes options of its own from the arguments, "--plugin" among them; this does not.
        const QCoreApplication reader(argc, argv);
        options = readOptions(&status);
    }
    if (!options) {
        return status;
    }
    int count = std::min(argc, 1); // its name alone
    QApplication application(count, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("VoiceDesk"));
    SceneRenderer::choose();
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
