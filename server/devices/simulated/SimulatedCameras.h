#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/simulated/AlarmClock.h"
#include "server/devices/simulated/SimulatedConfig.h"

#include <optional>

/**
 * Cameras that this project plays itself: each talk to one is recorded to a new file. Those of the records
 * echo.
 */
class SimulatedCameras : public CameraBackend
{
public:
    /** Makes the cameras of a configuration; those of the records follow. */
    explicit SimulatedCameras(SimulatedConfig config) : m_config(std::move(config)) {}

    void setRecords(const QList<CameraRecord>& records) override;
    QList<Camera> cameras() const override;
    std::unique_ptr<DeviceTalk> openTalk(const QString& camera) override;
    bool askCamera(const CameraRecord& camera, TakeReport take) override;
    bool askPicture(const QString& camera, TakePicture take) override;

private:
    std::optional<CameraVoiceConfig> voiceOf(const QString& camera) const;

    SimulatedConfig m_config;
    QList<CameraRecord> m_records;
    std::shared_ptr<AlarmClock> m_clock = std::make_shared<AlarmClock>(); ///< Of the voices.
};
