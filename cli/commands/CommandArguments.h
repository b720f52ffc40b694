#pragma once

#include "embedded/ClientOptions.h"

#include <QCommandLineParser>
#include <QStringList>

#include <optional>

/**
 * The arguments of a command that uses a server: its own options, those that all commands share, and words.
 * It prints the help, and errors to stderr, itself.
 */
class CommandArguments
{
public:
    /** @param description for --help, the command's words included */
    explicit CommandArguments(const QString& description);

    /** Adds an option with a value. @p value is the value's name in the help, @p fallback its default. */
    void option(const char* name, const char* description, const char* value, const char* fallback = "");
    /** Adds an option without a value. */
    void flag(const char* name, const char* description);

    /**
     * Reads the arguments.
     *
     * @param arguments the command's name first
     * @return false when there is nothing to run; exitStatus is then the result
     */
    bool read(const QStringList& arguments);

    /** Returns the ExitStatus after a read that returned false. */
    int exitStatus() const { return m_status; }

    /** Returns the options that all commands share. */
    const ClientOptions& client() const { return m_client; }

    /** Returns the n-th word, from 0; empty when there are fewer. */
    QString word(int index) const { return m_parser.positionalArguments().value(index); }
    /** Returns the number of words. */
    int words() const { return m_parser.positionalArguments().size(); }

    /** Returns whether an option was given. */
    bool isSet(const char* name) const { return m_parser.isSet(QLatin1String(name)); }
    /** Returns the value of an option, or its default. */
    QString value(const char* name) const { return m_parser.value(QLatin1String(name)); }

    /** Converts a text to a whole number; empty, and an error printed with @p what, for any other text. */
    std::optional<int> number(const QString& text, const char* what);

    /** Converts an option's ids, joined with commas; empty, and an error printed, for any other text. */
    std::optional<QVariantList> ids(const char* option);

    /** Prints an error about the arguments; returns ExitUsage. */
    int usage(const QString& message);

private:
    QCommandLineParser m_parser;
    ClientOptions m_client;
    int m_status = 0;
};
