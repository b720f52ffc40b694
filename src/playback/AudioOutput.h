#pragma once

#include <QAudioDeviceInfo>
#include <QAudioFormat>
#include <QThread>

#include <atomic>

class AudioDevice;
class QAudioOutput;

/** The thread that owns a QAudioOutput. Its event loop reads the device, which decodes and converts there. */
class AudioOutput : private QThread
{
public:
    /** @param device is read from start on; outlives the object */
    AudioOutput(const QAudioDeviceInfo& deviceInfo, const QAudioFormat& format, AudioDevice* device);

    /** Waits until the output has stopped. */
    ~AudioOutput() override;

    using QThread::start;

    /** Returns the running output; null until the thread has started it. For volume calls only. */
    QAudioOutput* audioOutput() const { return m_audioOutput.load(std::memory_order_acquire); }

private:
    void run() override;

    QAudioDeviceInfo m_deviceInfo;
    QAudioFormat m_format;
    AudioDevice* m_device;
    std::atomic<QAudioOutput*> m_audioOutput{nullptr}; ///< Owned by the thread.
};
