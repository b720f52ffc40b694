#pragma once

#include "protocol/ServerReply.h"
#include "server/devices/DeviceKinds.h"
#include "server/records/PasswordCipher.h"
#include "server/records/RecordDatabase.h"

#include <optional>

/** The cameras of the database, in the shape of the protocol. A camera's id is its number as text. */
class CameraStore
{
public:
    /** @param kinds of devices that the server knows */
    CameraStore(RecordDatabase& database, const PasswordCipher& secrets, DeviceKinds kinds)
        : m_database(database), m_secrets(secrets), m_kinds(std::move(kinds))
    {
    }

    /** Whether a database has passwords of cameras, or may have some. */
    static bool hasPasswords(RecordDatabase& database);

    /**
     * @param payload a map: camName, camKind, camAddress, and perhaps username, password, camSettings.
     * @return the record with its camId, without the password
     */
    ServerReply add(const QVariant& payload);

    /** @param payload the same and camId; what it lacks stays. @return the record; refused: a map with camId
     */
    ServerReply update(const QVariant& payload);

    /** @param payload a camId. @return the same */
    ServerReply remove(const QVariant& payload);

    /** All cameras, by kind; empty when they cannot be read. */
    std::optional<QList<CameraRecord>> records();

private:
    std::optional<ServerReply> check(const CameraRecord& record, int id);
    std::optional<ServerReply> complete(const QVariantMap& fields, CameraRecord& record);
    std::optional<CameraRecord> find(int id);
    std::optional<ServerReply> checkKind(const QString& kind) const;
    ServerReply failed() const;

    RecordDatabase& m_database;
    const PasswordCipher& m_secrets;
    DeviceKinds m_kinds;
};
