#include "server/devices/onvif/OnvifCameras.h"

#include "protocol/ServerReply.h"
#include "server/devices/RefusedTalk.h"
#include "server/devices/onvif/OnvifTalk.h"

#include <algorithm>

namespace {

/** The URL of a camera's stream; a host alone has the shortest one. */
QString streamUrl(const QString& address)
{
    if (address.contains(QStringLiteral("://"))) {
        return address;
    }
    const bool isIpv6 = address.contains(QLatin1Char(':'));
    return (isIpv6 ? QStringLiteral("rtsp://[%1]/") : QStringLiteral("rtsp://%1/")).arg(address);
}

} // namespace

void OnvifCameras::setRecords(const QList<CameraRecord>& records)
{
    if (m_records != records) {
        m_records = records;
        m_pictures.setRecords(records);
        Q_EMIT camerasChanged();
    }
}

QList<Camera> OnvifCameras::cameras() const
{
    QList<Camera> cameras;
    for (const CameraRecord& record : m_records) {
        cameras.append({record.id, record.name, true, record.kind, record.address});
    }
    return cameras;
}

std::unique_ptr<DeviceTalk> OnvifCameras::openTalk(const QString& camera)
{
    const auto record = std::find_if(m_records.begin(), m_records.end(),
                                     [&](const CameraRecord& each) { return each.id == camera; });
    if (record == m_records.end()) {
        return std::make_unique<RefusedTalk>(ReturnCode::cameraOffline,
                                             QStringLiteral("camera \"%1\" is not there").arg(camera));
    }
    if (!m_threads.hasRoom()) {
        return std::make_unique<RefusedTalk>(
            ReturnCode::talkRefused, QStringLiteral("the server has no room for one more talk to a camera"));
    }
    CameraRecord reached = *record;
    reached.address = streamUrl(record->address);
    return std::make_unique<OnvifTalk>(reached, m_config, m_threads);
}

bool OnvifCameras::findCameras(TakeFound take)
{
    m_inquiries.find(take);
    return true;
}

bool OnvifCameras::askCamera(const CameraRecord& camera, TakeReport take)
{
    m_inquiries.ask(camera, take);
    return true;
}

bool OnvifCameras::askPicture(const QString& camera, TakePicture take)
{
    return m_pictures.ask(camera, take);
}
