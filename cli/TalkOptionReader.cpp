#include "cli/TalkOptionReader.h"

#include "audio/CodecNames.h"
#include "src/decoders/CodecTable.h"

#include <QCommandLineParser>
#include <QDir>

namespace {

constexpr double longestTalk = 86400;     // s
constexpr double longestTimeout = 3600;   // s
constexpr double longestEchoDelay = 5000; // ms

QCommandLineOption valueOption(const char* name, const char* description, const char* value,
                               const char* fallback = "")
{
    return QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                              QString::fromLatin1(value), QString::fromLatin1(fallback));
}

void addOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Talks to a camera: the server records what the camera hears, and what the camera says is played.\n"
        "The talk lasts as long as the source file, or the camera's answer if that is longer; with a\n"
        "microphone, until Ctrl-C or for --seconds."));
    const QString codecs =
        QStringLiteral("The cameras' codec: %1 (default: pcmu); for --speech with a packet dump also %2.")
            .arg(CodecNames::encoded().join(QStringLiteral(", ")),
                 CodecNames::recorded().join(QStringLiteral(", ")));
    parser.addOptions({
        valueOption("camera", "Camera to talk to (default: camera-1, which echoes).", "id", "camera-1"),
        valueOption("seconds", "Length of the talk.", "n"),
        valueOption("source", "Sound file that speaks in the microphone's place.", "file"),
        QCommandLineOption(QStringLiteral("mic"), QStringLiteral("Use the default microphone.")),
        valueOption("device", "Use the microphone of this name.", "name"),
        valueOption("volume", "Microphone volume, 0 to 100; 50 leaves it as it is.", "n", "50"),
        valueOption("speech", "Sound file or packet dump that camera-2 speaks.", "file"),
        valueOption("codec", qUtf8Printable(codecs), "name", "pcmu"),
        valueOption("echo-delay", "Time after which camera-1 echoes, ms (default: 500).", "n", "500"),
        valueOption("output",
                    "Folder of the server's recordings, a new file for each talk (default: recordings).",
                    "folder", "recordings"),
        valueOption("heard",
                    "WAV file of what was heard, replaced (default: a new heard-N.wav in that folder).",
                    "file"),
        valueOption("timeout", "Wait for the server's answer (default: 5).", "seconds", "5"),
        valueOption("plugin", "The plug-in (default: found beside this program).", "file"),
        QCommandLineOption(QStringList{QStringLiteral("h"), QStringLiteral("help")},
                           QStringLiteral("Show this help.")),
    });
}

/** A number above `above` and up to `most`; empty when the option holds anything else. */
std::optional<double> number(const QCommandLineParser& parser, const char* option, double above, double most,
                             QString* error)
{
    bool valid = false;
    const double value = parser.value(QString::fromLatin1(option)).toDouble(&valid);
    if (!valid || !(value > above && value <= most)) {
        *error = QStringLiteral("--%1 takes a number from %2 to %3")
                     .arg(QString::fromLatin1(option))
                     .arg(above < 0 ? 0 : above)
                     .arg(most);
        return std::nullopt;
    }
    return value;
}

/** Sets the cameras up; false, and an error, when that was not said properly. */
bool readCameras(const QCommandLineParser& parser, SimulatedConfig& simulated, QString* error)
{
    simulated.cameras = defaultCameras(parser.value(QStringLiteral("speech")));
    const auto echoDelay = number(parser, "echo-delay", -1, longestEchoDelay, error);
    if (!echoDelay) {
        return false;
    }
    const Codec* codec = Codec::byName(parser.value(QStringLiteral("codec")).toStdString());
    if (codec == nullptr) {
        *error = QStringLiteral("--codec takes %1").arg(CodecNames::anyOf());
        return false;
    }
    for (SimulatedCamera& camera : simulated.cameras) {
        camera.voice.codec = codec;
        camera.voice.echoDelay = static_cast<int>(*echoDelay);
    }
    return true;
}

} // namespace

std::optional<TalkOptions> TalkOptionReader::read(const QStringList& arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments)) {
        error = parser.errorText();
        return std::nullopt;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        help = parser.helpText();
        return std::nullopt;
    }
    if (!parser.positionalArguments().isEmpty()) {
        error = QStringLiteral("\"%1\" is one word too many").arg(parser.positionalArguments()[0]);
        return std::nullopt;
    }
    const bool microphone = parser.isSet(QStringLiteral("mic")) || parser.isSet(QStringLiteral("device"));
    if (parser.isSet(QStringLiteral("source")) && microphone) {
        error = QStringLiteral("choose either --source or a microphone");
        return std::nullopt;
    }

    TalkOptions options;
    options.cameraId = parser.value(QStringLiteral("camera"));
    options.pluginPath = parser.value(QStringLiteral("plugin"));
    options.sourceFile = parser.value(QStringLiteral("source"));
    options.inputDevice = parser.value(QStringLiteral("device"));
    if (parser.isSet(QStringLiteral("seconds"))) {
        const auto seconds = number(parser, "seconds", 0, longestTalk, &error);
        if (!seconds) {
            return std::nullopt;
        }
        options.seconds = *seconds;
    }
    const auto volume = number(parser, "volume", -1, 100, &error);
    const auto timeout = number(parser, "timeout", 0, longestTimeout, &error);
    if (!volume || !timeout || !readCameras(parser, options.simulated, &error)) {
        return std::nullopt;
    }
    options.volume = static_cast<int>(*volume);
    options.answerTimeout = static_cast<int>(*timeout * 1000);
    const QDir output(parser.value(QStringLiteral("output")));
    options.simulated.recordingDirectory = output.absolutePath();
    options.heardFile = parser.value(QStringLiteral("heard"));
    return options;
}
