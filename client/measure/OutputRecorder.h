#pragma once

#include "audio/TimedSound.h"

#include <QAudioDeviceInfo>
#include <QAudioInput>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

/**
 * Records what the sound output plays, where the sound server offers a monitor of it: what a person at the
 * loudspeaker would hear, from the moment of start on.
 */
class OutputRecorder : public QObject
{
    Q_OBJECT

public:
    static constexpr int sampleRate = 16000; // Hz, mono

    /** Begins to record; false when the output has no monitor. */
    bool start();

    void stop();

    /** Whether sound, be it silence, has come in. */
    bool running() const { return !m_sound.samples.empty(); }

    const TimedSound& sound() const { return m_sound; }

    /** Writes the recording as a WAV file. */
    bool write(const QString& path) const;

Q_SIGNALS:
    /** The first sound came in. */
    void started();

private:
    static std::optional<QAudioDeviceInfo> findMonitor();
    void read();

    std::unique_ptr<QAudioInput> m_input;
    QIODevice* m_stream = nullptr; ///< Owned by the input.
    QByteArray m_partial;          ///< Half a sample.
    TimedSound m_sound;
};
