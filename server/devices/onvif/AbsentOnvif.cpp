#include "server/devices/onvif/OnvifDevices.h"

DeviceKinds onvifDevices(const OnvifConfig& /*config*/)
{
    DeviceKinds kinds;
    kinds.absentCameras.push_back({onvifKind(), QStringLiteral("this server was built without GStreamer, "
                                                               "which cameras of the kind \"onvif\" need")});
    return kinds;
}
