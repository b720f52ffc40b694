#pragma once

#include "protocol/Limits.h"
#include "protocol/ServerReply.h"
#include "protocol/TalkDataPayload.h"
#include "server/core/ServerSession.h"
#include "server/devices/CameraBackend.h"
#include "server/devices/SpeakerBackend.h"

#include <QObject>

#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

/** How long a talk waits for its device, and how many do. */
struct TalkLimits
{
    int opening = Limits::maxTalkOpeningTime; ///< ms; then the talk is refused.
    int closing = 5000;                       ///< ms; then the device is left to itself.
    std::size_t maxClosing =
        Limits::maxTalksPerSession; ///< Of all clients together; further devices are left to themselves.
};

/**
 * The talks of all clients: opens them, carries the sound in both directions, and closes them. All calls are
 * on the server's thread.
 *
 *   StartTalk --> DeviceTalk --> opened: reply with a token --> TalkData to the token's device ... -->
 * StopTalk
 *                      '-------> refused: reply with the reason
 *
 * A token is 32 random hexadecimal digits and belongs to the session that opened the talk; no other session
 * can use it. A client ends its whole talk when it receives TalkDisconnected; so that is held back until the
 * last target of a session is lost, and the loss of one of several is TalkTargetLost. A client goes on
 * sending to a lost target, which is no error. A client forgets all its targets after a successful
 * StopTalkToIPAudio, though only those to the one speaker are closed: the loss of a forgotten one is not
 * reported, and it does not hold TalkDisconnected back.
 */
class TalkService : public QObject
{
    Q_OBJECT

public:
    /** @param cameras outlive the object */
    explicit TalkService(std::vector<CameraBackend*> cameras, TalkLimits limits = TalkLimits());
    ~TalkService() override;

    /**
     * Opens a talk to a camera.
     *
     * @param payload a map: camId, relayPath
     * @return nothing when it is being opened; the later reply is a map: camId, talkToken, relayPath, or a
     * refusal. Or noSuchCamera, cameraOffline, cameraBusy, when another client talks to a camera that takes
     * one, or malformedRequest, for too many talks
     */
    std::optional<ServerReply> startTalk(ServerSession& session, const QVariant& payload);

    /**
     * Opens a talk to a speaker; a refusal is a success with "error", a text for people.
     *
     * @param backend outlives the object
     * @return nothing when it is being opened
     */
    std::optional<ServerReply> startTalkToSpeaker(ServerSession& session, const Speaker& speaker,
                                                  SpeakerBackend& backend);

    /**
     * Makes the answer to a request of a talk to a speaker that cannot talk. The reason is in "error" of a
     * success, the only text that the client passes on; a refusal would end its other talks.
     */
    static ServerReply speakerError(const QString& text);

    /** Closes a session's talks to a speaker, also those that are being opened. */
    ServerReply stopTalkToSpeaker(ServerSession& session, int device);

    /**
     * Closes a talk of the session.
     *
     * @param payload a map: talkToken
     * @return success, or noSuchTalk
     */
    ServerReply stopTalk(ServerSession& session, const QVariant& payload);

    /**
     * Sends one talk packet to open talks of the session; one whose target is lost swallows it.
     *
     * @param payload a map: targets, talkData; see docs/PROTOCOL.md
     * @return success, malformedRequest, or noSuchTalk or badTalkPacket when one of several targets fails
     */
    ServerReply talkData(ServerSession& session, const QVariant& payload);

    /** Does the same for a payload that was not made a QVariant. */
    ServerReply talkData(ServerSession& session, const TalkDataPayload& payload);

    /** Closes all talks of a session that goes away. */
    void closeSession(ServerSession& session);

private:
    struct Talk
    {
        enum State
        {
            Opening, ///< The request is not answered.
            Open,    ///< The client has its token.
            Lost,    ///< The session has others, and goes on sending to this one.
        };

        ServerSession* session;
        int device;         ///< Of a speaker; 0 for a camera.
        QVariantMap answer; ///< To the request, but for the token.
        LateReply reply;
        std::unique_ptr<DeviceTalk> line; ///< Null once it is lost.
        State state = Opening;
        bool forgotten = false; ///< The client no longer knows it.
    };
    using Talks = std::map<QString, Talk>; ///< By token.

    ServerReply carry(ServerSession& session, const QString& targets, std::string_view text);
    bool mayOpen(const ServerSession& session) const;
    const ServerSession* otherThatTalks(const QString& camera, const ServerSession& session) const;
    void open(ServerSession& session, int device, const QVariantMap& answer,
              std::unique_ptr<DeviceTalk> line);
    void opened(const QString& token);
    void refused(const QString& token, const QString& returnCode, const QString& reason);
    void lost(const QString& token, const QString& reason);
    void spoke(const QString& token, const VoicePacket& packet);
    bool hasLive(const ServerSession& session) const;
    void endWhenAllAreLost(ServerSession& session, const QString& token);
    void forgetLost(const ServerSession& session);
    void boundLost(const ServerSession& session);
    void forgetTargets(const ServerSession& session);
    void close(Talks::iterator talk);
    void drop(std::unique_ptr<DeviceTalk> line);

    std::vector<CameraBackend*> m_cameras;
    TalkLimits m_limits;
    Talks m_talks;
    std::map<QString, Talk> m_closing; ///< Talks of the past whose devices still close them, by token.
    std::vector<std::unique_ptr<DeviceTalk>> m_dropped; ///< Deleted when no signal of theirs runs.
};
