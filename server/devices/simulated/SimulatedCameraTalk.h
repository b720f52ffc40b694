#pragma once

#include "audio/WaveFileWriter.h"
#include "server/devices/DeviceTalk.h"
#include "server/devices/simulated/CameraVoice.h"

#include <QString>

/** One talk with a simulated camera: what is said is decoded, written to a WAV file, and perhaps answered. */
class SimulatedCameraTalk : public DeviceTalk
{
public:
    /** @param path the recording; replaced when it exists @param clock of all voices */
    SimulatedCameraTalk(const QString& path, const CameraVoiceConfig& voice,
                        std::shared_ptr<AlarmClock> clock);

    /** Returns whether the recording can be written. */
    bool isRecording() const { return m_writer.isOpen(); }

    /** Opens the line; false when the camera's voice cannot be read or encoded. */
    bool start();

    bool hear(const QByteArray& packet) override;
    void close() override;

private:
    WaveFileWriter m_writer;
    CameraVoice m_voice;
    int m_packets = 0;
    std::uint32_t m_nextPosition = 0; ///< Where the next packet starts if none is lost.
    std::uint64_t m_recorded = 0;     ///< Samples written.
};
