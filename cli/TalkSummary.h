#pragma once

#include "audio/TimedSound.h"

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
    TimedSound heard;       ///< Its contents.

    /** Prints to stdout. */
    void print() const;

private:
    void printEcho() const;

    const TalkMonitor& m_monitor;
};
