// A camera with an audio backchannel (ONVIF Profile T) over RTSP, for tests: gst-rtsp-server with one session
// for each client, whose sound is recorded and echoed.
//
//   client -- RTP --> depay_backchannel -> decoder -> appsink "heard" -> Session::hear -> file
//                                                                            | (echo)
//   client <-- RTP -- pay0 <- encoder <- appsrc "voice" <- Session::speak <--'
//
// What happens is reported on stdout, one line each, so that tests wait for it:
//
//   ready PORT           clients may come
//   client N             the N-th connection
//   open N               the N-th session with a backchannel
//   hears N              its first packet
//   teardown             a client has ended its session
//   closed N PACKETS     nothing is left of a session
//   shows N              the N-th session without a backchannel, with --video
//   shown N              nothing is left of it
//   option               an OPTIONS request
//   describe             a DESCRIBE request

#include "tests/server/onvif/TestCameraOptions.h"

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/gst.h>
#include <gst/rtp/gstrtpbuffer.h>
#include <gst/rtsp-server/rtsp-server.h>

#include <gst/rtsp-server/rtsp-onvif-client.h>
#include <gst/rtsp-server/rtsp-onvif-media-factory.h>
#include <gst/rtsp-server/rtsp-onvif-media.h>
#include <gst/rtsp-server/rtsp-onvif-server.h>

#include <glib-unix.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int stepMs = 20; // of the camera's voice
constexpr double pi = 3.14159265358979323846;

struct CameraCodec
{
    int rate;
    int payloadType;
    std::string encode; // PCM to RTP, up to the payloader's factory
    std::string decode; // RTP to PCM
    std::string caps;   // what the description says of the backchannel; all fields fixed
};

CameraCodec l16(int rate)
{
    return {rate, 98, "audioconvert ! rtpL16pay", "rtpL16depay ! audioconvert",
            "encoding-name=L16,encoding-params=(string)1,channels=1"};
}

CameraCodec aac(int rate, const char* config)
{
    return {rate, 97, "audioconvert ! avenc_aac bitrate=32000 ! aacparse ! rtpmp4gpay",
            "rtpmp4gdepay ! aacparse ! avdec_aac",
            std::string("encoding-name=MPEG4-GENERIC,encoding-params=(string)1,streamtype=(string)5,"
                        "profile-level-id=(string)1,mode=(string)AAC-hbr,sizelength=(string)13,"
                        "indexlength=(string)3,indexdeltalength=(string)3,config=(string)") +
                config};
}

/** GStreamer packs 24 and 40 kbit/s as AAL2 alone. */
CameraCodec g726(int kilobits, int payloadType, bool aal2)
{
    const std::string rate = std::to_string(kilobits);
    const std::string order = aal2 ? "true" : "false";
    return {8000, payloadType, "avenc_g726 bitrate=" + rate + "000 ! rtpg726pay force-aal2=false",
            "rtpg726depay force-aal2=" + order + " ! avdec_g726",
            std::string("encoding-name=") + (aal2 ? "AAL2-G726-" : "G726-") + rate};
}

const std::map<std::string, CameraCodec>& codecs()
{
    static const std::map<std::string, CameraCodec> all{
        {"pcmu", {8000, 0, "mulawenc ! rtppcmupay", "rtppcmudepay ! mulawdec", "encoding-name=PCMU"}},
        {"pcma", {8000, 8, "alawenc ! rtppcmapay", "rtppcmadepay ! alawdec", "encoding-name=PCMA"}},
        {"l16", l16(16000)},
        {"l16-48", l16(48000)},
        {"g726-16", g726(16, 111, false)},
        {"g726-32", g726(32, 113, false)},
        {"aal2-g726-24", g726(24, 112, true)},
        {"aal2-g726-40", g726(40, 114, true)},
        {"aac-8", aac(8000, "1588")},
        {"aac-16", aac(16000, "1408")},
        {"aac-48", aac(48000, "1188")},
        {"opus", {48000, 96, "audioconvert ! rtpL16pay", "fakesink", "encoding-name=OPUS"}},
    };
    return all;
}

