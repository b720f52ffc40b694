#include "audio/CodecNames.h"
#include "audio/NumberedFile.h"
#include "audio/TalkEncoder.h"
#include "cli/InterruptFlag.h"
#include "cli/PluginSession.h"
#include "cli/RecordFinder.h"
#include "cli/TalkProgress.h"
#include "cli/TalkSource.h"
#include "cli/TalkSummary.h"
#include "cli/commands/CameraOptions.h"
#include "cli/commands/Commands.h"
#include "client/measure/OutputRecorder.h"
#include "client/measure/TalkMonitor.h"
#include "embedded/EmbeddedLink.h"
#include "protocol/Limits.h"
#include "protocol/PrintableName.h"
#include "protocol/Words.h"
#include "src/decoders/CodecTable.h"
#include "system/MediaFiles.h"

#include <QFileInfo>

#include <algorithm>
#include <cstdio>

namespace {

constexpr char realKind[] = "onvif";
constexpr double maxEchoDelay = 5000; // ms
constexpr double msPerSecond = 1000.0;
constexpr int loudestVolume = 100;
constexpr double echoTail = 1.0;      // s; lets the last of an echo be heard
constexpr int recorderTimeout = 5000; // ms

// The cameras of the server inside this program are set up by these; another server has its own.
constexpr const char* simulationOptions[] = {"speech", "codec", "echo-delay"};

/** Sets the simulated cameras up; false, and an error printed, for options that make no sense. */
bool readSimulation(const CommandArguments& arguments, SimulatedConfig* simulated)
{
    if (!arguments.client().serverUrl.isEmpty()) {
        for (const char* option : simulationOptions) {
            if (!arguments.onlyOne("server", option)) {
                return false;
            }
        }
    }
    simulated->hasCameras = true; // a talk of this program alone is a trial
    simulated->cameras = defaultCameras(arguments.value("speech"));
    const auto echoDelay = arguments.numberBetween("echo-delay", -1, maxEchoDelay);
    if (!echoDelay) {
        return false;
    }
    const Codec* codec = Codec::byName(arguments.value("codec").toStdString());
    if (codec == nullptr) {
        arguments.usage(QStringLiteral("--codec takes %1").arg(CodecNames::anyOf()));
        return false;
    }
    for (SimulatedCamera& camera : simulated->cameras) {
        camera.voice.codec = codec;
        camera.voice.echoDelay = static_cast<int>(*echoDelay);
    }
    return true;
}

/** How long a camera speaks, seconds; negative when its file cannot be read. */
double speechDuration(const CameraVoiceConfig& voice)
{
    if (TalkEncoder::existsFor(*voice.codec)) {
        return MediaFiles::duration(voice.file);
    }
    const auto packets = readRecordedStream(voice.file, *voice.codec);
    double samples = 0;
    for (const RecordedPacket& packet : packets) {
        samples += packet.samples;
    }
    return packets.empty() ? -1 : samples / voice.codec->rate;
}

/** Prolongs a talk until a simulated camera has said what it has to say; false, and an error printed, when
 * that cannot be known. */
bool prolongFor(const SimulatedConfig& simulated, const QString& cameraId, double* seconds)
{
    for (const SimulatedCamera& camera : simulated.cameras) {
        if (camera.id != cameraId) {
            continue;
        }
        if (camera.voice.kind == CameraVoiceConfig::Echo) {
            *seconds += camera.voice.echoDelay / msPerSecond + echoTail;
        }
        if (camera.voice.kind == CameraVoiceConfig::File) {
            const double duration = speechDuration(camera.voice);
            if (duration < 0) {
                PluginSession::fail(
                    ExitUsage,
                    QStringLiteral("%1 is not a sound file that can be read").arg(camera.voice.file));
                return false;
            }
            *seconds = std::max(*seconds, duration + echoTail);
        }
    }
    return true;
}

/** The camera of a talk. */
struct TalkCamera
{
    QString id;
    QString shown;   ///< For people.
    int timeout = 0; ///< ms for the line to open; 0 for that of the options.
};

/** The time in which a camera opens its line. @param kind of the camera */
int openingTime(const PluginSession& session, const QString& kind)
{
    return kind == QLatin1String(realKind) ? session.options().timeout + Limits::maxTalkOpeningTime : 0;
}

/** Whether --camera is an address, with which the options of a camera go; empty, and an error printed, where
 * it cannot be. */
std::optional<bool> isByAddress(const CommandArguments& arguments)
{
    const QString camera = arguments.value("camera");
    if (!CameraOptions::isAddress(camera)) {
        if (arguments.isSet("camera-user") || CameraOptions::hasSettings(arguments)) {
            arguments.usage(
                QStringLiteral("--camera-user and the settings go only with an address after --camera; a "
                               "camera of the records has its own"));
            return std::nullopt;
        }
        return false;
    }
    for (const char* option : {"server", "data"}) {
        if (arguments.isSet(option)) {
            arguments.usage(
                QStringLiteral("--camera with an address goes without --%1, whose records it would change")
                    .arg(QLatin1String(option)));
            return std::nullopt;
        }
    }
    return CameraOptions::hasNoLogin(arguments, camera) ? std::optional(true) : std::nullopt;
}

/** The record for a camera that is given by its address, with its login; empty, and an error printed, without
 * one. */
std::optional<QVariantMap> temporaryRecord(const CommandArguments& arguments)
{
    const QString address = arguments.value("camera");
    const auto settings = CameraOptions::settings(arguments);
    QVariantMap record{{Words::camName, QStringLiteral("camera")},
                       {Words::camKind, QString::fromLatin1(realKind)},
                       {Words::camAddress, address}};
    if (!settings || !CameraOptions::addLogin(arguments, address, &record)) {
        return std::nullopt;
    }
    record.insert(Words::camSettings, *settings);
    return record;
}

/** Finds the camera, or adds it to the records, which the server inside this program keeps in memory. */
std::optional<TalkCamera> findCamera(PluginSession& session, const CommandArguments& arguments,
                                     const QVariantMap& record, int* status)
{
    TalkCamera camera;
    if (record.isEmpty()) {
        RecordFinder finder(session);
        const auto found = finder.cameraRecord(arguments.value("camera"));
        *status = finder.status();
        if (!found) {
            if (finder.isAbsent() && arguments.client().serverUrl.isEmpty()) {
                std::fputs("voicedesk: an address is a URL, an IP address or host:port, as "
                           "rtsp://10.0.0.5/stream or gate:80\n",
                           stderr);
            }
            return std::nullopt;
        }
        camera.id = found->value(Vocabulary::camId).toString();
        camera.shown = found->value(Words::camName).toString();
        camera.timeout = openingTime(session, found->value(Words::camKind).toString());
        return camera;
    }
    PluginSession::Reply reply;
    *status = session.receive(session.sendOwn(Words::AddCamera, record), &reply);
    if (*status != ExitSuccess) {
        return std::nullopt;
    }
    camera.id = reply.result.toMap().value(Vocabulary::camId).toString();
    camera.shown = arguments.value("camera");
    camera.timeout = openingTime(session, QString::fromLatin1(realKind));
    return camera;
}

/** Whether a text is the id or the name of a simulated camera. */
bool isSimulated(const SimulatedConfig& simulated, const QString& camera)
{
    return std::any_of(simulated.cameras.begin(), simulated.cameras.end(),
                       [&](const SimulatedCamera& each) { return each.id == camera || each.name == camera; });
}

/** Returns whether a file can be written, as far as that is known before. */
bool isWritable(const QString& path)
{
    const QFileInfo file(path);
    const QFileInfo folder(file.absolutePath());
    return file.exists() ? !file.isDir() && file.isWritable() : folder.isDir() && folder.isWritable();
}

/**
 * A talk to one camera, from the start to a report.
 *
 *   record the output --> startTalk --> (reply) --> talk --> stopTalk --> TalkSummary
 */
class CameraTalk
{
public:
    CameraTalk(PluginSession& session, const CommandArguments& arguments, TalkCamera camera, double seconds)
        : m_session(session), m_arguments(arguments), m_camera(std::move(camera)), m_seconds(seconds),
          m_progress(m_monitor)
    {
        QObject::connect(&session.host(), &PluginHost::commandSent, &m_monitor, &TalkMonitor::commandSent);
        QObject::connect(&session.host(), &PluginHost::replyArrived, &m_monitor, &TalkMonitor::replyArrived);
        QObject::connect(&session.host(), &PluginHost::eventArrived, &m_monitor, &TalkMonitor::eventArrived);
        QObject::connect(&session.plugin(), &PluginClient::talkDisconnected, &m_monitor,
                         [this] { m_disconnected = true; });
    }

