#include "system/WholeFile.h"

#include <QSaveFile>

#ifndef _WIN32
#include <cerrno>

#include <unistd.h>
#endif

namespace {

/** Some file systems report here that the disk is full. */
bool sync(QSaveFile& file, QString* reason)
{
#ifdef _WIN32
    Q_UNUSED(file)
    Q_UNUSED(reason)
    return true; // commit does
#else
    if (fsync(file.handle()) == 0) {
        return true;
    }
    *reason = qt_error_string(errno);
    return false;
#endif
}

} // namespace

bool saveWhole(QSaveFile& file, const QByteArray& bytes, QString* error)
{
    // commit does not see that the rest of a buffer could not be written: there must be none.
    Q_ASSERT((file.openMode() & QIODevice::Unbuffered) != 0);
    QString reason;
    const bool saved = file.write(bytes) == bytes.size() && sync(file, &reason) && file.commit();
    if (!saved && error != nullptr) {
        *error = reason.isEmpty() ? file.errorString() : reason;
    }
    return saved;
}

bool writeWholeFile(const QString& path, const QByteArray& bytes, QString* error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        if (error != nullptr) {
            *error = file.errorString();
        }
        return false;
    }
    return saveWhole(file, bytes, error);
}
