#pragma once

#include "server/devices/DeviceKinds.h"
#include "server/devices/onvif/OnvifConfig.h"

/**
 * Cameras with an audio backchannel by RTSP, as ONVIF's streaming specification has it (clause 5.3). A
 * program that was built without GStreamer has them as an absent kind.
 */
DeviceKinds onvifDevices(const OnvifConfig& config);
