#include "cli/commands/CommandArguments.h"
#include "cli/commands/CommandResult.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"

#include <cstdio>

namespace {

int listDevices(PluginSession& session)
{
    if (!session.waitForDevices()) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    const DeviceModel* model = session.plugin().getIPAudioModel(&session);
    Table table({{"id", "id"},
                 {"name", "name"},
                 {"address", "ip"},
                 {"port", "port"},
                 {"user", "username"},
                 {"cameras", "cameras"}});
    for (int row = 0; row < model->rowCount(); ++row) {
        const DeviceRow device = model->device(row);
        table.add({device.id, device.name, device.address, device.port, device.user, device.cameras});
    }
    std::fputs(qUtf8Printable(table.text(session.options().json)), stdout);
    return ExitSuccess;
}

int storeDevice(PluginSession& session, CommandArguments& arguments, bool update)
{
    const int first = update ? 2 : 1;
    const auto port = arguments.number(arguments.word(first + 2), "port");
    const auto id = update ? arguments.number(arguments.word(1), "id") : std::optional(0);
    if (!port || !id) {
        return ExitUsage;
    }
    const QString name = arguments.word(first);
    const QString address = arguments.word(first + 1);
    const QString user = arguments.value("device-user");
    const QString password = arguments.value("device-password");
    const QStringList cameras = arguments.value("cameras").split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (update) {
        return change(
            session, &PluginClient::updateIPAudioResponse,
            [&](PluginClient& plugin) {
                return plugin.updateIPAudio(*id, name, address, *port, user, password, cameras);
            },
            "updated device");
    }
    return change(
        session, &PluginClient::addIPAudioResponse,
        [&](PluginClient& plugin) {
            return plugin.addIPAudio(name, address, *port, user, password, cameras);
        },
        "added device");
}

int deleteDevice(PluginSession& session, CommandArguments& arguments)
{
    const auto id = arguments.number(arguments.word(1), "id");
    if (!id) {
        return ExitUsage;
    }
    return change(
        session, &PluginClient::deleteIPAudioResponse,
        [&](PluginClient& plugin) { return plugin.deleteIPAudio(*id); }, "deleted device");
}

} // namespace

int runDevices(const QStringList& words)
{
    CommandArguments arguments(
        QStringLiteral("IP audio devices (network speakers).\n\n"
                       "  list\n  add NAME ADDRESS PORT\n  update ID NAME ADDRESS PORT\n"
                       "  delete ID"));
    arguments.option("device-user", "Login on the device.", "name");
    arguments.option("device-password", "Password on the device.", "text");
    arguments.option("cameras", "Cameras bound to the device.", "ids");
    if (!arguments.read(words)) {
        return arguments.exitStatus();
    }
    const QString verb = arguments.word(0);
    const bool known = (verb == QLatin1String("list") && arguments.words() == 1) ||
                       (verb == QLatin1String("add") && arguments.words() == 4) ||
                       (verb == QLatin1String("update") && arguments.words() == 5) ||
                       (verb == QLatin1String("delete") && arguments.words() == 2);
    if (!known) {
        return arguments.usage(
            QStringLiteral("devices list, add NAME ADDRESS PORT, update ID NAME ADDRESS PORT, or "
                           "delete ID"));
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    if (verb == QLatin1String("list")) {
        return listDevices(session);
    }
    return verb == QLatin1String("delete") ? deleteDevice(session, arguments)
                                           : storeDevice(session, arguments, verb == QLatin1String("update"));
}
