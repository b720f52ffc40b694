#include "AudioOutput.h"

#include "AudioDevice.h"

#include <ApplicationEnd.h>
#include <NeverDestroyed.h>

#include <QAudioOutput>

#include <mutex>
#include <set>

namespace {

/** All outputs of the process. */
struct Outputs
{
    std::mutex mutex;
    std::set<AudioOutput*> set;
};

Outputs& outputs()
{
    static NeverDestroyed<Outputs> outputs; // the plug-in may be destroyed after the static objects
    return outputs.value;
}

} // namespace

AudioOutput::AudioOutput(const QAudioDeviceInfo& deviceInfo, const QAudioFormat& format, AudioDevice* device)
    : m_deviceInfo(deviceInfo), m_format(format), m_device(device)
{
    {
        const std::lock_guard lock(outputs().mutex);
        outputs().set.insert(this);
    }
    // The device was listed by Qt, whose static objects exist by now and so outlive this one.
    static ApplicationEnd applicationEnd(&AudioOutput::endAll);
    applicationEnd.arm();
}

AudioOutput::~AudioOutput()
{
    {
        const std::lock_guard lock(outputs().mutex);
        outputs().set.erase(this);
    }
    end();
}

void AudioOutput::endAll()
{
    const std::lock_guard lock(outputs().mutex);
    for (AudioOutput* output : outputs().set) {
        output->end();
    }
}

void AudioOutput::end()
{
    quit();
    wait();
    m_audioOutput.load(std::memory_order_acquire); // from here on all that the thread did is visible
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
