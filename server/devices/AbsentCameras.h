#pragma once

#include "protocol/ServerReply.h"
#include "server/devices/CameraBackend.h"
#include "server/devices/RefusedTalk.h"

/** Cameras of the records whose kind this server does not have: they are kept, listed and offline. */
class AbsentCameras : public CameraBackend
{
public:
    QList<Camera> cameras() const override
    {
        QList<Camera> cameras;
        for (const CameraRecord& record : m_records) {
            cameras.append({record.id, record.name, false, record.kind, record.address});
        }
        return cameras;
    }

    std::unique_ptr<DeviceTalk> openTalk(const QString& camera) override
    {
        return std::make_unique<RefusedTalk>(ReturnCode::cameraOffline,
                                             QStringLiteral("camera \"%1\" is offline").arg(camera));
    }

    void setRecords(const QList<CameraRecord>& records) override
    {
        if (m_records != records) {
            m_records = records;
            Q_EMIT camerasChanged();
        }
    }

private:
    QList<CameraRecord> m_records;
};
