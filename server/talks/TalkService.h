#pragma once

#include "protocol/ServerReply.h"
#include "server/devices/TalkTarget.h"
#include "server/devices/simulated/SimulatedCamera.h"

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

    /** Opens a talk to a speaker, whose end the caller makes. */
    ServerReply startTalkToSpeaker(ServerSession& session, int device, std::unique_ptr<TalkTarget> target);

    /** Closes a session's talks to a speaker. */
    ServerReply stopTalkToSpeaker(ServerSession& session, int device);

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
        int device; ///< Of a speaker; 0 for a camera.
        std::unique_ptr<TalkTarget> target;
        int dropAfter;   ///< Packets; 0 for never.
        int packets = 0; ///< Heard.
    };

    bool mayOpen(const ServerSession& session) const;

    std::map<QString, SimulatedCamera> m_cameras; ///< By id.
    std::map<QString, Talk> m_talks;              ///< By token.
    QStringList m_recordings;
};
