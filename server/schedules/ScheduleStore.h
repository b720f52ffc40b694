#pragma once

#include "protocol/ScheduleRule.h"
#include "server/records/DeviceStore.h"
#include "server/records/FileStore.h"
#include "server/records/GroupStore.h"
#include "server/records/LinkTable.h"

#include <vector>

/** The schedules of the database, in the shape of the protocol. */
class ScheduleStore
{
public:
    ScheduleStore(RecordDatabase& database, DeviceStore& devices, GroupStore& groups, FileStore& files)
        : m_database(database), m_devices(devices), m_groups(groups), m_files(files),
          m_scheduleGroups(database, "schedule_groups"), m_scheduleDevices(database, "schedule_devices")
    {
    }

    ServerReply add(const QVariant& payload);
    ServerReply update(const QVariant& payload);
    ServerReply remove(const QVariant& payload);
    ServerReply list();

    /** A schedule that is switched on. */
    struct Entry
    {
        int id;
        QString name;
        ScheduleRule rule;
        int file;           ///< 0 when it was deleted.
        QList<int> devices; ///< The members of its groups included, each once.
    };
    std::vector<Entry> enabled();

private:
    struct Checked
    {
        ScheduleRule rule;
        QList<int> groups;
        QList<int> devices;
    };
    std::optional<ServerReply> check(const QVariantMap& record, Checked* checked);
    ServerReply store(const QVariantMap& record, const Checked& checked, int id);
    ServerReply failed() const;
    QVariantList records();

    RecordDatabase& m_database;
    DeviceStore& m_devices;
    GroupStore& m_groups;
    FileStore& m_files;
    LinkTable m_scheduleGroups;
    LinkTable m_scheduleDevices;
};
