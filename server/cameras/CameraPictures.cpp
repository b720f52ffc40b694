#include "server/cameras/CameraPictures.h"

#include "protocol/Limits.h"
#include "protocol/PrintableName.h"
#include "protocol/Words.h"

#include <QPointer>

#include <algorithm>

namespace {

ServerReply replyOf(const QString& camera, const CameraPicture& picture)
{
    if (picture.returnCode != ReturnCode::success) {
        return refusal(picture.returnCode, picture.reason);
    }
    if (picture.jpeg.size() > Limits::maxPictureBytes) {
        return refusal(ReturnCode::noPicture, QStringLiteral("the picture is too large"));
    }
    return done(QVariantMap{{Vocabulary::camId, camera}, {Words::picture, picture.jpeg}});
}

} // namespace

CameraPictures::CameraPictures(std::vector<CameraBackend*> backends, std::chrono::milliseconds interval)
    : m_backends(std::move(backends)), m_interval(interval.count())
{
    m_clock.start();
    m_sweep.setInterval(interval);
    connect(&m_sweep, &QTimer::timeout, this, &CameraPictures::sweep);
}

int CameraPictures::waitingOf(const ServerSession& session) const
{
    std::ptrdiff_t count = 0;
    for (const auto& [camera, still] : m_stills) {
        count += std::count_if(still.waiting.begin(), still.waiting.end(),
                               [&](const Waiting& waiting) { return waiting.session == &session; });
    }
    return static_cast<int>(count);
}

std::optional<ServerReply> CameraPictures::get(ServerSession& session, const QString& camera)
{
    const auto known = m_stills.find(camera);
    const bool isAsked = known != m_stills.end() && known->second.isAsked;
    if (known != m_stills.end() && !isAsked && m_clock.elapsed() - known->second.since < m_interval) {
        return known->second.reply;
    }
    const int waiting = waitingOf(session);
    const int most = waiting > 0 ? maxAsked : maxAskedInAll;
    if (waiting >= maxOfSession || (!isAsked && m_asked >= most)) {
        return refusal(ReturnCode::tooManyRequests,
                       QStringLiteral("too many pictures are asked for; try again"));
    }
    if (!isAsked && !start(camera)) {
        return whyNot(camera);
    }
    m_stills[camera].waiting.push_back({&session, session.replyLater()});
    return std::nullopt;
}

/** Asks a camera; false when no back end has pictures of it. */
bool CameraPictures::start(const QString& camera)
{
    const QPointer<CameraPictures> self(this);
    const auto takes = [self, camera](const CameraPicture& picture) {
        if (self) {
            self->take(camera, picture);
        }
    };
    const bool started = std::any_of(m_backends.begin(), m_backends.end(), [&](CameraBackend* backend) {
        return backend->askPicture(camera, takes);
    });
    if (started) {
        Still still;
        still.since = m_clock.elapsed();
        m_stills[camera] = still;
        ++m_asked;
        m_sweep.start();
    }
    return started;
}

ServerReply CameraPictures::whyNot(const QString& camera) const
{
    const bool isThere = std::any_of(m_backends.begin(), m_backends.end(), [&](CameraBackend* backend) {
        const QList<Camera> cameras = backend->cameras();
        return std::any_of(cameras.begin(), cameras.end(),
                           [&](const Camera& each) { return each.id == camera; });
    });
    return isThere ? refusal(ReturnCode::noPicture,
                             QStringLiteral("cameras of this kind have no pictures on this server"))
                   : refusal(ReturnCode::noSuchCamera,
                             QStringLiteral("no camera has the id %1").arg(printableName(camera)));
}

void CameraPictures::take(const QString& camera, const CameraPicture& picture)
{
    const auto still = m_stills.find(camera);
    if (still == m_stills.end() || !still->second.isAsked) {
        return; // a back end that answers twice
    }
    --m_asked;
    still->second.isAsked = false;
    still->second.reply = replyOf(camera, picture);
    for (const Waiting& waiting : still->second.waiting) {
        waiting.reply.send(still->second.reply);
    }
    still->second.waiting.clear();
}

void CameraPictures::sweep()
{
    const qint64 now = m_clock.elapsed();
    for (auto still = m_stills.begin(); still != m_stills.end();) {
        const bool isOld = !still->second.isAsked && now - still->second.since >= m_interval;
        still = isOld ? m_stills.erase(still) : std::next(still);
    }
    if (m_stills.empty()) {
        m_sweep.stop();
    }
}

void CameraPictures::forget()
{
    for (auto still = m_stills.begin(); still != m_stills.end();) {
        still = still->second.isAsked ? std::next(still) : m_stills.erase(still);
    }
}

void CameraPictures::closeSession(const ServerSession& session)
{
    for (auto& [camera, still] : m_stills) {
        still.waiting.erase(
            std::remove_if(still.waiting.begin(), still.waiting.end(),
                           [&](const Waiting& waiting) { return waiting.session == &session; }),
            still.waiting.end());
    }
}
