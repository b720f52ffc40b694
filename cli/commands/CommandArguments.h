#pragma once

#include "cli/Command.h"
#include "embedded/ClientOptions.h"

#include <QHash>
#include <QStringList>

#include <optional>

/** The arguments of a command, checked against what it takes. Prints errors to stderr itself. */
class CommandArguments
{
public:
    /**
     * Reads the words behind a command's name.
     *
     * @param command outlives the object
     * @return empty, and an error printed, for an option that it does not have, a value that is missing or
     *         empty, and too few or too many words
     */
    static std::optional<CommandArguments> read(const Command& command, const QStringList& words);

    /**
     * Returns where the first word is that is neither an option nor a value of one.
     *
     * @param firstWord of the commands whose options are known
     * @return -1 when there is none
     */
    static int firstOperand(const QString& firstWord, const QStringList& words);

    /** Returns the options that all commands with a server share. */
    const ClientOptions& client() const { return m_client; }

    /** Returns the n-th word, from 0; empty when there are fewer. */
    QString word(int index) const { return m_words.value(index); }
    /** Returns the number of words. */
    int words() const { return m_words.size(); }

    /** Returns whether an option was given. */
    bool isSet(const char* name) const { return m_values.contains(QLatin1String(name)); }
    /** Returns the value of an option, or its default. */
    QString value(const char* name) const;
    /** Returns whether the output is to be JSON. */
    bool json() const { return isSet("json"); }

    /** Returns the pieces of an option's value, which are joined with commas; empty, and an error printed,
     * when one of them is empty. An option that is not given has none. */
    std::optional<QStringList> list(const char* option) const;

    /** Converts a text to a whole number; empty, and an error printed with @p what, for any other text. */
    std::optional<int> number(const QString& text, const char* what) const;

    /** Returns an option's number above @p above and up to @p most; empty, and an error printed, for any
     * other value. */
    std::optional<double> numberBetween(const char* option, double above, double most) const;

    /** Refuses two options together: returns false, and prints an error, when both were given. */
    bool onlyOne(const char* option, const char* other) const;

    /** Prints an error about the arguments; returns ExitUsage. */
    int usage(const QString& message) const { return usage(*m_command, message); }

private:
    static int usage(const Command& command, const QString& message);

    const Command* m_command = nullptr;
    QStringList m_words;
    QHash<QString, QString> m_values; ///< Of the options that were given.
    ClientOptions m_client;
};
