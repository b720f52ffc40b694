#pragma once

#include "cli/TalkCommand.h"

#include <QStringList>

#include <optional>

/** Reads the arguments of `voicedesk talk`. */
class TalkOptionReader
{
public:
    /**
     * Reads the arguments.
     *
     * @param arguments the command's name first
     * @return empty when there is nothing to run; either help or error is set then
     */
    std::optional<TalkOptions> read(const QStringList& arguments);

    QString help;  ///< The help text, when --help was given.
    QString error; ///< What is wrong with the arguments.
};
