#include "server/devices/onvif/OnvifLine.h"

#include "audio/NumberedFile.h"
#include "protocol/ServerReply.h"
#include "system/SocketOptions.h"

#include <gst/app/gstappsink.h>
#include <gst/rtp/gstrtpbuffer.h>

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <cstring>

namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr milliseconds step{50};            // between two looks at the watchdog
constexpr milliseconds afterDeadline{1000}; // when rtspsrc gives up, too
constexpr int maxWaitingPackets = 50;       // of the camera's voice; older ones are dropped
constexpr int dscpShift = 2;

// RTSP status codes (RFC 2326, clause 7.1.1).
constexpr int unauthorized = 401;
constexpr int forbidden = 403;
constexpr int notFound = 404;
constexpr int notEnoughBandwidth = 453;
constexpr int unsupportedTransport = 461;
constexpr int serviceUnavailable = 503;

void initGStreamer()
{
    static std::once_flag once;
    std::call_once(once, [] { gst_init(nullptr, nullptr); });
}

std::uint64_t steadyMicroseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(duration_cast<microseconds>(now).count());
}

template<class Duration>
guint64 count(milliseconds time)
{
    return static_cast<guint64>(duration_cast<Duration>(time).count());
}

/** The RTSP status that an error message carries: in a field or, of SETUP, in its text; 0 without one. */
int statusOf(GstMessage* message, const char* text)
{
    const GstStructure* details = nullptr;
    gst_message_parse_error_details(message, &details);
    guint status = 0;
    if (details != nullptr && gst_structure_get_uint(details, "rtsp-status-code", &status) != FALSE) {
        return static_cast<int>(status);
    }
    static const QRegularExpression pattern(QStringLiteral("Error \\(([1-5][0-9][0-9])\\)"));
    return pattern.match(QString::fromUtf8(text)).captured(1).toInt();
}

bool canEncode(const RtpFormat& format, const QString& codec)
{
    return (codec.isEmpty() || codec.compare(format.encoding, Qt::CaseInsensitive) == 0) &&
           RtpEncoder::existsFor(format);
}

QString namesOf(const std::vector<SdpFormats::Sound>& sounds)
{
    QStringList names;
    for (const SdpFormats::Sound& sound : sounds) {
        for (const RtpFormat& format : sound.formats) {
            if (sound.toCamera) {
                names.append(QStringLiteral("%1/%2").arg(format.encoding).arg(format.clockRate));
            }
        }
    }
    return names.join(QStringLiteral(", "));
}

} // namespace

OnvifLine::OnvifLine(CameraRecord camera, const OnvifConfig& config, LineListener& listener)
    : m_camera(std::move(camera)), m_config(config), m_listener(&listener),
      m_watchdog(config.silence, Clock::now()), m_ssrc(QRandomGenerator::global()->generate()),
      m_timeOffset(QRandomGenerator::global()->generate())
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
    if (m_sender) {
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
        m_recorder->say(position, muLaw, static_cast<std::int64_t>(steadyMicroseconds()));
    }
}

void OnvifLine::refuse(const QString& returnCode, const QString& reason)
{
    if (m_state == State::Opening || m_state == State::Settling) {
        m_state = State::Ended;
        report([&](LineListener& listener) { listener.lineRefused(returnCode, reason); });
    }
}

void OnvifLine::lose(const QString& reason)
{
    if (m_state == State::Open) {
        m_state = State::Ended;
        report([&](LineListener& listener) { listener.lineLost(reason); });
    } else {
        refuse(ReturnCode::cameraOffline, reason);
    }
}

void OnvifLine::run()
{
    initGStreamer();
    m_deadline = Clock::now() + milliseconds(m_camera.settings.openTimeout);
    if (!m_closing) {
        if (build(true)) {
            watch();
        } else {
            refuse(ReturnCode::talkRefused, QStringLiteral("GStreamer's plug-ins for RTSP are missing"));
        }
    }
    takeDown();
    report([](LineListener& listener) { listener.lineClosed(); });
    m_ended = true;
}

