#include "tests/support/SystemOverrides.h"

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

namespace {

QString productType()
{
    return productTypeText;
}

QList<QAudioDeviceInfo> availableDevices(QAudio::Mode mode)
{
    QList<QAudioDeviceInfo> devices;
    const int count = mode == QAudio::AudioInput ? microphones : outputDevices;
    (mode == QAudio::AudioInput ? listings : listedOutputs) += 1;
    for (int i = 0; i < count; ++i) {
        devices.append(QAudioDeviceInfo());
    }
    return devices;
}

QAudioFormat nearestFormat(const QAudioDeviceInfo* /*device*/, const QAudioFormat& format)
{
    if (nearestFormats.isEmpty()) {
        return QAudioFormat();
    }
    asked.append(format);
    return nearestFormats.at((asked.size() - 1) % nearestFormats.size());
}

} // namespace

#ifdef Q_OS_WIN

// What is imported is called through pointers; a program's own come before those of an import library.
extern "C" {
extern QString (*const __imp__ZN8QSysInfo11productTypeEv)();
extern QList<QAudioDeviceInfo> (*const __imp__ZN16QAudioDeviceInfo16availableDevicesEN6QAudio4ModeE)(
    QAudio::Mode);
extern QAudioFormat (*const __imp__ZNK16QAudioDeviceInfo13nearestFormatERK12QAudioFormat)(
    const QAudioDeviceInfo*, const QAudioFormat&);
QString (*const __imp__ZN8QSysInfo11productTypeEv)() = productType;
QList<QAudioDeviceInfo> (*const __imp__ZN16QAudioDeviceInfo16availableDevicesEN6QAudio4ModeE)(QAudio::Mode) =
    availableDevices;
QAudioFormat (*const __imp__ZNK16QAudioDeviceInfo13nearestFormatERK12QAudioFormat)(
    const QAudioDeviceInfo*, const QAudioFormat&) = nearestFormat;
}

#else

QString QSysInfo::productType()
{
    return ::productType();
}

QList<QAudioDeviceInfo> QAudioDeviceInfo::availableDevices(QAudio::Mode mode)
{
    return ::availableDevices(mode);
}

QAudioFormat QAudioDeviceInfo::nearestFormat(const QAudioFormat& format) const
{
    return ::nearestFormat(this, format);
}

#endif
