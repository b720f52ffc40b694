#include "SystemOverrides.h"

#include <QAudioDeviceInfo>
#include <QSysInfo>

namespace {

QString productTypeText;
int microphones = 0;
int outputDevices = 0;
int listings = 0;
int listedOutputs = 0;
QList<QAudioFormat> nearestFormats;
QList<QAudioFormat> asked;

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

void setOutputFormats(const QList<QAudioFormat>& formats)
{
    outputDevices = formats.size();
    nearestFormats = formats;
    asked.clear();
    listedOutputs = 0;
}

QList<QAudioFormat> askedFormats()
{
    return asked;
}

int outputListings()
{
    return listedOutputs;
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
    (mode == QAudio::AudioInput ? listings : listedOutputs) += 1;
    for (int i = 0; i < count; ++i) {
        devices.append(QAudioDeviceInfo());
    }
    return devices;
}

QAudioFormat QAudioDeviceInfo::nearestFormat(const QAudioFormat& format) const
{
    if (nearestFormats.isEmpty()) {
        return QAudioFormat();
    }
    asked.append(format);
    return nearestFormats.at((asked.size() - 1) % nearestFormats.size());
}
