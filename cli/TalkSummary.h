#pragma once

#include "audio/TimedSound.h"
#include "client/measure/EchoMeasure.h"

#include <QString>
#include <QStringList>

class TalkMonitor;

/** The report at the end of a talk. */
class TalkSummary
{
public:
    /** @param monitor outlives the object */
    explicit TalkSummary(const TalkMonitor& monitor) : m_monitor(monitor) {}

    double duration = 0;    ///< Seconds.
    QStringList recordings; ///< Files that the server wrote.
    QString heardFile;      ///< Recording of the output; empty when the output could not be recorded.
    TimedSound received;    ///< Its contents.
    QString whyNotHeard;    ///< Why heardFile is empty, if not for want of a monitor of the output.

    /** Prints to stdout, as lines or as a JSON object, whose keys docs/COMMANDS.md lists. */
    void print(bool json) const;

private:
    void printLines() const;
    void printObject() const;
    void printEcho() const;
    std::optional<EchoMeasure> echo() const;
    double eventToSound(const EchoMeasure& echo) const;

    const TalkMonitor& m_monitor;
};