/** Makes the pipeline and starts it. @param backchannel whether it asks for the loudspeaker */
bool OnvifLine::build(bool backchannel)
{
    m_pipeline.reset(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))));
    GstElement* source = gst_element_factory_make("rtspsrc", nullptr);
    if (source == nullptr) {
        return false;
    }
    gst_bin_add(GST_BIN(m_pipeline.get()), source);
    m_source.reset(GST_ELEMENT(gst_object_ref(source)));
    const CameraSettings& settings = m_camera.settings;
    g_object_set(source, "location", m_camera.address.toUtf8().constData(), "user-id",
                 m_camera.username.toUtf8().constData(), "user-pw", m_camera.password.toUtf8().constData(),
                 "latency", static_cast<guint>(m_config.jitterBuffer.count()), "drop-on-latency", TRUE,
                 "udp-reconnect", FALSE, "tcp-timeout",
                 count<microseconds>(milliseconds(settings.openTimeout) + afterDeadline), "timeout",
                 guint64{0}, "teardown-timeout", count<nanoseconds>(m_config.teardown), nullptr);
    gst_util_set_object_arg(G_OBJECT(source), "backchannel", backchannel ? "onvif" : "none");
    gst_util_set_object_arg(G_OBJECT(source), "protocols",
                            settings.transport == CameraTransport::Udp ? "udp" : "tcp");
    g_signal_connect(source, "on-sdp", G_CALLBACK(&OnvifLine::onDescription), this);
    g_signal_connect(source, "select-stream", G_CALLBACK(&OnvifLine::onStream), this);
    g_signal_connect(source, "pad-added", G_CALLBACK(&OnvifLine::onPad), this);
    g_signal_connect(source, "new-manager", G_CALLBACK(&OnvifLine::onManager), this);
    g_signal_connect(source, "deep-element-added", G_CALLBACK(&OnvifLine::onElement), this);
    g_signal_connect(source, "accept-certificate", G_CALLBACK(&OnvifLine::onCertificate), this);
    return gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
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
    if (m_pipeline) {
        gst_element_set_state(m_pipeline.get(), GST_STATE_NULL); // frees the sender if it blocks
    }
    sender.reset();
    m_source.reset();
    m_pipeline.reset();
    m_decoder.reset();
    dropRecorder();
}

