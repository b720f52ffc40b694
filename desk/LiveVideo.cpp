#include "desk/LiveVideo.h"

#include "client/PluginHost.h"
#include "desk/ErrorMessages.h"
#include "desk/VideoDecoder.h"
#include "protocol/Limits.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

LiveVideo::LiveVideo(PluginHost& host, int patience) : m_host(host)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, [this] { fail(tr("the server does not answer")); });
}

LiveVideo::~LiveVideo() = default;

void LiveVideo::start(const QString& camera)
{
    stop();
    m_camera = camera;
    if (!VideoDecoder::isAvailable()) {
        fail(tr("this program has no decoder for H.264"));
        return;
    }
    m_request = m_host.sendOwn(Words::WatchCamera, m_camera);
    if (m_request == 0) {
        fail(tr("the server does not answer"));
        return;
    }
    m_state = State::Asking;
    m_decoder = std::make_shared<VideoDecoder>();
    m_waiting = 0;
    m_needsKeyFrame = true;
    m_undecoded = 0;
    m_patience.start();
}

void LiveVideo::stop()
{
    const bool isAsked = m_state != State::Off;
    ++m_view;
    m_state = State::Off;
    m_request = 0;
    m_patience.stop();
    m_decoder.reset();
    if (isAsked) {
        m_host.sendOwn(Words::UnwatchCamera, m_camera);
    }
}

void LiveVideo::fail(const QString& problem)
{
    stop();
    Q_EMIT failed(problem);
}

void LiveVideo::replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                             quint64 request)
{
    if (command != Words::WatchCamera || m_request == 0 || request != m_request) {
        return;
    }
    m_request = 0;
    m_patience.stop();
    if (returnCode == ReturnCode::success) {
        m_state = State::Watching;
        return;
    }
    m_state = State::Off; // there is nothing to leave
    // The words for this code are of stills, which may come all the same.
    fail(ErrorMessages::withDetail(returnCode == ReturnCode::noPicture ? QString() : returnCode, errorText));
}

void LiveVideo::eventArrived(const QString& event, const QVariant& payload)
{
    if (m_state != State::Watching || (event != Words::CameraVideo && event != Words::CameraVideoEnded)) {
        return;
    }
    const QVariantMap fields = payload.toMap();
    if (fields.value(Vocabulary::camId) != QVariant(m_camera)) {
        return;
    }
    if (event == Words::CameraVideo) {
        take(fields);
        return;
    }
    m_state = State::Off;
    fail(ErrorMessages::withDetail(ReturnCode::cameraOffline, fields.value(Vocabulary::error).toString()));
}

/** Gives a picture to the thread, unless it has enough to do. */
void LiveVideo::take(const QVariantMap& fields)
{
    const QVariant unit = fields.value(Words::accessUnit);
    const bool isUnit =
        unit.userType() == QMetaType::QByteArray && unit.toByteArray().size() <= Limits::maxVideoUnitBytes;
    const bool isKeyFrame = fields.value(Words::keyFrame) == QVariant(true);
    if (!isUnit || m_waiting >= maxWaiting || (m_needsKeyFrame && !isKeyFrame)) {
        m_needsKeyFrame = true;
        return;
    }
    m_needsKeyFrame = false;
    ++m_waiting;
    m_thread.run([this, decoder = m_decoder, view = m_view, bytes = unit.toByteArray(),
                  fitting = m_fitting]() -> WorkerThread::Report {
        const QImage image = decoder->decode(bytes, fitting);
        return [this, view, image] { decoded(view, image); };
    });
}

void LiveVideo::decoded(quint64 view, const QImage& image)
{
    if (view != m_view) {
        return;
    }
    --m_waiting;
    if (!image.isNull()) {
        m_undecoded = 0;
        Q_EMIT shown(image);
    } else if (++m_undecoded >= maxUndecoded) {
        fail(tr("the video cannot be decoded"));
    }
}
