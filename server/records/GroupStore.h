#pragma once

#include "server/records/DeviceStore.h"
#include "server/records/LinkTable.h"

/** The groups of devices of the database, in the shape of the protocol. */
class GroupStore
{
public:
    GroupStore(RecordDatabase& database, DeviceStore& devices)
        : m_database(database), m_devices(devices), m_members(database, "group_devices")
    {
    }

    ServerReply add(const QVariant& payload);
    ServerReply update(const QVariant& payload);
    ServerReply remove(const QVariant& payload);
    ServerReply list();

    bool exists(int id);
    bool exist(const QList<int>& ids);
    QList<int> members(int id) { return m_members.members(id); }

private:
    std::optional<ServerReply> check(const QVariantMap& record, int id);
    ServerReply store(const QVariantMap& record, int id);
    ServerReply failed() const;

    RecordDatabase& m_database;
    DeviceStore& m_devices;
    LinkTable m_members;
};
