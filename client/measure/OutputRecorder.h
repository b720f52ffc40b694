#pragma once

#include "audio/TimedSound.h"

#include <QAudioDeviceInfo>
#include <QAudioInput>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

/**
 * Records the sound output, as a person at the loudspeaker would hear it, if the sound server has a monitor
 * of it. Keeps ten minutes at most. Used on one thread, with an event loop.
 */
class OutputRecorder : public QObject
{
    Q_OBJECT

public:
    static constexpr int sampleRate = 16000; ///< Of the recording, Hz; it is mono.

    /** Starts to record; returns false when the output has no monitor or it does not open. */
    bool start();

    /** Ends the recording, which stays readable. */
    void stop();

    /** Returns whether samples, silent ones included, have been recorded. */
    bool running() const { return !m_sound.samples.empty(); }

    /** Returns the recording. */
    const TimedSound& sound() const { return m_sound; }

    /** Writes the recording as a WAV file; returns false when that fails. */
    bool write(const QString& path) const;

Q_SIGNALS:
    /** Emitted when the first samples were recorded. */
    void started();

private:
    static std::optional<QAudioDeviceInfo> findMonitor();
    void read();

    std::unique_ptr<QAudioInput> m_input;
    QIODevice* m_stream = nullptr; ///< Owned by the input.
    QByteArray m_partial;          ///< Half a sample.
    TimedSound m_sound;
};
