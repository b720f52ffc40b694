#include "server/devices/onvif/OnvifLine.h"

#include "audio/NumberedFile.h"
#include "protocol/ServerReply.h"
#include "system/SocketOptions.h"

#include <QUrl>

#include <cstring>
#include <system_error>
#include <utility>

namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr milliseconds step{50}; // between two looks at the watchdog
constexpr int dscpShift = 2;

std::int64_t steadyMicroseconds()
{
    return duration_cast<microseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace

OnvifLine::OnvifLine(CameraRecord camera, const OnvifConfig& config, LineListener& listener)
    : m_camera(std::move(camera)), m_config(config), m_listener(&listener),
      m_watchdog(config.silence, Clock::now())
{
}

OnvifLine::~OnvifLine() = default;

template<class Call>
void OnvifLine::report(Call call)
{
    const std::lock_guard<std::mutex> lock(m_listening);
    if (m_listener != nullptr) {
        call(*m_listener);
    }
}

void OnvifLine::forgetListener()
{
    const std::lock_guard<std::mutex> lock(m_listening);
    m_listener = nullptr;
}

void OnvifLine::close()
{
    m_closing = true;
}

void OnvifLine::answered()
{
    m_watchdog.alive(Clock::now());
    const std::lock_guard<std::mutex> lock(m_streams);
    if (m_sender && !m_isBehind) {
        m_sender->hold(false); // at once, not at the next look
    }
}

void OnvifLine::say(std::uint32_t position, const QByteArray& muLaw)
{
    const std::lock_guard<std::mutex> lock(m_streams);
    if (m_sender) {
        m_sender->say(position, muLaw);
    }
    if (m_recorder) {
        m_recorder->say(position, muLaw, steadyMicroseconds());
    }
}

/** On a thread of GStreamer. */
void OnvifLine::sessionIsAlive()
{
    m_watchdog.alive(Clock::now());
}

/** On a thread of GStreamer. */
void OnvifLine::sessionSpoke(const VoicePacket& packet)
{
    {
        const std::lock_guard<std::mutex> lock(m_streams);
        if (m_recorder) {
            m_recorder->hear(packet);
        }
    }
    report([&](LineListener& listener) { listener.lineSpoke(packet); });
}

void OnvifLine::refuse(const LineRefusal& refusal)
{
    if (m_state == State::Opening || m_state == State::Settling) {
        m_state = State::Ended;
        report([&](LineListener& listener) { listener.lineRefused(refusal.returnCode, refusal.reason); });
    }
}

void OnvifLine::lose(const QString& reason)
{
    if (m_state == State::Open) {
        m_state = State::Ended;
        report([&](LineListener& listener) { listener.lineLost(reason); });
    } else {
        refuse({ReturnCode::cameraOffline, reason});
    }
}

void OnvifLine::flooded()
{
    const auto refusal = LineRefusal::flood();
    if (m_state == State::Open) {
        lose(refusal.reason);
    } else {
        refuse(refusal);
    }
}

void OnvifLine::run()
{
    m_deadline = Clock::now() + milliseconds(m_camera.settings.openTimeout);
    if (!m_closing) {
        if (startSession(RtspSession::Way::Play)) {
            watch();
        } else {
            refuse({ReturnCode::talkRefused, QStringLiteral("GStreamer's plug-ins for RTSP are missing")});
        }
    }
    takeDown();
    report([](LineListener& listener) { listener.lineClosed(); });
    m_ended = true;
}

bool OnvifLine::startSession(RtspSession::Way way)
{
    m_session = std::make_unique<RtspSession>(m_camera, m_config, static_cast<RtspSessionListener&>(*this));
    return m_session->start(way);
}

/** Ends the session with the camera: a TEARDOWN, which the camera has a short time to answer. */
void OnvifLine::takeDown()
{
    std::unique_ptr<TalkSender> sender;
    {
        const std::lock_guard<std::mutex> lock(m_streams);
        sender = std::move(m_sender);
    }
    if (sender) {
        sender->stop();
    }
    if (m_session) {
        m_session->stop(); // frees the sender if it blocks
    }
    sender.reset();
    m_session.reset();
    dropRecorder();
}

/** Follows what happens, until the end. */
void OnvifLine::watch()
{
    while (m_state != State::Ended && !m_closing) {
        const auto message = m_session->next(step);
        if (m_session->isFlooded()) {
            flooded();
        } else if (message) {
            handle(message.get());
        }
        const auto now = Clock::now();
        if (m_state == State::Opening && now >= m_deadline) {
            refuse({ReturnCode::cameraTimedOut, QStringLiteral("the camera did not answer in time")});
        }
        if (m_state == State::Settling && now >= m_deadline) {
            m_state = State::Open;
            report([](LineListener& listener) { listener.lineOpened(); });
        }
        if (m_state == State::Open || m_state == State::Settling) {
            watchOpen(now);
        }
    }
}

void OnvifLine::watchOpen(Clock::time_point now)
{
    keepRecording();
    if (const auto flow = m_session->flow()) {
        m_backlog.look(flow->waiting, now);
        m_isBehind = m_backlog.isBehind();
    }
    if (m_backlog.isBehindFor(m_config.silence, now)) {
        lose(QStringLiteral("the camera takes nothing any more"));
        return;
    }
    switch (m_watchdog.check(now)) {
    case LineWatchdog::Verdict::Alive:
        m_sender->hold(m_backlog.isBehind());
        break;
    case LineWatchdog::Verdict::Ask:
        m_sender->hold(true); // a camera that wakes up plays nothing old
        report([](LineListener& listener) { listener.lineAsks(); });
        break;
    case LineWatchdog::Verdict::Wait:
        break;
    case LineWatchdog::Verdict::Lost:
        lose(QStringLiteral("the camera says nothing any more"));
        break;
    }
}

void OnvifLine::handle(GstMessage* message)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_PROGRESS: {
        GstProgressType type = GST_PROGRESS_TYPE_START;
        char* code = nullptr;
        gst_message_parse_progress(message, &type, &code, nullptr);
        const GstPtr<char> owned(code);
        // Before this rtspsrc swallows packets and calls it a success.
        if (type == GST_PROGRESS_TYPE_COMPLETE && std::strcmp(code, "request") == 0 &&
            m_state == State::Opening) {
            open();
        }
        break;
    }
    case GST_MESSAGE_ERROR:
        handleError(message);
        break;
    case GST_MESSAGE_WARNING: {
        GError* error = nullptr;
        gst_message_parse_warning(message, &error, nullptr);
        const GstPtr<GError> owned(error);
        // How rtspsrc reports that a camera closes the connection.
        if (g_error_matches(error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_READ) != FALSE) {
            lose(QStringLiteral("the camera has closed the line"));
        }
        break;
    }
    case GST_MESSAGE_EOS:
        lose(QStringLiteral("the camera has ended the stream"));
        break;
    default:
        break;
    }
}

