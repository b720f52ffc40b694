#pragma once

#include <QLockFile>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/**
 * The folder of a server's records. A process that has it open excludes all others by a lock file, which is
 * locked before anything else in the folder is made or changed. The file that a killed process leaves behind
 * does not exclude the next one.
 *
 * Servers of one process share the lock: a program may make its next server before it deletes the last one.
 */
class DataFolder
{
public:
    /** @param path made when missing; empty for a temporary folder, which is deleted with the object */
    explicit DataFolder(const QString& path);

    /** Returns whether this process may use the folder. */
    bool isHeld() const { return m_error.isEmpty(); }
    /** Returns why the folder is not held, and which process holds it; empty when it is held. */
    QString errorString() const { return m_error; }

    /** Returns whether the files remain after the object is deleted. */
    bool isLasting() const { return m_lock != nullptr; }

    /** Returns the path of an entry. When the folder is not held, the entry is in a temporary folder. */
    QString path(const char* name) const;

private:
    std::shared_ptr<QLockFile> lockOf(const QString& path);

    QString m_path;
    QString m_error;
    std::unique_ptr<QTemporaryDir> m_temporary; ///< Used in place of a lasting folder.
    std::shared_ptr<QLockFile> m_lock;
};
