#pragma once

#include "ServerReply.h"
#include "SimulatedCamera.h"

#include <QHash>
#include <QStringList>

#include <map>
#include <memory>
#include <vector>

class ServerSession;

/**
 * The talks of all clients: opens them, carries what is said to the cameras, and closes them.
 *
 *   StartTalk --> token --> TalkData to the token's camera ... --> StopTalk
 *
 * A token is 32 random hexadecimal digits and belongs to the session that opened the talk; no other session
 * can use it.
 */
class TalkService
{
public:
    TalkService(const std::vector<CameraConfig>& cameras, const QString& recordingDirectory);

    ServerReply startTalk(ServerSession& session, const QVariant& payload);
    ServerReply stopTalk(ServerSession& session, const QVariant& payload);
    ServerReply talkData(ServerSession& session, const QVariant& payload);

    /** Closes all talks of a session that goes away. */
    void closeSession(ServerSession& session);

    /** The files written so far, in the order of the talks. */
    QStringList recordings() const { return m_recordings; }

private:
    struct Talk
    {
        ServerSession* session;
        SimulatedCamera* camera;
        std::unique_ptr<CameraTalk> hearing;
    };

    std::map<QString, SimulatedCamera> m_cameras; ///< By id.
    std::map<QString, Talk> m_talks;              ///< By token.
    QStringList m_recordings;
};
