#include "tests/support/SystemOverrides.h"

#include "src/playback/SystemProbe.h"

namespace {

QString productTypeText;
int microphones = 0;
int outputDevices = 0;
int listings = 0;
int listedOutputs = 0;
QList<QAudioFormat> nearestFormats;
QList<QAudioFormat> asked;

class Fake : public SystemProbe
{
public:
    Fake() { setCurrent(this); }
    ~Fake() override { setCurrent(nullptr); }

    QString productType() const override { return productTypeText; }

    QList<QAudioDeviceInfo> audioDevices(QAudio::Mode mode) const override
    {
        QList<QAudioDeviceInfo> devices;
        const int count = mode == QAudio::AudioInput ? microphones : outputDevices;
        (mode == QAudio::AudioInput ? listings : listedOutputs) += 1;
        for (int i = 0; i < count; ++i) {
            devices.append(QAudioDeviceInfo());
        }
        return devices;
    }

    QAudioFormat nearestFormat(const QAudioDeviceInfo& /*device*/, const QAudioFormat& format) const override
    {
        if (nearestFormats.isEmpty()) {
            return QAudioFormat();
        }
        asked.append(format);
        return nearestFormats.at((asked.size() - 1) % nearestFormats.size());
    }
};

const Fake fake;

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
