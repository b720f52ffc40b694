#include "desk/CameraView.h"

#include "client/PluginHost.h"
#include "desk/ErrorMessages.h"
#include "desk/PictureDecoder.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <algorithm>

CameraView::CameraView(PluginHost& host) : CameraView(host, Times()) {}

CameraView::CameraView(PluginHost& host, const Times& times) : m_host(host), m_times(times)
{
    for (QTimer* timer : {&m_next, &m_patience, &m_staleness}) {
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
        Q_EMIT changed();
    });
}

void CameraView::setCamera(const QString& camera)
{
    if (m_camera == camera) {
        return;
    }
    m_camera = camera;
    m_image = QImage();
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

/** Drops what is under way, and asks at once if somebody looks. */
void CameraView::restart()
{
    ++m_view;
    m_request = 0;
    m_patience.stop();
    m_next.stop();
    if (m_active && m_online && !m_camera.isEmpty()) {
        ask();
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
    if (view != m_view) {
        return;
    }
    if (image.isNull()) {
        fail(tr("the picture cannot be decoded"));
        return;
    }
    m_image = image;
    m_isStale = false;
    m_problem.clear();
    m_staleness.start();
    askAfter(m_times.interval);
    Q_EMIT changed();
}

void CameraView::fail(const QString& problem)
{
    m_problem = problem;
    askAfter(m_times.afterRefusal);
    Q_EMIT changed();
}
