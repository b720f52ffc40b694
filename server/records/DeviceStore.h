#pragma once

#include "protocol/ServerReply.h"
#include "server/devices/SpeakerBackend.h"
#include "server/records/PasswordCipher.h"
#include "server/records/RecordStore.h"

#include <QList>

#include <optional>

/**
 * The IP audio devices of the database, as records of the protocol: maps of "deviceID" and "port" (int),
 * "deviceName", "ip", "username", "password" (QString) and "bindingCameraList" (QString, camera ids joined
 * with
 * "|"). Passwords are encrypted in the database and in clear text in records. Used on the database's thread.
 */
class DeviceStore : private RecordStore
{
public:
    /** Both arguments outlive the store. */
    DeviceStore(RecordDatabase& database, const PasswordCipher& secrets)
        : RecordStore(database), m_secrets(secrets)
    {
    }

    /** Returns the refusal of an id that no device has. @param result goes with it */
    static ServerReply noSuchDevice(int id, const QVariant& result = QVariant());

    /**
     * Returns whether a device has a password, which needs the key that encrypted it; true also when the
     * database cannot be read.
     */
    static bool hasPasswords(RecordDatabase& database);

    /**
     * Adds a device.
     *
     * @param payload a record; its "deviceID" is not read
     * @return the stored record, or one of badName, nameTaken, badAddress, badPort, badCredentials, badList,
     * tooManyRecords and storageFailed
     */
    ServerReply add(const QVariant& payload);

    /**
     * Changes a device.
     *
     * @param payload a record; the fields that it lacks stay as they are, but for the password when the
     * address changes to another host
     * @return the stored record, noSuchDevice, or an error of add; a refusal has a map of "deviceID" with it,
     *         but storageFailed once the record was checked
     */
    ServerReply update(const QVariant& payload);

    /**
     * Deletes a device, also from groups and schedules.
     *
     * @param payload the id, an int
     * @return the id, noSuchDevice with the id, or storageFailed
     */
    ServerReply remove(const QVariant& payload);

    /** Returns the list of all records, by id, or storageFailed. */
    ServerReply list();

    /** Checks that all of these devices exist; returns noSuchDevice or storageFailed otherwise. */
    std::optional<ServerReply> checkExist(const QList<int>& ids);

private:
    std::optional<ServerReply> check(const QVariantMap& record, int id);
    bool storeCameras(int id, const QString& cameras);
    std::optional<QVariantList> recordsOf(int id);
    ServerReply stored(int id);

    const PasswordCipher& m_secrets;
};
