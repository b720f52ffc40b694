#pragma once

#include "server/core/ServerSession.h"
#include "server/devices/DeviceKinds.h"

#include <QList>
#include <QObject>
#include <QPair>

#include <map>
#include <optional>
#include <vector>

/**
 * What clients want to know of cameras before somebody talks to them: which there are in the networks of the
 * server, and what one of them can do. The back ends look and ask; their answers come late, and how many
 * requests are under way is bounded. All calls are on the server's thread.
 */
class CameraInquiries : public QObject
{
public:
    /** The back end of a kind. */
    using Backend = QPair<QString, CameraBackend*>;

    static constexpr int maxOfSession = 8;    ///< Requests of one client that wait for their answer.
    static constexpr int maxAsked = 32;       ///< Cameras that are asked at once, for all clients.
    static constexpr int maxAskedInAll = 128; ///< With those of clients that wait for nothing else.

    /**
     * @param backends by kind, outlive the object
     * @param absent   kinds that this program was built without
     */
    CameraInquiries(std::vector<Backend> backends, std::vector<AbsentCameraKind> absent);

    /**
     * Looks for cameras. A request during a search gets what that search finds.
     *
     * @return nothing when the answer comes later: a list of maps. Or badCameraKind when no kind of cameras
     * can be looked for, or tooManyRequests
     */
    std::optional<ServerReply> find(ServerSession& session);

    /**
     * Asks a camera what it can do.
     *
     * @param reply receives a map, in which "error" says what could not be asked, badCameraKind or
     * tooManyRequests
     */
    void ask(const ServerSession& session, const CameraRecord& camera, const LateReply& reply);

    /** Forgets the requests of a session that goes away. */
    void closeSession(const ServerSession& session);

private:
    struct Waiting
    {
        const ServerSession* session;
        LateReply reply;
        CameraRecord camera{}; ///< That is asked; not of a search.
    };

    int waitingOf(const ServerSession& session) const;
    bool startSearch();
    void takeFound(const FoundCameras& found);
    void takeReport(quint64 question, const CameraReport& report);
    QString whyNoSearch() const;

    std::vector<Backend> m_backends;
    std::vector<AbsentCameraKind> m_absent;
    std::vector<Waiting> m_searches;        ///< Clients that wait for the search.
    int m_searching = 0;                    ///< Back ends that look for cameras.
    FoundCameras m_found;                   ///< So far.
    std::map<quint64, Waiting> m_questions; ///< By number; only of sessions that are there.
    quint64 m_lastQuestion = 0;
    int m_asked = 0; ///< Cameras that are being asked, also for sessions that are gone.
};
