#pragma once

#include "protocol/ServerReply.h"
#include "server/devices/DeviceKinds.h"
#include "server/records/RecordDatabase.h"

#include <optional>

/** The cameras of the database, in the shape of the protocol. A camera's id is its number as text. */
class CameraStore
{
public:
    /** @param kinds of devices that the server knows */
    CameraStore(RecordDatabase& database, DeviceKinds kinds) : m_database(database), m_kinds(std::move(kinds))
    {
    }

    /** @param payload a map: camName, camKind, camAddress. @return the record with its camId */
    ServerReply add(const QVariant& payload);

    /** @param payload the same and camId. @return the record; refused: a map with camId */
    ServerReply update(const QVariant& payload);

    /** @param payload a camId. @return the same */
    ServerReply remove(const QVariant& payload);

    /** All cameras, by kind; empty when they cannot be read. */
    std::optional<QList<CameraRecord>> records();

private:
    std::optional<ServerReply> check(const QVariantMap& record, int id);
    std::optional<ServerReply> checkKind(const QString& kind) const;
    ServerReply failed() const;

    RecordDatabase& m_database;
    DeviceKinds m_kinds;
};