TestCameraOptions options;
std::atomic<int> talks{0};
std::atomic<int> clients{0};
std::atomic<int> videos{0};

template<class... Values>
void report(const char* format, Values... values)
{
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    std::printf(format, values...);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

long long microseconds()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch()).count();
}

const CameraCodec& voiceCodec()
{
    return codecs().at(options.text("codec", "pcmu"));
}

const CameraCodec& backCodec()
{
    return codecs().at(options.text("back-codec", options.text("codec", "pcmu").c_str()));
}

std::string numbered(const std::string& path, int number)
{
    return number == 1 ? path : path + "-" + std::to_string(number);
}

/** The pictures of a file of H.264 with one slice each: access units with their start codes. */
std::vector<std::string> picturesOf(const std::string& path)
{
    std::string bytes;
    if (std::FILE* file = std::fopen(path.c_str(), "rb")) {
        char buffer[4096];
        for (std::size_t count = 0; (count = std::fread(buffer, 1, sizeof buffer, file)) > 0;) {
            bytes.append(buffer, count);
        }
        std::fclose(file);
    }
    const std::string start("\0\0\0\1", 4);
    std::vector<std::string> pictures;
    std::string picture;
    for (std::size_t at = bytes.find(start); at != std::string::npos;) {
        const std::size_t next = bytes.find(start, at + start.size());
        const std::string nal = bytes.substr(at, next == std::string::npos ? next : next - at);
        picture += nal;
        const int type = nal[start.size()] & 31;
        if (type == 1 || type == 5) {
            pictures.push_back(picture);
            picture.clear();
        }
        at = next;
    }
    return pictures;
}

/** Shows the pictures of a file again and again, at the pace of a camera. */
class Picture
{
public:
    /** @param source an appsrc, owned */
    explicit Picture(GstElement* source) : m_source(source), m_thread([this] { show(); }) {}
    ~Picture()
    {
        m_running = false;
        m_thread.join();
        gst_object_unref(m_source);
    }

private:
    void show()
    {
        const auto pictures = picturesOf(options.text("video"));
        const auto pace = std::chrono::milliseconds(1000 / options.number("video-rate", 25));
        auto due = Clock::now();
        for (std::size_t i = 0; m_running && !pictures.empty();) {
            due = std::max(due + pace, Clock::now() - std::chrono::seconds(1));
            std::this_thread::sleep_until(due);
            GstState state = GST_STATE_NULL;
            gst_element_get_state(m_source, &state, nullptr, 0);
            if (state == GST_STATE_PLAYING) {
                const std::string& picture = pictures[i++ % pictures.size()];
                gst_app_src_push_buffer(GST_APP_SRC(m_source),
                                        gst_buffer_new_memdup(picture.data(), picture.size()));
            }
        }
    }

    GstElement* m_source;
    std::atomic<bool> m_running{true};
    std::thread m_thread; // the last: it uses the others
};

/** One client: what it says is recorded and perhaps echoed. */
class Session
{
public:
    Session(GstElement* element, int number) : m_number(number)
    {
        m_source = gst_bin_get_by_name_recurse_up(GST_BIN(element), "voice");
        if (number != 0) {
            attachBackchannel(element);
            report("open %d", number);
        }
        if (m_source != nullptr) {
            m_thread = std::thread([this] { speak(); });
        }
        if (GstElement* source = gst_bin_get_by_name_recurse_up(GST_BIN(element), "eye")) {
            m_picture = std::make_unique<Picture>(source);
        }
        if (number == 0 && options.has("video")) {
            m_video = ++videos;
            report("shows %d", m_video);
        }
    }

