#include "server/records/CameraStore.h"

#include "protocol/CameraSettingsRecord.h"
#include "protocol/Limits.h"
#include "protocol/RecordChecks.h"
#include "protocol/Words.h"
#include "server/records/ListLimit.h"

#include <QUrl>

#include <algorithm>

namespace {

// Passwords are never sent, and the settings of a camera take about as much whatever they are.
const ListLimit::Kind cameraList{
    QStringLiteral("maxCameras"), Limits::maxCameras,
    QStringLiteral("SELECT count(*), coalesce(sum(length(CAST(name AS BLOB)) + length(CAST(kind AS BLOB)) + "
                   "length(CAST(address AS BLOB)) + length(CAST(username AS BLOB))), 0) FROM cameras")};

const QString selectCameras =
    QStringLiteral("SELECT id, name, kind, address, username, password, settings FROM cameras");

/** The record as clients get it. */
QVariantMap answerOf(const CameraRecord& record)
{
    return {{Vocabulary::camId, record.id},
            {Words::camName, record.name},
            {Words::camKind, record.kind},
            {Words::camAddress, record.address},
            {Vocabulary::username, record.username},
            {Words::camSettings, CameraSettingsRecord::toMap(record.settings)}};
}

CameraRecord readRecord(const QSqlQuery& row, const PasswordCipher& secrets)
{
    return {QString::number(row.value(0).toInt()),
            row.value(1).toString(),
            row.value(2).toString(),
            row.value(3).toString(),
            row.value(4).toString(),
            secrets.unseal(row.value(5).toByteArray()),
            CameraSettingsRecord::fromText(row.value(6).toString())};
}

/** The values of a statement, in the order of the columns. */
QVariantList valuesOf(const CameraRecord& record, const PasswordCipher& secrets)
{
    return {record.name,
            record.kind,
            record.address,
            record.username,
            secrets.seal(record.password),
            CameraSettingsRecord::toText(record.settings)};
}

/** What an address has before its host. */
struct AddressLogin
{
    QString username;
    std::optional<QString> password; ///< Absent without a colon; RFC 3986, clause 3.2.1.
};

/** Takes the login, if there is one, out of an address, which is shown and logged. */
std::optional<AddressLogin> takeLogin(QString& address)
{
    QUrl url(address, QUrl::StrictMode);
    if (!url.isValid() || url.userInfo().isEmpty()) {
        return std::nullopt;
    }
    AddressLogin login{url.userName(QUrl::FullyDecoded), std::nullopt};
    if (url.userInfo(QUrl::FullyEncoded).contains(QLatin1Char(':'))) {
        login.password = url.password(QUrl::FullyDecoded);
    }
    url.setUserInfo(QString());
    address = url.toString(QUrl::FullyEncoded);
    return login;
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

CameraStore::CameraStore(RecordDatabase& database, const PasswordCipher& secrets, DeviceKinds kinds)
    : RecordStore(database), m_secrets(secrets), m_kinds(std::move(kinds))
{
    if (const auto records = readAll()) {
        m_records = *records;
    } else {
        m_error = m_database.errorString();
    }
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

const CameraRecord* CameraStore::find(const QString& id) const
{
    const auto found = std::find_if(m_records.begin(), m_records.end(),
                                    [&](const CameraRecord& each) { return each.id == id; });
    return found == m_records.end() ? nullptr : &*found;
}

/** A record keeps its kind, also where the server does not have it. */
std::optional<ServerReply> CameraStore::checkKind(const QString& kind, const QString& id) const
{
    const CameraRecord* before = find(id);
    const auto has = [&kind](const auto& each) { return each.name == kind; };
    if ((before != nullptr && before->kind == kind) ||
        std::any_of(m_kinds.cameras.begin(), m_kinds.cameras.end(), has)) {
        return std::nullopt;
    }
    const auto absent = std::find_if(m_kinds.absentCameras.begin(), m_kinds.absentCameras.end(), has);
    return refusal(ReturnCode::badCameraKind,
                   absent != m_kinds.absentCameras.end()
                       ? absent->reason
                       : QStringLiteral("this server has no cameras of the kind \"%1\"").arg(kind));
}

bool CameraStore::hasPasswords(RecordDatabase& database)
{
    QSqlQuery sealed = database.query();
    return !database.run(sealed,
                         QStringLiteral("SELECT EXISTS (SELECT 1 FROM cameras WHERE length(password) > ?)"),
                         {PasswordCipher::overhead()}) ||
           !sealed.next() || sealed.value(0).toBool();
}

/** Puts what a client sent into a record: what it lacks stays as it is. */
std::optional<ServerReply> CameraStore::complete(const QVariantMap& fields, CameraRecord& record) const
{
    const auto take = [&fields](const QString& key, QString& field) {
        if (fields.value(key).isValid()) {
            field = textOf(fields, key);
        }
    };
    take(Words::camName, record.name);
    take(Words::camKind, record.kind);
    const QString addressBefore = record.address;
    take(Words::camAddress, record.address);
    const auto login = takeLogin(record.address);
    if (!sameHost(addressBefore, record.address) || (login && login->username != record.username)) {
        record.password.clear(); // it was given for another host, or another user
    }
    if (login) {
        record.username = login->username;
        record.password = login->password.value_or(record.password);
    }
    take(Vocabulary::username, record.username);
    take(Vocabulary::password, record.password);
    QString error;
    const auto settings =
        CameraSettingsRecord::fromMap(fields.value(Words::camSettings).toMap(), record.settings, &error);
    if (!settings) {
        return refusal(ReturnCode::badCameraSettings, error);
    }
    record.settings = *settings;
    return std::nullopt;
}

/** Checks what a camera is reached by. */
std::optional<ServerReply> CameraStore::checkReach(const CameraRecord& record) const
{
    for (const RecordChecks::Refusal& bad :
         {RecordChecks::cameraAddress(record.address),
          RecordChecks::credentials(record.username, record.password), checkKind(record.kind, record.id)}) {
        if (bad) {
            return bad;
        }
    }
    return std::nullopt;
}

std::optional<ServerReply> CameraStore::check(const CameraRecord& record)
{
    for (const RecordChecks::Refusal& bad : {RecordChecks::name(record.name), checkReach(record)}) {
        if (bad) {
            return bad;
        }
    }
    return checkFree({QStringLiteral("cameras"), QStringLiteral("camera")}, record.name, record.id.toInt());
}

ServerReply CameraStore::add(const QVariant& payload)
{
    CameraRecord record;
    auto bad = complete(payload.toMap(), record);
    if (!bad) {
        bad = check(record);
    }
    if (bad) {
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    ListLimit limit(m_database, cameraList);
    QSqlQuery insert = m_database.query();
    if (!m_database.run(
            insert,
            QStringLiteral("INSERT INTO cameras (name, kind, address, username, password, settings) "
                           "VALUES (?, ?, ?, ?, ?, ?)"),
            valuesOf(record, m_secrets))) {
        return failed();
    }
    if (const auto tooMuch = limit.check()) {
        return *tooMuch;
    }
    record.id = QString::number(insert.lastInsertId().toInt());
    return commit(transaction, done(answerOf(record)));
}

ServerReply CameraStore::update(const QVariant& payload)
{
    const QVariantMap fields = payload.toMap();
    const QString id = textOf(fields, Vocabulary::camId);
    const QVariantMap onlyId{{Vocabulary::camId, id}};
    const CameraRecord* before = find(id);
    if (before == nullptr) {
        return unknown(id, onlyId);
    }
    CameraRecord record = *before;
    auto bad = complete(fields, record);
    if (!bad) {
        bad = check(record);
    }
    if (bad) {
        bad->result = onlyId;
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    ListLimit limit(m_database, cameraList);
    if (!m_database.run(QStringLiteral("UPDATE cameras SET name = ?, kind = ?, address = ?, username = ?, "
                                       "password = ?, settings = ? WHERE id = ?"),
                        valuesOf(record, m_secrets) + QVariantList{id.toInt()})) {
        return failed();
    }
    if (auto tooMuch = limit.check()) {
        tooMuch->result = onlyId;
        return *tooMuch;
    }
    return commit(transaction, done(answerOf(record)));
}

std::optional<CameraRecord> CameraStore::cameraToAsk(const QVariantMap& payload, ServerReply* bad) const
{
    const QString id = textOf(payload, Vocabulary::camId);
    const CameraRecord* stored = find(id);
    if (stored == nullptr && !id.isEmpty()) {
        *bad = unknown(id, QVariant());
        return std::nullopt;
    }
    CameraRecord before = stored == nullptr ? CameraRecord() : *stored;
    QVariantMap fields = payload;
    for (const auto& [key, value] :
         {std::pair(Words::camKind, before.kind), std::pair(Words::camAddress, before.address)}) {
        fields.insert(key, fields.value(key, value));
    }
    QString wanted = textOf(fields, Words::camAddress);
    takeLogin(wanted);
    if (wanted != before.address || textOf(fields, Words::camKind) != before.kind) {
        before.username.clear(); // the stored login is for the stored address
        before.password.clear();
    }
    auto refused = complete(fields, before);
    refused = refused ? refused : checkReach(before);
    if (refused) {
        *bad = *refused;
        return std::nullopt;
    }
    return before;
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
        m_database.read(selectCameras + QStringLiteral(" ORDER BY id"), {},
                        [&](const QSqlQuery& row) { records.append(readRecord(row, m_secrets)); });
    return read ? std::optional(records) : std::nullopt;
}
