#include "server/devices/toy/ToyCameras.h"

#include "protocol/ServerReply.h"
#include "server/devices/RefusedTalk.h"

#include <algorithm>

namespace {

const QString kind = QStringLiteral("toy");

/** A talk that is open at once. */
class ToyTalk : public DeviceTalk
{
public:
    ToyTalk() { QMetaObject::invokeMethod(this, &DeviceTalk::opened, Qt::QueuedConnection); }

    bool hear(const QByteArray& packet) override { return !packet.isEmpty(); }
    void close() override { QMetaObject::invokeMethod(this, &DeviceTalk::closed, Qt::QueuedConnection); }
};

} // namespace

void ToyCameras::setRecords(const QList<CameraRecord>& records)
{
    if (m_records != records) {
        m_records = records;
        Q_EMIT camerasChanged();
    }
}

QList<Camera> ToyCameras::cameras() const
{
    QList<Camera> cameras;
    for (const CameraRecord& record : m_records) {
        cameras.append({record.id, record.name, true, kind, record.address});
    }
    return cameras;
}

std::unique_ptr<DeviceTalk> ToyCameras::openTalk(const QString& camera)
{
    const bool known = std::any_of(m_records.begin(), m_records.end(),
                                   [&](const CameraRecord& record) { return record.id == camera; });
    if (!known) {
        return std::make_unique<RefusedTalk>(ReturnCode::cameraOffline,
                                             QStringLiteral("camera \"%1\" is offline").arg(camera));
    }
    return std::make_unique<ToyTalk>();
}

DeviceKinds toyDevices()
{
    return {{{kind, [] { return std::make_unique<ToyCameras>(); }}}, {}};
}
