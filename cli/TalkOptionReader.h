#pragma once

#include "cli/TalkCommand.h"

#include <QStringList>

#include <optional>

/** Reads the arguments of `voicedesk talk`. */
class TalkOptionReader
{
public:
    /** @param arguments the command's name first; empty, and error or help set, when there is nothing to run
     */
    std::optional<TalkOptions> read(const QStringList& arguments);

    QString help;  ///< Set when the help was asked for.
    QString error; ///< Set when the arguments are wrong.
};
