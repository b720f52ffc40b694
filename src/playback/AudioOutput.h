#pragma once

#include <QAudioDeviceInfo>
#include <QAudioFormat>
#include <QThread>

#include <atomic>

class AudioDevice;
class QAudioOutput;

/** The thread that owns a QAudioOutput: pulling, decoding and conversion happen on its event loop. */
class AudioOutput : private QThread
{
public:
    /** @param device outlives the object */
    AudioOutput(const QAudioDeviceInfo& deviceInfo, const QAudioFormat& format, AudioDevice* device);

    /** Waits until the output has stopped. */
    ~AudioOutput() override;

    using QThread::start;

    /** The running output; null until the thread has started it. For volume calls only. */
    QAudioOutput* audioOutput() const { return m_audioOutput.load(std::memory_order_acquire); }

private:
    void run() override;

    QAudioDeviceInfo m_deviceInfo;
    QAudioFormat m_format;
    AudioDevice* m_device;
    std::atomic<QAudioOutput*> m_audioOutput{nullptr}; ///< Owned by the thread.
};