void OnvifLine::handleError(GstMessage* message)
{
    if (m_state == State::Open) {
        lose(QStringLiteral("the line to the camera is cut"));
        return;
    }
    if (m_session->isUntrusted()) {
        refuse(LineRefusal::untrusted());
        return;
    }
    if (m_session->guard().wasSentElsewhere()) {
        refuse(LineRefusal::elsewhere());
        return;
    }
    if (m_session->guard().wasSentTooOften()) {
        refuse(LineRefusal::endless());
        return;
    }
    if (m_session->streamsElsewhere()) {
        refuse(LineRefusal::streamElsewhere());
        return;
    }
    if (m_session->hasAskedToPlay() && LineRefusal::isOfMethod(message)) {
        if (std::exchange(m_hasTriedToRecord, true)) {
            refuse(LineRefusal::noMethod());
            return;
        }
        takeDown();
        if (startSession(RtspSession::Way::Record)) {
            return;
        }
    }
    const auto choice = m_session->choice();
    const auto refusal = LineRefusal::of(message, choice ? &*choice : nullptr, m_camera.settings);
    if (refusal) {
        refuse(*refusal);
    } else {
        const bool hasTls = m_camera.address.startsWith(QLatin1String("rtsps://"));
        refuse(describesItself() ? LineRefusal::noLoudspeaker() : LineRefusal::undescribed(message, hasTls));
    }
}

