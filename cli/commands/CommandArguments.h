#pragma once

#include "embedded/ClientOptions.h"

#include <QCommandLineParser>
#include <QStringList>

#include <optional>

/**
 * The arguments of a command that speaks to a server: its own options, those that all share, and words. Reads
 * them, answers --help and complains by itself.
 */
class CommandArguments
{
public:
    /** @param description for --help, the command's words included */
    explicit CommandArguments(const QString& description);

    void option(const char* name, const char* description, const char* value, const char* fallback = "");
    void flag(const char* name, const char* description);

    /** False when there is nothing to run: exitStatus says how it ended. @param arguments the name first */
    bool read(const QStringList& arguments);

    int exitStatus() const { return m_status; }

    const ClientOptions& client() const { return m_client; }

    /** The n-th word, from 0; empty when there are fewer. */
    QString word(int index) const { return m_parser.positionalArguments().value(index); }
    int words() const { return m_parser.positionalArguments().size(); }

    bool isSet(const char* name) const { return m_parser.isSet(QLatin1String(name)); }
    QString value(const char* name) const { return m_parser.value(QLatin1String(name)); }

    /** A whole number; empty, after a complaint, for anything else. */
    std::optional<int> number(const QString& text, const char* what);

    /** Ids joined with commas; empty, after a complaint, for anything else. */
    std::optional<QVariantList> ids(const char* option);

    /** Complains about the way the command was written; for return. */
    int usage(const QString& message);

private:
    QCommandLineParser m_parser;
    ClientOptions m_client;
    int m_status = 0;
};