    ~Session()
    {
        m_running = false;
        m_picture.reset();
        if (m_thread.joinable()) {
            m_thread.join();
        }
        gst_clear_object(&m_source);
        if (m_record != nullptr) {
            std::fclose(m_record);
        }
        if (m_log != nullptr) {
            std::fclose(m_log);
        }
        if (m_number != 0) {
            report("closed %d %d", m_number, m_packets);
        }
        if (m_video != 0) {
            report("shown %d", m_video);
        }
    }

private:
    void attachBackchannel(GstElement* element)
    {
        if (options.has("record")) {
            m_record = std::fopen(numbered(options.text("record"), m_number).c_str(), "wb");
        }
        if (options.has("log")) {
            m_log = std::fopen(numbered(options.text("log"), m_number).c_str(), "w");
        }
        if (GstElement* heard = gst_bin_get_by_name_recurse_up(GST_BIN(element), "heard")) {
            GstAppSinkCallbacks callbacks{};
            callbacks.new_sample = [](GstAppSink* sink, gpointer session) {
                return static_cast<Session*>(session)->hear(sink);
            };
            gst_app_sink_set_callbacks(GST_APP_SINK(heard), &callbacks, this, nullptr);
            gst_object_unref(heard);
        }
        GstElement* depay = gst_bin_get_by_name_recurse_up(GST_BIN(element), "depay_backchannel");
        GstPad* pad = gst_element_get_static_pad(depay, "sink");
        const auto probe = [](GstPad*, GstPadProbeInfo* info, gpointer session) {
            static_cast<Session*>(session)->note(info);
            return GST_PAD_PROBE_OK;
        };
        gst_pad_add_probe(
            pad, static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST),
            probe, this, nullptr);
        gst_object_unref(pad);
        gst_object_unref(depay);
    }

    void note(GstPadProbeInfo* info)
    {
        const long long now = microseconds();
        GstBufferList* list = (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER_LIST) != 0
                                  ? gst_pad_probe_info_get_buffer_list(info)
                                  : nullptr;
        const unsigned count = list != nullptr ? gst_buffer_list_length(list) : 1;
        for (unsigned i = 0; i < count; ++i) {
            GstBuffer* buffer =
                list != nullptr ? gst_buffer_list_get(list, i) : gst_pad_probe_info_get_buffer(info);
            GstRTPBuffer rtp = GST_RTP_BUFFER_INIT;
            if (gst_rtp_buffer_map(buffer, GST_MAP_READ, &rtp) == FALSE) {
                continue;
            }
            if (m_log != nullptr) {
                std::fprintf(m_log, "%lld %u %u %d\n", now, gst_rtp_buffer_get_timestamp(&rtp),
                             gst_rtp_buffer_get_payload_len(&rtp), gst_rtp_buffer_get_marker(&rtp));
                std::fflush(m_log);
            }
            gst_rtp_buffer_unmap(&rtp);
            if (++m_packets == 1) {
                report("hears %d", m_number);
            }
        }
    }

    GstFlowReturn hear(GstAppSink* sink)
    {
        GstSample* sample = gst_app_sink_pull_sample(sink);
        if (sample == nullptr) {
            return GST_FLOW_EOS;
        }
        GstMapInfo map;
        if (gst_buffer_map(gst_sample_get_buffer(sample), &map, GST_MAP_READ) != FALSE) {
            if (m_record != nullptr) {
                std::fwrite(map.data, 1, map.size, m_record);
                std::fflush(m_record);
            }
            const auto* samples = reinterpret_cast<const std::int16_t*>(map.data);
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_echo.size() < 10 * 48000) {
                m_echo.insert(m_echo.end(), samples, samples + map.size / 2);
            }
            gst_buffer_unmap(gst_sample_get_buffer(sample), &map);
        }
        gst_sample_unref(sample);
        return GST_FLOW_OK;
    }

    void speak()
    {
        auto due = Clock::now();
        while (m_running) {
            due = std::max(due + std::chrono::milliseconds(stepMs), Clock::now() - std::chrono::seconds(1));
            std::this_thread::sleep_until(due); // the pace of a microphone
            GstState state = GST_STATE_NULL;
            gst_element_get_state(m_source, &state, nullptr, 0);
            if (state != GST_STATE_PLAYING) {
                continue; // without a clock appsrc would stamp a time that never comes
            }
            const std::vector<std::int16_t> samples = next();
            // The server needs some sound before it plays; a mute camera has no more.
            if (options.text("voice") == "mute" && ++m_said > 10) {
                return;
            }
            GstBuffer* buffer = gst_buffer_new_memdup(samples.data(), samples.size() * 2);
            gst_app_src_push_buffer(GST_APP_SRC(m_source), buffer);
        }
    }

    std::vector<std::int16_t> next()
    {
        std::vector<std::int16_t> samples(static_cast<std::size_t>(voiceCodec().rate * stepMs / 1000));
        if (options.text("voice", "echo") == "tone") {
            for (auto& sample : samples) {
                sample = static_cast<std::int16_t>(8000 *
                                                   std::sin(2 * pi * 440 * m_position++ / voiceCodec().rate));
            }
            return samples;
        }
        if (options.text("voice", "echo") != "echo") {
            return samples;
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (std::size_t i = 0; i < samples.size() && !m_echo.empty(); ++i) {
            samples[i] = m_echo.front();
            m_echo.pop_front();
        }
        return samples;
    }

    int m_number;
    int m_video = 0; // number of a session without a backchannel
    std::unique_ptr<Picture> m_picture;
    GstElement* m_source = nullptr;
    std::FILE* m_record = nullptr;
    std::FILE* m_log = nullptr;
    int m_packets = 0;
    double m_position = 0;
    int m_said = 0; // steps
    std::mutex m_mutex;
    std::deque<std::int16_t> m_echo;
    std::atomic<bool> m_running{true};
    std::thread m_thread;
};

