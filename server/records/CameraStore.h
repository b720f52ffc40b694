#pragma once

#include "protocol/ServerReply.h"
#include "server/devices/CameraBackend.h"
#include "server/records/RecordDatabase.h"

#include <QStringList>

#include <optional>

/**
 * The cameras of the database, as records of the protocol: maps of "camId", "camName", "camKind" and
 * "camAddress", all QString. A camera's id is its number as text. A record whose kind the server does not
 * know is kept, and may be changed as long as its kind stays. Used on the database's thread.
 */
class CameraStore
{
public:
    /**
     * Reads all records.
     *
     * @param database outlives the store
     * @param kinds    of cameras that the server knows
     */
    CameraStore(RecordDatabase& database, QStringList kinds);

    /** Returns why the records could not be read when the store was made; empty when they were. */
    QString errorString() const { return m_error; }

    /**
     * Adds a camera.
     *
     * @param payload a record; its "camId" is not read
     * @return the stored record, or one of badName, nameTaken, badAddress, badCameraKind, tooManyRecords and
     * storageFailed
     */
    ServerReply add(const QVariant& payload);

    /**
     * Replaces all fields of a camera.
     *
     * @param payload a record
     * @return the stored record, noSuchCamera, or an error of add; a refusal has a map of "camId" with it,
     * but storageFailed once the record was checked
     */
    ServerReply update(const QVariant& payload);

    /**
     * Deletes a camera.
     *
     * @param payload the id, a QString
     * @return the id, noSuchCamera with the id, or storageFailed
     */
    ServerReply remove(const QVariant& payload);

    /** Returns all records, by id, as they were after the last change that succeeded. */
    const QList<CameraRecord>& records() const { return m_records; }

private:
    std::optional<ServerReply> check(const QVariantMap& record, int id);
    ServerReply failed() const;
    ServerReply commit(RecordDatabase::Transaction& transaction, const ServerReply& reply);
    std::optional<QList<CameraRecord>> readAll();

    RecordDatabase& m_database;
    QStringList m_kinds;
    QString m_error;
    QList<CameraRecord> m_records;
};
