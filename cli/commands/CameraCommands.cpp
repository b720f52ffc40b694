#include "cli/PluginSession.h"
#include "cli/commands/CommandArguments.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"
#include "protocol/Words.h"

#include <cstdio>

namespace {

int listCameras(const CommandArguments& arguments)
{
    ClientOptions client = arguments.client();
    if (!arguments.isSet("data")) {
        client.embedded.dataDirectory.clear(); // a look that needs no records
        client.simulated.hasCameras = true;    // as a talk has them
    }
    PluginSession session(client);
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    PluginSession::Reply reply;
    if (const ExitStatus status = session.receive(session.sendOwn(Words::GetCamera), &reply);
        status != ExitSuccess) {
        return status;
    }
    Table table({{"id", "id"}, {"name", "name"}, {Words::online, Words::online}});
    const QVariantList cameras = reply.result.toList();
    for (const QVariant& entry : cameras) {
        const QVariantMap camera = entry.toMap();
        table.add({camera.value(Vocabulary::camId).toString(), camera.value(Words::camName).toString(),
                   camera.value(Words::online).toBool()});
    }
    std::fputs(qUtf8Printable(table.text(arguments.json())), stdout);
    return ExitSuccess;
}

} // namespace

std::vector<Command> cameraCommands()
{
    return {
        {"cameras", "", "list the cameras of the server", "", {jsonOption}, Command::Server, listCameras}};
}
