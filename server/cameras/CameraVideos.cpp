#include "server/cameras/CameraVideos.h"

#include "protocol/Limits.h"
#include "protocol/PrintableName.h"
#include "protocol/Words.h"

#include <algorithm>

namespace {

constexpr std::size_t maxWaitingOfSession = 8; // requests of one client for one camera

template<class Watchers>
auto watcherOf(Watchers& watchers, const ServerSession& session)
{
    return std::find_if(watchers.begin(), watchers.end(),
                        [&](const auto& watcher) { return watcher.session == &session; });
}

ServerReply tooMany(const QString& reason)
{
    return refusal(ReturnCode::tooManyRequests, reason);
}

} // namespace

CameraVideos::CameraVideos(std::vector<CameraBackend*> backends, const Times& times)
    : m_backends(std::move(backends)), m_times(times)
{
    m_clock.start();
}

std::optional<ServerReply> CameraVideos::watch(ServerSession& session, const QString& camera)
{
    const auto known = m_videos.find(camera);
    const bool isNew = known == m_videos.end();
    if (isNew || watcherOf(known->second.watchers, session) == known->second.watchers.end()) {
        const auto watched = std::count_if(m_videos.begin(), m_videos.end(), [&](const auto& each) {
            return watcherOf(each.second.watchers, session) != each.second.watchers.end();
        });
        if (watched >= Limits::maxVideosPerSession) {
            return tooMany(
                QStringLiteral("a client watches %1 cameras at most").arg(Limits::maxVideosPerSession));
        }
        const auto refused = m_refused.find(camera);
        if (refused != m_refused.end() && m_clock.elapsed() < refused->second.until) {
            return refused->second.reply;
        }
        if (isNew && !makeRoom()) {
            return tooMany(QStringLiteral("the server has %1 videos at most").arg(Limits::maxVideosAtOnce));
        }
        if (isNew && !open(camera)) {
            return whyNot(camera);
        }
        m_videos[camera].watchers.push_back({&session, {}});
    }
    Video& video = m_videos[camera];
    video.end->stop();
    if (video.isOpen) {
        return done(QVariantMap{{Vocabulary::camId, camera}});
    }
    Watcher& watcher = *watcherOf(video.watchers, session);
    if (watcher.waiting.size() >= maxWaitingOfSession) {
        return tooMany(QStringLiteral("the video of this camera is asked for again and again"));
    }
    watcher.waiting.push_back(session.replyLater());
    return std::nullopt;
}

/** Whether there may be one more video, perhaps in place of one that nobody watches any more. */
bool CameraVideos::makeRoom()
{
    if (m_videos.size() < Limits::maxVideosAtOnce) {
        return true;
    }
    const auto idle = std::find_if(m_videos.begin(), m_videos.end(),
                                   [](const auto& each) { return each.second.watchers.empty(); });
    if (idle == m_videos.end()) {
        return false;
    }
    retire(idle);
    return true;
}

/** Opens the video of a camera; false when no back end has one. */
bool CameraVideos::open(const QString& camera)
{
    std::unique_ptr<CameraVideo> source;
    for (CameraBackend* backend : m_backends) {
        source = backend->openVideo(camera);
        if (source) {
            break;
        }
    }
    if (!source) {
        return false;
    }
    connect(source.get(), &CameraVideo::showed, this,
            [this, camera](const VideoUnit& unit) { show(camera, unit); });
    connect(source.get(), &CameraVideo::refused, this,
            [this, camera](const QString& returnCode, const QString& reason) {
                end(camera, returnCode, reason);
            });
    connect(source.get(), &CameraVideo::lost, this,
            [this, camera](const QString& reason) { end(camera, ReturnCode::cameraOffline, reason); });
    Video& video = m_videos[camera];
    video.source = std::move(source);
    video.end = std::make_unique<QTimer>();
    video.end->setSingleShot(true);
    video.end->setInterval(m_times.linger);
    connect(video.end.get(), &QTimer::timeout, this, [this, camera] { retire(m_videos.find(camera)); });
    return true;
}