std::string pictureLaunch()
{
    if (!options.has("video")) {
        return "";
    }
    if (options.text("video") == "jpeg") {
        return " videotestsrc is-live=true ! video/x-raw,width=64,height=48,format=I420 ! jpegenc ! "
               "rtpjpegpay name=pay1 pt=26";
    }
    return std::string(" appsrc name=eye is-live=true do-timestamp=true format=time leaky-type=downstream "
                       "max-buffers=3 "
                       "caps=video/x-h264,stream-format=byte-stream,alignment=au ! rtph264pay name=") +
           (options.has("video-first") ? "pay0" : "pay1") + " pt=96 config-interval=0";
}

std::string voiceLaunch()
{
    const CameraCodec& codec = voiceCodec();
    const bool frames = codec.rate != 8000 || options.text("codec", "pcmu").rfind("aac", 0) == 0;
    // What was made before PLAY is not sent late; libavcodec's encoders take up to half a second at once.
    const bool slow = codec.encode.find("avenc") != std::string::npos;
    // Only when it is asked for them by their name, the payloader describes AAL2's packets by it.
    const bool isAal2 = codec.caps.find("AAL2") != std::string::npos;
    const std::string name = options.has("video-first") ? "name=pay1 " : "name=pay0 ";
    return "( appsrc name=voice is-live=true do-timestamp=true format=time leaky-type=downstream "
           "max-buffers=" +
           std::string(slow ? "30" : "3") +
           " caps=audio/x-raw,format=S16LE,layout=interleaved,rate=" + std::to_string(codec.rate) +
           ",channels=1 ! audioconvert ! " + codec.encode + " " + (isAal2 ? "" : name) +
           "pt=" + std::to_string(codec.payloadType) +
           (frames ? "" : " min-ptime=20000000 max-ptime=20000000") +
           (isAal2 ? " ! capsfilter " + name + "caps=application/x-rtp," + codec.caps : "") +
           pictureLaunch() + " )";
}

std::string backLaunch()
{
    const CameraCodec& codec = backCodec();
    const std::string caps =
        "( capsfilter name=depay_backchannel caps=\"application/x-rtp,media=audio,payload=" +
        std::to_string(codec.payloadType) + ",clock-rate=" + std::to_string(codec.rate) + "," + codec.caps +
        "\" ! ";
    if (codec.decode == "fakesink") {
        return caps + "fakesink async=false )";
    }
    // async=false, or the server waits for sound before it answers.
    return caps + codec.decode +
           " ! audioconvert ! audioresample ! audio/x-raw,format=S16LE,layout=interleaved,rate=" +
           std::to_string(codec.rate) + ",channels=1 ! appsink name=heard sync=false async=false )";
}

