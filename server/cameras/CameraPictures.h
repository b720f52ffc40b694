#pragma once

#include "server/core/ServerSession.h"
#include "server/devices/CameraBackend.h"

#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <map>
#include <optional>
#include <vector>

/**
 * Pictures of cameras for all clients. A camera is asked only when a client asks, and for one picture in an
 * interval:
 *
 *   client asks --> nothing known: the camera is asked --> all that wait get the answer
 *              '--> it is being asked: waits with them
 *              '--> it was asked within the interval: the same answer at once
 *
 * Answers are kept for no longer than the interval. Used on the server's thread.
 */
class CameraPictures : public QObject
{
    Q_OBJECT

public:
    static constexpr int maxOfSession = 8;    ///< Requests of one client that wait for their answer.
    static constexpr int maxAsked = 32;       ///< Cameras that are asked at once, for all clients.
    static constexpr int maxAskedInAll = 128; ///< With those of clients that wait for nothing else.

    /** @param backends outlive the object @param interval at most one question to each camera in it */
    CameraPictures(std::vector<CameraBackend*> backends, std::chrono::milliseconds interval);

    /**
     * Gets the picture of a camera.
     *
     * @return nothing when the answer comes later, a map of "camId" and "picture", or the refusal of its back
     * end. Or noSuchCamera, noPicture for a kind without pictures, or tooManyRequests
     */
    std::optional<ServerReply> get(ServerSession& session, const QString& camera);

    /** Forgets all answers that are kept: records have changed. */
    void forget();

    /** Forgets the requests of a session that goes away. */
    void closeSession(const ServerSession& session);

private:
    struct Waiting
    {
        const ServerSession* session;
        LateReply reply;
    };
    struct Still
    {
        qint64 since = 0; ///< When the camera was asked, by m_clock.
        bool isAsked = true;
        ServerReply reply; ///< Unless it is being asked.
        std::vector<Waiting> waiting;
    };

    int waitingOf(const ServerSession& session) const;
    bool start(const QString& camera);
    ServerReply whyNot(const QString& camera) const;
    void take(const QString& camera, const CameraPicture& picture);
    void sweep();

    std::vector<CameraBackend*> m_backends;
    qint64 m_interval; ///< ms
    QElapsedTimer m_clock;
    std::map<QString, Still> m_stills; ///< By camera.
    int m_asked = 0;                   ///< Of them, those that are being asked.
    QTimer m_sweep;                    ///< Runs while there are any.
};
