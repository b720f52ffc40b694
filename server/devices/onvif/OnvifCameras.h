#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/onvif/LineThreads.h"
#include "server/devices/onvif/OnvifInquiries.h"
#include "server/devices/onvif/OnvifPictures.h"

/** Cameras with an audio backchannel by RTSP (ONVIF Profile T), all from the server's records. */
class OnvifCameras : public CameraBackend
{
    Q_OBJECT

public:
    /** Has no cameras until it is given records. */
    explicit OnvifCameras(const OnvifConfig& config)
        : m_config(config), m_inquiries(config.search), m_pictures(config.pictures)
    {
    }

    void setRecords(const QList<CameraRecord>& records) override;
    QList<Camera> cameras() const override;
    std::unique_ptr<DeviceTalk> openTalk(const QString& camera) override;
    bool findCameras(TakeFound take) override;
    bool askCamera(const CameraRecord& camera, TakeReport take) override;
    bool askPicture(const QString& camera, TakePicture take) override;

private:
    OnvifConfig m_config;
    QList<CameraRecord> m_records;
    LineThreads m_threads;
    OnvifInquiries m_inquiries;
    OnvifPictures m_pictures;
};
