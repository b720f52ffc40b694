#include "src/playback/AudioOutput.h"

#include "src/playback/AudioDevice.h"

#include <QAudioOutput>

AudioOutput::AudioOutput(const QAudioDeviceInfo& deviceInfo, const QAudioFormat& format, AudioDevice* device)
    : m_deviceInfo(deviceInfo), m_format(format), m_device(device)
{
}

AudioOutput::~AudioOutput()
{
    quit();
    wait();
    // wait orders this already, by a lock that ThreadSanitizer does not see; the load is for it.
    m_audioOutput.load(std::memory_order_acquire);
}

void AudioOutput::run()
{
    auto* output = new QAudioOutput(m_deviceInfo, m_format);
    output->start(m_device);
    m_audioOutput.store(output, std::memory_order_release);
    exec();
    output->stop();
    delete output;
    m_audioOutput.store(nullptr, std::memory_order_release);
}
