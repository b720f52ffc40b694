#include "cli/CommandLine.h"

#include "cli/CommandRegistry.h"
#include "cli/InterruptFlag.h"
#include "cli/commands/CommandArguments.h"
#include "client/ExitStatus.h"

#include <cstdio>

namespace {

int usageError(const QString& message)
{
    std::fprintf(stderr, "voicedesk: %s\nTry: voicedesk --help\n", qUtf8Printable(message));
    return ExitUsage;
}

int print(const QString& text)
{
    std::fputs(qUtf8Printable(text), stdout);
    return ExitSuccess;
}

int runHelp(const QStringList& words)
{
    const QString name = words.join(QLatin1Char(' '));
    if (name.isEmpty()) {
        return print(CommandRegistry::help());
    }
    if (const Command* command = CommandRegistry::find(name)) {
        return print(CommandRegistry::helpOf(*command));
    }
    if (words.size() == 1 && !CommandRegistry::verbs(name).isEmpty()) {
        return print(CommandRegistry::helpOfGroup(name));
    }
    return usageError(QStringLiteral("\"%1\" is not a command").arg(name));
}

bool asksForHelp(const QStringList& words)
{
    return words.contains(QStringLiteral("--help")) || words.contains(QStringLiteral("-h"));
}

/** Finds the command in the words behind the program's name, and leaves those behind the command's. */
const Command* commandOf(QStringList* words, int* status)
{
    const QString first = words->takeFirst();
    const QStringList verbs = CommandRegistry::verbs(first);
    const Command* single = CommandRegistry::find(first);
    if (verbs.isEmpty()) {
        if (single == nullptr) {
            *status = usageError(QStringLiteral("\"%1\" is not a command").arg(first));
        }
        return single;
    }
    const int at = CommandArguments::firstOperand(first, *words);
    const QString verb = at < 0 ? QString() : words->at(at);
    if (verbs.contains(verb)) {
        words->removeAt(at);
        return CommandRegistry::find(first + QLatin1Char(' ') + verb);
    }
    if (single != nullptr) {
        return single;
    }
    const QString known =
        QStringLiteral("\"%1\" takes one of: %2").arg(first, verbs.join(QStringLiteral(", ")));
    if (verb.isEmpty() && asksForHelp(*words)) {
        *status = print(CommandRegistry::helpOfGroup(first));
    } else {
        *status = usageError(verb.isEmpty()
                                 ? known
                                 : QStringLiteral("\"%1 %2\" is not a command; %3").arg(first, verb, known));
    }
    return nullptr;
}

int runCommand(QStringList words)
{
    if (words.isEmpty()) {
        std::fputs(qUtf8Printable(CommandRegistry::help()), stderr);
        return ExitUsage;
    }
    const QString first = words.constFirst();
    if (first == QLatin1String("--help") || first == QLatin1String("-h")) {
        return print(CommandRegistry::help());
    }
    if (first == QLatin1String("help")) {
        return runHelp(words.mid(1));
    }
    if (first == QLatin1String("--version")) {
        std::puts("voicedesk " VOICEDESK_VERSION);
        return ExitSuccess;
    }
    int status = ExitUsage;
    const Command* command = commandOf(&words, &status);
    if (command == nullptr) {
        return status;
    }
    if (asksForHelp(words)) {
        return print(CommandRegistry::helpOf(*command));
    }
    const auto arguments = CommandArguments::read(*command, words);
    if (!arguments) {
        return ExitUsage;
    }
    if (command->shared != Command::Nothing) {
        InterruptFlag::install();
    }
    return command->run(*arguments);
}

} // namespace

int runCommandLine(const QStringList& arguments)
{
    const int status = runCommand(arguments.mid(1));
    const bool written = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (!written && status == ExitSuccess) {
        std::fputs("voicedesk: the output cannot be written\n", stderr);
        return ExitOutputFailed;
    }
    return status;
}