    /** Runs the talk; @p volume is the microphone's. */
    ExitStatus run(int volume)
    {
        // From before the talk on, where the output can be recorded.
        if (m_recorder.start()) {
            m_session.wait([this] { return m_recorder.running(); }, recorderTimeout);
        }
        ExitStatus status = start(volume);
        if (status != ExitSuccess) {
            m_session.plugin().stopAudioCapture(); // also while a request is open
            return status;
        }
        m_progress.start();
        m_session.wait(
            [this] {
                m_progress.update();
                return m_disconnected || (m_seconds > 0 && m_progress.elapsed() >= m_seconds);
            },
            PluginSession::forever);
        m_progress.finish();
        if (m_disconnected) {
            status =
                PluginSession::fail(ExitTalkLost, QStringLiteral("the camera was lost; the talk has ended"));
        } else if (m_session.isLost()) {
            status = PluginSession::fail(ExitTalkLost, QStringLiteral("the talk was lost"));
        } else if (m_monitor.packets() == 0) {
            status = PluginSession::fail(ExitNothingSent,
                                         QStringLiteral("nothing was sent: the microphone gave no sound"));
        }
        m_session.plugin().stopAudioCapture();
        InterruptFlag::lower(); // for the last request; another Ctrl-C ends its wait
        m_session.nextReply(m_session.send([](PluginClient& plugin) { plugin.stopTalk(); }));
        // Behind the last reply: those to all packets came before it.
        if (status == ExitSuccess && !m_monitor.refusal().isEmpty()) {
            status = PluginSession::fail(ExitRefused, TalkProgress::refusal(m_monitor));
        }
        const bool written = report();
        return status == ExitSuccess && !written ? ExitOutputFailed : status;
    }

private:
    ExitStatus start(int volume)
    {
        const QString shown = printableText(m_camera.shown.isEmpty() ? m_camera.id : m_camera.shown);
        std::fprintf(stderr, "Calling %s...\n", qUtf8Printable(shown));
        const quint64 request =
            m_session.send([&](PluginClient& plugin) { m_microphoneStarts = plugin.startTalk(m_camera.id); });
        if (request == 0 && !m_microphoneStarts && !m_session.isLost()) {
            return PluginSession::fail(
                ExitMicrophoneFailed,
                QStringLiteral("the microphone does not start; plug one in, choose one with --microphone, or "
                               "give a sound file with --source"));
        }
        m_session.plugin().setMicVolume(volume);
        const ExitStatus status = m_session.receive(request, nullptr, m_camera.timeout);
        if (status == ExitSuccess) {
            const QString source = m_arguments.value("source");
            std::fprintf(stderr, "Talking to %s, from %s.\n", qUtf8Printable(shown),
                         source.isEmpty() ? "the microphone" : qUtf8Printable(source));
        }
        return status;
    }

