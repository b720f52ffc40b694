#pragma once

#include <QLockFile>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/**
 * The folder of a server's records. The process that has it open keeps every other one out by a lock file in
 * it, which is taken before anything else in the folder is made or changed, and which outlives a process that
 * was killed without keeping the next one out.
 *
 * Servers of one process share the lock: a program may make its next server before the one before is deleted.
 */
class DataFolder
{
public:
    /** @param path made when missing; empty for a folder that ends with the object */
    explicit DataFolder(const QString& path);

    /** Whether this process may use the folder; errorString says why not, and who has it. */
    bool isHeld() const { return m_error.isEmpty(); }
    QString errorString() const { return m_error; }

    /** Whether what is written here is there at the next start. */
    bool isLasting() const { return m_lock != nullptr; }

    /** Path of an entry. Of a folder that another process holds: an entry of a temporary one in its place. */
    QString path(const char* name) const;

private:
    std::shared_ptr<QLockFile> lockOf(const QString& path);

    QString m_path;
    QString m_error;
    std::unique_ptr<QTemporaryDir> m_temporary; ///< In the place of a lasting folder.
    std::shared_ptr<QLockFile> m_lock;
};
