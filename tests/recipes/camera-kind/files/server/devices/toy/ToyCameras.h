#pragma once

#include "server/devices/DeviceKinds.h"

/** Cameras that hear everything and say nothing: those of the records with the kind "toy". */
class ToyCameras : public CameraBackend
{
public:
    void setRecords(const QList<CameraRecord>& records) override;
    QList<Camera> cameras() const override;
    std::unique_ptr<DeviceTalk> openTalk(const QString& camera) override;

private:
    QList<CameraRecord> m_records;
};

/** The kind of these cameras. */
DeviceKinds toyDevices();
