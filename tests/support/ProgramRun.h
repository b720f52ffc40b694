#pragma once

#include <QJsonArray>
#include <QString>
#include <QStringList>

class QProcess;

/** One run of a program of ours to its end: what it wrote, with lines that end as on Linux, and its exit
 * status. */
struct ProgramRun
{
    int status = -1; ///< -1 when it did not end by itself.
    QString out;
    QString err;

    /** Runs a program of this build in a folder. @param timeout in ms */
    static ProgramRun of(const char* program, const QString& folder, const QStringList& arguments,
                         int timeout = 60000);

    /** The same of a process that was started. */
    static ProgramRun toTheEnd(QProcess& process, int timeout);

    /** What stands behind a name at the beginning of a line of the output. */
    QString line(const char* name) const;

    /** The number at a place, from 0 on, of such a line; NaN without one. */
    double value(const char* name, int place = 0) const;

    /** The output as a JSON array, empty if it is none. */
    QJsonArray json() const;
};
