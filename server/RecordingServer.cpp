#include "RecordingServer.h"

namespace {

constexpr int defaultEchoDelay = 500; // ms

} // namespace

std::vector<CameraConfig> defaultCameras(const QString& speechFile)
{
    CameraVoiceConfig echo;
    echo.kind = CameraVoiceConfig::Echo;
    echo.echoDelay = defaultEchoDelay;
    CameraVoiceConfig speech;
    speech.kind = speechFile.isEmpty() ? CameraVoiceConfig::Silent : CameraVoiceConfig::File;
    speech.file = speechFile;
    return {
        {QStringLiteral("camera-1"), QStringLiteral("Front gate"), true, 0, echo},
        {QStringLiteral("camera-2"), QStringLiteral("Loading dock"), true, 0, speech},
        {QStringLiteral("camera-3"), QStringLiteral("Car park"), false, 0, CameraVoiceConfig()},
    };
}

RecordingServer::RecordingServer(ServerConfig config)
    : m_config(std::move(config)), m_talks(m_config.cameras, m_config.recordingDirectory)
{
    m_executors[QStringLiteral("StartTalk")] = [this](ServerSession& session, const QVariant& payload) {
        return m_talks.startTalk(session, payload);
    };
    m_executors[QStringLiteral("StopTalk")] = [this](ServerSession& session, const QVariant& payload) {
        return m_talks.stopTalk(session, payload);
    };
    m_executors[QStringLiteral("TalkData")] = [this](ServerSession& session, const QVariant& payload) {
        return m_talks.talkData(session, payload);
    };
}

std::optional<ServerReply> RecordingServer::execute(ServerSession& session, const QString& command,
                                                    const QVariant& payload)
{
    if (!m_config.answers) {
        return std::nullopt;
    }
    const auto executor = m_executors.constFind(command);
    if (executor == m_executors.constEnd()) {
        return ServerReply{ReturnCode::unknownCommand, QVariant(),
                           QStringLiteral("this server does not know the command \"%1\"").arg(command)};
    }
    return (*executor)(session, payload);
}

void RecordingServer::closeSession(ServerSession& session)
{
    m_talks.closeSession(session);
}
