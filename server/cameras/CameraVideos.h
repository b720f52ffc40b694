#pragma once

#include "server/core/ServerSession.h"
#include "server/devices/CameraBackend.h"

#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <vector>

/**
 * Videos of cameras for all clients. Each camera gives one, whoever watches:
 *
 *   first client watches --> the back end opens it --> the first picture: all that wait get their answer
 *   each picture --> CameraVideo, to each client that can take it
 *   last client leaves --> (a while later) it ends
 *
 * A camera that refuses is not asked again for a while, however many clients ask: it may lock logins. A
 * client gets key frames first, and again when it could not take what came meanwhile. Used on the server's
 * thread.
 */
class CameraVideos : public QObject
{
    Q_OBJECT

public:
    /** How long something is kept. */
    struct Times
    {
        std::chrono::milliseconds linger{3000};   ///< A video that nobody watches.
        std::chrono::milliseconds refusal{20000}; ///< A refusal of a camera that is there.
    };

    /** @param backends outlive the object */
    CameraVideos(std::vector<CameraBackend*> backends, const Times& times);

    /**
     * Shows a camera's video to a session from now on.
     *
     * @return nothing when the answer comes later, a map of "camId", or the refusal of its back end. Or
     * noSuchCamera, noPicture for a kind without videos, or tooManyRequests
     */
    std::optional<ServerReply> watch(ServerSession& session, const QString& camera);

    /** Shows it no longer; success also when it was not shown. */
    ServerReply unwatch(const ServerSession& session, const QString& camera);

    /** Forgets all refusals: records have changed. */
    void forget() { m_refused.clear(); }

    /** Forgets a session that goes away. */
    void closeSession(const ServerSession& session);

private:
    struct Watcher
    {
        ServerSession* session;
        std::vector<LateReply> waiting; ///< For the first picture.
        bool needsKeyFrame = true;
    };
    struct Video
    {
        std::unique_ptr<CameraVideo> source;
        bool isOpen = false;
        std::vector<Watcher> watchers;
        std::unique_ptr<QTimer> end; ///< Runs while nobody watches.
    };
    using Videos = std::map<QString, Video>;
    struct Refused
    {
        ServerReply reply;
        qint64 until; ///< By m_clock.
    };

    bool makeRoom();
    bool open(const QString& camera);
    ServerReply whyNot(const QString& camera) const;
    void leave(Video& video, const ServerSession& session);
    void show(const QString& camera, const VideoUnit& unit);
    void keepRefusal(const QString& camera, const ServerReply& reply);
    void end(const QString& camera, const QString& returnCode, const QString& reason);
    void retire(Videos::iterator video);

    std::vector<CameraBackend*> m_backends;
    Times m_times;
    QElapsedTimer m_clock;
    std::map<QString, Refused> m_refused;                ///< By camera.
    Videos m_videos;                                     ///< By camera.
    std::vector<std::unique_ptr<CameraVideo>> m_retired; ///< Which may be emitting a signal.
};
