#include "server/records/DeviceStore.h"

#include "protocol/Limits.h"
#include "protocol/RecordChecks.h"
#include "protocol/Words.h"
#include "server/records/ListLimit.h"

namespace {

QStringList camerasOf(const QVariantMap& record)
{
    const QString text = record.value(Vocabulary::bindingCameraList).toString();
    return text.isEmpty() ? QStringList() : text.split(QLatin1Char('|'));
}

const QString selectDevices = QStringLiteral(
    "SELECT id, name, ip, port, username, password, (SELECT group_concat(camera, '|') FROM "
    "(SELECT camera FROM device_cameras WHERE device = devices.id ORDER BY position)) FROM devices");

const ListLimit::Kind deviceList{
    QStringLiteral("maxDevices"), Limits::maxDevices,
    QStringLiteral("SELECT count(*), coalesce(sum(length(CAST(name AS BLOB)) + length(ip) + "
                   "length(CAST(username AS BLOB)) + length(password)), 0) + "
                   "(SELECT coalesce(sum(length(CAST(camera AS BLOB)) + 1), 0) FROM device_cameras) "
                   "FROM devices")};

QVariantMap readRecord(const QSqlQuery& row, const PasswordCipher& secrets)
{
    return {
        {Vocabulary::deviceID, row.value(0).toInt()},
        {Vocabulary::deviceName, row.value(1).toString()},
        {Vocabulary::ip, row.value(2).toString()},
        {Vocabulary::port, row.value(3).toInt()},
        {Vocabulary::username, row.value(4).toString()},
        {Vocabulary::password, secrets.unseal(row.value(5).toByteArray())},
        {Vocabulary::bindingCameraList, row.value(6).toString()},
    };
}

} // namespace

ServerReply DeviceStore::noSuchDevice(int id, const QVariant& result)
{
    return refusal(ReturnCode::noSuchDevice, QStringLiteral("no device has the id %1").arg(id), result);
}

bool DeviceStore::hasPasswords(RecordDatabase& database)
{
    bool found = true; // also when it cannot be read
    database.read(QStringLiteral("SELECT EXISTS (SELECT 1 FROM devices WHERE length(password) > ?)"),
                  {PasswordCipher::overhead()}, [&](const QSqlQuery& row) { found = row.value(0).toBool(); });
    return found;
}

std::optional<ServerReply> DeviceStore::check(const QVariantMap& record, int id)
{
    using namespace RecordChecks;
    const QString deviceName = textOf(record, Vocabulary::deviceName);
    for (const Refusal& bad :
         {name(deviceName), address(textOf(record, Vocabulary::ip)),
          port(record.value(Vocabulary::port).toInt()),
          credentials(textOf(record, Vocabulary::username), textOf(record, Vocabulary::password)),
          cameras(camerasOf(record))}) {
        if (bad) {
            return bad;
        }
    }
    return checkFree({QStringLiteral("devices"), QStringLiteral("device")}, deviceName, id);
}

bool DeviceStore::storeCameras(int id, const QString& cameras)
{
    if (!m_database.run(QStringLiteral("DELETE FROM device_cameras WHERE device = ?"), {id})) {
        return false;
    }
    int position = 0;
    for (const QString& camera : cameras.split(QLatin1Char('|'), Qt::SkipEmptyParts)) {
        if (!m_database.run(QStringLiteral("INSERT INTO device_cameras VALUES (?, ?, ?)"),
                            {id, position++, camera})) {
            return false;
        }
    }
    return true;
}

