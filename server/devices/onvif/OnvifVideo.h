#pragma once

#include "protocol/Limits.h"
#include "server/devices/CameraVideo.h"
#include "server/devices/onvif/VideoLine.h"

#include <deque>
#include <memory>
#include <mutex>
#include <optional>

struct CameraAbilities;
class LineThreads;
class OnvifDevice;

/**
 * The video of an ONVIF camera, by whatever address its record has: the stream of a device service is found
 * by ONVIF first. Pictures cross from the line's threads to the server's, which may be busy: what waits for
 * it is bounded, and beyond it pictures are dropped up to the next key frame.
 *
 *   address of a service --> OnvifDevice --> stream --.
 *   URL of a stream ----------------------------------+--> VideoLine --> showed
 */
class OnvifVideo : public CameraVideo, private VideoLineListener
{
    Q_OBJECT

public:
    static constexpr int maxWaitingBytes =
        4 * Limits::maxVideoUnitBytes; ///< Of pictures that wait for the server's thread.

    /**
     * Starts to open the video.
     *
     * @param threads outlive the video, and run the line
     * @param stream  the address that was located before; empty for none
     */
    OnvifVideo(CameraRecord camera, OnvifConfig config, LineThreads& threads, const QString& stream);
    ~OnvifVideo() override;

Q_SIGNALS:
    /** The stream of the camera has this address; empty when the one that was known does not work. */
    void located(const QString& stream);

    /** Something waits for the server's thread; for the video itself. */
    void isWaiting(QPrivateSignal signal);

private:
    void lineShowed(const VideoUnit& unit) override;
    void lineEnded(const LineRefusal& why) override;
    void locate();
    void takeStream(const CameraAbilities& abilities);
    void openLine(const QString& stream);
    void refuse(const QString& returnCode, const QString& reason);
    void deliver();

    const CameraRecord m_camera;
    const OnvifConfig m_config;
    LineThreads& m_threads;
    bool m_wasKnown; ///< The stream's address is of an earlier video.
    bool m_isOpen = false;
    std::unique_ptr<OnvifDevice> m_device;
    std::shared_ptr<VideoLine> m_line; ///< Which may outlive the video.

    std::mutex m_mutex; ///< Guards the next.
    std::deque<VideoUnit> m_units;
    int m_bytes = 0; ///< Of them.
    bool m_needsKeyFrame = false;
    std::optional<LineRefusal> m_why; ///< Once the line has ended.
};
