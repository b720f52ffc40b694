#pragma once

#include "audio/TimedSound.h"

#include <QString>
#include <QStringList>

class TalkMonitor;

/** The closing words of a talk. */
class TalkSummary
{
public:
    explicit TalkSummary(const TalkMonitor& monitor) : m_monitor(monitor) {}

    double duration = 0;    ///< s
    QStringList recordings; ///< Of the server.
    QString heardFile;      ///< Empty when the output could not be recorded.
    TimedSound heard;

    /** Prints to stdout. */
    void print() const;

private:
    void printEcho() const;

    const TalkMonitor& m_monitor;
};
