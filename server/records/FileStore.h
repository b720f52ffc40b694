#pragma once

#include "protocol/ServerReply.h"
#include "server/records/RecordStore.h"

#include <QString>

#include <optional>

/**
 * The audio files of the library: their records in the database, their contents in a folder beside it. A
 * content is on the disk before its record is stored. Only contents of files that a client deletes are
 * deleted, and those of refused uploads; what an interrupted upload left in the folder stays.
 *
 * Records of the protocol are maps of "audioID", "audioLength" (ms) and "audioStatus" (int) and "audioName"
 * (QString). Used on the database's thread.
 */
class FileStore : private RecordStore
{
public:
    /**
     * @param database outlives the store
     * @param folder   made when missing
     */
    FileStore(RecordDatabase& database, const QString& folder);

    /**
     * Stores a file. Decodes it first to measure its length, which takes time on the caller's thread.
     *
     * @param payload a map of "filename" (QString) and "content" (QByteArray in Base64); "length" is not read
     * @return the list of all records, or fileRefused for every failure
     */
    ServerReply upload(const QVariant& payload);

    /**
     * Deletes a file. Schedules that play it stay, without a file.
     *
     * @param payload the id, an int
     * @return the list of all records, noSuchFile with the id, or storageFailed
     */
    ServerReply remove(const QVariant& payload);

    /** Returns the list of all records, by id, or storageFailed. */
    ServerReply list();

    /** What playback needs of a file. */
    struct File
    {
        int id;       ///< Of the record.
        QString name; ///< As uploaded.
        QString path; ///< Of the content; empty when the record names what no upload can have made.
        int length;   ///< ms
    };

    /**
     * Returns a file.
     *
     * @param refusal receives the reason of an empty result: noSuchFile or storageFailed
     */
    std::optional<File> find(int id, ServerReply* refusal);

private:
    QString pathOf(const QString& contentName) const;

    QString m_folder;
};
