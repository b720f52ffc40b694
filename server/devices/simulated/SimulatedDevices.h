#pragma once

#include "server/devices/DeviceKinds.h"
#include "server/devices/simulated/SimulatedConfig.h"

/** The kinds of devices that this project plays itself. */
DeviceKinds simulatedDevices(const SimulatedConfig& config);
