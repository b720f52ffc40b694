#include "cli/commands/CommandArguments.h"

#include "cli/CommandRegistry.h"
#include "client/ExitStatus.h"

#include <QCommandLineParser>

#include <algorithm>
#include <cstdio>

namespace {

// Of the server inside this program; another one has its own.
constexpr const char* ownServerOptions[] = {"data", "simulate", "output"};

const QString serverOption = QStringLiteral("server");
const QString userOption = QStringLiteral("user");

/** Adds the shared options of a command to a parser; returns their names. */
QStringList addShared(const Command& command, QCommandLineParser& parser)
{
    QList<QCommandLineOption> options;
    if (command.shared != Command::Nothing) {
        options += ClientOptions::recordsOptions();
    }
    if (command.shared == Command::Server) {
        options += ClientOptions::serverOptions();
    }
    parser.addOptions(options);
    QStringList names;
    for (const QCommandLineOption& option : qAsConst(options)) {
        names += option.names();
    }
    return names;
}

} // namespace

int CommandArguments::usage(const Command& command, const QString& message)
{
    std::fprintf(stderr, "voicedesk: %s\nTry: voicedesk help %s\n", qUtf8Printable(message), command.name);
    return ExitUsage;
}

int CommandArguments::firstOperand(const QString& firstWord, const QStringList& words)
{
    QStringList withValue;
    QStringList flags;
    CommandRegistry::optionNames(firstWord, &withValue, &flags);
    for (int i = 0; i < words.size(); ++i) {
        const QString& word = words[i];
        if (!word.startsWith(QLatin1Char('-'))) {
            return i;
        }
        if (word.startsWith(QLatin1String("--")) && withValue.contains(word.mid(2))) {
            ++i; // its value
        }
    }
    return -1;
}

std::optional<CommandArguments> CommandArguments::read(const Command& command, const QStringList& words)
{
    QCommandLineParser parser;
    const QStringList shared = addShared(command, parser);
    for (const CommandOption& option : command.options) {
        parser.addOption(QCommandLineOption(QString::fromLatin1(option.name), QString(),
                                            QString::fromLatin1(option.value)));
    }
    if (!parser.parse(QStringList{QString::fromLatin1(command.name)} + words)) {
        usage(command, parser.errorText());
        return std::nullopt;
    }
    if (const QString twice = ClientOptions::repeated(parser); !twice.isEmpty()) {
        usage(command, QStringLiteral("--%1 is given more than once").arg(twice));
        return std::nullopt;
    }
    CommandArguments arguments;
    arguments.m_command = &command;
    arguments.m_words = parser.positionalArguments();
    const QStringList operands =
        QString::fromLatin1(command.operands).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    const auto optional = std::count_if(operands.begin(), operands.end(), [](const QString& operand) {
        return operand.startsWith(QLatin1Char('['));
    });
    const int given = arguments.m_words.size();
    if (given > operands.size()) {
        usage(command, QStringLiteral("\"%1\" is one word too many").arg(arguments.m_words[operands.size()]));
        return std::nullopt;
    }
    if (given < operands.size() - optional) {
        usage(command, QStringLiteral("%1 is missing").arg(operands[given]));
        return std::nullopt;
    }
    if (const int empty = arguments.m_words.indexOf(QString()); empty >= 0) {
        QString operand = operands[empty];
        usage(command,
              QStringLiteral("%1 is empty").arg(operand.remove(QLatin1Char('[')).remove(QLatin1Char(']'))));
        return std::nullopt;
    }
    for (const CommandOption& option : command.options) {
        const QString name = QString::fromLatin1(option.name);
        if (!parser.isSet(name)) {
            continue;
        }
        arguments.m_values.insert(name, parser.value(name));
        if (option.value != nullptr && parser.value(name).isEmpty() && !option.mayBeEmpty) {
            usage(command, QStringLiteral("the value of --%1 is empty").arg(name));
            return std::nullopt;
        }
    }
    // Those of a server, in a parser that has them all.
    QStringList options{QString::fromLatin1(command.name)};
    for (const QString& name : shared) {
        if (parser.isSet(name)) {
            arguments.m_values.insert(name, parser.value(name));
            if (command.takesUser && name == userOption && !parser.isSet(serverOption)) {
                continue;
            }
            options.append(QStringLiteral("--%1=%2").arg(name, parser.value(name)));
        }
    }
    for (const char* option : ownServerOptions) {
        const bool ofTheCommand = command.writesOutput && QLatin1String(option) == QLatin1String("output");
        if (!ofTheCommand && !arguments.onlyOne("server", option)) {
            return std::nullopt;
        }
    }
    QCommandLineParser client;
    ClientOptions::addTo(client);
    client.parse(options);
    QString error;
    const auto read = ClientOptions::read(client, &error);
    if (!read) {
        usage(command, error);
        return std::nullopt;
    }
    arguments.m_client = *read;
    return arguments;
}

QString CommandArguments::value(const char* name) const
{
    const auto found = m_values.constFind(QLatin1String(name));
    if (found != m_values.constEnd()) {
        return *found;
    }
    for (const CommandOption& option : m_command->options) {
        if (QLatin1String(option.name) == QLatin1String(name)) {
            return QString::fromLatin1(option.fallback);
        }
    }
    return QString();
}

std::optional<QStringList> CommandArguments::list(const char* option) const
{
    if (!isSet(option)) {
        return QStringList();
    }
    QStringList pieces;
    const QStringList split = value(option).split(QLatin1Char(','));
    for (const QString& piece : split) {
        pieces.append(piece.trimmed());
    }
    if (pieces.contains(QString())) {
        usage(QStringLiteral("--%1 has an empty entry").arg(QLatin1String(option)));
        return std::nullopt;
    }
    return pieces;
}

std::optional<int> CommandArguments::number(const QString& text, const char* what) const
{
    bool valid = false;
    const int number = text.toInt(&valid);
    if (!valid) {
        usage(QStringLiteral("\"%1\" is no %2").arg(text, QLatin1String(what)));
        return std::nullopt;
    }
    return number;
}

std::optional<double> CommandArguments::numberBetween(const char* option, double above, double most) const
{
    bool valid = false;
    const double number = value(option).toDouble(&valid);
    if (!valid || !(number > above && number <= most)) {
        usage(QStringLiteral("--%1 takes a number %2 up to %3")
                  .arg(QLatin1String(option),
                       above < 0 ? QStringLiteral("from 0") : QStringLiteral("above %1").arg(above))
                  .arg(most));
        return std::nullopt;
    }
    return number;
}

bool CommandArguments::onlyOne(const char* option, const char* other) const
{
    if (isSet(option) && isSet(other)) {
        usage(QStringLiteral("--%1 and --%2 exclude each other")
                  .arg(QLatin1String(option), QLatin1String(other)));
        return false;
    }
    return true;
}
