#include "server/devices/simulated/SimulatedDevices.h"

#include "server/devices/simulated/SimulatedCameras.h"
#include "server/devices/simulated/SimulatedSpeakers.h"

namespace {

constexpr int defaultEchoDelay = 500; // ms
const QString kind = QStringLiteral("simulated");

} // namespace

std::vector<SimulatedCamera> defaultCameras(const QString& speechFile)
{
    CameraVoiceConfig echo;
    echo.kind = CameraVoiceConfig::Echo;
    echo.echoDelay = defaultEchoDelay;
    CameraVoiceConfig speech;
    speech.kind = speechFile.isEmpty() ? CameraVoiceConfig::Silent : CameraVoiceConfig::File;
    speech.file = speechFile;
    return {
        {QStringLiteral("camera-1"), QStringLiteral("Front gate"), true, echo},
        {QStringLiteral("camera-2"), QStringLiteral("Loading dock"), true, speech},
        {QStringLiteral("camera-3"), QStringLiteral("Car park"), false, CameraVoiceConfig()},
    };
}

DeviceKinds simulatedDevices(const SimulatedConfig& config)
{
    return {
        {{kind, [config] { return std::make_unique<SimulatedCameras>(config); }}},
        {{kind, [config] { return std::make_unique<SimulatedSpeakers>(config); }}},
    };
}
