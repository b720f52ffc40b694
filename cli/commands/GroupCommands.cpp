#include "cli/commands/CommandArguments.h"
#include "cli/commands/CommandResult.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"
#include "protocol/Words.h"

#include <cstdio>

namespace {

int listGroups(PluginSession& session, const QString& filter)
{
    // The names of devices are looked up when the groups come: first the one, then the other.
    session.waitForDevices();
    session.forget();
    session.plugin().getNetworkAudioGroup();
    if (session.waitForReply(Vocabulary::GetNetworkAudioGroup).isEmpty()) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    GroupModel* model = session.plugin().getNetworkAudioGroupModel(&session);
    model->setFilter(filter);
    Table table(
        {{"id", "id"}, {"name", "name"}, {"devices", "devices"}, {"names of devices", "deviceNames"}});
    for (int row = 0; row < model->rowCount(); ++row) {
        const GroupRow group = model->group(row);
        table.add({group.id, group.name, toVariants(group.devices), group.deviceNames});
    }
    std::fputs(qUtf8Printable(table.text(session.options().json)), stdout);
    return ExitSuccess;
}

} // namespace

int runGroups(const QStringList& words)
{
    CommandArguments arguments(
        QStringLiteral("Groups of devices.\n\n  list\n  add NAME\n  update ID NAME\n  delete ID"));
    arguments.option("devices", "Ids of the group's devices, joined with commas.", "ids");
    arguments.option("filter", "List only groups with this text in their name or in a device's.", "text");
    if (!arguments.read(words)) {
        return arguments.exitStatus();
    }
    const QString verb = arguments.word(0);
    const bool update = verb == QLatin1String("update");
    const bool known = (verb == QLatin1String("list") && arguments.words() == 1) ||
                       (verb == QLatin1String("add") && arguments.words() == 2) ||
                       (update && arguments.words() == 3) ||
                       (verb == QLatin1String("delete") && arguments.words() == 2);
    if (!known) {
        return arguments.usage(QStringLiteral("groups list, add NAME, update ID NAME, or delete ID"));
    }
    const auto devices = arguments.ids("devices");
    const bool hasId = update || verb == QLatin1String("delete");
    const auto id = hasId ? arguments.number(arguments.word(1), "id") : std::optional(0);
    if (!devices || !id) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    if (verb == QLatin1String("list")) {
        return listGroups(session, arguments.value("filter"));
    }
    if (verb == QLatin1String("delete")) {
        return change(
            session, &PluginClient::deleteNetworkAudioGroupResponse,
            [&](PluginClient& plugin) { return plugin.deleteNetworkAudioGroup(*id); }, "deleted group");
    }
    if (update) {
        return change(
            session, &PluginClient::updateNetworkAudioGroupResponse,
            [&](PluginClient& plugin) {
                return plugin.updateNetworkAudioGroup(*id, arguments.word(2), *devices);
            },
            "updated group");
    }
    return change(
        session, &PluginClient::addNetworkAudioGroupResponse,
        [&](PluginClient& plugin) { return plugin.addNetworkAudioGroup(arguments.word(1), *devices); },
        "added group");
}
