#pragma once

#include "protocol/ScheduleRule.h"
#include "server/records/DeviceStore.h"
#include "server/records/FileStore.h"
#include "server/records/GroupStore.h"
#include "server/records/IdListTable.h"

#include <vector>

/**
 * The schedules of the database, as records of the protocol (docs/PROTOCOL.md has the fields). Used on the
 * database's thread.
 */
class ScheduleStore : private RecordStore
{
public:
    /** All arguments outlive the store. */
    ScheduleStore(RecordDatabase& database, DeviceStore& devices, GroupStore& groups, FileStore& files)
        : RecordStore(database), m_devices(devices), m_groups(groups), m_files(files),
          m_scheduleGroups(database, "schedule_groups"), m_scheduleDevices(database, "schedule_devices")
    {
    }

    /**
     * Adds a schedule.
     *
     * @param payload a record; its "scheduleID" is not read
     * @return the stored record, or one of badName, badSchedule, noSuchFile, badList, nothingToPlayOn,
     * tooManyRecords and storageFailed
     */
    ServerReply add(const QVariant& payload);

    /**
     * Changes a schedule. One that is switched off may be without a file ("audioID" 0) and without groups
     * and devices.
     *
     * @param payload a record; the fields that it lacks stay as they are
     * @return the stored record, noSuchSchedule, or an error of add; a refusal has a map of "scheduleID" with
     * it, but storageFailed once the record was checked
     */
    ServerReply update(const QVariant& payload);

    /**
     * Deletes a schedule.
     *
     * @param payload the id, an int
     * @return the id, noSuchSchedule with the id, or storageFailed
     */
    ServerReply remove(const QVariant& payload);

    /** Returns the list of all records, by id, or storageFailed. */
    ServerReply list();

private:
    struct Checked
    {
        ScheduleRule rule;
        QList<int> groups;
        QList<int> devices;
    };
    std::optional<ServerReply> check(const QVariantMap& record, bool mayLackTargets, Checked* checked);
    ServerReply store(const Checked& checked, int id);
    std::optional<QVariantList> recordsOf(std::optional<int> id);

    DeviceStore& m_devices;
    GroupStore& m_groups;
    FileStore& m_files;
    IdListTable m_scheduleGroups;
    IdListTable m_scheduleDevices;
};
