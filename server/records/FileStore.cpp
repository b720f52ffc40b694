#include "server/records/FileStore.h"

#include "audio/AudioFileReader.h"
#include "protocol/Limits.h"
#include "protocol/RecordChecks.h"
#include "protocol/Words.h"
#include "src/vocabulary/AudioStatus.h"
#include "system/WholeFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QUuid>

namespace {

constexpr int base64Of(int bytes)
{
    return (bytes + 2) / 3 * 4;
}

} // namespace

FileStore::FileStore(RecordDatabase& database, const QString& folder)
    : RecordStore(database), m_folder(folder)
{
    QDir().mkpath(m_folder);
}

ServerReply FileStore::upload(const QVariant& payload)
{
    const QVariantMap record = payload.toMap();
    const QString name = record.value(Words::filename).toString();
    const auto refuse = [](const QString& text) { return refusal(ReturnCode::fileRefused, text); };
    if (RecordChecks::name(name)) {
        return refuse(QStringLiteral("the file's name is empty, too long, or has control characters"));
    }
    int files = 0;
    if (!m_database.read(QStringLiteral("SELECT count(*) FROM files"), {},
                         [&](const QSqlQuery& row) { files = row.value(0).toInt(); })) {
        return refuse(m_database.errorString());
    }
    if (files >= Limits::maxFiles) {
        return refuse(QStringLiteral("this server keeps at most %1 files (maxFiles)").arg(Limits::maxFiles));
    }
    const QByteArray text = record.value(Words::content).toByteArray();
    if (text.size() > base64Of(Limits::maxFileBytes)) {
        return refuse(QStringLiteral("the file is larger than %1 MiB").arg(Limits::maxFileBytes >> 20));
    }
    const auto content = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    if (!content) {
        return refuse(QStringLiteral("the content is not Base64"));
    }
    const QString contentName = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const QString path = QDir(m_folder).filePath(contentName);
    QString error;
    if (!writeWholeFile(path, content.decoded, &error)) {
        return refuse(QStringLiteral("the file cannot be stored: %1").arg(error));
    }
    const auto length = AudioFileReader::duration(path);
    if (!length) {
        QFile::remove(path);
        return refuse(QStringLiteral("the file holds no sound that can be decoded"));
    }
    if (!m_database.run(
            QStringLiteral(
                "INSERT INTO files (name, length, status, content, uploaded) VALUES (?, ?, ?, ?, ?)"),
            {name, *length, static_cast<int>(AudioStatus::Ready), contentName,
             QDateTime::currentDateTimeUtc().toString(Qt::ISODate)})) {
        QFile::remove(path);
        return refuse(m_database.errorString());
    }
    return list();
}

ServerReply FileStore::remove(const QVariant& payload)
{
    const int id = payload.toInt();
    ServerReply missing;
    const auto file = find(id, &missing);
    if (!file) {
        missing.result = missing.returnCode == ReturnCode::noSuchFile ? QVariant(id) : QVariant();
        return missing;
    }
    if (!m_database.run(QStringLiteral("DELETE FROM files WHERE id = ?"), {id})) {
        return failed();
    }
    if (!file->path.isEmpty()) {
        QFile::remove(file->path);
    }
    return list();
}

ServerReply FileStore::list()
{
    QVariantList entries;
    const auto append = [&](const QSqlQuery& row) {
        entries.append(QVariantMap{
            {Vocabulary::audioID, row.value(0).toInt()},
            {Vocabulary::audioName, row.value(1).toString()},
            {Vocabulary::audioLength, row.value(2).toInt()},
            {Vocabulary::audioStatus, row.value(3).toInt()},
        });
    };
    if (!m_database.read(QStringLiteral("SELECT id, name, length, status FROM files ORDER BY id"), {},
                         append)) {
        return failed();
    }
    return done(entries);
}

QString FileStore::pathOf(const QString& contentName) const
{
    // A database from elsewhere may name any path of this machine.
    const bool ours = QUuid(contentName).toString(QUuid::WithoutBraces) == contentName;
    return ours ? QDir(m_folder).filePath(contentName) : QString();
}

std::optional<FileStore::File> FileStore::find(int id, ServerReply* refusal)
{
    std::optional<File> found;
    if (!m_database.read(QStringLiteral("SELECT name, content, length FROM files WHERE id = ?"), {id},
                         [&](const QSqlQuery& row) {
                             found = File{id, row.value(0).toString(), pathOf(row.value(1).toString()),
                                          row.value(2).toInt()};
                         })) {
        *refusal = failed();
        return std::nullopt;
    }
    if (!found) {
        *refusal = ::refusal(ReturnCode::noSuchFile, QStringLiteral("no audio file has the id %1").arg(id));
    }
    return found;
}
