#include "server/devices/simulated/SimulatedDevices.h"

#include "server/devices/simulated/SimulatedCameras.h"
#include "server/devices/simulated/SimulatedSpeakers.h"

namespace {

constexpr int defaultEchoDelay = 500; // ms

} // namespace

CameraVoiceConfig echoingVoice()
{
    CameraVoiceConfig voice;
    voice.kind = CameraVoiceConfig::Echo;
    voice.echoDelay = defaultEchoDelay;
    return voice;
}

std::vector<SimulatedCamera> defaultCameras(const QString& speechFile)
{
    CameraVoiceConfig speech;
    speech.kind = speechFile.isEmpty() ? CameraVoiceConfig::Silent : CameraVoiceConfig::File;
    speech.file = speechFile;
    return {
        {QStringLiteral("camera-1"), QStringLiteral("Front gate"), true, echoingVoice()},
        {QStringLiteral("camera-2"), QStringLiteral("Loading dock"), true, speech},
        {QStringLiteral("camera-3"), QStringLiteral("Car park"), false, CameraVoiceConfig()},
    };
}

DeviceKinds simulatedDevices(const SimulatedConfig& config)
{
    DeviceKinds kinds;
    if (config.hasCameras) {
        kinds.cameras.push_back(
            {simulatedKind(), [config] { return std::make_unique<SimulatedCameras>(config); }});
    }
    // Who says how simulated speakers behave wants some.
    if (config.hasSpeakers || config.speakersAloud || !config.offlineAddresses.isEmpty()) {
        kinds.speakers.push_back(
            {simulatedKind(), [config] { return std::make_unique<SimulatedSpeakers>(config); }});
    }
    return kinds;
}
