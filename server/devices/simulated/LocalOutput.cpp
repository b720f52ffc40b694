#include "server/devices/simulated/LocalOutput.h"

#include "audio/PcmFormat.h"

LocalOutput::LocalOutput(int sampleRate)
{
    const QAudioFormat format = pcmFormat(sampleRate);
    const auto devices = QAudioDeviceInfo::availableDevices(QAudio::AudioOutput);
    for (const QAudioDeviceInfo& device : devices) {
        if (device.isFormatSupported(format)) {
            m_output = std::make_unique<QAudioOutput>(device, format);
            m_stream = m_output->start();
            return;
        }
    }
}

LocalOutput::~LocalOutput() = default;

void LocalOutput::play(const std::vector<std::int16_t>& samples)
{
    if (m_stream != nullptr) {
        m_stream->write(reinterpret_cast<const char*>(samples.data()),
                        static_cast<qint64>(samples.size() * sizeof(std::int16_t)));
    }
}
