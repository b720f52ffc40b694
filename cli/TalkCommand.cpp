#include "cli/TalkCommand.h"

#include "audio/NumberedFile.h"
#include "audio/TalkEncoder.h"
#include "cli/InterruptFlag.h"
#include "cli/TalkSummary.h"
#include "embedded/ClientOptions.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"
#include "src/decoders/CodecTable.h"
#include "system/EnvironmentVariable.h"
#include "system/MediaFiles.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int tickInterval = 100;     // ms
constexpr double fileTail = 0.3;      // s; lets the last packets of a file out
constexpr double echoTail = 1.0;      // s; lets the last of an echo be heard
constexpr int recorderTimeout = 5000; // ms

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

ServerConfig serverOf(const TalkOptions& options)
{
    ClientOptions client;
    client.embedded = options.server;
    client.simulated = options.simulated;
    return client.serverConfig();
}

} // namespace

TalkCommand::TalkCommand(TalkOptions options)
    : m_options(std::move(options)), m_link(serverOf(m_options)), m_host(m_link), m_progress(m_monitor)
{
    connect(&m_host, &PluginHost::commandSent, &m_monitor, &TalkMonitor::commandSent);
    connect(&m_host, &PluginHost::replyArrived, this,
            [this](const QString& command, const QString& returnCode, const QString& errorText) {
                if (command == Vocabulary::StartTalk && returnCode != ReturnCode::success) {
                    m_refusal = QStringLiteral("%1 (code %2)").arg(errorText, returnCode);
                }
            });
    connect(&m_host, &PluginHost::eventArrived, &m_monitor, &TalkMonitor::eventArrived);
    m_recorderTimer.setSingleShot(true);
    connect(&m_recorderTimer, &QTimer::timeout, this, &TalkCommand::begin);
    connect(&m_recorder, &OutputRecorder::started, this, &TalkCommand::begin);
    m_answerTimer.setSingleShot(true);
    connect(&m_answerTimer, &QTimer::timeout, this, [this] {
        end(ExitNoAnswer, QStringLiteral("The server did not answer within %1 s. Is it running?")
                              .arg(m_options.answerTimeout / 1000.0));
    });
    connect(&m_ticker, &QTimer::timeout, this, &TalkCommand::tick);
}

int TalkCommand::run()
{
    if (!m_options.sourceFile.isEmpty()) {
        const double duration = MediaFiles::duration(m_options.sourceFile);
        if (duration < 0) {
            std::fprintf(stderr, "voicedesk: %s is not a sound file that can be read.\n",
                         qUtf8Printable(m_options.sourceFile));
            return ExitMicrophoneFailed;
        }
        if (m_options.seconds <= 0) {
            m_options.seconds = duration + fileTail;
            if (!prolongForTheCamera()) {
                return ExitUsage;
            }
        }
        setEnvironmentVariable("FRAMESMITH_CAPTURE_FILE", m_options.sourceFile);
    } else {
        qunsetenv("FRAMESMITH_CAPTURE_FILE");
    }
    if (!m_options.inputDevice.isEmpty()) {
        qputenv("FRAMESMITH_CAPTURE_DEVICE", m_options.inputDevice.toUtf8());
    }

    // The front end starts when the server is up, as in the client.
    connect(&m_link, &ServerLink::connected, this, &TalkCommand::prepare);
    if (!m_host.load(m_options.pluginPath)) {
        std::fprintf(stderr, "voicedesk: the plug-in does not load: %s\n",
                     qUtf8Printable(m_host.errorString()));
        return ExitPluginFailed;
    }
    if (!m_plugin.attach(m_host.plugin())) {
        std::fprintf(stderr, "voicedesk: %s\n", qUtf8Printable(m_plugin.errorString()));
        return ExitPluginFailed;
    }
    connect(&m_plugin, &PluginClient::startTalkResponse, this, &TalkCommand::startTalkResponse);
    connect(&m_plugin, &PluginClient::talkDisconnected, this, &TalkCommand::talkDisconnected);
    QCoreApplication::exec();
    return m_status;
}