ServerReply DeviceStore::add(const QVariant& payload)
{
    const QVariantMap record = payload.toMap();
    if (const auto bad = check(record, -1)) {
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    ListLimit limit(m_database, deviceList);
    QSqlQuery insert = m_database.query();
    if (!m_database.run(
            insert,
            QStringLiteral("INSERT INTO devices (name, ip, port, username, password) VALUES (?, ?, ?, ?, ?)"),
            {textOf(record, Vocabulary::deviceName), textOf(record, Vocabulary::ip),
             record.value(Vocabulary::port).toInt(), textOf(record, Vocabulary::username),
             m_secrets.seal(textOf(record, Vocabulary::password))})) {
        return failed();
    }
    const int id = insert.lastInsertId().toInt();
    if (!storeCameras(id, textOf(record, Vocabulary::bindingCameraList))) {
        return failed();
    }
    if (const auto bad = limit.check()) {
        return *bad;
    }
    if (!transaction.commit()) {
        return failed();
    }
    return stored(id);
}

ServerReply DeviceStore::update(const QVariant& payload)
{
    const QVariantMap change = payload.toMap();
    const int id = change.value(Vocabulary::deviceID).toInt();
    // The refusal carries the id, so that the client can tell which request it was.
    const QVariantMap onlyId{{Vocabulary::deviceID, id}};
    const auto before = recordsOf(id);
    if (!before) {
        return failed();
    }
    if (before->isEmpty()) {
        return noSuchDevice(id, onlyId);
    }
    QVariantMap record = changed(before->first().toMap(), change);
    if (!change.value(Vocabulary::password).isValid() &&
        !sameHost(textOf(before->first().toMap(), Vocabulary::ip), textOf(record, Vocabulary::ip))) {
        record[Vocabulary::password] = QString();
    }
    if (auto bad = check(record, id)) {
        bad->result = onlyId;
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    ListLimit limit(m_database, deviceList);
    if (!m_database.run(
            QStringLiteral(
                "UPDATE devices SET name = ?, ip = ?, port = ?, username = ?, password = ? WHERE id = ?"),
            {textOf(record, Vocabulary::deviceName), textOf(record, Vocabulary::ip),
             record.value(Vocabulary::port).toInt(), textOf(record, Vocabulary::username),
             m_secrets.seal(textOf(record, Vocabulary::password)), id})) {
        return failed();
    }
    if (!storeCameras(id, textOf(record, Vocabulary::bindingCameraList))) {
        return failed();
    }
    if (auto bad = limit.check()) {
        bad->result = onlyId;
        return *bad;
    }
    if (!transaction.commit()) {
        return failed();
    }
    return stored(id);
}

ServerReply DeviceStore::remove(const QVariant& payload)
{
    const int id = payload.toInt();
    QSqlQuery erase = m_database.query();
    if (!m_database.run(erase, QStringLiteral("DELETE FROM devices WHERE id = ?"), {id})) {
        return failed();
    }
    if (erase.numRowsAffected() == 0) {
        return noSuchDevice(id, id);
    }
    return done(id);
}

ServerReply DeviceStore::list()
{
    QVariantList records;
    if (!m_database.read(selectDevices + QStringLiteral(" ORDER BY id"), {},
                         [&](const QSqlQuery& row) { records.append(readRecord(row, m_secrets)); })) {
        return failed();
    }
    return done(records);
}

/** The record, or none, in a list; empty when the database cannot be read. */
std::optional<QVariantList> DeviceStore::recordsOf(int id)
{
    QVariantList found;
    const bool read =
        m_database.read(selectDevices + QStringLiteral(" WHERE id = ?"), {id},
                        [&](const QSqlQuery& row) { found.append(readRecord(row, m_secrets)); });
    return read ? std::optional(found) : std::nullopt;
}

ServerReply DeviceStore::stored(int id)
{
    const auto found = recordsOf(id);
    return found && !found->isEmpty() ? done(found->first()) : failed();
}

std::optional<ServerReply> DeviceStore::checkExist(const QList<int>& ids)
{
    for (const int id : ids) {
        bool found = false;
        if (!m_database.read(QStringLiteral("SELECT 1 FROM devices WHERE id = ?"), {id},
                             [&](const QSqlQuery&) { found = true; })) {
            return failed();
        }
        if (!found) {
            return noSuchDevice(id);
        }
    }
    return std::nullopt;
}
