#include "server/devices/onvif/OnvifCameras.h"

#include "protocol/ServerReply.h"
#include "server/devices/RefusedTalk.h"
#include "server/devices/onvif/LocatedTalk.h"
#include "server/devices/onvif/OnvifVideo.h"

#include <algorithm>

namespace {

/** Whether a refusal with this code shows that the camera is there; empty when it shows nothing. */
std::optional<bool> presenceBy(const QString& returnCode)
{
    if (returnCode == ReturnCode::cameraOffline) {
        return false;
    }
    const bool isThere = returnCode == ReturnCode::loginRefused || returnCode == ReturnCode::noLoudspeaker ||
                         returnCode == ReturnCode::cameraBusy;
    return isThere ? std::optional(true) : std::nullopt;
}

} // namespace

OnvifCameras::OnvifCameras(const OnvifConfig& config)
    : m_config(config), m_inquiries(config), m_pictures(config), m_presence(config.presence)
{
    connect(&m_presence, &CameraPresence::changed, this, &CameraBackend::camerasChanged);
}

void OnvifCameras::setRecords(const QList<CameraRecord>& records)
{
    if (m_records == records) {
        return;
    }
    for (const CameraRecord& before : qAsConst(m_records)) {
        if (!records.contains(before)) {
            m_streams.remove(before.id);
            m_videoStreams.remove(before.id);
        }
    }
    m_records = records;
    m_presence.setRecords(records);
    m_pictures.setRecords(records);
    Q_EMIT camerasChanged();
}

QList<Camera> OnvifCameras::cameras() const
{
    QList<Camera> cameras;
    for (const CameraRecord& record : m_records) {
        Camera camera{record.id, record.name, m_presence.isOnline(record.id), record.kind, record.address};
        camera.isExclusive = !record.settings.severalTalks;
        camera.isTried = true;
        cameras.append(camera);
    }
    return cameras;
}

/** The record of a camera; null for one of no record. */
const CameraRecord* OnvifCameras::recordOf(const QString& camera) const
{
    const auto record = std::find_if(m_records.begin(), m_records.end(),
                                     [&](const CameraRecord& each) { return each.id == camera; });
    return record == m_records.end() ? nullptr : &*record;
}

std::unique_ptr<DeviceTalk> OnvifCameras::openTalk(const QString& camera)
{
    const CameraRecord* record = recordOf(camera);
    if (record == nullptr) {
        return std::make_unique<RefusedTalk>(ReturnCode::cameraOffline,
                                             QStringLiteral("camera \"%1\" is not there").arg(camera));
    }
    auto talk = std::make_unique<LocatedTalk>(*record, m_config, m_threads, m_streams.value(camera));
    connect(talk.get(), &LocatedTalk::located, this, [this, asked = *record](const QString& stream) {
        if (m_records.contains(asked)) {
            m_streams.insert(asked.id, stream);
        }
    });
    follow(*talk, camera);
    return talk;
}

/** Takes from a talk whether its camera is there. */
void OnvifCameras::follow(const DeviceTalk& talk, const QString& camera)
{
    const quint64 version = m_presence.version(camera);
    const auto isOpen = std::make_shared<bool>(false);
    const auto end = [this, camera, version, isOpen] {
        if (*isOpen) {
            *isOpen = false;
            m_presence.talkEnded(camera, version);
        }
    };
    connect(&talk, &DeviceTalk::opened, this, [this, camera, version, isOpen] {
        *isOpen = true;
        m_presence.talkOpened(camera, version);
    });
    connect(&talk, &DeviceTalk::refused, this, [this, camera, version](const QString& returnCode) {
        if (const auto isThere = presenceBy(returnCode)) {
            m_presence.noticed(camera, version, *isThere);
        }
    });
    connect(&talk, &DeviceTalk::lost, this, [this, camera, version, end] {
        end();
        m_presence.noticed(camera, version, false);
    });
    connect(&talk, &QObject::destroyed, this, end);
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
    const quint64 version = m_presence.version(camera);
    return m_pictures.ask(camera, [this, camera, version, take](CameraPicture picture) {
        if (picture.returnCode == ReturnCode::success) {
            m_presence.noticed(camera, version, true);
        } else if (picture.returnCode == ReturnCode::cameraOffline && m_presence.isOnline(camera)) {
            picture.returnCode = ReturnCode::noPicture; // it is there, without ONVIF at that address
        }
        take(picture);
    });
}

std::unique_ptr<CameraVideo> OnvifCameras::openVideo(const QString& camera)
{
    const CameraRecord* record = recordOf(camera);
    if (record == nullptr) {
        return nullptr;
    }
    auto video = std::make_unique<OnvifVideo>(*record, m_config, m_threads, m_videoStreams.value(camera));
    connect(video.get(), &OnvifVideo::located, this, [this, asked = *record](const QString& stream) {
        if (m_records.contains(asked)) {
            m_videoStreams.insert(asked.id, stream);
        }
    });
    return video;
}
