#pragma once

#include <QAudioDeviceInfo>
#include <QAudioFormat>
#include <QThread>

#include <atomic>

class AudioDevice;
class QAudioOutput;

/**
 * The thread that owns a QAudioOutput: pulling, decoding and conversion happen on its event loop. It ends
 * with the object, or with the application object if that goes first: Qt's sound does not work without one.
 */
class AudioOutput : private QThread
{
public:
    /** @param device outlives the object */
    AudioOutput(const QAudioDeviceInfo& deviceInfo, const QAudioFormat& format, AudioDevice* device);

    /** Waits until the output has stopped. */
    ~AudioOutput() override;

    using QThread::isFinished;
    using QThread::start;

    /** The running output; null until the thread has started it and when it has ended. For volume calls only.
     */
    QAudioOutput* audioOutput() const { return m_audioOutput.load(std::memory_order_acquire); }

private:
    static void endAll();
    void run() override;
    void end();

    QAudioDeviceInfo m_deviceInfo;
    QAudioFormat m_format;
    AudioDevice* m_device;
    std::atomic<QAudioOutput*> m_audioOutput{nullptr}; ///< Owned by the thread.
};
