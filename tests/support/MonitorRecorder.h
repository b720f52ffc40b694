#pragma once

#include "tests/support/HostCommand.h"
#include "tests/support/WavFiles.h"

#include <QByteArray>
#include <QString>

/** Records what a sink of the PulseServer plays, from its monitor: 48000 Hz mono, from construction on. */
class MonitorRecorder
{
public:
    static constexpr int sampleRate = 48000; // Hz

    /** Returns when the recording runs. @param sink of the server that this process is pointed at */
    explicit MonitorRecorder(const QString& sink = QStringLiteral("out"));

    bool running() const { return m_running; }

    /** Everything recorded so far. */
    const WavFiles::Samples& samples();

    /** Whether the last @p seconds of the recording are digital silence and something stood before them. */
    bool silentFor(double seconds);

    /** The part between the first and the last sample that is not near silence; gaps are kept. */
    WavFiles::Samples sound();

private:
    HostCommand m_parec;
    QByteArray m_partial; ///< Half a sample.
    WavFiles::Samples m_samples;
    bool m_running = false;
};