/** Follows what happens, until the end. */
void OnvifLine::watch()
{
    const GstPtr<GstBus> bus(gst_element_get_bus(m_pipeline.get()));
    while (m_state != State::Ended && !m_closing) {
        const GstPtr<GstMessage> message(gst_bus_timed_pop(bus.get(), count<nanoseconds>(step)));
        if (message) {
            handle(message.get());
        }
        const auto now = Clock::now();
        if (m_state == State::Opening && now >= m_deadline) {
            refuse(ReturnCode::cameraTimedOut, QStringLiteral("the camera did not answer in time"));
        }
        if (m_state == State::Settling && now >= m_deadline) {
            m_state = State::Open;
            report([](LineListener& listener) { listener.lineOpened(); });
        }
        if (m_state != State::Open && m_state != State::Settling) {
            continue;
        }
        keepRecording();
        switch (m_watchdog.check(now)) {
        case LineWatchdog::Verdict::Alive:
            m_sender->hold(false);
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
    GError* error = nullptr;
    char* text = nullptr;
    gst_message_parse_error(message, &error, &text);
    const GstPtr<GError> owned(error);
    const GstPtr<char> ownedText(text);
    if (m_state == State::Open) {
        lose(QStringLiteral("the line to the camera is cut"));
        return;
    }
    const int status = statusOf(message, text);
    const auto is = [error](GstResourceError code) {
        return g_error_matches(error, GST_RESOURCE_ERROR, code) != FALSE;
    };
    bool described = false;
    bool hasLoudspeaker = false;
    bool hasFormat = false;
    {
        const std::lock_guard<std::mutex> lock(m_streams);
        described = m_described;
        hasLoudspeaker = m_hasLoudspeaker;
        hasFormat = m_talkFormat.has_value();
    }
    if (status == unauthorized || status == forbidden || is(GST_RESOURCE_ERROR_NOT_AUTHORIZED)) {
        refuse(ReturnCode::loginRefused, QStringLiteral("the camera refuses the user name or the password"));
    } else if (status == notEnoughBandwidth || status == serviceUnavailable) {
        refuse(ReturnCode::cameraBusy, QStringLiteral("the camera is busy with others"));
    } else if (status == notFound || is(GST_RESOURCE_ERROR_NOT_FOUND)) {
        refuse(ReturnCode::talkRefused, QStringLiteral("the camera has no stream at this address"));
    } else if (described && !hasLoudspeaker) {
        refuse(ReturnCode::noLoudspeaker, QStringLiteral("the camera offers no loudspeaker"));
    } else if (described && !hasFormat) {
        refuseCodec();
    } else if (status == unsupportedTransport || (described && error->domain == GST_STREAM_ERROR)) {
        refuse(ReturnCode::talkRefused, QStringLiteral("the camera does not offer this transport"));
    } else if (is(GST_RESOURCE_ERROR_OPEN_READ_WRITE) || is(GST_RESOURCE_ERROR_OPEN_READ)) {
        refuse(ReturnCode::cameraOffline, QStringLiteral("the camera cannot be reached"));
    } else if (!described && describesItself()) {
        refuse(ReturnCode::noLoudspeaker, QStringLiteral("the camera offers no loudspeaker"));
    } else {
        refuse(ReturnCode::talkRefused, QStringLiteral("the camera refuses the talk: %1")
                                            .arg(status != 0 ? QStringLiteral("RTSP status %1").arg(status)
                                                             : QString::fromUtf8(error->message)));
    }
}

/** Whether the camera has a description for who does not ask for its loudspeaker. */
bool OnvifLine::describesItself()
{
    takeDown();
    if (!build(false)) {
        return false;
    }
    const GstPtr<GstBus> bus(gst_element_get_bus(m_pipeline.get()));
    while (!m_closing && Clock::now() < m_deadline) {
        const GstPtr<GstMessage> message(
            gst_bus_timed_pop_filtered(bus.get(), count<nanoseconds>(step),
                                       static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS)));
        const std::lock_guard<std::mutex> lock(m_streams);
        if (m_described || message) {
            return m_described;
        }
    }
    return false;
}

void OnvifLine::refuseCodec()
{
    QString offered;
    {
        const std::lock_guard<std::mutex> lock(m_streams);
        offered = namesOf(m_sounds);
    }
    const QString& codec = m_camera.settings.talkCodec;
    refuse(
        ReturnCode::talkRefused,
        codec.isEmpty()
            ? QStringLiteral("the camera's loudspeaker takes %1, which this server cannot make").arg(offered)
            : QStringLiteral("the camera's loudspeaker takes %1, not %2").arg(offered, codec));
}

/** The session plays. */
void OnvifLine::open()
{
    std::optional<RtpFormat> format;
    bool hasLoudspeaker = false;
    {
        const std::lock_guard<std::mutex> lock(m_streams);
        format = m_talkFormat;
        hasLoudspeaker = m_hasLoudspeaker;
    }
    if (!hasLoudspeaker) {
        refuse(ReturnCode::noLoudspeaker, QStringLiteral("the camera offers no loudspeaker"));
        return;
    }
    auto encoder = format ? RtpEncoder::create(*format, m_camera.settings.packetTime) : nullptr;
    if (!encoder) {
        refuseCodec();
        return;
    }
    if (!startRecording()) {
        refuse(ReturnCode::storageFailed, QStringLiteral("the recording of the talk cannot be written"));
        return;
    }
    adjustSockets();
    m_watchdog.alive(Clock::now());
    {
        const std::lock_guard<std::mutex> lock(m_streams);
        m_sender = std::make_unique<TalkSender>(std::move(encoder), m_camera.settings.evenPace,
                                                [this](const RtpPayload& payload) { send(payload); });
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
    auto recorder = std::make_unique<TalkRecorder>(path, static_cast<std::int64_t>(steadyMicroseconds()));
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
    if (!m_recorder || m_recorder->flush(static_cast<std::int64_t>(steadyMicroseconds()))) {
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

void OnvifLine::onDescription(GstElement* /*source*/, GstSDPMessage* description, OnvifLine* line)
{
    const std::lock_guard<std::mutex> lock(line->m_streams);
    line->m_described = true;
    line->m_sounds = SdpFormats::soundsOf(description);
    line->m_hasLoudspeaker = false;
    line->m_talkFormat.reset();
    line->m_heardStream.reset();
    const QString& codec = line->m_camera.settings.talkCodec;
    for (const SdpFormats::Sound& sound : line->m_sounds) {
        if (sound.toCamera) {
            line->m_hasLoudspeaker = true;
            const auto format = std::find_if(sound.formats.begin(), sound.formats.end(),
                                             [&](const RtpFormat& each) { return canEncode(each, codec); });
            if (format != sound.formats.end() && !line->m_talkFormat) {
                line->m_talkFormat = *format;
                line->m_talkStream = sound.stream;
            }
        } else if (!line->m_heardStream &&
                   std::any_of(sound.formats.begin(), sound.formats.end(),
                               [](const RtpFormat& each) { return RtpDecoder::create(each) != nullptr; })) {
            line->m_heardStream = sound.stream;
        }
    }
}

/** Whether a section of the description is to be set up: the loudspeaker and one sound, no pictures. */
gboolean OnvifLine::onStream(GstElement* /*source*/, guint stream, GstCaps* /*caps*/, OnvifLine* line)
{
    const std::lock_guard<std::mutex> lock(line->m_streams);
    const bool talk = line->m_talkFormat && line->m_talkStream == stream;
    return talk || (line->m_talkFormat && line->m_heardStream == stream) ? TRUE : FALSE;
}

void OnvifLine::onPad(GstElement* /*source*/, GstPad* pad, OnvifLine* line)
{
    GstElement* sink = gst_element_factory_make("appsink", nullptr);
    const GstPtr<GstCaps> caps(gst_pad_get_current_caps(pad));
    if (sink == nullptr || !caps || gst_caps_get_size(caps.get()) == 0) {
        gst_clear_object(&sink);
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(line->m_streams);
        if (!line->m_decoder) {
            line->m_decoder = RtpDecoder::create(SdpFormats::formatOf(gst_caps_get_structure(caps.get(), 0)));
        }
    }
    g_object_set(sink, "sync", FALSE, "async", FALSE, "max-buffers", guint{maxWaitingPackets}, "drop", TRUE,
                 nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = [](GstAppSink* from, gpointer data) {
        const GstPtr<GstSample> sample(gst_app_sink_pull_sample(from));
        if (!sample) {
            return GST_FLOW_EOS;
        }
        static_cast<OnvifLine*>(data)->hear(sample.get());
        return GST_FLOW_OK;
    };
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, line, nullptr);
    gst_bin_add(GST_BIN(line->m_pipeline.get()), sink);
    gst_element_sync_state_with_parent(sink);
    const GstPtr<GstPad> input(gst_element_get_static_pad(sink, "sink"));
    gst_pad_link(pad, input.get());
}

/** RTCP of the camera is a sign of life, too. */
void OnvifLine::onManager(GstElement* /*source*/, GstElement* manager, OnvifLine* line)
{
    const auto active = +[](GstElement*, guint, guint, OnvifLine* to) { to->m_watchdog.alive(Clock::now()); };
    g_signal_connect(manager, "on-ssrc-active", G_CALLBACK(active), line);
}

/** Marks what leaves by UDP. */
void OnvifLine::onElement(GstBin* /*bin*/, GstBin* /*parent*/, GstElement* element, OnvifLine* line)
{
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(element), "qos-dscp") != nullptr) {
        g_object_set(element, "qos-dscp", line->m_camera.settings.dscp, nullptr);
    }
}

gboolean OnvifLine::onCertificate(GstElement* /*source*/, GTlsConnection* /*connection*/,
                                  GTlsCertificate* /*certificate*/, GTlsCertificateFlags /*errors*/,
                                  OnvifLine* line)
{
    return line->m_camera.settings.anyCertificate ? TRUE : FALSE;
}

/** Takes a packet of the camera; on a streaming thread. */
void OnvifLine::hear(GstSample* sample)
{
    m_watchdog.alive(Clock::now());
    GstRTPBuffer rtp = GST_RTP_BUFFER_INIT;
    if (gst_rtp_buffer_map(gst_sample_get_buffer(sample), GST_MAP_READ, &rtp) == FALSE) {
        return;
    }
    RtpVoice voice;
    voice.payload = QByteArray(static_cast<const char*>(gst_rtp_buffer_get_payload(&rtp)),
                               static_cast<int>(gst_rtp_buffer_get_payload_len(&rtp)));
    voice.timestamp = gst_rtp_buffer_get_timestamp(&rtp);
    voice.marker = gst_rtp_buffer_get_marker(&rtp) != FALSE;
    voice.time = steadyMicroseconds();
    gst_rtp_buffer_unmap(&rtp);
    std::vector<VoicePacket> packets;
    {
        const std::lock_guard<std::mutex> lock(m_streams);
        if (m_decoder) {
            m_decoder->decode(voice, packets);
        }
        if (m_recorder) {
            std::for_each(packets.begin(), packets.end(),
                          [this](const VoicePacket& packet) { m_recorder->hear(packet); });
        }
    }
    for (const VoicePacket& packet : packets) {
        report([&](LineListener& listener) { listener.lineSpoke(packet); });
    }
}

/** Sends one RTP packet; on the sender's thread, which may wait here for the camera. */
void OnvifLine::send(const RtpPayload& payload)
{
    const auto size = static_cast<guint>(payload.bytes.size());
    GstBuffer* buffer = gst_rtp_buffer_new_allocate(size, 0, 0);
    GstRTPBuffer rtp = GST_RTP_BUFFER_INIT;
    if (gst_rtp_buffer_map(buffer, GST_MAP_WRITE, &rtp) == FALSE) {
        gst_buffer_unref(buffer);
        return;
    }
    gst_rtp_buffer_set_payload_type(&rtp, static_cast<guint8>(m_talkFormat->payloadType));
    gst_rtp_buffer_set_seq(&rtp, m_sequence++);
    gst_rtp_buffer_set_timestamp(&rtp, m_timeOffset + payload.timestamp);
    gst_rtp_buffer_set_ssrc(&rtp, m_ssrc);
    gst_rtp_buffer_set_marker(&rtp, payload.marker ? TRUE : FALSE);
    std::memcpy(gst_rtp_buffer_get_payload(&rtp), payload.bytes.constData(), size);
    gst_rtp_buffer_unmap(&rtp);
    GstCaps* caps = gst_caps_new_empty_simple("application/x-rtp");
    GstSample* sample = gst_sample_new(buffer, caps, nullptr, nullptr);
    gst_caps_unref(caps);
    gst_buffer_unref(buffer);
    GstFlowReturn flow = GST_FLOW_OK;
    // This action takes the reference to the sample. Of "push-backchannel-sample" only some versions do.
    g_signal_emit_by_name(m_source.get(), "push-backchannel-buffer", m_talkStream, sample, &flow);
}
