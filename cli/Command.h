#pragma once

#include <vector>

class CommandArguments;

/** An option of a command. Texts are ASCII. */
struct CommandOption
{
    const char* name;        ///< Without dashes.
    const char* value;       ///< What its value is, for the help; null for an option without a value.
    const char* help;        ///< One sentence.
    const char* fallback;    ///< Its value when it is not given.
    bool mayBeEmpty = false; ///< Whether its value may be empty; a script's unset variable is one.
};

/** A command of voicedesk: what the help says of it, what it takes, and what it does. */
struct Command
{
    /** The options that it takes beside its own. */
    enum Shared
    {
        Nothing, ///< None.
        Records, ///< Where a server of its own keeps its records, and the secret.
        Server,  ///< Which server, the login, the plug-in, and those of Records.
    };

    const char* name;                   ///< One word, or two with a blank: "devices add".
    const char* operands;               ///< "ID [NAME [PORT]]"; those in brackets may be missing.
    const char* help;                   ///< One line, for the list of commands.
    const char* details;                ///< Further lines for the command's own help; may be empty.
    std::vector<CommandOption> options; ///< Its own.
    Shared shared;                      ///< The others.
    int (*run)(const CommandArguments& arguments); ///< Prints results and errors; returns an ExitStatus.
    bool writesOutput = false; ///< Whether it writes to --output itself, with another server, too.
    bool takesUser = false;    ///< Whether --user without --server is an option of its own.
};

/** The option --json of commands that can print JSON. */
inline constexpr CommandOption jsonOption{"json", nullptr, "Write JSON, for programs.", ""};
