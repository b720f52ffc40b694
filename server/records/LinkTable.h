#pragma once

#include "server/records/RecordDatabase.h"

#include <QList>

/** A list of ids that belongs to a record, in its order: the members of a group, the targets of a schedule.
 */
class LinkTable
{
public:
    LinkTable(RecordDatabase& database, const char* table)
        : m_database(database), m_table(QLatin1String(table))
    {
    }

    /** Replaces the owner's list; part of a transaction of the caller's. */
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

    QList<int> members(int owner)
    {
        QList<int> found;
        QSqlQuery rows = m_database.query();
        if (m_database.run(
                rows, QStringLiteral("SELECT member FROM %1 WHERE owner = ? ORDER BY position").arg(m_table),
                {owner})) {
            while (rows.next()) {
                found.append(rows.value(0).toInt());
            }
        }
        return found;
    }

    /** A piece of SQL: the list of the row of @p ownerTable as text, joined with commas. */
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
