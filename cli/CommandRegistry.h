#pragma once

#include "cli/Command.h"

#include <QString>
#include <QStringList>

/** All commands of voicedesk, and the help that is made from them. */
namespace CommandRegistry {

/** Returns the commands in the order of the help. */
const std::vector<Command>& commands();

/** Returns a command by its whole name; null when there is none. */
const Command* find(const QString& name);

/** Returns the second words of the commands with this first word; empty when there are none. */
QStringList verbs(const QString& firstWord);

/** Returns the names of the options with a value that any command with this first word takes, and those of
 * its options without one. */
void optionNames(const QString& firstWord, QStringList* withValue, QStringList* flags);

/** Returns the list of all commands with what they have in common. */
QString help();

/** Returns the list of the commands with this first word. */
QString helpOfGroup(const QString& firstWord);

/** Returns usage, operands and options of a command. */
QString helpOf(const Command& command);

} // namespace CommandRegistry