ServerReply CameraVideos::whyNot(const QString& camera) const
{
    const bool isThere = std::any_of(m_backends.begin(), m_backends.end(), [&](CameraBackend* backend) {
        const QList<Camera> cameras = backend->cameras();
        return std::any_of(cameras.begin(), cameras.end(),
                           [&](const Camera& each) { return each.id == camera; });
    });
    return isThere ? refusal(ReturnCode::noPicture,
                             QStringLiteral("cameras of this kind have no video on this server"))
                   : refusal(ReturnCode::noSuchCamera,
                             QStringLiteral("no camera has the id %1").arg(printableName(camera)));
}

ServerReply CameraVideos::unwatch(const ServerSession& session, const QString& camera)
{
    const auto video = m_videos.find(camera);
    if (video != m_videos.end()) {
        const auto watcher = watcherOf(video->second.watchers, session);
        if (watcher != video->second.watchers.end()) {
            for (const LateReply& reply : watcher->waiting) {
                reply.send(refusal(ReturnCode::noPicture, QStringLiteral("nobody watches any more")));
            }
        }
        leave(video->second, session);
    }
    return done();
}

void CameraVideos::leave(Video& video, const ServerSession& session)
{
    const auto watcher = watcherOf(video.watchers, session);
    if (watcher == video.watchers.end()) {
        return;
    }
    video.watchers.erase(watcher);
    if (video.watchers.empty()) {
        video.end->start();
    }
}

void CameraVideos::closeSession(const ServerSession& session)
{
    for (auto& [camera, video] : m_videos) {
        leave(video, session);
    }
}

void CameraVideos::show(const QString& camera, const VideoUnit& unit)
{
    Video& video = m_videos.at(camera);
    video.isOpen = true;
    for (Watcher& watcher : video.watchers) {
        for (const LateReply& reply : watcher.waiting) {
            reply.send(done(QVariantMap{{Vocabulary::camId, camera}}));
        }
        watcher.waiting.clear();
        const bool isSlow = watcher.session->waitingBytes() > Limits::maxWaitingForVideo;
        if (isSlow || (watcher.needsKeyFrame && !unit.isKeyFrame)) {
            watcher.needsKeyFrame = true;
            continue;
        }
        watcher.needsKeyFrame = false;
        watcher.session->raisePlainEvent(Words::CameraVideo, {{Vocabulary::camId, camera},
                                                              {Words::accessUnit, unit.bytes},
                                                              {Words::keyFrame, unit.isKeyFrame},
                                                              {Words::position, unit.position}});
    }
}

/** Keeps the answer of a camera that is there, and drops those that are old. */
void CameraVideos::keepRefusal(const QString& camera, const ServerReply& reply)
{
    const qint64 now = m_clock.elapsed();
    for (auto refused = m_refused.begin(); refused != m_refused.end();) {
        refused = now >= refused->second.until ? m_refused.erase(refused) : std::next(refused);
    }
    if (reply.returnCode == ReturnCode::loginRefused || reply.returnCode == ReturnCode::noPicture) {
        m_refused[camera] = {reply, now + m_times.refusal.count()};
    }
}

/** Ends a video that was refused or is lost. */
void CameraVideos::end(const QString& camera, const QString& returnCode, const QString& reason)
{
    const auto video = m_videos.find(camera);
    if (!video->second.isOpen) {
        keepRefusal(camera, refusal(returnCode, reason));
    }
    for (const Watcher& watcher : video->second.watchers) {
        for (const LateReply& reply : watcher.waiting) {
            reply.send(refusal(returnCode, reason));
        }
        if (video->second.isOpen) {
            watcher.session->raisePlainEvent(Words::CameraVideoEnded,
                                             {{Vocabulary::camId, camera}, {Vocabulary::error, reason}});
        }
    }
    retire(video);
}

void CameraVideos::retire(Videos::iterator video)
{
    video->second.source->disconnect(this);
    video->second.end.release()->deleteLater(); // it may be what has just run out
    m_retired.push_back(std::move(video->second.source));
    m_videos.erase(video);
    QMetaObject::invokeMethod(
        this, [this] { m_retired.clear(); }, Qt::QueuedConnection);
}
