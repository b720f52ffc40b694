#include "server/records/CameraStore.h"

#include "protocol/Limits.h"
#include "protocol/RecordChecks.h"
#include "protocol/Words.h"
#include "server/records/ListLimit.h"

namespace {

const ListLimit::Kind cameraList{
    QStringLiteral("maxCameras"), Limits::maxCameras,
    QStringLiteral("SELECT count(*), coalesce(sum(length(CAST(name AS BLOB)) + length(CAST(kind AS BLOB)) + "
                   "length(address)), 0) FROM cameras")};

QString textOf(const QVariantMap& record, const QString& key)
{
    return record.value(key).toString();
}

/** The record as it is stored. */
QVariantMap stored(int id, const QVariantMap& record)
{
    return {{Vocabulary::camId, QString::number(id)},
            {Words::camName, textOf(record, Words::camName)},
            {Words::camKind, textOf(record, Words::camKind)},
            {Words::camAddress, textOf(record, Words::camAddress)}};
}

/** The id of a camera of the records, in the one form that they have; empty for anything else. */
std::optional<int> idOf(const QString& text)
{
    const int id = text.toInt();
    return QString::number(id) == text ? std::optional<int>(id) : std::nullopt;
}

ServerReply unknown(const QVariant& id, const QVariant& result)
{
    return refusal(ReturnCode::noSuchCamera,
                   QStringLiteral("no camera of the records has the id \"%1\"").arg(id.toString()), result);
}

} // namespace

CameraStore::CameraStore(RecordDatabase& database, QStringList kinds)
    : m_database(database), m_kinds(std::move(kinds))
{
    if (const auto records = readAll()) {
        m_records = *records;
    } else {
        m_error = m_database.errorString();
    }
}

ServerReply CameraStore::failed() const
{
    return refusal(ReturnCode::storageFailed, m_database.errorString());
}

/** Commits a change when the records can be read with it. */
ServerReply CameraStore::commit(RecordDatabase::Transaction& transaction, const ServerReply& reply)
{
    const auto after = readAll();
    if (!after || !transaction.commit()) {
        return failed();
    }
    m_records = *after;
    return reply;
}

std::optional<ServerReply> CameraStore::check(const QVariantMap& record, int id)
{
    for (const RecordChecks::Refusal& bad : {RecordChecks::name(textOf(record, Words::camName)),
                                             RecordChecks::address(textOf(record, Words::camAddress))}) {
        if (bad) {
            return bad;
        }
    }
    const QString kind = textOf(record, Words::camKind);
    const bool keepsItsKind = std::any_of(m_records.begin(), m_records.end(), [&](const CameraRecord& each) {
        return each.id == QString::number(id) && each.kind == kind;
    });
    if (!keepsItsKind && !m_kinds.contains(kind)) {
        return refusal(ReturnCode::badCameraKind,
                       QStringLiteral("this server has no cameras of the kind \"%1\"").arg(kind));
    }
    QSqlQuery same = m_database.query();
    if (!m_database.run(same, QStringLiteral("SELECT 1 FROM cameras WHERE name = ? AND id <> ?"),
                        {textOf(record, Words::camName), id})) {
        return failed();
    }
    if (same.next()) {
        return refusal(
            ReturnCode::nameTaken,
            QStringLiteral("there is a camera named \"%1\" already").arg(textOf(record, Words::camName)));
    }
    return std::nullopt;
}

ServerReply CameraStore::add(const QVariant& payload)
{
    const QVariantMap record = payload.toMap();
    if (const auto bad = check(record, -1)) {
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    ListLimit limit(m_database, cameraList);
    QSqlQuery insert = m_database.query();
    if (!m_database.run(insert, QStringLiteral("INSERT INTO cameras (name, kind, address) VALUES (?, ?, ?)"),
                        {textOf(record, Words::camName), textOf(record, Words::camKind),
                         textOf(record, Words::camAddress)})) {
        return failed();
    }
    if (const auto bad = limit.check()) {
        return *bad;
    }
    return commit(transaction, done(stored(insert.lastInsertId().toInt(), record)));
}

ServerReply CameraStore::update(const QVariant& payload)
{
    const QVariantMap record = payload.toMap();
    const int id = idOf(textOf(record, Vocabulary::camId)).value_or(-1);
    const QVariantMap onlyId{{Vocabulary::camId, textOf(record, Vocabulary::camId)}};
    if (auto bad = check(record, id)) {
        bad->result = onlyId;
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    ListLimit limit(m_database, cameraList);
    QSqlQuery change = m_database.query();
    if (!m_database.run(change,
                        QStringLiteral("UPDATE cameras SET name = ?, kind = ?, address = ? WHERE id = ?"),
                        {textOf(record, Words::camName), textOf(record, Words::camKind),
                         textOf(record, Words::camAddress), id})) {
        return failed();
    }
    if (change.numRowsAffected() == 0) {
        return unknown(textOf(record, Vocabulary::camId), onlyId);
    }
    if (auto bad = limit.check()) {
        bad->result = onlyId;
        return *bad;
    }
    return commit(transaction, done(stored(id, record)));
}

ServerReply CameraStore::remove(const QVariant& payload)
{
    RecordDatabase::Transaction transaction(m_database);
    QSqlQuery erase = m_database.query();
    if (!m_database.run(erase, QStringLiteral("DELETE FROM cameras WHERE id = ?"),
                        {idOf(payload.toString()).value_or(-1)})) {
        return failed();
    }
    return erase.numRowsAffected() == 0 ? unknown(payload, payload.toString())
                                        : commit(transaction, done(payload.toString()));
}

std::optional<QList<CameraRecord>> CameraStore::readAll()
{
    QList<CameraRecord> records;
    const bool read =
        m_database.read(QStringLiteral("SELECT id, name, kind, address FROM cameras ORDER BY id"), {},
                        [&](const QSqlQuery& row) {
                            records.append({QString::number(row.value(0).toInt()), row.value(1).toString(),
                                            row.value(2).toString(), row.value(3).toString()});
                        });
    return read ? std::optional(records) : std::nullopt;
}
