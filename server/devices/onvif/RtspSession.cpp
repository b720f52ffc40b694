#include "server/devices/onvif/RtspSession.h"

#include "protocol/RecordChecks.h"
#include "server/devices/onvif/HandOver.h"
#include "server/devices/onvif/RtpSample.h"
#include "server/devices/onvif/SameHost.h"

#include <gst/app/gstappsink.h>

#include <QRandomGenerator>

namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr milliseconds afterDeadline{1000};  // when rtspsrc gives up, too
constexpr int maxWaitingPackets = 50;        // of the camera's voice; older ones are dropped
constexpr std::int64_t maxUnheard = 1000000; // bytes of answers between packets that are heard

void initGStreamer()
{
    static std::once_flag once;
    std::call_once(once, [] { gst_init(nullptr, nullptr); });
}

template<class Duration>
guint64 count(milliseconds time)
{
    return static_cast<guint64>(duration_cast<Duration>(time).count());
}

bool isTls(const QString& address)
{
    return address.startsWith(QLatin1String("rtsps:"), Qt::CaseInsensitive);
}

} // namespace

RtspSession::RtspSession(const CameraRecord& camera, const OnvifConfig& config, RtspSessionListener& listener)
    : m_camera(camera), m_config(config), m_listener(listener),
      m_ssrc(QRandomGenerator::global()->generate()), m_timeOffset(QRandomGenerator::global()->generate())
{
    initGStreamer();
}

RtspSession::~RtspSession()
{
    stop();
}

bool RtspSession::start(Way way)
{
    m_way = way;
    m_pipeline.reset(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))));
    m_bus.reset(gst_element_get_bus(m_pipeline.get()));
    m_guard = std::make_shared<RtspGuard>(m_camera.address);
    GstElement* source = m_guard->makeSource();
    if (source == nullptr) {
        return false;
    }
    gst_bin_add(GST_BIN(m_pipeline.get()), source);
    m_source.reset(GST_ELEMENT(gst_object_ref(source)));
    const CameraSettings& settings = m_camera.settings;
    if (!RecordChecks::credentials(m_camera.username, m_camera.password)) { // else it is of an older record
        g_object_set(source, "user-id", m_camera.username.toUtf8().constData(), "user-pw",
                     m_camera.password.toUtf8().constData(), nullptr);
    }
    g_object_set(source, "latency", static_cast<guint>(m_config.jitterBuffer.count()), "drop-on-latency",
                 TRUE, "udp-reconnect", FALSE, "tcp-timeout",
                 count<microseconds>(milliseconds(settings.openTimeout) + afterDeadline), "timeout",
                 guint64{0}, "teardown-timeout", count<nanoseconds>(m_config.teardown), nullptr);
    if (isTls(m_camera.address)) {
        g_object_set(source, "do-rtcp", FALSE,
                     nullptr); // the same as in stop: a report may be interrupted, too
    }
    const bool talks = way == Way::Play || way == Way::Record;
    gst_util_set_object_arg(G_OBJECT(source), "backchannel", talks ? "onvif" : "none");
    gst_util_set_object_arg(G_OBJECT(source), "protocols",
                            settings.transport == CameraTransport::Udp && way != Way::Video ? "udp" : "tcp");
    g_signal_connect(source, "on-sdp", G_CALLBACK(&RtspSession::onDescription), this);
    g_signal_connect(source, "select-stream", G_CALLBACK(&RtspSession::onStream), this);
    g_signal_connect(source, "pad-added", G_CALLBACK(&RtspSession::onPad), this);
    g_signal_connect(source, "new-manager", G_CALLBACK(&RtspSession::onManager), this);
    g_signal_connect(source, "deep-element-added", G_CALLBACK(&RtspSession::onElement), this);
    g_signal_connect(source, "before-send", G_CALLBACK(&RtspSession::onRequest), this);
    g_signal_connect(source, "accept-certificate", G_CALLBACK(&RtspSession::onCertificate), this);
    HandOver::give(this);
    return gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
}

GstPtr<GstMessage> RtspSession::next(milliseconds patience)
{
    GstPtr<GstMessage> message(gst_bus_timed_pop(m_bus.get(), count<nanoseconds>(patience)));
    watchForFloods();
    return message;
}

std::optional<SocketFlow> RtspSession::flow() const
{
    return m_guard->socket().flow();
}

