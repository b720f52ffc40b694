#pragma once

#include "server/records/DeviceStore.h"
#include "server/records/FileStore.h"
#include "server/records/GroupStore.h"

#include <QHash>

/**
 * What talks and playbacks need of the records, in memory: none of them waits for the database. It is what
 * the database has stored, or had a moment ago. Used on the server's thread.
 */
class RecordSnapshot
{
public:
    /** Takes a device. @param record as DeviceStore returns it */
    void putDevice(const QVariantMap& record);
    /** Forgets a device, which is then in no group either. */
    void removeDevice(int id) { m_devices.remove(id); }

    /** Takes a group. @param record as GroupStore returns it */
    void putGroup(const QVariantMap& record);
    /** Forgets a group. */
    void removeGroup(int id) { m_groups.remove(id); }

    /** Takes a file. */
    void putFile(const FileStore::File& file) { m_files.insert(file.id, file); }
    /** Forgets a file. */
    void removeFile(int id) { m_files.remove(id); }

    /**
     * Returns a device.
     *
     * @param refusal receives noSuchDevice when the result is empty
     */
    std::optional<Speaker> device(int id, ServerReply* refusal) const;

    /**
     * Returns the device ids of a group, in its order.
     *
     * @param refusal receives noSuchGroup when the result is empty
     */
    std::optional<QList<int>> members(int group, ServerReply* refusal) const;

    /**
     * Returns a file.
     *
     * @param refusal receives noSuchFile when the result is empty
     */
    std::optional<FileStore::File> file(int id, ServerReply* refusal) const;

private:
    QHash<int, Speaker> m_devices;       ///< By id.
    QHash<int, QList<int>> m_groups;     ///< Their members, by id.
    QHash<int, FileStore::File> m_files; ///< By id.
};
