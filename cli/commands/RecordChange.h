#pragma once

#include "cli/PluginSession.h"
#include "cli/commands/CommandArguments.h"

/** The change of a record that a command asks for: what it is called in the result. */
struct RecordChange
{
    const char* done; ///< Printed before the id: "added device".
    QString idKey;    ///< Of the id in the reply to an addition.
    int id = 0;       ///< Of the record; 0 for one that is to be added.

    /** Waits for the reply to the request, prints the result, and returns the ExitStatus. */
    int finish(PluginSession& session, const CommandArguments& arguments, quint64 request) const;
};

/** Prints a result with an id, or the object {"id": ID} as JSON; returns ExitSuccess. */
int printId(const CommandArguments& arguments, const char* done, int id);