/** rtspsrc keeps as much of an answer in memory as the camera sends. */
void RtspSession::watchForFloods()
{
    const auto state = flow();
    if (!state || m_flooded) {
        return;
    }
    const unsigned heard = m_heard;
    if (std::exchange(m_heardBefore, heard) != heard || state->received < m_receivedBefore) {
        m_receivedBefore = state->received;
    }
    if (state->received - m_receivedBefore > maxUnheard) {
        m_flooded = true;
        m_guard->socket().cut();
    }
}

std::optional<StreamChoice> RtspSession::choice() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_choice;
}

std::optional<SdpFormats::Video> RtspSession::video() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_video;
}

void RtspSession::push(const RtpPayload& payload)
{
    const auto chosen = choice();
    if (!chosen || !chosen->talkFormat || !beginToPush()) {
        return;
    }
    GstSample* sample =
        RtpSample::make(payload, {chosen->talkFormat->payloadType, m_sequence++, m_timeOffset, m_ssrc});
    if (sample != nullptr) {
        GstFlowReturn flow = GST_FLOW_OK;
        // This action takes the reference to the sample. Of "push-backchannel-sample" only some versions do.
        g_signal_emit_by_name(m_source.get(), "push-backchannel-buffer", chosen->talkStream, sample, &flow);
    }
    endPushing();
}

/**
 * Ends the session. rtspsrc interrupts what is being sent, and asks the camera to end the session over the
 * same connection: behind half a packet that is no request, and with TLS, where a half record must be
 * completed first, its library ends the program. So what is being pushed is sent before, when the camera
 * takes it in time.
 */
void RtspSession::stop()
{
    if (m_pipeline) {
        m_isMute = !endPushes();
        m_guard->end(m_pipeline.get(), m_config.teardown + m_config.teardown); // frees who waits in push
        HandOver::take(this);
    }
}

bool RtspSession::beginToPush()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isPushing = !m_isStopping;
    return m_isPushing;
}

void RtspSession::endPushing()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isPushing = false;
    m_pushed.notify_all();
}

/** Lets nobody begin to push any more; false when somebody still does after a while. */
bool RtspSession::endPushes()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_isStopping = true;
    return m_pushed.wait_for(lock, m_config.teardown, [this] { return !m_isPushing; });
}

void RtspSession::onDescription(GstElement* /*source*/, GstSDPMessage* description, RtspSession* session)
{
    const HandOver::Scope scope(session);
    const std::lock_guard<std::mutex> lock(session->m_mutex);
    session->m_choice =
        StreamChoice::of(SdpFormats::soundsOf(description), session->m_camera.settings.talkCodec);
    if (session->m_way == Way::Video) {
        session->m_video = SdpFormats::videoOf(description);
    }
}

/** Whether a section of the description is to be set up. */
gboolean RtspSession::onStream(GstElement* /*source*/, guint stream, GstCaps* /*caps*/, RtspSession* session)
{
    const HandOver::Scope scope(session);
    if (session->m_way == Way::Video) {
        const auto video = session->video();
        return video && video->stream == stream ? TRUE : FALSE;
    }
    const auto choice = session->choice();
    return choice && choice->wants(stream) ? TRUE : FALSE;
}

void RtspSession::onPad(GstElement* /*source*/, GstPad* pad, RtspSession* session)
{
    const HandOver::Scope scope(session);
    GstElement* sink = gst_element_factory_make("appsink", nullptr);
    const GstPtr<GstCaps> caps(gst_pad_get_current_caps(pad));
    if (sink == nullptr || !caps || gst_caps_get_size(caps.get()) == 0) {
        gst_clear_object(&sink);
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(session->m_mutex);
        if (!session->m_decoder && session->m_way != Way::Video) {
            const RtpFormat format = SdpFormats::formatOf(gst_caps_get_structure(caps.get(), 0));
            session->m_decoder = RtpDecoder::create(format);
            session->m_heardType = format.payloadType;
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
        static_cast<RtspSession*>(data)->hear(sample.get());
        return GST_FLOW_OK;
    };
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, session, nullptr);
    gst_bin_add(GST_BIN(session->m_pipeline.get()), sink);
    gst_element_sync_state_with_parent(sink);
    const GstPtr<GstPad> input(gst_element_get_static_pad(sink, "sink"));
    gst_pad_link(pad, input.get());
}

/**
 * RTCP of the camera is a sign of life, too. Sound that comes where the loudspeaker's sound leaves is
 * dropped: rtspsrc has no output for it, and ends the program.
 */
