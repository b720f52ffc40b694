#pragma once

#include "cli/commands/CommandArguments.h"

/** Where the sound of a talk comes from, and how long it lasts: options that all talks share. */
struct TalkSource
{
    QString file;       ///< Speaks in the microphone's place; empty for a microphone.
    QString microphone; ///< Name of the microphone; empty for the default one.
    double seconds = 0; ///< Length of the talk; 0 until Ctrl-C.

    /** Returns the options. */
    static std::vector<CommandOption> options();

    /**
     * Reads the options, and the length of the file.
     *
     * @param status receives the ExitStatus of a failure, whose error is printed
     */
    static std::optional<TalkSource> read(const CommandArguments& arguments, int* status);

    /** Makes the capture library of this process take this source; before the plug-in is loaded. */
    void use() const;
};
