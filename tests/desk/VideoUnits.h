#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

/** Access units of a video of tests/data/h264, which has one slice in each. */
namespace VideoUnits {

inline QList<QByteArray> of(const QString& name)
{
    QFile file(QStringLiteral(TEST_DATA_DIR "/h264/") + name);
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const QByteArray code("\0\0\0\1", 4);
    QList<QByteArray> units;
    QByteArray unit;
    for (int at = 0; at < bytes.size();) {
        const int found = bytes.indexOf(code, at + code.size());
        const int next = found < 0 ? bytes.size() : found;
        unit += bytes.mid(at, next - at);
        const int type = bytes[at + code.size()] & 31;
        if (type == 1 || type == 5) {
            units.append(unit);
            unit.clear();
        }
        at = next;
    }
    return units;
}

} // namespace VideoUnits