void lock(GstRTSPServer* server, GstRTSPMediaFactory* factory)
{
    GstRTSPAuth* auth = gst_rtsp_auth_new();
    GstRTSPToken* token =
        gst_rtsp_token_new(GST_RTSP_TOKEN_MEDIA_FACTORY_ROLE, G_TYPE_STRING, "user", nullptr);
    const std::string user = options.text("user");
    const std::string password = options.text("password");
    if (options.text("auth", "digest") == "digest") {
        gst_rtsp_auth_set_supported_methods(auth, GST_RTSP_AUTH_DIGEST);
        gst_rtsp_auth_add_digest(auth, user.c_str(), password.c_str(), token);
    } else {
        gchar* basic = gst_rtsp_auth_make_basic(user.c_str(), password.c_str());
        gst_rtsp_auth_add_basic(auth, basic, token);
        g_free(basic);
    }
    if (options.has("certificate")) {
        GError* error = nullptr;
        GTlsCertificate* certificate =
            g_tls_certificate_new_from_file(options.text("certificate").c_str(), &error);
        if (certificate == nullptr) {
            std::fprintf(stderr, "%s\n", error->message);
            std::exit(1);
        }
        gst_rtsp_auth_set_tls_certificate(auth, certificate);
    }
    gst_rtsp_token_unref(token);
    gst_rtsp_server_set_auth(server, auth);
    g_object_unref(auth);
    GstRTSPPermissions* permissions = gst_rtsp_permissions_new();
    gst_rtsp_permissions_add_role(permissions, "user", GST_RTSP_PERM_MEDIA_FACTORY_ACCESS, G_TYPE_BOOLEAN,
                                  TRUE, GST_RTSP_PERM_MEDIA_FACTORY_CONSTRUCT, G_TYPE_BOOLEAN, TRUE, nullptr);
    gst_rtsp_media_factory_set_permissions(factory, permissions);
    gst_rtsp_permissions_unref(permissions);
}

GstRTSPStatusCode refusal(const char* option)
{
    return static_cast<GstRTSPStatusCode>(options.number(option, GST_RTSP_STS_OK));
}

void onClient(GstRTSPServer*, GstRTSPClient* client, gpointer)
{
    report("client %d", ++clients);
    using Handler = GstRTSPStatusCode (*)(GstRTSPClient*, GstRTSPContext*, gpointer);
    const auto on = [client](const char* signal, Handler handler) {
        g_signal_connect(client, signal, G_CALLBACK(handler), nullptr);
    };
    on("pre-describe-request", [](GstRTSPClient*, GstRTSPContext*, gpointer) {
        report("describe");
        g_usleep(static_cast<gulong>(options.number("slow-describe")) * 1000);
        return refusal("refuse-describe");
    });
    on("pre-setup-request",
       [](GstRTSPClient*, GstRTSPContext*, gpointer) { return refusal("refuse-setup"); });
    on("pre-play-request", [](GstRTSPClient*, GstRTSPContext*, gpointer) { return refusal("refuse-play"); });
    g_signal_connect(client, "teardown-request",
                     G_CALLBACK(+[](GstRTSPClient*, GstRTSPContext*, gpointer) { report("teardown"); }),
                     nullptr);
    g_signal_connect(client, "options-request",
                     G_CALLBACK(+[](GstRTSPClient*, GstRTSPContext*, gpointer) { report("option"); }),
                     nullptr);
    if (options.has("hides-backchannel")) {
        // As some cameras do: the requirement is taken, the loudspeaker is not described.
        g_signal_connect(
            client, "check-requirements",
            G_CALLBACK(+[](GstRTSPClient*, GstRTSPContext*, gchar**, gpointer) { return g_strdup(""); }),
            nullptr);
    }
}

