#include "src/playback/SystemProbe.h"

#include "lifetime/NeverDestroyed.h"

#include <QSysInfo>

namespace {

const SystemProbe* replacement = nullptr;

} // namespace

QString SystemProbe::productType() const
{
    return QSysInfo::productType();
}

QList<QAudioDeviceInfo> SystemProbe::audioDevices(QAudio::Mode mode) const
{
    return QAudioDeviceInfo::availableDevices(mode);
}

QAudioFormat SystemProbe::nearestFormat(const QAudioDeviceInfo& device, const QAudioFormat& format) const
{
    return device.nearestFormat(format);
}

const SystemProbe& SystemProbe::current()
{
    static const NeverDestroyed<SystemProbe> qt; // the plug-in may be destroyed after the static objects
    return replacement != nullptr ? *replacement : qt.value;
}

void SystemProbe::setCurrent(const SystemProbe* probe)
{
    replacement = probe;
}
