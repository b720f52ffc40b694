#include "cli/RecordFinder.h"
#include "cli/commands/Commands.h"
#include "cli/commands/RecordChange.h"
#include "cli/commands/Table.h"
#include "protocol/Words.h"

#include <cstdio>

namespace {

int listGroups(const CommandArguments& arguments)
{
    PluginSession session(arguments.client());
    ExitStatus status = session.open();
    status = status == ExitSuccess ? session.readGroups() : status;
    if (status != ExitSuccess) {
        return status;
    }
    GroupModel* model = session.plugin().getNetworkAudioGroupModel(&session);
    model->setFilter(arguments.value("filter"));
    Table table(
        {{"id", "id"}, {"name", "name"}, {"devices", "devices"}, {"names of devices", "deviceNames"}});
    for (int row = 0; row < model->rowCount(); ++row) {
        const GroupRow group = model->group(row);
        table.add({group.id, group.name, toVariants(group.devices), group.deviceNames});
    }
    std::fputs(qUtf8Printable(table.text(arguments.json())), stdout);
    return ExitSuccess;
}

int addGroup(const CommandArguments& arguments)
{
    const auto names = arguments.list("devices");
    if (!names) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto devices = finder.findAll(RecordFinder::Device, *names);
    if (!devices) {
        return finder.status();
    }
    const quint64 request =
        session.send([&](PluginClient& plugin) { plugin.addNetworkAudioGroup(arguments.word(0), *devices); });
    return RecordChange{"added group", Vocabulary::groupID}.finish(session, arguments, request);
}

int updateGroup(const CommandArguments& arguments)
{
    const bool replaced = arguments.isSet("devices") || arguments.isSet("no-devices");
    const auto names = arguments.list("devices");
    if (!names || !arguments.onlyOne("devices", "no-devices")) {
        return ExitUsage;
    }
    if (arguments.words() < 2 && !replaced) {
        return arguments.usage(QStringLiteral("nothing is named that is to be changed"));
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    // An update replaces the whole record, so the fields that were not given are sent as they are now.
    RecordFinder finder(session);
    const auto id = finder.find(RecordFinder::Group, arguments.word(0));
    const auto group = id ? finder.group(*id) : std::nullopt;
    const auto devices = group ? finder.findAll(RecordFinder::Device, *names) : std::nullopt;
    if (!devices) {
        return finder.status();
    }
    const QString name = arguments.words() > 1 ? arguments.word(1) : group->name;
    const QVariantList members = replaced ? *devices : toVariants(group->devices);
    const quint64 request =
        session.send([&](PluginClient& plugin) { plugin.updateNetworkAudioGroup(*id, name, members); });
    return RecordChange{"updated group", Vocabulary::groupID, *id}.finish(session, arguments, request);
}

int deleteGroup(const CommandArguments& arguments)
{
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto id = finder.find(RecordFinder::Group, arguments.word(0));
    if (!id) {
        return finder.status();
    }
    const quint64 request = session.send([&](PluginClient& plugin) { plugin.deleteNetworkAudioGroup(*id); });
    return RecordChange{"deleted group", Vocabulary::groupID, *id}.finish(session, arguments, request);
}

} // namespace

std::vector<Command> groupCommands()
{
    const CommandOption filter{"filter", "TEXT",
                               "List only groups with this text in their name or a device's.", ""};
    const CommandOption devices{"devices", "DEVICE,...", "The group's devices.", ""};
    const CommandOption none{"no-devices", nullptr, "Leave the group without devices.", ""};
    return {
        {"groups list", "", "list groups of speakers", "", {filter, jsonOption}, Command::Server, listGroups},
        {"groups add", "NAME", "add a group", "", {devices, jsonOption}, Command::Server, addGroup},
        {"groups update",
         "ID [NAME]",
         "change a group",
         "What is not named stays as it is.",
         {devices, none, jsonOption},
         Command::Server,
         updateGroup},
        {"groups delete", "ID", "delete a group", "", {jsonOption}, Command::Server, deleteGroup},
    };
}
