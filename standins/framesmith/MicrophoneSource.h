#pragma once

#include "standins/framesmith/CaptureSource.h"

#include <QString>

#include <memory>

namespace framesmith {

class MicrophoneThread;
class SampleQueue;

/**
 * The default microphone, or an input device chosen by its name, through Qt Multimedia. A device that fails
 * later is opened again every second.
 *
 *   QAudioInput (thread of its own) --> PcmConverter --> SampleQueue --> read (capture thread)
 */
class MicrophoneSource : public CaptureSource
{
public:
    /** @param deviceName empty for the default microphone */
    explicit MicrophoneSource(QString deviceName);
    ~MicrophoneSource() override;

    Code start() override;
    bool read(std::int16_t* samples, std::size_t count) override;
    void stop() override;

private:
    std::unique_ptr<SampleQueue> m_queue;
    std::unique_ptr<MicrophoneThread> m_thread;
};

} // namespace framesmith
