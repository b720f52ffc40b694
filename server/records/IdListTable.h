#pragma once

#include "server/records/RecordDatabase.h"

#include <QList>

/**
 * A table of ordered lists of ids, each of which belongs to a record: the members of a group, or the targets
 * of a schedule.
 */
class IdListTable
{
public:
    /**
     * @param database outlives the object
     * @param table    a table with the columns owner, position and member, in this order
     */
    IdListTable(RecordDatabase& database, const char* table)
        : m_database(database), m_table(QLatin1String(table))
    {
    }

    /** Replaces the list of an owner, inside a transaction of the caller. Returns false when that fails. */
    bool store(int owner, const QList<int>& members)
    {
        if (!m_database.run(QStringLiteral("DELETE FROM %1 WHERE owner = ?").arg(m_table), {owner})) {
            return false;
        }
        int position = 0;
        for (const int member : members) {
            if (!m_database.run(QStringLiteral("INSERT INTO %1 VALUES (?, ?, ?)").arg(m_table),
                                {owner, position++, member})) {
                return false;
            }
        }
        return true;
    }

    /** Returns an SQL expression: the list of the row of @p ownerTable as text, joined with commas. */
    QString joinedColumn(const char* ownerTable) const
    {
        return QStringLiteral(
                   "(SELECT group_concat(member, ',') FROM (SELECT member FROM %1 WHERE owner = %2.id "
                   "ORDER BY position))")
            .arg(m_table, QLatin1String(ownerTable));
    }

private:
    RecordDatabase& m_database;
    QString m_table;
};
