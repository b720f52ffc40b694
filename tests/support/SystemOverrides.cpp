#include "SystemOverrides.h"

#include <QAudioDeviceInfo>
#include <QSysInfo>

namespace {

QString productTypeText;
int microphones = 0;
int outputDevices = 0;
int listings = 0;

} // namespace

namespace SystemOverrides {

void setProductType(const QString& type)
{
    productTypeText = type;
}

void setMicrophones(int count)
{
    microphones = count;
    listings = 0;
}

void setOutputDevices(int count)
{
    outputDevices = count;
}

int microphoneListings()
{
    return listings;
}

} // namespace SystemOverrides

QString QSysInfo::productType()
{
    return productTypeText;
}

QList<QAudioDeviceInfo> QAudioDeviceInfo::availableDevices(QAudio::Mode mode)
{
    QList<QAudioDeviceInfo> devices;
    const int count = mode == QAudio::AudioInput ? microphones : outputDevices;
    listings += mode == QAudio::AudioInput ? 1 : 0;
    for (int i = 0; i < count; ++i) {
        devices.append(QAudioDeviceInfo());
    }
    return devices;
}
