#pragma once

#include <QElapsedTimer>
#include <QString>

#include <cstdio>

class TalkMonitor;

/** Shows a running talk on stderr: one line that renews itself on a terminal, a line a second elsewhere. */
class TalkProgress
{
public:
    explicit TalkProgress(const TalkMonitor& monitor);

    void start();

    /** Renews the line; called several times a second. */
    void update();

    /** Leaves the line standing and goes to the next. */
    void finish();

    /** Since start, seconds. */
    double elapsed() const;

private:
    QString line() const;

    const TalkMonitor& m_monitor;
    const bool m_terminal;
    QElapsedTimer m_clock;
    qint64 m_lastLine = 0; // ms since start
};
