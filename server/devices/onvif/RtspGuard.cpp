#include "server/devices/onvif/RtspGuard.h"

#include "onvif/HttpChallenge.h"
#include "onvif/HttpDigest.h"
#include "server/devices/onvif/GstLog.h"
#include "server/devices/onvif/HandOver.h"

#include <gst/rtsp/gstrtspmessage.h>

#include <algorithm>
#include <memory>
#include <mutex>

namespace {

struct UrlDeleter
{
    void operator()(GstRTSPUrl* url) const { gst_rtsp_url_free(url); }
};
using Url = std::unique_ptr<GstRTSPUrl, UrlDeleter>;

/** Reads an address as rtspsrc does; null for none. */
Url urlOf(const char* text)
{
    GstRTSPUrl* url = nullptr;
    return Url(gst_rtsp_url_parse(text, &url) == GST_RTSP_OK ? url : nullptr);
}

/** Whether two addresses are of one server, by the same transports: TLS is one of them. */
bool isSameServer(const Url& one, const Url& other)
{
    guint16 port = 0;
    guint16 otherPort = 0;
    return one && other && one->host != nullptr && other->host != nullptr &&
           gst_rtsp_url_get_port(one.get(), &port) == GST_RTSP_OK &&
           gst_rtsp_url_get_port(other.get(), &otherPort) == GST_RTSP_OK && port == otherPort &&
           one->transports == other->transports && g_ascii_strcasecmp(one->host, other->host) == 0;
}

/** The same text, to be read by rtspsrc: what was escaped is, and nothing else. */
QByteArray quoted(const QByteArray& raw)
{
    QByteArray text = "\"";
    for (int i = 0; i < raw.size(); ++i) {
        i += raw[i] == '\\' && i + 1 < raw.size() ? 1 : 0;
        text += raw[i] == '\\' || raw[i] == '"' ? "\\" : "";
        text += raw[i];
    }
    return text + '"';
}

/** What rtspsrc knows of a challenge; empty for one that it cannot answer. */
QByteArray rewritten(const HttpChallenge& challenge)
{
    const auto& parameters = challenge.parameters;
    const QByteArray realm = "realm=" + quoted(parameters.value("realm"));
    if (challenge.scheme == "basic") {
        return "Basic " + realm;
    }
    const QByteArray algorithm = parameters.value("algorithm", "MD5").toUpper();
    if (challenge.scheme != "digest" || algorithm != "MD5" || parameters.value("nonce").isEmpty()) {
        return QByteArray();
    }
    QByteArray text = "Digest " + realm + ", nonce=" + quoted(parameters.value("nonce"));
    if (parameters.contains("opaque")) {
        text += ", opaque=" + quoted(parameters.value("opaque"));
    }
    if (parameters.value("stale").toLower() == "true") {
        text += ", stale=true";
    }
    return text;
}

/** Leaves of each scheme one challenge that rtspsrc can read. */
void rewriteChallenges(GstRTSPMessage& answer)
{
    QByteArray header;
    gchar* value = nullptr;
    for (int i = 0;
         gst_rtsp_message_get_header(&answer, GST_RTSP_HDR_WWW_AUTHENTICATE, &value, i) == GST_RTSP_OK; ++i) {
        header += (i > 0 ? ", " : "") + QByteArray(value).left(HttpDigest::maxChallengeBytes);
    }
    gst_rtsp_message_remove_header(&answer, GST_RTSP_HDR_WWW_AUTHENTICATE, -1);
    if (header.size() > HttpDigest::maxChallengeBytes) {
        return;
    }
    QList<QByteArray> schemes;
    const QList<HttpChallenge> challenges = HttpChallenge::of(header);
    for (const HttpChallenge& challenge : challenges) {
        const QByteArray text = rewritten(challenge);
        if (!text.isEmpty() && !schemes.contains(challenge.scheme)) {
            schemes.append(challenge.scheme);
            gst_rtsp_message_add_header(&answer, GST_RTSP_HDR_WWW_AUTHENTICATE, text.constData());
        }
    }
}

thread_local std::shared_ptr<RtspGuard> nowMaking; // of the rtspsrc that this thread makes

} // namespace

/** The extension; an rtspsrc may outlive its session, and so a guard may. */
struct RtspGuard::Element
{
    GstElement element;
    std::shared_ptr<RtspGuard>* guard;
};

RtspGuard::RtspGuard(const QString& address) : m_address(address.toUtf8()) {}

GType RtspGuard::type()
{
    static const GType made = [] {
        const auto initClass = +[](gpointer theClass, gpointer /*data*/) {
            gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(theClass), "Guard of RTSP sessions",
                                                  "Network/Extension/Protocol", "Checks answers of cameras",
                                                  "VoiceDesk");
            G_OBJECT_CLASS(theClass)->finalize = &RtspGuard::finalizeElement;
        };
        const auto initInterface = +[](gpointer interface, gpointer /*data*/) {
            static_cast<GstRTSPExtensionInterface*>(interface)->before_send = &RtspGuard::onRequest;
            static_cast<GstRTSPExtensionInterface*>(interface)->after_send = &RtspGuard::onAnswer;
        };
        const GType type = g_type_register_static_simple(
            GST_TYPE_ELEMENT, "VoiceDeskRtspGuard", guint{sizeof(GstElementClass)}, initClass,
            guint{sizeof(Element)}, &RtspGuard::initElement, GTypeFlags(0));
        const GInterfaceInfo info{initInterface, nullptr, nullptr};
        g_type_add_interface_static(type, GST_TYPE_RTSP_EXTENSION, &info);
        // Before the first rtspsrc, which looks for extensions once.
        gst_element_register(nullptr, "voicedeskrtspguard", GST_RANK_PRIMARY, type);
        return type;
    }();
    return made;
}

