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

    /** Returns the refusal of an id that no file has. */
    static ServerReply noSuchFile(int id);

    /** A file whose content is on the disk, and which has no record yet. */
    struct Upload
    {
        QString name;    ///< For people.
        QString content; ///< Name of the content in the folder.
    };

    /**
     * Writes the content of an upload.
     *
     * @param payload a map of "filename" (QString) and "content" (QByteArray in Base64); "length" is not read
     * @param refusal receives fileRefused when the result is empty
     */
    std::optional<Upload> receive(const QVariant& payload, ServerReply* refusal);

    /**
     * Decodes an upload to measure it, which takes time. On any thread.
     *
     * @return its length in ms; empty when it holds no sound
     */
    std::optional<int> measure(const Upload& upload) const;

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

    /** Returns all files; empty when the database cannot be read. */
    std::optional<QList<File>> files();

    /**
     * Stores the record of an upload, or deletes its content.
     *
     * @param length as measure has returned it
     * @param added  receives the file
     * @return the list of all records, or fileRefused for every failure
     */
    ServerReply add(const Upload& upload, std::optional<int> length, File* added);

private:
    QString pathOf(const QString& contentName) const;

    const QString m_folder;
};
