#include "server/devices/onvif/OnvifDevices.h"

#include "server/devices/onvif/OnvifCameras.h"

DeviceKinds onvifDevices(const OnvifConfig& config)
{
    DeviceKinds kinds;
    kinds.cameras.push_back({onvifKind(), [config] { return std::make_unique<OnvifCameras>(config); }});
    return kinds;
}
