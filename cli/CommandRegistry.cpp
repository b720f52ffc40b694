#include "cli/CommandRegistry.h"

#include "cli/commands/Commands.h"
#include "embedded/ClientOptions.h"

#include <algorithm>

namespace {

constexpr int nameWidth = 20;   // characters, of a command in a list
constexpr int optionWidth = 24; // characters, of an option in a list
constexpr int lineWidth = 100;  // characters

QString firstWordOf(const Command& command)
{
    return QString::fromLatin1(command.name).section(QLatin1Char(' '), 0, 0);
}

QString lineOf(const Command& command)
{
    return QStringLiteral("  %1 %2\n")
        .arg(QLatin1String(command.name), -nameWidth)
        .arg(QLatin1String(command.help));
}

/** An option and its explanation, which goes on below itself. */
QString optionLines(const QString& option, const QString& explanation)
{
    QString lines = QStringLiteral("  %1 ").arg(option, -optionWidth);
    if (option.size() > optionWidth) {
        lines += QLatin1Char('\n') + QString(optionWidth + 3, QLatin1Char(' '));
    }
    int column = optionWidth + 3;
    const QStringList words = explanation.split(QLatin1Char(' '));
    for (const QString& word : words) {
        if (column + word.size() > lineWidth) {
            lines.chop(1);
            lines += QLatin1Char('\n') + QString(optionWidth + 3, QLatin1Char(' '));
            column = optionWidth + 3;
        }
        lines += word + QLatin1Char(' ');
        column += word.size() + 1;
    }
    lines.chop(1);
    return lines + QLatin1Char('\n');
}

QList<QCommandLineOption> sharedOptions(const Command& command)
{
    switch (command.shared) {
    case Command::Server:
        return ClientOptions::serverOptions() + ClientOptions::recordsOptions();
    case Command::Records:
        return ClientOptions::recordsOptions();
    default:
        return {};
    }
}

} // namespace

const std::vector<Command>& CommandRegistry::commands()
{
    static const std::vector<Command> all = [] {
        std::vector<Command> gathered;
        for (const auto kind : commandKinds) {
            const std::vector<Command> some = kind();
            gathered.insert(gathered.end(), some.begin(), some.end());
        }
        return gathered;
    }();
    return all;
}

const Command* CommandRegistry::find(const QString& name)
{
    const auto found = std::find_if(commands().begin(), commands().end(), [&](const Command& command) {
        return name == QLatin1String(command.name);
    });
    return found == commands().end() ? nullptr : &*found;
}

QStringList CommandRegistry::verbs(const QString& firstWord)
{
    QStringList found;
    for (const Command& command : commands()) {
        const QString name = QString::fromLatin1(command.name);
        if (name.startsWith(firstWord + QLatin1Char(' '))) {
            found.append(name.mid(firstWord.size() + 1));
        }
    }
    return found;
}

void CommandRegistry::optionNames(const QString& firstWord, QStringList* withValue, QStringList* flags)
{
    for (const Command& command : commands()) {
        if (firstWordOf(command) != firstWord) {
            continue;
        }
        for (const CommandOption& option : command.options) {
            (option.value != nullptr ? withValue : flags)->append(QString::fromLatin1(option.name));
        }
        const QList<QCommandLineOption> shared = sharedOptions(command);
        for (const QCommandLineOption& option : shared) {
            (option.valueName().isEmpty() ? flags : withValue)->append(option.names().constFirst());
        }
    }
    withValue->removeDuplicates();
    flags->removeDuplicates();
}

QString CommandRegistry::help()
{
    QString text = QStringLiteral(
        "voicedesk - talk to cameras and speakers through the VoiceDesk plug-in, without a window\n\n"
        "Usage: voicedesk COMMAND [options] OPERANDS\n\n"
        "Commands:\n");
    for (const Command& command : commands()) {
        text += lineOf(command);
    }
    text += QStringLiteral(
        R"(
"voicedesk help COMMAND" or "voicedesk COMMAND --help" lists what a command takes.
Cameras, speakers, files, groups and schedules are given by their id or their name.

Exit status:
  0  done             3  no microphone      6  the talk was lost
  1  wrong usage      4  refused            7  the microphone gave no sound
  2  no plug-in       5  no answer          8  the server cannot start
  9  the output cannot be written          10  the tone was not heard back
)");
    return text;
}

QString CommandRegistry::helpOfGroup(const QString& firstWord)
{
    QString text =
        QStringLiteral("Usage: voicedesk %1 COMMAND [options] OPERANDS\n\nCommands:\n").arg(firstWord);
    for (const Command& command : commands()) {
        if (firstWordOf(command) == firstWord) {
            text += lineOf(command);
        }
    }
    return text +
           QStringLiteral("\n\"voicedesk help %1 COMMAND\" lists what a command takes.\n").arg(firstWord);
}

QString CommandRegistry::helpOf(const Command& command)
{
    QString text = QStringLiteral("Usage: voicedesk %1 [options] %2")
                       .arg(QLatin1String(command.name), QLatin1String(command.operands));
    QString sentence = QString::fromLatin1(command.help);
    sentence[0] = sentence[0].toUpper();
    text = text.trimmed() + QLatin1String("\n\n") + sentence + QLatin1String(".\n");
    if (command.details[0] != '\0') {
        text += QLatin1String(command.details) + QLatin1Char('\n');
    }
    text += QLatin1String("\nOptions:\n");
    for (const CommandOption& option : command.options) {
        QString name = QLatin1String("--") + QLatin1String(option.name);
        if (option.value != nullptr) {
            name += QLatin1Char(' ') + QLatin1String(option.value);
        }
        text += optionLines(name, QString::fromLatin1(option.help));
    }
    text += optionLines(QStringLiteral("--help"), QStringLiteral("Show this help."));
    const QList<QCommandLineOption> shared = sharedOptions(command);
    if (!shared.isEmpty()) {
        text += command.shared == Command::Server
                    ? QLatin1String("\nOptions of all commands with a server:\n")
                    : QLatin1String("\nOptions of the server's files:\n");
    }
    for (const QCommandLineOption& option : shared) {
        text += optionLines(
            QStringLiteral("--%1 %2").arg(option.names().constFirst(), option.valueName()).trimmed(),
            option.description());
    }
    return text;
}
