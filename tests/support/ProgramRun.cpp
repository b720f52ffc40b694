#include "tests/support/ProgramRun.h"

#include <QDir>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>

#include <cmath>

ProgramRun ProgramRun::of(const char* program, const QString& folder, const QStringList& arguments,
                          int timeout)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(QDir(QStringLiteral(PROGRAM_DIR)).filePath(QString::fromLatin1(program)), arguments);
    return toTheEnd(process, timeout);
}

ProgramRun ProgramRun::toTheEnd(QProcess& process, int timeout)
{
    ProgramRun run;
    const bool ended = process.waitForFinished(timeout) && process.exitStatus() == QProcess::NormalExit;
    run.out = QString::fromUtf8(process.readAllStandardOutput()).remove(QLatin1Char('\r'));
    run.err = QString::fromUtf8(process.readAllStandardError()).remove(QLatin1Char('\r'));
    if (ended) {
        run.status = process.exitCode();
    } else {
        run.err += QStringLiteral("\ndid not end by itself: ") + process.errorString();
        process.kill();
        process.waitForFinished();
    }
    return run;
}

QString ProgramRun::line(const char* name) const
{
    const QRegularExpression pattern(QStringLiteral("^%1\\s+(.*)$").arg(QLatin1String(name)),
                                     QRegularExpression::MultilineOption);
    return pattern.match(out).captured(1);
}

double ProgramRun::value(const char* name, int place) const
{
    static const QRegularExpression number(QStringLiteral("-?\\d+(\\.\\d+)?"));
    auto numbers = number.globalMatch(line(name));
    for (int i = 0; i < place && numbers.hasNext(); ++i) {
        numbers.next();
    }
    return numbers.hasNext() ? numbers.next().captured().toDouble() : std::nan("");
}

QJsonArray ProgramRun::json() const
{
    return QJsonDocument::fromJson(out.toUtf8()).array();
}
