#include "server/devices/onvif/VideoLine.h"

#include "server/devices/onvif/GstPtr.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds step{50}; // between two looks at the clock

} // namespace

VideoLine::VideoLine(CameraRecord camera, const OnvifConfig& config, VideoLineListener& listener)
    : m_camera(std::move(camera)), m_config(config), m_listener(&listener), m_lastPacket(Clock::now())
{
}

void VideoLine::forgetListener()
{
    const std::lock_guard<std::mutex> lock(m_listening);
    m_listener = nullptr;
}

/** On a thread of GStreamer. */
void VideoLine::sessionShowed(const RtpVoice& packet)
{
    m_lastPacket = Clock::now();
    if (!m_assembler) {
        const auto video = m_session->video();
        m_assembler.emplace(video ? video->parameterSets : QList<QByteArray>());
    }
    std::vector<VideoUnit> units;
    m_assembler->add(packet, units);
    for (const VideoUnit& unit : units) {
        m_hasShown = true;
        const std::lock_guard<std::mutex> lock(m_listening);
        if (m_listener != nullptr) {
            m_listener->lineShowed(unit);
        }
    }
}

void VideoLine::run()
{
    if (!m_closing) {
        m_session =
            std::make_unique<RtspSession>(m_camera, m_config, static_cast<RtspSessionListener&>(*this));
        if (m_session->start(RtspSession::Way::Video)) {
            watch();
        } else {
            end({ReturnCode::noPicture, QStringLiteral("GStreamer's plug-ins for RTSP are missing")});
        }
        m_session->stop();
        m_session.reset();
    }
    m_ended = true;
}

/** Follows what happens, until the end. */
void VideoLine::watch()
{
    const auto deadline = Clock::now() + milliseconds(m_camera.settings.openTimeout);
    while (!m_isOver && !m_closing) {
        const auto message = m_session->next(step);
        if (message) {
            handle(message.get());
        }
        const auto now = Clock::now();
        if (!m_hasShown && now >= deadline) {
            end({ReturnCode::cameraTimedOut, QStringLiteral("the camera sent no picture in time")});
        } else if (m_hasShown && now - m_lastPacket.load() >= m_config.videoSilence) {
            end({ReturnCode::cameraOffline, QStringLiteral("the camera sends nothing any more")});
        }
    }
}

void VideoLine::handle(GstMessage* message)
{
    const LineRefusal closed{ReturnCode::cameraOffline, QStringLiteral("the camera has ended its video")};
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR: {
        const auto video = m_session->video();
        end(m_session->isUntrusted()                ? LineRefusal::untrusted()
            : m_session->guard().wasSentElsewhere() ? LineRefusal::elsewhere()
            : m_session->guard().wasSentTooOften()
                ? LineRefusal::endless()
                : LineRefusal::ofVideo(message, video ? &*video : nullptr));
        break;
    }
    case GST_MESSAGE_WARNING: {
        GError* error = nullptr;
        gst_message_parse_warning(message, &error, nullptr);
        const GstPtr<GError> owned(error);
        // How rtspsrc reports that a camera closes the connection.
        if (g_error_matches(error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_READ) != FALSE) {
            end(closed);
        }
        break;
    }
    case GST_MESSAGE_EOS:
        end(closed);
        break;
    default:
        break;
    }
}

void VideoLine::end(const LineRefusal& why)
{
    if (m_isOver) {
        return;
    }
    m_isOver = true;
    const std::lock_guard<std::mutex> lock(m_listening);
    if (m_listener != nullptr) {
        m_listener->lineEnded(why);
    }
}
