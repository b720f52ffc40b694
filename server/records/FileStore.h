#pragma once

#include "protocol/ServerReply.h"
#include "server/records/RecordDatabase.h"

#include <QString>

#include <optional>

/**
 * The audio files of the library: what is known of them in the database, their content in a folder beside it.
 * A file's content is on the disk before the database knows of it. Nothing in the folder is deleted but the
 * content of a file that a client deletes: what an upload that was cut off left there stays.
 */
class FileStore
{
public:
    static constexpr int largestFile = 32 << 20; // bytes

    /** Values of "audioStatus" that this server gives; the rest are the client's. */
    enum Status
    {
        Ready = 2,
    };

    /** @param folder made when missing */
    FileStore(RecordDatabase& database, const QString& folder);

    ServerReply upload(const QVariant& payload);
    ServerReply remove(const QVariant& payload);
    ServerReply list();

    struct File
    {
        int id;
        QString name;
        QString path; ///< Of the content.
        int length;   ///< ms
    };
    std::optional<File> find(int id);
    bool exists(int id) { return find(id).has_value(); }

private:
    ServerReply failed() const;

    RecordDatabase& m_database;
    QString m_folder;
};
