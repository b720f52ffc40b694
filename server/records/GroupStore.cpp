#include "server/records/GroupStore.h"

#include "protocol/Limits.h"
#include "protocol/RecordChecks.h"
#include "protocol/Words.h"
#include "server/records/ListLimit.h"

namespace {

const ListLimit::Kind groupList{
    QStringLiteral("maxGroups"), Limits::maxGroups,
    QStringLiteral("SELECT count(*), coalesce(sum(length(CAST(name AS BLOB))), 0) + "
                   "(SELECT coalesce(sum(length(member) + 1), 0) FROM group_devices) FROM groups")};

} // namespace

ServerReply GroupStore::noSuchGroup(int id, const QVariant& result)
{
    return refusal(ReturnCode::noSuchGroup, QStringLiteral("no group has the id %1").arg(id), result);
}

std::optional<ServerReply> GroupStore::check(const QVariantMap& record, int id)
{
    const QString name = textOf(record, Vocabulary::groupName);
    if (const auto bad = RecordChecks::name(name)) {
        return bad;
    }
    const auto members = RecordChecks::ids(textOf(record, Vocabulary::networkAudioIDList));
    const auto unknown = members ? m_devices.checkExist(*members) : std::nullopt;
    if (unknown && unknown->returnCode == ReturnCode::storageFailed) {
        return unknown;
    }
    if (!members || unknown) {
        return refusal(ReturnCode::badList,
                       QStringLiteral("the list of devices names one twice, or one that is unknown"));
    }
    return checkFree({QStringLiteral("groups"), QStringLiteral("group")}, name, id);
}

ServerReply GroupStore::store(const QVariantMap& record, int id)
{
    const auto members = RecordChecks::ids(textOf(record, Vocabulary::networkAudioIDList));
    if (!members || !m_members.store(id, *members)) {
        return failed();
    }
    return done(QVariantMap{
        {Vocabulary::groupID, id},
        {Vocabulary::groupName, textOf(record, Vocabulary::groupName)},
        {Vocabulary::networkAudioIDList, RecordChecks::joined(*members)},
    });
}

ServerReply GroupStore::add(const QVariant& payload)
{
    const QVariantMap record = payload.toMap();
    if (const auto bad = check(record, -1)) {
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    ListLimit limit(m_database, groupList);
    QSqlQuery insert = m_database.query();
    if (!m_database.run(insert, QStringLiteral("INSERT INTO groups (name) VALUES (?)"),
                        {textOf(record, Vocabulary::groupName)})) {
        return failed();
    }
    ServerReply reply = store(record, insert.lastInsertId().toInt());
    if (const auto bad = limit.check(); bad && reply.returnCode == ReturnCode::success) {
        return *bad;
    }
    return reply.returnCode == ReturnCode::success && !transaction.commit() ? failed() : reply;
}

ServerReply GroupStore::update(const QVariant& payload)
{
    const QVariantMap change = payload.toMap();
    const int id = change.value(Vocabulary::groupID).toInt();
    const QVariantMap onlyId{{Vocabulary::groupID, id}};
    const auto before = recordsOf(id);
    if (!before) {
        return failed();
    }
    if (before->isEmpty()) {
        return noSuchGroup(id, onlyId);
    }
    const QVariantMap record = changed(before->first().toMap(), change);
    if (auto bad = check(record, id)) {
        bad->result = onlyId;
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    ListLimit limit(m_database, groupList);
    if (!m_database.run(QStringLiteral("UPDATE groups SET name = ? WHERE id = ?"),
                        {textOf(record, Vocabulary::groupName), id})) {
        return failed();
    }
    ServerReply reply = store(record, id);
    if (auto bad = limit.check(); bad && reply.returnCode == ReturnCode::success) {
        bad->result = onlyId;
        return *bad;
    }
    return reply.returnCode == ReturnCode::success && !transaction.commit() ? failed() : reply;
}

ServerReply GroupStore::remove(const QVariant& payload)
{
    const int id = payload.toInt();
    QSqlQuery erase = m_database.query();
    if (!m_database.run(erase, QStringLiteral("DELETE FROM groups WHERE id = ?"), {id})) {
        return failed();
    }
    if (erase.numRowsAffected() == 0) {
        return noSuchGroup(id, id);
    }
    return done(id);
}

std::optional<QVariantList> GroupStore::recordsOf(std::optional<int> id)
{
    QVariantList records;
    const auto append = [&](const QSqlQuery& row) {
        records.append(QVariantMap{
            {Vocabulary::groupID, row.value(0).toInt()},
            {Vocabulary::groupName, row.value(1).toString()},
            {Vocabulary::networkAudioIDList, row.value(2).toString()},
        });
    };
    const bool read = m_database.read(
        QStringLiteral("SELECT id, name, %1 FROM groups %2 ORDER BY id")
            .arg(m_members.joinedColumn("groups"), id ? QStringLiteral("WHERE id = ?") : QString()),
        id ? QVariantList{*id} : QVariantList(), append);
    return read ? std::optional(records) : std::nullopt;
}

ServerReply GroupStore::list()
{
    const auto all = recordsOf(std::nullopt);
    return all ? done(*all) : failed();
}

std::optional<ServerReply> GroupStore::checkExist(const QList<int>& ids)
{
    for (const int id : ids) {
        bool found = false;
        if (!m_database.read(QStringLiteral("SELECT 1 FROM groups WHERE id = ?"), {id},
                             [&](const QSqlQuery&) { found = true; })) {
            return failed();
        }
        if (!found) {
            return noSuchGroup(id);
        }
    }
    return std::nullopt;
}
