#pragma once

#include "cli/PluginSession.h"

/** Finds records by what a person types: their id or their name. Prints errors to stderr itself. */
class RecordFinder
{
public:
    /** A kind of record. */
    enum Kind
    {
        Device,   ///< An IP audio device.
        File,     ///< An audio file.
        Group,    ///< A group of devices.
        Schedule, ///< A schedule.
    };

    /** @param session open; outlives the object */
    explicit RecordFinder(PluginSession& session) : m_session(session) {}

    /**
     * Finds an id. A whole number is taken as an id, whether there is such a record or not: the server
     * refuses what it does not know. Any other text is a name, which exactly one record must have.
     *
     * @return empty, and an error printed, otherwise; status then has the ExitStatus
     */
    std::optional<int> find(Kind kind, const QString& text);

    /** Finds the id of a camera, which is any text: an id comes first, then a name that exactly one camera
     * has; empty, and an error printed, otherwise. */
    std::optional<QString> camera(const QString& text);

    /** Finds a camera in the same way, and returns its record as of GetCamera. */
    std::optional<QVariantMap> cameraRecord(const QString& text);

    /** Returns the cameras that have a text as their id, else as their name; empty, and an error printed,
     * when they cannot be read. */
    std::optional<QVariantList> cameras(const QString& text);

    /** Returns whether a record of the server has this id or name; false also when they cannot be read. */
    bool has(Kind kind, const QString& text);

    /** Finds the ids of several; empty, and an error printed, as soon as find does not find one. */
    std::optional<QVariantList> findAll(Kind kind, const QStringList& texts);

    /**
     * @name Records
     * @{
     */
    /** Returns the record with an id; empty, and an error printed, when there is none. */
    std::optional<DeviceRow> device(int id);
    std::optional<GroupRow> group(int id);
    std::optional<QVariantMap> schedule(int id); ///< As a record of the protocol.
    /** @} */

    /** Returns whether the last failure was that no record has the text. */
    bool isAbsent() const { return m_isAbsent; }

    /** Returns the ExitStatus of the last failure. */
    ExitStatus status() const { return m_status; }

private:
    bool read(Kind kind);
    QList<QPair<int, QString>> namesOf(Kind kind);
    void failed(ExitStatus status, const QString& message);
    /** Prints why a text means no record, or one of several. */
    void notOne(const QString& word, const QString& text, int count);
    void absent(Kind kind, int id);

    PluginSession& m_session;
    ExitStatus m_status = ExitSuccess;
    bool m_isAbsent = false;
};
