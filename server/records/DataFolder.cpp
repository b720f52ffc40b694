#include "server/records/DataFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QSysInfo>

namespace {

const QString lockName = QStringLiteral("server.lock");

/** The locks of this process, by the path of their file. */
struct HeldLocks
{
    QMutex mutex;
    QHash<QString, std::weak_ptr<QLockFile>> byPath;
};

HeldLocks& heldLocks()
{
    static HeldLocks locks;
    return locks;
}

QString holderOf(const QLockFile& lock, const QString& file)
{
    qint64 process = 0;
    QString host;
    QString program;
    if (!lock.getLockInfo(&process, &host, &program)) {
        return QStringLiteral("an unknown program; if none uses it, delete %1").arg(file);
    }
    return QStringLiteral("%1 (process %2 on %3); if that process is gone, delete %4")
        .arg(program)
        .arg(process)
        .arg(host, file);
}

/** Whether a lock that this process does not hold bears its number: one like it was killed, in a container,
 * say, where the first process always has the number 1. */
bool isOfAPredecessor(const QLockFile& lock)
{
    qint64 process = 0;
    QString host;
    return lock.getLockInfo(&process, &host, nullptr) && process == QCoreApplication::applicationPid() &&
           host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0; // RFC 4343; Windows has both
}

} // namespace

DataFolder::DataFolder(const QString& path) : m_path(path)
{
    if (!path.isEmpty()) {
        m_lock = lockOf(path);
    }
    if (!m_lock) {
        m_temporary = std::make_unique<QTemporaryDir>();
        m_path = m_temporary->path();
    }
}

/** Null, and the error set, when the folder cannot be had. */
std::shared_ptr<QLockFile> DataFolder::lockOf(const QString& path)
{
    if (!QDir().mkpath(path)) {
        m_error = QStringLiteral("the data folder %1 cannot be made").arg(path);
        return nullptr;
    }
    const QString file = QDir(QFileInfo(path).canonicalFilePath()).filePath(lockName);
    HeldLocks& held = heldLocks();
    const QMutexLocker locker(&held.mutex);
    if (auto lock = held.byPath.value(file).lock()) {
        return lock;
    }
    auto lock = std::make_shared<QLockFile>(file);
    lock->setStaleLockTime(0); // a server may run for years; only the end of its process ends its lock
    if (lock->tryLock() || (isOfAPredecessor(*lock) && lock->removeStaleLockFile() && lock->tryLock())) {
        held.byPath.insert(file, lock);
        return lock;
    }
    switch (lock->error()) {
    case QLockFile::LockFailedError:
        m_error = QStringLiteral("the data folder %1 is in use by %2").arg(path, holderOf(*lock, file));
        break;
    case QLockFile::PermissionError:
        m_error = QStringLiteral("%1 cannot be made: no permission").arg(file);
        break;
    default:
        m_error = QStringLiteral("%1 cannot be written; is the disk full?").arg(file);
    }
    return nullptr;
}

QString DataFolder::path(const char* name) const
{
    return QDir(m_path).filePath(QLatin1String(name));
}