GstElement* RtspGuard::makeSource()
{
    type();
    RtspSocket::watch();
    GstLog::tame();
    nowMaking = shared_from_this();
    GstElement* source = gst_element_factory_make("rtspsrc", nullptr);
    nowMaking.reset();
    if (source != nullptr && !m_isAttached) {
        gst_object_unref(gst_object_ref_sink(source)); // never without its guard
        return nullptr;
    }
    if (source != nullptr) {
        g_object_set(source, "location", m_address.constData(), nullptr);
        HandOver::give(this);
    }
    return source;
}

void RtspGuard::end(GstElement* pipeline, std::chrono::milliseconds patience)
{
    using Owner = std::shared_ptr<RtspGuard>;
    const auto cut = +[](GstClock*, GstClockTime, GstClockID, gpointer data) -> gboolean {
        const HandOver::Scope scope(data);
        (*static_cast<Owner*>(data))->m_socket.cut();
        return TRUE;
    };
    const auto drop = +[](gpointer data) {
        HandOver::take(data);
        delete static_cast<Owner*>(data);
    };
    auto* owner = new Owner(shared_from_this());
    HandOver::give(owner);
    GstClock* clock = gst_system_clock_obtain();
    const GstClockTime time =
        gst_clock_get_time(clock) + static_cast<GstClockTime>(std::chrono::nanoseconds(patience).count());
    GstClockID alarm = gst_clock_new_single_shot_id(clock, time);
    gst_clock_id_wait_async(alarm, cut, owner, drop); // on the clock's own thread
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_clock_id_unschedule(alarm);
    gst_clock_id_unref(alarm);
    gst_object_unref(clock);
}

void RtspGuard::initElement(GTypeInstance* instance, gpointer /*theClass*/)
{
    auto* element = reinterpret_cast<Element*>(instance);
    if (nowMaking) {
        nowMaking->m_isAttached = true;
        element->guard = new std::shared_ptr<RtspGuard>(nowMaking);
    }
    HandOver::give(element);
}

void RtspGuard::finalizeElement(GObject* object)
{
    HandOver::take(object);
    delete reinterpret_cast<Element*>(object)->guard;
    G_OBJECT_CLASS(g_type_class_peek_parent(G_OBJECT_GET_CLASS(object)))->finalize(object);
}

/** On the thread of rtspsrc that connects. */
GstRTSPResult RtspGuard::onRequest(GstRTSPExtension* extension, GstRTSPMessage* /*request*/)
{
    HandOver::take(extension);
    const auto* guard = reinterpret_cast<Element*>(extension)->guard;
    if (guard != nullptr) {
        const HandOver::Scope scope(guard->get());
        (*guard)->m_socket.take();
    }
    return GST_RTSP_OK;
}

/** On a thread of GStreamer. */
GstRTSPResult RtspGuard::onAnswer(GstRTSPExtension* extension, GstRTSPMessage* request,
                                  GstRTSPMessage* answer)
{
    HandOver::take(extension);
    const auto* guard = reinterpret_cast<Element*>(extension)->guard;
    if (guard != nullptr) {
        const HandOver::Scope scope(guard->get());
        (*guard)->check(*request, *answer);
    }
    return GST_RTSP_OK;
}

void RtspGuard::check(GstRTSPMessage& request, GstRTSPMessage& answer)
{
    rewriteChallenges(answer);
    GstRTSPStatusCode& status = answer.type_data.response.code;
    const GstRTSPMethod method = request.type_data.request.method;
    const bool isUnknownMethod =
        status == GST_RTSP_STS_METHOD_NOT_ALLOWED || status == GST_RTSP_STS_NOT_IMPLEMENTED;
    if (status == GST_RTSP_STS_MOVED_PERMANENTLY || status == GST_RTSP_STS_MOVE_TEMPORARILY) {
        if (!mayFollow(request, answer)) {
            status = GST_RTSP_STS_FORBIDDEN;
        }
    } else if (isUnknownMethod && (method == GST_RTSP_PLAY || method == GST_RTSP_RECORD)) {
        status = GST_RTSP_STS_METHOD_NOT_VALID_IN_THIS_STATE;
    }
}

/** Whether a redirect may be followed: within the server, before a session is set up. */
bool RtspGuard::mayFollow(GstRTSPMessage& request, GstRTSPMessage& answer)
{
    gchar* location = nullptr;
    gst_rtsp_message_get_header(&answer, GST_RTSP_HDR_LOCATION, &location, 0);
    const GstRTSPMethod method = request.type_data.request.method;
    const bool isEarly = method == GST_RTSP_OPTIONS || method == GST_RTSP_DESCRIBE;
    if (location == nullptr || !isEarly || !isSameServer(urlOf(location), urlOf(m_address.constData()))) {
        m_wasSentElsewhere = true;
        return false;
    }
    return ++m_redirects <= maxRedirects;
}
