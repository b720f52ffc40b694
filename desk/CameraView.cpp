#include "desk/CameraView.h"

#include "client/PluginHost.h"
#include "desk/ErrorMessages.h"
#include "desk/PictureDecoder.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <algorithm>

CameraView::CameraView(PluginHost& host) : CameraView(host, Times()) {}

CameraView::CameraView(PluginHost& host, const Times& times)
    : m_host(host), m_times(times), m_video(host, times.videoPatience)
{
    for (QTimer* timer : {&m_next, &m_patience, &m_staleness, &m_videoAgain}) {
        timer->setSingleShot(true);
    }
    m_patience.setInterval(m_times.patience);
    m_staleness.setInterval(m_times.staleAfter);
    connect(&m_next, &QTimer::timeout, this, &CameraView::ask);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        m_request = 0;
        fail(tr("the server does not answer"));
    });
    connect(&m_staleness, &QTimer::timeout, this, [this] {
        m_isStale = true;
        leaveVideo();
        Q_EMIT changed();
    });
    m_video.setFitting(largest);
    m_videoAgain.setInterval(m_times.videoAgain);
    connect(&m_videoAgain, &QTimer::timeout, this, [this] { m_video.start(m_camera); });
    connect(&m_video, &LiveVideo::shown, this, &CameraView::videoShown);
    connect(&m_video, &LiveVideo::failed, this, &CameraView::videoFailed);
}

void CameraView::setCamera(const QString& camera)
{
    if (m_camera == camera) {
        return;
    }
    m_camera = camera;
    setImage(QImage());
    m_problem.clear();
    m_staleness.stop();
    restart();
    Q_EMIT changed();
}

void CameraView::setActive(bool active)
{
    if (m_active != active) {
        m_active = active;
        restart();
        Q_EMIT changed();
    }
}

void CameraView::setOnline(bool online)
{
    if (m_online != online) {
        m_online = online;
        restart();
    }
}

void CameraView::setShownSize(const QSize& size)
{
    m_video.setFitting(size.isEmpty() ? largest : size.boundedTo(largest));
}

/** Drops what is under way, and asks at once if somebody looks. */
void CameraView::restart()
{
    ++m_view;
    m_request = 0;
    m_patience.stop();
    m_next.stop();
    m_videoAgain.stop();
    m_video.stop();
    m_isLive = false;
    m_videoProblem.clear();
    if (m_active && m_online && !m_camera.isEmpty()) {
        ask(); // a still is there sooner
        m_video.start(m_camera);
    }
}

void CameraView::ask()
{
    m_asked.start();
    m_request = m_host.sendOwn(Words::GetCameraPicture, m_camera);
    if (m_request == 0) {
        askAfter(m_times.interval);
        return;
    }
    m_patience.start();
}

/** Asks so long after the last question, or now when that is over. */
void CameraView::askAfter(int ms)
{
    m_next.start(static_cast<int>(std::max<qint64>(0, ms - m_asked.elapsed())));
}

void CameraView::replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                              quint64 request, const QVariant& result)
{
    m_video.replyArrived(command, returnCode, errorText, request);
    if (command != Words::GetCameraPicture || m_request == 0 || request != m_request) {
        return;
    }
    m_request = 0;
    m_patience.stop();
    const QVariantMap answer = result.toMap();
    const QVariant jpeg = answer.value(Words::picture);
    if (returnCode != ReturnCode::success) {
        // Who shows it says first that there is no picture.
        const QString reason =
            returnCode == ReturnCode::noPicture ? ErrorMessages::serversWords(errorText) : QString();
        fail(reason.isEmpty() ? ErrorMessages::withDetail(returnCode, errorText) : reason);
    } else if (answer.value(Vocabulary::camId) != QVariant(m_camera) ||
               jpeg.userType() != QMetaType::QByteArray) {
        fail(tr("the server's answer is no picture of this camera"));
    } else {
        decode(jpeg.toByteArray());
    }
}

void CameraView::decode(const QByteArray& jpeg)
{
    m_thread.run([this, jpeg, view = m_view]() -> WorkerThread::Report {
        const QImage image = PictureDecoder::decode(jpeg, largest);
        return [this, view, image] { decoded(view, image); };
    });
}

void CameraView::decoded(quint64 view, const QImage& image)
{
    if (view != m_view || m_isLive) {
        return;
    }
    if (image.isNull()) {
        fail(tr("the picture cannot be decoded"));
        return;
    }
    m_isStale = false;
    m_problem.clear();
    m_staleness.start();
    askAfter(m_times.interval);
    setImage(image);
    Q_EMIT changed();
}

void CameraView::setImage(const QImage& image)
{
    m_image = image;
    Q_EMIT imageChanged();
}

void CameraView::eventArrived(const QString& event, const QVariant& payload)
{
    m_video.eventArrived(event, payload);
}

/** Shows a picture of the video: no stills are asked for as long as there are such. */
void CameraView::videoShown(const QImage& image)
{
    const bool isNew = !m_isLive || m_isStale || !m_problem.isEmpty();
    m_isLive = true;
    m_isStale = false;
    m_problem.clear();
    m_videoProblem.clear();
    m_request = 0;
    m_patience.stop();
    m_next.stop();
    m_staleness.start();
    setImage(image);
    if (isNew) {
        Q_EMIT changed();
    }
}

void CameraView::videoFailed(const QString& problem)
{
    m_videoProblem = problem;
    m_videoAgain.start();
    leaveVideo();
    Q_EMIT changed();
}

/** Asks for stills again where there was a video. */
void CameraView::leaveVideo()
{
    if (m_isLive) {
        m_isLive = false;
        ask();
    }
}

void CameraView::fail(const QString& problem)
{
    m_problem = problem;
    askAfter(m_times.afterRefusal);
    Q_EMIT changed();
}
