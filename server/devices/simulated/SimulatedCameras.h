#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/simulated/SimulatedConfig.h"

/** Cameras that this project plays itself: each talk to one is recorded to a new file. */
class SimulatedCameras : public CameraBackend
{
public:
    explicit SimulatedCameras(SimulatedConfig config) : m_config(std::move(config)) {}

    QList<Camera> cameras() const override;
    std::unique_ptr<DeviceTalk> openTalk(const QString& camera) override;

private:
    SimulatedConfig m_config;
};
