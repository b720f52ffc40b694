#include "cli/commands/CommandArguments.h"

#include "client/ExitStatus.h"

#include <cstdio>

CommandArguments::CommandArguments(const QString& description)
{
    m_parser.setApplicationDescription(description);
}

void CommandArguments::option(const char* name, const char* description, const char* value,
                              const char* fallback)
{
    m_parser.addOption(QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                                          QString::fromLatin1(value), QString::fromLatin1(fallback)));
}

void CommandArguments::flag(const char* name, const char* description)
{
    m_parser.addOption(QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description)));
}

bool CommandArguments::read(const QStringList& arguments)
{
    ClientOptions::addTo(m_parser);
    if (!m_parser.parse(arguments)) {
        m_status = usage(m_parser.errorText());
        return false;
    }
    if (m_parser.isSet(QStringLiteral("help"))) {
        std::fputs(qUtf8Printable(m_parser.helpText()), stdout);
        m_status = ExitSuccess;
        return false;
    }
    QString error;
    const auto client = ClientOptions::read(m_parser, &error);
    if (!client) {
        m_status = usage(error);
        return false;
    }
    m_client = *client;
    return true;
}

int CommandArguments::usage(const QString& message)
{
    std::fprintf(stderr, "voicedesk: %s\nTry the command with --help.\n", qUtf8Printable(message));
    return ExitUsage;
}

std::optional<int> CommandArguments::number(const QString& text, const char* what)
{
    bool valid = false;
    const int number = text.toInt(&valid);
    if (!valid) {
        usage(QStringLiteral("\"%1\" is no %2").arg(text, QLatin1String(what)));
        return std::nullopt;
    }
    return number;
}

std::optional<QVariantList> CommandArguments::ids(const char* option)
{
    QVariantList list;
    const QStringList pieces = value(option).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& piece : pieces) {
        const auto id = number(piece, "id");
        if (!id) {
            return std::nullopt;
        }
        list.append(*id);
    }
    return list;
}
