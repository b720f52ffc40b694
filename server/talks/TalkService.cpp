#include "server/talks/TalkService.h"

#include "protocol/Limits.h"
#include "protocol/Words.h"
#include "server/core/ServerSession.h"
#include "server/talks/TalkDestinations.h"
#include "src/Base64.h"

#include <QRandomGenerator>
#include <QSet>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int tokenWords = 4;

QString makeToken()
{
    QString token;
    for (int word = 0; word < tokenWords; ++word) {
        token += QStringLiteral("%1").arg(QRandomGenerator::system()->generate(), 8, 16, QLatin1Char('0'));
    }
    return token;
}

std::optional<QByteArray> decodePacket(std::string_view text)
{
    if (text.size() > Limits::maxTalkDataLength) {
        return std::nullopt;
    }
    QByteArray packet(static_cast<int>(text.size()) / 4 * 3 + 2, Qt::Uninitialized);
    const auto size = Base64DecodeStrict(text.data(), static_cast<unsigned>(text.size()),
                                         reinterpret_cast<unsigned char*>(packet.data()));
    if (!size) {
        return std::nullopt;
    }
    packet.truncate(static_cast<int>(*size));
    return packet;
}

} // namespace

ServerReply TalkService::speakerError(const QString& text)
{
    return done(QVariantMap{{Vocabulary::error, text}});
}

TalkService::TalkService(std::vector<CameraBackend*> cameras, TalkLimits limits)
    : m_cameras(std::move(cameras)), m_limits(limits)
{
}

TalkService::~TalkService() = default;

std::optional<ServerReply> TalkService::startTalk(ServerSession& session, const QVariant& payload)
{
    const QVariantMap request = payload.toMap();
    const QString camId = request.value(Vocabulary::camId).toString();
    for (CameraBackend* backend : m_cameras) {
        const QList<Camera> cameras = backend->cameras();
        const auto camera = std::find_if(cameras.begin(), cameras.end(),
                                         [&](const Camera& each) { return each.id == camId; });
        if (camera == cameras.end()) {
            continue;
        }
        if (!camera->online && !camera->isTried) {
            return refusal(ReturnCode::cameraOffline, QStringLiteral("the camera is offline"));
        }
        const ServerSession* other = camera->isExclusive ? otherThatTalks(camId, session) : nullptr;
        if (other != nullptr) {
            return refusal(
                ReturnCode::cameraBusy,
                QStringLiteral("camera \"%1\" is in a talk with %2").arg(camera->name, other->client()));
        }
        if (!mayOpen(session)) {
            return refusal(ReturnCode::malformedRequest, QStringLiteral("too many open talks"));
        }
        open(session, 0,
             {{Vocabulary::camId, camId},
              {Vocabulary::relayPath, request.value(Vocabulary::relayPath).toString()}},
             backend->openTalk(camId));
        return std::nullopt;
    }
    return refusal(ReturnCode::noSuchCamera, QStringLiteral("no camera has the id \"%1\"").arg(camId));
}

std::optional<ServerReply> TalkService::startTalkToSpeaker(ServerSession& session, const Speaker& speaker,
                                                           SpeakerBackend& backend)
{
    if (!mayOpen(session)) {
        return speakerError(QStringLiteral("too many open talks"));
    }
    open(session, speaker.id, {{Vocabulary::deviceID, speaker.id}}, backend.openTalk(speaker));
    return std::nullopt;
}

/** Another client with a talk to a camera that it has not lost or forgotten; null for none. */
const ServerSession* TalkService::otherThatTalks(const QString& camera, const ServerSession& session) const
{
    const auto found = std::find_if(m_talks.begin(), m_talks.end(), [&](const auto& talk) {
        return talk.second.device == 0 && talk.second.session != &session &&
               talk.second.state != Talk::Lost && !talk.second.forgotten &&
               talk.second.answer.value(Vocabulary::camId) == camera;
    });
    return found == m_talks.end() ? nullptr : found->second.session;
}

bool TalkService::mayOpen(const ServerSession& session) const
{
    const auto own = [&](const auto& talk) {
        return talk.second.session == &session && talk.second.state != Talk::Lost;
    };
    const auto talks = std::count_if(m_talks.begin(), m_talks.end(), own) +
                       std::count_if(m_closing.begin(), m_closing.end(), own);
    return talks < Limits::maxTalksPerSession;
}

