#pragma once

#include "server/records/DeviceStore.h"
#include "server/records/IdListTable.h"

/**
 * The groups of devices of the database, as records of the protocol: maps of "groupID" (int), "groupName"
 * (QString) and "networkAudioIDList" (QString, device ids joined with ","). Used on the database's thread.
 */
class GroupStore : private RecordStore
{
public:
    /** Both arguments outlive the store. */
    GroupStore(RecordDatabase& database, DeviceStore& devices)
        : RecordStore(database), m_devices(devices), m_members(database, "group_devices")
    {
    }

    /** Returns the refusal of an id that no group has. @param result goes with it */
    static ServerReply noSuchGroup(int id, const QVariant& result = QVariant());

    /**
     * Adds a group.
     *
     * @param payload a record; its "groupID" is not read
     * @return the stored record, or one of badName, nameTaken, badList, tooManyRecords and storageFailed
     */
    ServerReply add(const QVariant& payload);

    /**
     * Changes a group: its name, all its members, or both.
     *
     * @param payload a record; the fields that it lacks stay as they are
     * @return the stored record, noSuchGroup, or an error of add; a refusal has a map of "groupID" with it,
     * but storageFailed once the record was checked
     */
    ServerReply update(const QVariant& payload);

    /**
     * Deletes a group, also from schedules.
     *
     * @param payload the id, an int
     * @return the id, noSuchGroup with the id, or storageFailed
     */
    ServerReply remove(const QVariant& payload);

    /** Returns the list of all records, by id, or storageFailed. */
    ServerReply list();

    /** Checks that all of these groups exist; returns noSuchGroup or storageFailed otherwise. */
    std::optional<ServerReply> checkExist(const QList<int>& ids);

private:
    std::optional<ServerReply> check(const QVariantMap& record, int id);
    ServerReply store(const QVariantMap& record, int id);
    std::optional<QVariantList> recordsOf(std::optional<int> id);

    DeviceStore& m_devices;
    IdListTable m_members;
};
