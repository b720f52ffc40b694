#pragma once

#include "onvif/OnvifDiscovery.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>

/** The kind of these cameras, as camera records give it. */
inline QString onvifKind()
{
    return QStringLiteral("onvif");
}

/** The files in which talks were kept. Any thread. */
class KeptTalks
{
public:
    static constexpr int maxTalks = 1000; ///< The latest; their files stay.

    /** Adds a file. */
    void add(const QString& path)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_paths.append(path);
        if (m_paths.size() > maxTalks) {
            m_paths.removeFirst();
        }
    }

    /** Returns the paths, in the order of the talks. */
    QStringList paths() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_paths;
    }

private:
    mutable std::mutex m_mutex;
    QStringList m_paths;
};

/** How often cameras are asked whether they are there. */
struct PresencePace
{
    std::chrono::milliseconds period{
        std::chrono::seconds{30}};          ///< Each camera is asked once in it; 0: none is asked.
    std::chrono::milliseconds answer{3000}; ///< That a camera has to answer.
    int atOnce = 16;                        ///< Cameras that are asked at the same time.
};

/** Where cameras are looked for. */
struct OnvifSearch
{
    OnvifDiscovery::Options options{}; ///< For how long, and what is asked for.
    std::function<QList<QNetworkInterface>()> interfaces =
        OnvifDiscovery::usualInterfaces; ///< In these networks.
};

/** How cameras are asked for pictures. */
struct OnvifPictureTimes
{
    int question = 5000; ///< Time limit of the picture itself, ms; its address has that of OnvifDevice.
    int afterRefusal = 30 * 1000; ///< ms that a camera which refuses is not asked again: it may lock logins.
    int afterSilence = 5 * 1000;  ///< The same for one that does not answer.
};

/** How the ONVIF cameras of a server are set up. */
struct OnvifConfig
{
    std::shared_ptr<KeptTalks> kept = std::make_shared<KeptTalks>(); ///< Filled by the talks.
    QString recordingDirectory;                   ///< Each talk is kept there as a file; empty: none is kept.
    std::chrono::milliseconds silence{3000};      ///< A camera without a sign of life for so long is lost.
    std::chrono::milliseconds videoSilence{5000}; ///< A video of which nothing comes for so long is lost.
    std::chrono::milliseconds teardown{300};      ///< How long the end of a talk waits for the camera.
    std::chrono::milliseconds jitterBuffer{100};  ///< How long a late packet of the camera is waited for.
    int servicePort = 80;         ///< Of the device service of a camera whose record has the URL of a stream.
    OnvifSearch search{};         ///< Where cameras are looked for.
    PresencePace presence{};      ///< How often cameras are asked whether they are there.
    OnvifPictureTimes pictures{}; ///< How they are asked for pictures.
};

/** Returns the port of RTSP addresses that name none (RFC 7826, clause 24). @param scheme "rtsp" or "rtsps"
 */
inline int defaultRtspPort(const QString& scheme)
{
    constexpr int rtsp = 554;
    constexpr int rtsps = 322;
    return scheme == QLatin1String("rtsps") ? rtsps : rtsp;
}
