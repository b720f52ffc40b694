#pragma once

#include "protocol/ServerReply.h"
#include "server/records/RecordDatabase.h"

#include <optional>

/** What the stores of records share. Used on the database's thread. */
class RecordStore
{
protected:
    /** @param database outlives the store */
    explicit RecordStore(RecordDatabase& database) : m_database(database) {}

    /** Returns storageFailed with the last error of the database. */
    ServerReply failed() const;

    /** Names of records, of which a store may have each once. */
    struct Names
    {
        QString table; ///< Of the records; its columns "id" and "name" are read.
        QString kind;  ///< What a record is called, for people.
    };

    /**
     * Checks that no other record has a name.
     *
     * @param id the record that may have it; one that no record has for a new record
     * @return empty, nameTaken or storageFailed
     */
    std::optional<ServerReply> checkFree(const Names& names, const QString& name, int id);

    /**
     * Returns a record after a change: what the change does not name, or names without a value, stays.
     */
    static QVariantMap changed(const QVariantMap& before, const QVariantMap& change);

    /**
     * Returns whether two addresses, of the forms that RecordChecks takes, are of the same host. A password
     * is for the host that it was given for: when the address of a record changes to another one, its
     * password goes, unless a new one comes with the address. Otherwise whoever may change records could have
     * it sent to a machine of his own.
     */
    static bool sameHost(const QString& one, const QString& other);

    /** Returns a field of a record as text; empty for one that is missing. */
    static QString textOf(const QVariantMap& record, const QString& key)
    {
        return record.value(key).toString();
    }

    RecordDatabase& m_database; ///< Outlives the store.
};