void onMedia(GstRTSPMediaFactory*, GstRTSPMedia* media, gpointer)
{
    GstElement* element = gst_rtsp_media_get_element(media);
    GstElement* heard = gst_bin_get_by_name_recurse_up(GST_BIN(element), "depay_backchannel");
    const int number = heard != nullptr ? ++talks : 0;
    gst_clear_object(&heard);
    auto* session = new Session(element, number);
    g_signal_connect(media, "unprepared", G_CALLBACK(+[](GstRTSPMedia* ended, gpointer data) {
                         g_signal_handlers_disconnect_by_data(ended, data);
                         delete static_cast<Session*>(data);
                     }),
                     session);
    gst_object_unref(element);
}

/** Ends the camera with its standard input: with the test that started it, however that ends. */
gboolean onInput(gint descriptor, GIOCondition, gpointer loop)
{
    char ignored[64];
    if (read(descriptor, ignored, sizeof(ignored)) > 0) {
        return G_SOURCE_CONTINUE;
    }
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

} // namespace

int main(int argc, char** argv)
{
    std::string problem = options.parse(argc, argv);
    for (const char* name : {"codec", "back-codec"}) {
        if (problem.empty() && options.has(name) && codecs().count(options.text(name)) == 0) {
            problem = "unknown codec: " + options.text(name);
        }
    }
    if (!problem.empty()) {
        std::fprintf(stderr, "%s\n", problem.c_str());
        return 1;
    }
    if (options.has("help")) {
        TestCameraOptions::printUsage();
        return 0;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL); // one that a test has stopped reads no end of its input
    gst_init(nullptr, nullptr);
    const bool hides = options.has("hides-backchannel");
    GstRTSPServer* server = hides ? gst_rtsp_server_new() : gst_rtsp_onvif_server_new();
    gst_rtsp_server_set_address(server, "127.0.0.1");
    gst_rtsp_server_set_service(server, options.text("port", "0").c_str());
    GstRTSPMediaFactory* factory = hides ? gst_rtsp_media_factory_new() : gst_rtsp_onvif_media_factory_new();
    if (!hides) {
        gst_rtsp_media_factory_set_media_gtype(factory, GST_TYPE_RTSP_ONVIF_MEDIA);
    }
    gst_rtsp_media_factory_set_launch(factory, voiceLaunch().c_str());
    if (!options.has("no-backchannel") && !hides) {
        gst_rtsp_onvif_media_factory_set_backchannel_launch(GST_RTSP_ONVIF_MEDIA_FACTORY(factory),
                                                            backLaunch().c_str());
    }
    gst_rtsp_media_factory_set_latency(factory, static_cast<guint>(options.number("jitter", 200)));
    const std::string transport = options.text("transport", "both");
    gst_rtsp_media_factory_set_protocols(
        factory, transport == "udp" ? GST_RTSP_LOWER_TRANS_UDP
                 : transport == "tcp"
                     ? GST_RTSP_LOWER_TRANS_TCP
                     : static_cast<GstRTSPLowerTrans>(GST_RTSP_LOWER_TRANS_TCP | GST_RTSP_LOWER_TRANS_UDP));
    if (options.has("user") || options.has("certificate")) {
        lock(server, factory);
    }
    g_signal_connect(factory, "media-configure", G_CALLBACK(&onMedia), nullptr);
    g_signal_connect(server, "client-connected", G_CALLBACK(&onClient), nullptr);
    GstRTSPMountPoints* mounts = gst_rtsp_server_get_mount_points(server);
    gst_rtsp_mount_points_add_factory(mounts, "/talk", factory);
    g_object_unref(mounts);
    if (gst_rtsp_server_attach(server, nullptr) == 0) {
        std::fprintf(stderr, "cannot listen\n");
        return 1;
    }
    report("ready %d", gst_rtsp_server_get_bound_port(server));
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), &onInput, loop);
    g_main_loop_run(loop);
    std::fflush(stdout);
    _exit(0); // as if it were cut off: nobody waits for its sessions
}
