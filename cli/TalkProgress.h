#pragma once

#include <QElapsedTimer>
#include <QString>

#include <cstdio>

class TalkMonitor;

/** Shows a running talk on stderr: one line, overwritten, on a terminal; a line each second elsewhere. */
class TalkProgress
{
public:
    /** @param monitor outlives the object */
    explicit TalkProgress(const TalkMonitor& monitor);

    /** Starts the clock. */
    void start();

    /** Shows the current line; to be called several times a second. */
    void update();

    /** Shows the last line and ends it. */
    void finish();

    /** Returns that the server refused packets, how many, and why; for people. */
    static QString refusal(const TalkMonitor& monitor);

    /** Returns the seconds since start. */
    double elapsed() const;

private:
    QString line() const;

    const TalkMonitor& m_monitor;
    const bool m_terminal;
    QElapsedTimer m_clock;
    qint64 m_lastLine = 0; // ms since start
};
