#include "cli/commands/RecordChange.h"

#include <cstdio>

int RecordChange::finish(PluginSession& session, const CommandArguments& arguments, quint64 request) const
{
    PluginSession::Reply reply;
    if (const ExitStatus status = session.receive(request, &reply); status != ExitSuccess) {
        return status;
    }
    return printId(arguments, done, id != 0 ? id : reply.result.toMap().value(idKey).toInt());
}

int printId(const CommandArguments& arguments, const char* done, int id)
{
    if (arguments.json()) {
        std::printf("{\"id\": %d}\n", id);
    } else {
        std::printf("%s %d\n", done, id);
    }
    return ExitSuccess;
}