void RtspSession::onManager(GstElement* /*source*/, GstElement* manager, RtspSession* session)
{
    const auto active = +[](GstElement*, guint, guint, RtspSession* to) {
        const HandOver::Scope scope(to);
        to->m_listener.sessionIsAlive();
    };
    g_signal_connect(manager, "on-ssrc-active", G_CALLBACK(active), session);
    const auto added = +[](GstElement*, GstPad* pad, RtspSession* to) {
        const HandOver::Scope scope(to);
        const auto drop = +[](GstPad*, GstPadProbeInfo*, gpointer) { return GST_PAD_PROBE_DROP; };
        const auto chosen = to->choice();
        const bool talks = chosen && chosen->talkFormat && to->m_way != Way::Video;
        if (talks && GST_PAD_NAME(pad) == "recv_rtp_sink_" + QByteArray::number(chosen->talkStream)) {
            gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, drop, nullptr, nullptr);
            gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER_LIST, drop, nullptr, nullptr);
        }
    };
    g_signal_connect(manager, "pad-added", G_CALLBACK(added), session);
}

/**
 * Looks at where packets leave by UDP, and marks them. The camera names the host in its answer to SETUP: what
 * would go to another one goes to the camera's own, and the session is to be ended.
 */
void RtspSession::onElement(GstBin* /*bin*/, GstBin* /*parent*/, GstElement* element, RtspSession* session)
{
    const HandOver::Scope scope(session);
    GObjectClass* const type = G_OBJECT_GET_CLASS(element);
    if (g_object_class_find_property(type, "qos-dscp") == nullptr) {
        return;
    }
    g_object_set(element, "qos-dscp", session->m_camera.settings.dscp, nullptr);
    if (g_object_class_find_property(type, "host") == nullptr) {
        return;
    }
    char* host = nullptr;
    g_object_get(element, "host", &host, nullptr);
    const GstPtr<char> owned(host);
    const QString& address = session->m_camera.address;
    if (!isSameHost(QString::fromUtf8(host), address)) {
        session->m_streamsElsewhere = true;
        g_object_set(element, "host", QUrl(address).host().toUtf8().constData(), nullptr);
    }
}

/**
 * Whether a request may be sent, perhaps as another. The TEARDOWN that follows a PAUSE may interrupt it,
 * which TLS does not bear (see stop).
 */
gboolean RtspSession::onRequest(GstElement* /*source*/, GstRTSPMessage* request, RtspSession* session)
{
    const HandOver::Scope scope(session);
    GstRTSPMethod method = GST_RTSP_INVALID;
    gst_rtsp_message_parse_request(request, &method, nullptr, nullptr);
    session->m_hasAskedToPlay = method == GST_RTSP_PLAY;
    if (method == GST_RTSP_PLAY && session->m_way == Way::Record) {
        request->type_data.request.method = GST_RTSP_RECORD;
    }
    const bool isNeedless = method == GST_RTSP_PAUSE && isTls(session->m_camera.address);
    return isNeedless || session->m_isMute ? FALSE : TRUE;
}

/** Asked when a certificate is not trusted, before anything is sent. */
gboolean RtspSession::onCertificate(GstElement* /*source*/, GTlsConnection* /*connection*/,
                                    GTlsCertificate* /*certificate*/, GTlsCertificateFlags /*errors*/,
                                    RtspSession* session)
{
    const HandOver::Scope scope(session);
    session->m_untrusted = !session->m_camera.settings.anyCertificate;
    return session->m_untrusted ? FALSE : TRUE;
}

/** Takes a packet of the camera; on a streaming thread. */
void RtspSession::hear(GstSample* sample)
{
    const HandOver::Scope scope(this);
    m_listener.sessionIsAlive();
    ++m_heard;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto now = PacketRate::Time::clock::now();
        const bool isTaken = m_way == Way::Video
                                 ? m_videoRate.takes(now, gst_buffer_get_size(gst_sample_get_buffer(sample)))
                                 : m_rate.takes(now);
        if (!isTaken) {
            return;
        }
    }
    const auto voice = RtpSample::read(sample);
    if (voice && m_way == Way::Video) {
        m_listener.sessionShowed(*voice);
        return;
    }
    std::vector<VoicePacket> packets;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (voice && m_decoder && voice->payloadType == m_heardType) { // no comfort noise, nor tones
            m_decoder->decode(*voice, packets);
        }
    }
    for (const VoicePacket& packet : packets) {
        m_listener.sessionSpoke(packet);
    }
}