void TalkService::open(ServerSession& session, int device, const QVariantMap& answer,
                       std::unique_ptr<DeviceTalk> line)
{
    if (!hasLive(session)) {
        forgetLost(session); // of a talk that is over
    }
    boundLost(session);
    const QString token = makeToken();
    // Slots on this object: what another thread emits arrives on the server's thread.
    connect(line.get(), &DeviceTalk::opened, this, [this, token] { opened(token); });
    connect(line.get(), &DeviceTalk::refused, this,
            [this, token](const QString& returnCode, const QString& reason) {
                refused(token, returnCode, reason);
            });
    connect(line.get(), &DeviceTalk::lost, this,
            [this, token](const QString& reason) { lost(token, reason); });
    connect(line.get(), &DeviceTalk::spoke, this,
            [this, token](const VoicePacket& packet) { spoke(token, packet); });
    connect(line.get(), &DeviceTalk::closed, this, [this, token] {
        if (const auto closing = m_closing.find(token); closing != m_closing.end()) {
            drop(std::move(closing->second.line));
            m_closing.erase(closing);
        }
    });
    m_talks.emplace(token, Talk{&session, device, answer, session.replyLater(), std::move(line)});
    DeviceTalk* const waiting = m_talks.at(token).line.get();
    QTimer::singleShot(m_limits.opening, waiting, [this, token] {
        refused(token, ReturnCode::cameraOffline, QStringLiteral("the device did not answer in time"));
    });
}

void TalkService::opened(const QString& token)
{
    const auto talk = m_talks.find(token);
    if (talk == m_talks.end() || talk->second.state != Talk::Opening) {
        return;
    }
    talk->second.state = Talk::Open;
    QVariantMap answer = talk->second.answer;
    answer.insert(Vocabulary::talkToken, token);
    talk->second.reply.send(done(answer));
}

void TalkService::refused(const QString& token, const QString& returnCode, const QString& reason)
{
    const auto talk = m_talks.find(token);
    if (talk == m_talks.end() || talk->second.state != Talk::Opening) {
        return;
    }
    ServerSession& session = *talk->second.session;
    talk->second.reply.send(talk->second.device != 0 ? speakerError(reason) : refusal(returnCode, reason));
    close(talk);
    endWhenAllAreLost(session, QString());
}

void TalkService::lost(const QString& token, const QString& reason)
{
    const auto talk = m_talks.find(token);
    if (talk == m_talks.end()) {
        return;
    }
    if (talk->second.state == Talk::Opening) {
        refused(token, ReturnCode::cameraOffline, reason);
        return;
    }
    if (talk->second.state == Talk::Lost) {
        return;
    }
    ServerSession& session = *talk->second.session;
    drop(std::move(talk->second.line));
    if (talk->second.forgotten) {
        m_talks.erase(talk);
        return;
    }
    talk->second.state = Talk::Lost;
    if (hasLive(session)) {
        QVariantMap fields = talk->second.answer;
        fields.remove(Vocabulary::relayPath);
        fields.insert(Words::Token, token);
        fields.insert(Vocabulary::error, reason);
        session.raisePlainEvent(Words::TalkTargetLost, fields);
    } else {
        endWhenAllAreLost(session, token);
    }
}

void TalkService::spoke(const QString& token, const VoicePacket& packet)
{
    const auto talk = m_talks.find(token);
    if (talk == m_talks.end() || talk->second.state != Talk::Open) {
        return;
    }
    ServerSession& session = *talk->second.session;
    if (session.takesEncoded()) {
        session.raiseEncodedEvent(Vocabulary::AudioReceived, packet.toPayload(token));
        return;
    }
    QVariantMap fields = packet.toFields();
    fields.insert(Words::Token, token);
    session.raiseEvent(Vocabulary::AudioReceived, fields);
}

/** Whether a session has a target that is open, or may yet be, and that its client knows. */
bool TalkService::hasLive(const ServerSession& session) const
{
    return std::any_of(m_talks.begin(), m_talks.end(), [&](const auto& talk) {
        return talk.second.session == &session && talk.second.state != Talk::Lost && !talk.second.forgotten;
    });
}

/** Ends the talk of a session that has lost targets and no others. @param token the last one lost, or empty
 */
void TalkService::endWhenAllAreLost(ServerSession& session, const QString& token)
{
    const auto lost = std::find_if(m_talks.begin(), m_talks.end(), [&](const auto& talk) {
        return talk.second.session == &session && talk.second.state == Talk::Lost;
    });
    if (lost == m_talks.end() || hasLive(session)) {
        return;
    }
    session.raiseEvent(Vocabulary::TalkDisconnected, {{Words::Token, token.isEmpty() ? lost->first : token}});
    forgetLost(session);
}

void TalkService::forgetLost(const ServerSession& session)
{
    for (auto talk = m_talks.begin(); talk != m_talks.end();) {
        const bool lost = talk->second.session == &session && talk->second.state == Talk::Lost;
        talk = lost ? m_talks.erase(talk) : std::next(talk);
    }
}

/** Forgets one of the lost targets of a session that has too many: a client may lose and open without an end.
 */
void TalkService::boundLost(const ServerSession& session)
{
    const auto isLost = [&](const auto& talk) {
        return talk.second.session == &session && talk.second.state == Talk::Lost;
    };
    if (std::count_if(m_talks.begin(), m_talks.end(), isLost) >= Limits::maxTalksPerSession) {
        m_talks.erase(std::find_if(m_talks.begin(), m_talks.end(), isLost));
    }
}