    /** Prints the summary; returns false, and prints an error, when the file of --heard cannot be written. */
    bool report()
    {
        m_recorder.stop();
        TalkSummary summary(m_monitor);
        summary.duration = m_progress.elapsed();
        summary.recordings =
            m_session.options().simulated.recordings->talks + m_session.options().onvif.kept->paths();
        QString heardFile = m_arguments.value("heard");
        if (m_recorder.running() && heardFile.isEmpty()) {
            heardFile = NumberedFile::create(m_session.options().simulated.recordingDirectory,
                                             QStringLiteral("heard"), QStringLiteral("wav"));
        }
        if (m_recorder.running() && m_recorder.write(heardFile)) {
            summary.heardFile = heardFile;
            summary.received = m_recorder.sound();
        } else if (m_recorder.running()) {
            summary.whyNotHeard = QStringLiteral("%1 cannot be written").arg(heardFile);
        }
        summary.print(m_arguments.json());
        if (m_arguments.isSet("heard") && !summary.whyNotHeard.isEmpty()) {
            PluginSession::fail(ExitOutputFailed, summary.whyNotHeard);
            return false;
        }
        return true;
    }

    PluginSession& m_session;
    const CommandArguments& m_arguments;
    TalkCamera m_camera;
    double m_seconds;
    TalkMonitor m_monitor;
    TalkProgress m_progress;
    OutputRecorder m_recorder;
    bool m_microphoneStarts = false;
    bool m_disconnected = false;
};

int runTalk(const CommandArguments& arguments)
{
    ClientOptions client = arguments.client();
    const auto volume = arguments.numberBetween("volume", -1, loudestVolume);
    if (!volume || !readSimulation(arguments, &client.simulated)) {
        return ExitUsage;
    }
    const QString wanted = arguments.value("camera");
    if (!arguments.isSet("data") &&
        (isSimulated(client.simulated, wanted) || !CameraOptions::mayBeRecord(arguments, wanted))) {
        client.embedded.dataDirectory.clear(); // such a talk needs no records
    }
    if (arguments.isSet("heard") && !isWritable(arguments.value("heard"))) {
        return PluginSession::fail(ExitOutputFailed,
                                   QStringLiteral("%1 cannot be written").arg(arguments.value("heard")));
    }
    int status = ExitSuccess;
    auto source = TalkSource::read(arguments, &status);
    if (!source) {
        return status;
    }
    if (arguments.isSet("device")) {
        if (!arguments.onlyOne("device", "source") || !arguments.onlyOne("device", "microphone")) {
            return ExitUsage;
        }
        source->microphone = arguments.value("device");
    }
    const auto byAddress = isByAddress(arguments);
    const auto record = byAddress && *byAddress ? temporaryRecord(arguments) : std::optional(QVariantMap());
    if (!byAddress || !record) {
        return ExitUsage;
    }
    source->use();
    PluginSession session(client);
    if (const ExitStatus opened = session.open(); opened != ExitSuccess) {
        return opened;
    }
    const auto camera = findCamera(session, arguments, *record, &status);
    if (!camera) {
        return status;
    }
    double seconds = source->seconds;
    const bool asLongAsNeeded = !source->file.isEmpty() && !arguments.isSet("seconds");
    if (asLongAsNeeded && client.serverUrl.isEmpty() && !prolongFor(client.simulated, camera->id, &seconds)) {
        return ExitUsage;
    }
    return CameraTalk(session, arguments, *camera, seconds).run(static_cast<int>(*volume));
}

} // namespace