/** The talk lasts until the camera has said what it has to say; false when that cannot be known. */
bool TalkCommand::prolongForTheCamera()
{
    for (const SimulatedCamera& camera : m_options.simulated.cameras) {
        if (camera.id != m_options.cameraId) {
            continue;
        }
        if (camera.voice.kind == CameraVoiceConfig::Echo) {
            m_options.seconds += camera.voice.echoDelay / 1000.0 + echoTail;
        }
        if (camera.voice.kind == CameraVoiceConfig::File) {
            const double duration = speechDuration(camera.voice);
            if (duration < 0) {
                std::fprintf(stderr, "voicedesk: %s is not a sound file that can be read.\n",
                             qUtf8Printable(camera.voice.file));
                return false;
            }
            m_options.seconds = std::max(m_options.seconds, duration + echoTail);
        }
    }
    return true;
}

/** Records the output, where that is possible, from before the talk on. */
void TalkCommand::prepare()
{
    if (!m_recorder.start()) {
        begin();
        return;
    }
    m_recorderTimer.start(recorderTimeout);
}

void TalkCommand::begin()
{
    if (m_began) {
        return;
    }
    m_began = true;
    m_recorderTimer.stop();
    std::fprintf(stderr, "Talking to %s, from %s.\n", qUtf8Printable(m_options.cameraId),
                 m_options.sourceFile.isEmpty() ? "the microphone" : qUtf8Printable(m_options.sourceFile));
    if (!m_plugin.startTalk(m_options.cameraId)) {
        end(ExitMicrophoneFailed,
            QStringLiteral("The microphone does not start. Plug one in, choose one with --device, or give a "
                           "sound file with --source."));
        return;
    }
    m_plugin.setMicVolume(m_options.volume);
    m_answerTimer.start(m_options.answerTimeout);
    m_ticker.start(tickInterval);
}

void TalkCommand::startTalkResponse(bool success)
{
    m_answerTimer.stop();
    if (!success) {
        end(ExitRefused, QStringLiteral("The server refuses the talk: %1").arg(m_refusal));
        return;
    }
    m_talking = true;
    m_progress.start();
}

void TalkCommand::talkDisconnected()
{
    end(ExitTalkLost, QStringLiteral("The camera was lost; the talk has ended."));
}

void TalkCommand::tick()
{
    if (m_talking) {
        m_progress.update();
    }
    const bool over = m_talking && m_options.seconds > 0 && m_progress.elapsed() >= m_options.seconds;
    if (!over && !InterruptFlag::raised()) {
        return;
    }
    if (m_monitor.packets() == 0) {
        end(ExitNothingSent, QStringLiteral("Nothing was sent: the microphone gave no sound."));
    } else {
        end(ExitSuccess, QString());
    }
}

void TalkCommand::end(ExitStatus status, const QString& message)
{
    if (m_ended) {
        return;
    }
    m_ended = true;
    m_status = status;
    m_ticker.stop();
    m_answerTimer.stop();
    if (m_talking) {
        m_progress.finish();
    }
    m_plugin.stopTalk();
    m_plugin.stopAudioCapture(); // also while a request is open
    if (!message.isEmpty()) {
        std::fprintf(stderr, "voicedesk: %s\n", qUtf8Printable(message));
    }
    if (m_talking) {
        printSummary();
    }
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
}

void TalkCommand::printSummary()
{
    m_recorder.stop();
    TalkSummary summary(m_monitor);
    summary.duration = m_progress.elapsed();
    summary.recordings = m_options.simulated.recordings->talks;
    QString heardFile = m_options.heardFile;
    if (m_recorder.running() && heardFile.isEmpty()) {
        heardFile = NumberedFile::create(m_options.simulated.recordingDirectory, QStringLiteral("heard"),
                                         QStringLiteral("wav"));
    }
    if (m_recorder.running() && m_recorder.write(heardFile)) {
        summary.heardFile = heardFile;
        summary.heard = m_recorder.sound();
    }
    summary.print();
}
