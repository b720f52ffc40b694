#pragma once

#include "protocol/ServerReply.h"
#include "server/devices/DeviceKinds.h"
#include "server/records/PasswordCipher.h"
#include "server/records/RecordStore.h"

#include <optional>

/**
 * The cameras of the database, as records of the protocol: maps of "camId", "camName", "camKind",
 * "camAddress", "username" and "password", all QString, and "camSettings", a map as of CameraSettingsRecord.
 * A camera's id is its number as text. Passwords are sealed in the database, and no answer has one. A record
 * whose kind the server does not know is kept, and may be changed as long as its kind stays. Used on the
 * database's thread.
 */
class CameraStore : private RecordStore
{
public:
    /**
     * Reads all records.
     *
     * @param database outlives the store
     * @param secrets  seals the passwords, outlives the store
     * @param kinds    of devices that the server knows
     */
    CameraStore(RecordDatabase& database, const PasswordCipher& secrets, DeviceKinds kinds);

    /** Returns whether a database has passwords of cameras, or may have some. */
    static bool hasPasswords(RecordDatabase& database);

    /** Returns why the records could not be read when the store was made; empty when they were. */
    QString errorString() const { return m_error; }

    /**
     * Adds a camera.
     *
     * @param payload a record; its "camId" is not read, login and settings may be missing
     * @return the stored record, or one of badName, nameTaken, badAddress, badCredentials, badCameraKind,
     * badCameraSettings, tooManyRecords and storageFailed
     */
    ServerReply add(const QVariant& payload);

    /**
     * Changes a camera.
     *
     * @param payload a record; the fields and settings that it lacks stay as they are, but for the password
     * when the address changes to another host, or names another user
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

    /**
     * Returns the camera that a client wants to be asked: one of the records, where the payload has a
     * "camId", with the kind, address, login and settings that the payload has in place of the record's. The
     * record's password, and without another its user name, are kept for its own kind and address alone.
     *
     * @param payload a record without a name
     * @param bad     receives noSuchCamera, or an error of add
     */
    std::optional<CameraRecord> cameraToAsk(const QVariantMap& payload, ServerReply* bad) const;

    /** Returns all records, by id, as they were after the last change that succeeded. */
    const QList<CameraRecord>& records() const { return m_records; }

private:
    const CameraRecord* find(const QString& id) const;
    std::optional<ServerReply> checkKind(const QString& kind, const QString& id) const;
    std::optional<ServerReply> complete(const QVariantMap& fields, CameraRecord& record) const;
    std::optional<ServerReply> checkReach(const CameraRecord& record) const;
    std::optional<ServerReply> check(const CameraRecord& record);
    ServerReply commit(RecordDatabase::Transaction& transaction, const ServerReply& reply);
    std::optional<QList<CameraRecord>> readAll();

    const PasswordCipher& m_secrets;
    DeviceKinds m_kinds;
    QString m_error;
    QList<CameraRecord> m_records;
};
