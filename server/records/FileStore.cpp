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

ServerReply refused(const QString& text)
{
    return refusal(ReturnCode::fileRefused, text);
}

} // namespace

FileStore::FileStore(RecordDatabase& database, const QString& folder)
    : RecordStore(database), m_folder(folder)
{
    QDir().mkpath(m_folder);
}

ServerReply FileStore::noSuchFile(int id)
{
    return refusal(ReturnCode::noSuchFile, QStringLiteral("no audio file has the id %1").arg(id));
}

std::optional<FileStore::Upload> FileStore::receive(const QVariant& payload, ServerReply* refusal)
{
    const QVariantMap record = payload.toMap();
    const QString name = record.value(Words::filename).toString();
    const auto refuse = [&](const QString& text) {
        *refusal = refused(text);
        return std::nullopt;
    };
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
    const Upload upload{name, QUuid::createUuid().toString(QUuid::WithoutBraces)};
    QString error;
    if (!writeWholeFile(pathOf(upload.content), content.decoded, &error)) {
        return refuse(QStringLiteral("the file cannot be stored: %1").arg(error));
    }
    return upload;
}

std::optional<int> FileStore::measure(const Upload& upload) const
{
    return AudioFileReader::duration(pathOf(upload.content));
}

ServerReply FileStore::add(const Upload& upload, std::optional<int> length, File* added)
{
    const QString path = pathOf(upload.content);
    if (!length) {
        QFile::remove(path);
        return refused(QStringLiteral("the file holds no sound that can be decoded"));
    }
    QSqlQuery insert = m_database.query();
    if (!m_database.run(
            insert,
            QStringLiteral(
                "INSERT INTO files (name, length, status, content, uploaded) VALUES (?, ?, ?, ?, ?)"),
            {upload.name, *length, static_cast<int>(AudioStatus::Ready), upload.content,
             QDateTime::currentDateTimeUtc().toString(Qt::ISODate)})) {
        QFile::remove(path);
        return refused(m_database.errorString());
    }
    *added = {insert.lastInsertId().toInt(), upload.name, path, *length};
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
        *refusal = noSuchFile(id);
    }
    return found;
}

std::optional<QList<FileStore::File>> FileStore::files()
{
    QList<File> all;
    const bool read = m_database.read(QStringLiteral("SELECT id, name, content, length FROM files"), {},
                                      [&](const QSqlQuery& row) {
                                          all.append({row.value(0).toInt(), row.value(1).toString(),
                                                      pathOf(row.value(2).toString()), row.value(3).toInt()});
                                      });
    return read ? std::optional(all) : std::nullopt;
}
