#include "audio/NumberedFile.h"

#include <QDir>
#include <QFile>

#include <functional>

namespace {

constexpr int maxNumber = 1 << 30;
constexpr int maxAttempts = 1000; // at a number that others take at the same moment

/** A number that is free, but the one before is not, or is 0. */
int freeNumber(const std::function<bool(int)>& taken)
{
    int free = 1;
    while (free < maxNumber && taken(free)) {
        free *= 2;
    }
    int last = free / 2; // 0, or taken
    while (free - last > 1) {
        const int middle = last + (free - last) / 2;
        (taken(middle) ? last : free) = middle;
    }
    return free;
}

} // namespace

QString NumberedFile::create(const QString& folder, const QString& stem, const QString& suffix)
{
    if (!QDir().mkpath(folder)) {
        return QString();
    }
    const auto pathOf = [&](int number) {
        return QDir(folder).filePath(QStringLiteral("%1-%2.%3").arg(stem, QString::number(number), suffix));
    };
    int number = freeNumber([&](int candidate) { return QFile::exists(pathOf(candidate)); });
    for (int attempt = 0; attempt < maxAttempts; ++attempt, ++number) {
        QFile file(pathOf(number));
        if (file.open(QIODevice::NewOnly)) {
            return file.fileName();
        }
        if (!file.exists()) {
            return QString(); // not because another one has it
        }
    }
    return QString();
}
