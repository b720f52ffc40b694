#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/onvif/CameraPresence.h"
#include "server/devices/onvif/LineThreads.h"
#include "server/devices/onvif/OnvifInquiries.h"
#include "server/devices/onvif/OnvifPictures.h"

/**
 * Cameras with an audio backchannel by RTSP (ONVIF Profile T), all from the server's records. Each is asked
 * regularly whether it is there.
 */
class OnvifCameras : public CameraBackend
{
    Q_OBJECT

public:
    /** Has no cameras until it is given records. */
    explicit OnvifCameras(const OnvifConfig& config);

    void setRecords(const QList<CameraRecord>& records) override;
    QList<Camera> cameras() const override;
    std::unique_ptr<DeviceTalk> openTalk(const QString& camera) override;
    bool findCameras(TakeFound take) override;
    bool askCamera(const CameraRecord& camera, TakeReport take) override;
    bool askPicture(const QString& camera, TakePicture take) override;
    std::unique_ptr<CameraVideo> openVideo(const QString& camera) override;

private:
    const CameraRecord* recordOf(const QString& camera) const;
    void follow(const DeviceTalk& talk, const QString& camera);

    OnvifConfig m_config;
    QList<CameraRecord> m_records;
    QHash<QString, QString> m_streams;      ///< Addresses that talks have located, by id.
    QHash<QString, QString> m_videoStreams; ///< The same of videos.
    LineThreads m_threads;
    OnvifInquiries m_inquiries;
    OnvifPictures m_pictures;
    CameraPresence m_presence;
};
