#include "server/devices/onvif/OnvifVideo.h"

#include "onvif/OnvifDevice.h"
#include "server/devices/onvif/LineThreads.h"
#include "server/devices/onvif/LocatedTalk.h"
#include "server/devices/onvif/OnvifInquiries.h"
#include "server/devices/onvif/OnvifRefusal.h"

#include <QStringList>

OnvifVideo::OnvifVideo(CameraRecord camera, OnvifConfig config, LineThreads& threads, const QString& stream)
    : m_camera(std::move(camera)), m_config(std::move(config)), m_threads(threads),
      m_wasKnown(!stream.isEmpty())
{
    connect(this, &OnvifVideo::isWaiting, this, &OnvifVideo::deliver, Qt::QueuedConnection);
    // Not before the caller has connected to the signals.
    QMetaObject::invokeMethod(
        this,
        [this, stream] {
            if (LocatedTalk::isStream(m_camera.address)) {
                openLine(m_camera.address);
            } else if (m_wasKnown) {
                openLine(stream);
            } else {
                locate();
            }
        },
        Qt::QueuedConnection);
}

OnvifVideo::~OnvifVideo()
{
    if (m_line) {
        m_line->forgetListener();
        m_line->close();
    }
}

void OnvifVideo::locate()
{
    QString error;
    const auto address = OnvifInquiries::deviceService(m_camera.address, m_config.servicePort, &error);
    if (!address) {
        Q_EMIT refused(ReturnCode::noPicture, error);
        return;
    }
    OnvifDevice::Options options;
    options.all = m_camera.settings.openTimeout;
    options.anyCertificate = m_camera.settings.anyCertificate;
    m_device =
        std::make_unique<OnvifDevice>(*address, OnvifLogin{m_camera.username, m_camera.password}, options);
    connect(m_device.get(), &OnvifDevice::abilitiesKnown, this, [this](const CameraAbilities& abilities) {
        m_device.release()->deleteLater();
        takeStream(abilities);
    });
    m_device->askAbilities();
}

void OnvifVideo::takeStream(const CameraAbilities& abilities)
{
    const CameraStream* found = nullptr;
    QStringList others; // codecs
    for (const CameraStream& stream : abilities.streams) {
        const bool isNamed = !stream.pictureCodec.isEmpty();
        if (!stream.hasPicture || stream.address.isEmpty()) {
            continue;
        }
        if (isNamed && stream.pictureCodec != QLatin1String("H264")) {
            others.append(stream.pictureCodec);
        } else if (found == nullptr || (isNamed && found->pictureCodec.isEmpty())) {
            found = &stream; // what names no codec is tried when no other one has H.264
        }
    }
    others.removeDuplicates();
    if (found != nullptr) {
        const QString stream = found->address.toString(QUrl::FullyEncoded);
        Q_EMIT located(stream);
        openLine(stream);
    } else if (!others.isEmpty()) {
        Q_EMIT refused(
            ReturnCode::noPicture,
            QStringLiteral("the camera's video is %1, not H264").arg(others.join(QStringLiteral(", "))));
    } else if (abilities.error != OnvifError::None) {
        Q_EMIT refused(returnCodeOf(abilities.error, ReturnCode::noPicture), errorSentence(abilities));
    } else {
        Q_EMIT refused(ReturnCode::noPicture,
                       QStringLiteral("the camera gives no address of a stream with a picture"));
    }
}

void OnvifVideo::openLine(const QString& stream)
{
    if (!m_threads.hasRoomForVideo()) {
        Q_EMIT refused(ReturnCode::tooManyRequests,
                       QStringLiteral("the server has no room for one more video"));
        return;
    }
    CameraRecord camera = m_camera;
    camera.address = stream;
    m_line = std::make_shared<VideoLine>(camera, m_config, static_cast<VideoLineListener&>(*this));
    if (!m_threads.start(m_line)) {
        Q_EMIT refused(ReturnCode::tooManyRequests,
                       QStringLiteral("the server has no room for one more video"));
    }
}

/** On a thread of the line. */
void OnvifVideo::lineShowed(const VideoUnit& unit)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_needsKeyFrame && !unit.isKeyFrame) {
            return;
        }
        m_needsKeyFrame = m_bytes + unit.bytes.size() > maxWaitingBytes;
        if (m_needsKeyFrame) {
            return;
        }
        m_units.push_back(unit);
        m_bytes += unit.bytes.size();
        if (m_units.size() > 1) {
            return; // the signal is on its way
        }
    }
    Q_EMIT isWaiting(QPrivateSignal());
}

/** On a thread of the line. */
void OnvifVideo::lineEnded(const LineRefusal& why)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_why = why;
    }
    Q_EMIT isWaiting(QPrivateSignal());
}

/** Hands over what waits, in its order. */
void OnvifVideo::deliver()
{
    std::deque<VideoUnit> units;
    std::optional<LineRefusal> why;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        units.swap(m_units);
        m_bytes = 0;
        why.swap(m_why);
    }
    for (const VideoUnit& unit : units) {
        m_isOpen = true;
        Q_EMIT showed(unit);
    }
    if (why && m_isOpen) {
        Q_EMIT lost(why->reason);
    } else if (why) {
        refuse(why->returnCode, why->reason);
    }
}

void OnvifVideo::refuse(const QString& returnCode, const QString& reason)
{
    if (m_wasKnown) {
        Q_EMIT located(QString()); // the stream may have moved
    }
    Q_EMIT refused(returnCode == ReturnCode::talkRefused ? ReturnCode::noPicture : returnCode, reason);
}