std::vector<Command> talkCommands()
{
    static const QByteArray codecs =
        QStringLiteral(
            "The simulated cameras' codec: %1 (default: pcmu); for --speech with a packet dump also %2.")
            .arg(CodecNames::encoded().join(QStringLiteral(", ")),
                 CodecNames::recorded().join(QStringLiteral(", ")))
            .toLatin1();
    std::vector<CommandOption> options{{"camera", "CAMERA",
                                        "Camera to talk to, its id or name, or the address of one that is in "
                                        "no record: a URL, an IP address, or "
                                        "host:port (default: camera-1, which echoes).",
                                        "camera-1"}};
    const std::vector<CommandOption> ofTheCamera = CameraOptions::options();
    options.insert(options.end(), ofTheCamera.begin(), ofTheCamera.end());
    const std::vector<CommandOption> source = TalkSource::options();
    options.insert(options.end(), source.begin(), source.end());
    options.insert(
        options.end(),
        {
            {"device", "NAME", "The same as --microphone.", ""},
            {"volume", "N", "Microphone volume, 0 to 100; 50 leaves it as it is.", "50"},
            {"heard", "FILE",
             "WAV file of what was heard, replaced (default: a new heard-N.wav in the folder of recordings).",
             ""},
            {"speech", "FILE", "Sound file or packet dump that the simulated camera-2 speaks.", ""},
            {"codec", "NAME", codecs.constData(), "pcmu"},
            {"echo-delay", "N", "Time after which the simulated camera-1 echoes, ms (default: 500).", "500"},
            jsonOption,
        });
    return {
        {"talk", "", "talk to a camera",
         "The camera's voice is played, the server records what the camera hears. The talk lasts as long\n"
         "as the source file, or the simulated camera's answer if that is longer; with a microphone, until\n"
         "Ctrl-C or for --seconds. Without --source the microphone is used. Without --server the program\n"
         "has simulated cameras of its own; any other id or name is looked for in the records of --data or,\n"
         "without it, of the default folder. A camera that is given by its address is in no record;\n"
         "--camera-user and the settings are for it.",
         options, Command::Server, runTalk, true}};
}
