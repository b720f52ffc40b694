#include "server/devices/onvif/GstLog.h"

#include <QByteArray>
#include <QtGlobal>

#include <glib.h>

#include <algorithm>
#include <chrono>
#include <mutex>

namespace {

using Clock = std::chrono::steady_clock;

/** Whether one more message may be written. */
bool mayWrite()
{
    static std::mutex mutex;
    static Clock::time_point start;
    static int count = 0;
    const std::lock_guard<std::mutex> lock(mutex);
    const auto now = Clock::now();
    if (count == 0 || now - start >= std::chrono::minutes(1)) {
        start = now;
        count = 0;
    }
    count = std::min(count + 1, GstLog::maxMessages + 1);
    return count <= GstLog::maxMessages;
}

void write(const gchar* domain, GLogLevelFlags /*level*/, const gchar* message, gpointer /*data*/)
{
    if (!mayWrite()) {
        return;
    }
    QByteArray text(message, static_cast<int>(qstrnlen(message, GstLog::maxMessage)));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    qWarning("%s: %s", domain, text.constData());
}

} // namespace

void GstLog::tame()
{
    static std::once_flag once;
    std::call_once(once, [] {
        for (const char* domain : {"GStreamer", "GStreamer-RTSP", "GStreamer-SDP", "GStreamer-RTP",
                                   "GStreamer-Base", "GStreamer-Net"}) {
            g_log_set_handler(domain,
                              static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_CRITICAL |
                                                          G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO),
                              &write, nullptr);
        }
    });
}
