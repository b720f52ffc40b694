#include "server/talks/TalkService.h"

#include "protocol/Limits.h"
#include "protocol/Words.h"
#include "server/core/ServerSession.h"
#include "server/talks/TalkDestinations.h"

#include <QRandomGenerator>

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

std::optional<QByteArray> decodePacket(const QString& text)
{
    if (text.size() > Limits::maxTalkDataLength) {
        return std::nullopt;
    }
    auto result = QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return result ? std::optional(std::move(result.decoded)) : std::nullopt;
}

ServerReply refuse(const QString& returnCode, const QString& errorText)
{
    return {returnCode, QVariant(), errorText};
}

} // namespace

TalkService::TalkService(const std::vector<CameraConfig>& cameras, const QString& recordingDirectory)
{
    for (const CameraConfig& camera : cameras) {
        m_cameras.emplace(camera.id, SimulatedCamera(camera, recordingDirectory));
    }
}

ServerReply TalkService::startTalk(ServerSession& session, const QVariant& payload)
{
    const QVariantMap request = payload.toMap();
    const QString camId = request.value(Vocabulary::camId).toString();
    const auto camera = m_cameras.find(camId);
    if (camera == m_cameras.end()) {
        return refuse(ReturnCode::noSuchCamera, QStringLiteral("no camera has the id \"%1\"").arg(camId));
    }
    if (!camera->second.config().online) {
        return refuse(ReturnCode::cameraOffline,
                      QStringLiteral("camera \"%1\" is offline").arg(camera->second.config().name));
    }
    if (!mayOpen(session)) {
        return refuse(ReturnCode::malformedRequest, QStringLiteral("too many open talks"));
    }
    auto hearing = camera->second.openTalk();
    if (!hearing) {
        return refuse(ReturnCode::storageFailed,
                      QStringLiteral("the recording of camera \"%1\" cannot be written").arg(camId));
    }
    const QString token = makeToken();
    QObject::connect(&hearing->voice(), &CameraVoice::spoke, &session, [&session, token](QVariantMap fields) {
        fields.insert(Words::Token, token);
        session.raiseEvent(Vocabulary::AudioReceived, fields);
    });
    if (!hearing->voice().start()) {
        return refuse(ReturnCode::noVoice,
                      QStringLiteral("the voice of camera \"%1\" cannot be read or encoded").arg(camId));
    }
    m_recordings.append(hearing->path());
    m_talks.emplace(token, Talk{&session, 0, std::move(hearing), camera->second.config().dropAfterPackets});
    return {ReturnCode::success,
            QVariantMap{
                {Vocabulary::camId, camId},
                {Vocabulary::talkToken, token},
                {Vocabulary::relayPath, request.value(Vocabulary::relayPath).toString()},
            },
            QString()};
}

bool TalkService::mayOpen(const ServerSession& session) const
{
    const auto open = std::count_if(m_talks.begin(), m_talks.end(),
                                    [&](const auto& talk) { return talk.second.session == &session; });
    return open < Limits::maxTalksPerSession;
}

ServerReply TalkService::startTalkToSpeaker(ServerSession& session, int device,
                                            std::unique_ptr<TalkTarget> target)
{
    if (!mayOpen(session)) {
        return refuse(ReturnCode::malformedRequest, QStringLiteral("too many open talks"));
    }
    const QString token = makeToken();
    m_talks.emplace(token, Talk{&session, device, std::move(target), 0});
    return done(QVariantMap{{Vocabulary::deviceID, device}, {Vocabulary::talkToken, token}});
}

ServerReply TalkService::stopTalkToSpeaker(ServerSession& session, int device)
{
    bool found = false;
    for (auto talk = m_talks.begin(); talk != m_talks.end();) {
        const bool closes = talk->second.session == &session && talk->second.device == device && device != 0;
        found = found || closes;
        talk = closes ? m_talks.erase(talk) : std::next(talk);
    }
    return found ? done() : refuse(ReturnCode::noSuchTalk, QStringLiteral("no talk is open to this device"));
}

ServerReply TalkService::stopTalk(ServerSession& session, const QVariant& payload)
{
    const QString token = payload.toMap().value(Vocabulary::talkToken).toString();
    const auto talk = m_talks.find(token);
    if (talk == m_talks.end() || talk->second.session != &session) {
        return refuse(ReturnCode::noSuchTalk, QStringLiteral("no talk has this token"));
    }
    m_talks.erase(talk);
    return {ReturnCode::success, QVariant(), QString()};
}

ServerReply TalkService::talkData(ServerSession& session, const QVariant& payload)
{
    const QVariantMap request = payload.toMap();
    const QString targets = request.value(Vocabulary::targets).toString();
    const QString talkData = request.value(Vocabulary::talkData).toString();
    const auto tokens =
        targets.size() <= Limits::maxTargetsLength ? parseTalkDestinations(targets) : std::nullopt;
    const auto packet = decodePacket(talkData);
    if (!tokens || tokens->isEmpty() || !packet) {
        return refuse(ReturnCode::malformedRequest, QStringLiteral("not a talk packet"));
    }
    ServerReply reply{ReturnCode::success, QVariant(), QString()};
    for (const QString& token : *tokens) {
        const auto talk = m_talks.find(token);
        if (talk == m_talks.end() || talk->second.session != &session) {
            reply = refuse(ReturnCode::noSuchTalk, QStringLiteral("no talk has this token"));
            continue;
        }
        if (!talk->second.target->hear(*packet)) {
            reply = refuse(ReturnCode::badTalkPacket, QStringLiteral("the packet cannot be heard"));
            continue;
        }
        if (++talk->second.packets == talk->second.dropAfter) {
            m_talks.erase(talk);
            session.raiseEvent(Vocabulary::TalkDisconnected, {{Words::Token, token}});
        }
    }
    return reply;
}

void TalkService::closeSession(ServerSession& session)
{
    for (auto talk = m_talks.begin(); talk != m_talks.end();) {
        talk = talk->second.session == &session ? m_talks.erase(talk) : std::next(talk);
    }
}