/** Whether the camera has a description for who does not ask for its loudspeaker. */
bool OnvifLine::describesItself()
{
    takeDown();
    if (!startSession(RtspSession::Way::Description)) {
        return false;
    }
    while (!m_closing && Clock::now() < m_deadline) {
        const auto message = m_session->next(step);
        if (m_session->choice()) {
            return true;
        }
        if (message && (GST_MESSAGE_TYPE(message.get()) & (GST_MESSAGE_ERROR | GST_MESSAGE_EOS)) != 0) {
            return false;
        }
    }
    return false;
}

/** The session plays. */
void OnvifLine::open()
{
    if (m_session->streamsElsewhere()) {
        refuse(LineRefusal::streamElsewhere());
        return;
    }
    const auto choice = m_session->choice();
    if (!choice || !choice->hasLoudspeaker) {
        refuse(LineRefusal::noLoudspeaker());
        return;
    }
    auto encoder =
        choice->talkFormat ? RtpEncoder::create(*choice->talkFormat, m_camera.settings.packetTime) : nullptr;
    if (!encoder) {
        refuse(LineRefusal::noCodec(choice->offered, m_camera.settings.talkCodec));
        return;
    }
    if (!startRecording()) {
        refuse({ReturnCode::storageFailed, QStringLiteral("the recording of the talk cannot be written")});
        return;
    }
    adjustSockets();
    const RtpFormat& format = *choice->talkFormat;
    const bool isLinear = format.encoding == QLatin1String("L16"); // the others are no larger than G.711
    m_backlog = LineBacklog(isLinear ? std::int64_t{format.clockRate} * format.channels * 2 : 0);
    m_watchdog.alive(Clock::now());
    try {
        const std::lock_guard<std::mutex> lock(m_streams);
        m_sender = std::make_unique<TalkSender>(
            std::move(encoder), m_camera.settings.evenPace,
            [session = m_session.get()](const RtpPayload& payload) { session->push(payload); });
    } catch (const std::system_error&) { // no thread is left
        refuse(LineRefusal::noRoom());
        return;
    }
    m_state = State::Settling;
    m_deadline = Clock::now() + milliseconds(m_camera.settings.readinessDelay);
}

/** Starts to keep the talk, where talks are kept; false when the file cannot be written. */
bool OnvifLine::startRecording()
{
    if (m_config.recordingDirectory.isEmpty()) {
        return true;
    }
    const QString path = NumberedFile::create(
        m_config.recordingDirectory, QStringLiteral("talk-%1").arg(m_camera.id), QStringLiteral("wav"));
    auto recorder = std::make_unique<TalkRecorder>(path, steadyMicroseconds());
    if (path.isEmpty() || !recorder->isOpen()) {
        return false;
    }
    m_config.kept->add(path);
    const std::lock_guard<std::mutex> lock(m_streams);
    m_recorder = std::move(recorder);
    return true;
}

/** Writes what has come; a talk goes on without its recording. */
void OnvifLine::keepRecording()
{
    if (!m_recorder || m_recorder->flush(steadyMicroseconds())) {
        return;
    }
    qWarning("the recording of a talk with camera %s ends: it cannot be written", qPrintable(m_camera.id));
    dropRecorder();
}

/** Ends the recording; its file is written without holding up who says something. */
void OnvifLine::dropRecorder()
{
    std::unique_ptr<TalkRecorder> ended; // destroyed after the lock is given back
    const std::lock_guard<std::mutex> lock(m_streams);
    ended.swap(m_recorder);
}

/** Sets options of the RTSP connection, which rtspsrc keeps to itself. */
void OnvifLine::adjustSockets()
{
    const QUrl address(m_camera.address);
    SocketOptions::adjustConnections(address.host(), address.port(defaultRtspPort(address.scheme())),
                                     m_camera.settings.noDelay, m_camera.settings.dscp << dscpShift);
}
