#include "cli/commands/CommandArguments.h"
#include "cli/commands/Commands.h"
#include "client/ExitStatus.h"

#include <cstdio>

namespace {

int sayToy(const CommandArguments& arguments)
{
    std::puts(arguments.json() ? "[\"toy\"]" : "toy");
    return ExitSuccess;
}

} // namespace

std::vector<Command> toyCommands()
{
    return {{"toy", "", "print one word", "", {jsonOption}, Command::Nothing, sayToy}};
}