/** Notes that the client has dropped all targets that it was given. */
void TalkService::forgetTargets(const ServerSession& session)
{
    forgetLost(session);
    for (auto& [token, talk] : m_talks) {
        talk.forgotten |= talk.session == &session && talk.state == Talk::Open;
    }
}

/** Takes a talk out and closes its line, which may take its time. */
void TalkService::close(Talks::iterator talk)
{
    const QString token = talk->first;
    Talk ended = std::move(talk->second);
    m_talks.erase(talk);
    if (!ended.line) {
        return;
    }
    DeviceTalk& line = *ended.line;
    if (m_closing.size() >= m_limits.maxClosing) {
        line.close();
        drop(std::move(ended.line));
        return;
    }
    m_closing.emplace(token, std::move(ended));
    QTimer::singleShot(m_limits.closing, this, [this, token] { m_closing.erase(token); });
    line.close();
}

/** Deletes a line later, since one of its signals may be running. */
void TalkService::drop(std::unique_ptr<DeviceTalk> line)
{
    line->disconnect(this);
    m_dropped.push_back(std::move(line));
    QMetaObject::invokeMethod(
        this, [this] { m_dropped.clear(); }, Qt::QueuedConnection);
}

ServerReply TalkService::stopTalkToSpeaker(ServerSession& session, int device)
{
    bool found = false;
    for (auto talk = m_talks.begin(); talk != m_talks.end();) {
        const auto next = std::next(talk);
        if (talk->second.session == &session && talk->second.device == device && device != 0) {
            found = true;
            if (talk->second.state == Talk::Opening) {
                talk->second.reply.send(speakerError(QStringLiteral("the talk was closed before it opened")));
            }
            close(talk);
        }
        talk = next;
    }
    if (!found) {
        return refusal(ReturnCode::noSuchTalk, QStringLiteral("no talk is open to this device"));
    }
    forgetTargets(session);
    return done();
}

ServerReply TalkService::stopTalk(ServerSession& session, const QVariant& payload)
{
    const QString token = payload.toMap().value(Vocabulary::talkToken).toString();
    const auto talk = m_talks.find(token);
    if (talk == m_talks.end() || talk->second.session != &session || talk->second.state == Talk::Opening) {
        return refusal(ReturnCode::noSuchTalk, QStringLiteral("no talk has this token"));
    }
    close(talk);
    return done();
}

ServerReply TalkService::talkData(ServerSession& session, const QVariant& payload)
{
    const QVariantMap request = payload.toMap();
    const QString targets = request.value(Vocabulary::targets).toString();
    const QString talkData = request.value(Vocabulary::talkData).toString();
    const QByteArray text = talkData.toLatin1(); // what Latin-1 does not have becomes "?", which is no Base64
    return carry(session, targets, {text.constData(), static_cast<std::size_t>(text.size())});
}

ServerReply TalkService::talkData(ServerSession& session, const TalkDataPayload& payload)
{
    return carry(session,
                 QString::fromLatin1(payload.targets.data(), static_cast<int>(payload.targets.size())),
                 payload.talkData);
}

/** @param text the packet in Base64 */
ServerReply TalkService::carry(ServerSession& session, const QString& targets, std::string_view text)
{
    const auto tokens =
        targets.size() <= Limits::maxTargetsLength ? parseTalkDestinations(targets) : std::nullopt;
    const auto packet = decodePacket(text);
    if (!tokens || tokens->isEmpty() || !packet) {
        return refusal(ReturnCode::malformedRequest, QStringLiteral("not a talk packet"));
    }
    ServerReply reply = done();
    QSet<QString> heard; // a target that is named again does not hear the packet again
    for (const QString& token : *tokens) {
        if (heard.contains(token)) {
            continue;
        }
        heard.insert(token);
        const auto talk = m_talks.find(token);
        if (talk == m_talks.end() || talk->second.session != &session ||
            talk->second.state == Talk::Opening) {
            reply = refusal(ReturnCode::noSuchTalk, QStringLiteral("no talk has this token"));
            continue;
        }
        if (talk->second.state == Talk::Open && !talk->second.line->hear(*packet)) {
            reply = refusal(ReturnCode::badTalkPacket, QStringLiteral("the packet cannot be heard"));
        }
    }
    return reply;
}

void TalkService::closeSession(ServerSession& session)
{
    for (auto talk = m_talks.begin(); talk != m_talks.end();) {
        const auto next = std::next(talk);
        if (talk->second.session == &session) {
            close(talk);
        }
        talk = next;
    }
    for (auto& closing : m_closing) {
        if (closing.second.session == &session) {
            closing.second.session = nullptr; // another session may get its address
        }
    }
}
