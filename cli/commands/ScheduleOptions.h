#pragma once

#include "cli/RecordFinder.h"
#include "cli/commands/CommandArguments.h"

#include <QVariantMap>

/** The options that describe a schedule: each changes the fields that it names and no others. */
class ScheduleOptions
{
public:
    /** Explains the forms of times, for the help. */
    static const char details[];
    static const char detailsOfUpdate[]; ///< The same, and what an update changes.

    /** Returns the options of a command that adds a schedule. */
    static std::vector<CommandOption> ofAddition();
    /** Returns the options of a command that changes one. */
    static std::vector<CommandOption> ofUpdate();

    /** Reads the options; empty, and an error printed, for wrong ones. */
    static std::optional<ScheduleOptions> read(const CommandArguments& arguments);

    /** Returns whether no option was given that changes a record. */
    bool isEmpty() const { return m_fields.isEmpty() && !m_weekdays && !m_file && !m_devices && !m_groups; }

    /** Changes the fields of a record of the protocol, but for its file and what it plays on. */
    void applyTo(QVariantMap* record) const;

    /** Changes the file of a record and what it plays on; returns false when the finder does not find one. */
    bool applyTargets(RecordFinder& finder, QVariantMap* record) const;

    /** Returns whether a record makes sense and, if it is switched on, has a run to come; prints an error
     * otherwise. */
    bool isPossible(const QVariantMap& record) const;

private:
    const CommandArguments* m_arguments = nullptr;
    QVariantMap m_fields;
    std::optional<QVariantList> m_weekdays;
    std::optional<QString> m_file;
    std::optional<QStringList> m_devices;
    std::optional<QStringList> m_groups;
};
