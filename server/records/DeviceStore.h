#pragma once

#include "protocol/ServerReply.h"
#include "server/devices/SpeakerBackend.h"
#include "server/records/RecordDatabase.h"
#include "server/records/SecretBox.h"

#include <QList>

#include <optional>

/** The IP audio devices of the database, in the shape of the protocol. */
class DeviceStore
{
public:
    DeviceStore(RecordDatabase& database, const SecretBox& secrets) : m_database(database), m_secrets(secrets)
    {
    }

    /** Whether a device has a password, which only the key that sealed it opens; true when that cannot be
     * known. */
    static bool hasPasswords(RecordDatabase& database);

    ServerReply add(const QVariant& payload);
    ServerReply update(const QVariant& payload);
    ServerReply remove(const QVariant& payload);
    ServerReply list();

    /** A device and how it is reached; empty when none has the id. */
    std::optional<Speaker> find(int id);

    /** Whether all of these devices exist. */
    bool exist(const QList<int>& ids);

private:
    std::optional<ServerReply> check(const QVariantMap& record, int id);
    bool storeCameras(int id, const QString& cameras);
    std::optional<QVariantMap> recordOf(int id);
    ServerReply failed() const;

    RecordDatabase& m_database;
    const SecretBox& m_secrets;
};
