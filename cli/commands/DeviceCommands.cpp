#include "cli/RecordFinder.h"
#include "cli/commands/Commands.h"
#include "cli/commands/RecordChange.h"
#include "cli/commands/Table.h"
#include "protocol/Words.h"

#include <cstdio>

namespace {

constexpr char portWord[] = "port";

int listDevices(const CommandArguments& arguments)
{
    PluginSession session(arguments.client());
    ExitStatus status = session.open();
    status = status == ExitSuccess ? session.readDevices() : status;
    if (status != ExitSuccess) {
        return status;
    }
    const DeviceModel* model = session.plugin().getIPAudioModel(&session);
    Table table({{"id", "id"},
                 {"name", "name"},
                 {"address", "ip"},
                 {portWord, portWord},
                 {"user", "username"},
                 {"cameras", "cameras"}});
    for (int row = 0; row < model->rowCount(); ++row) {
        const DeviceRow device = model->device(row);
        table.add({device.id, device.name, device.address, device.port, device.user, device.cameras});
    }
    std::fputs(qUtf8Printable(table.text(arguments.json())), stdout);
    return ExitSuccess;
}

/** Changes a record to what the options say; false, and an error printed, for options that make no sense. */
bool applyOptions(const CommandArguments& arguments, DeviceRow* device)
{
    const auto cameras = arguments.list("cameras");
    if (!cameras || !arguments.onlyOne("cameras", "no-cameras") ||
        !arguments.onlyOne("device-user", "no-login") || !arguments.onlyOne("device-password", "no-login")) {
        return false;
    }
    if (arguments.isSet("no-login")) {
        device->user.clear();
        device->password.clear();
    }
    if (arguments.isSet("device-user")) {
        device->user = arguments.value("device-user");
    }
    if (arguments.isSet("device-password")) {
        device->password = arguments.value("device-password");
    }
    if (arguments.isSet("cameras") || arguments.isSet("no-cameras")) {
        device->cameras = *cameras;
    }
    return true;
}

int addDevice(const CommandArguments& arguments)
{
    DeviceRow device;
    const auto port = arguments.number(arguments.word(2), portWord);
    if (!port || !applyOptions(arguments, &device)) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    const quint64 request = session.send([&](PluginClient& plugin) {
        plugin.addIPAudio(arguments.word(0), arguments.word(1), *port, device.user, device.password,
                          device.cameras);
    });
    return RecordChange{"added device", Vocabulary::deviceID}.finish(session, arguments, request);
}

int updateDevice(const CommandArguments& arguments)
{
    const bool portWordGiven = arguments.words() > 3;
    if ((arguments.words() > 2 && arguments.isSet("address")) ||
        (portWordGiven && arguments.isSet(portWord))) {
        return arguments.usage(QStringLiteral("the address or the port is given twice"));
    }
    const QString address = arguments.words() > 2 ? arguments.word(2) : arguments.value("address");
    const QString portText = portWordGiven ? arguments.word(3) : arguments.value(portWord);
    const auto port = portText.isEmpty() ? std::optional(0) : arguments.number(portText, portWord);
    DeviceRow unused;
    if (!port || !applyOptions(arguments, &unused)) {
        return ExitUsage;
    }
    bool changes = arguments.words() > 1;
    for (const char* option :
         {"address", portWord, "device-user", "device-password", "cameras", "no-cameras", "no-login"}) {
        changes = changes || arguments.isSet(option);
    }
    if (!changes) {
        return arguments.usage(QStringLiteral("nothing is named that is to be changed"));
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    // An update replaces the whole record, so the fields that were not given are sent as they are now, the
    // password included.
    RecordFinder finder(session);
    const auto id = finder.find(RecordFinder::Device, arguments.word(0));
    auto device = id ? finder.device(*id) : std::nullopt;
    if (!device) {
        return finder.status();
    }
    applyOptions(arguments, &*device);
    const QString name = arguments.words() > 1 ? arguments.word(1) : device->name;
    const quint64 request = session.send([&](PluginClient& plugin) {
        plugin.updateIPAudio(*id, name, address.isEmpty() ? device->address : address,
                             portText.isEmpty() ? device->port : *port, device->user, device->password,
                             device->cameras);
    });
    return RecordChange{"updated device", Vocabulary::deviceID, *id}.finish(session, arguments, request);
}

int deleteDevice(const CommandArguments& arguments)
{
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto id = finder.find(RecordFinder::Device, arguments.word(0));
    if (!id) {
        return finder.status();
    }
    const quint64 request = session.send([&](PluginClient& plugin) { plugin.deleteIPAudio(*id); });
    return RecordChange{"deleted device", Vocabulary::deviceID, *id}.finish(session, arguments, request);
}

} // namespace

std::vector<Command> deviceCommands()
{
    const std::vector<CommandOption> login{
        {"device-user", "NAME", "Login on the device.", ""},
        {"device-password", "TEXT", "Password on the device.", ""},
        {"cameras", "ID,...", "Cameras bound to the device.", ""},
        jsonOption,
    };
    std::vector<CommandOption> update{
        {"address", "ADDRESS", "New address.", ""},
        {portWord, "PORT", "New port.", ""},
        {"no-login", nullptr, "Without login and password.", ""},
        {"no-cameras", nullptr, "Bound to no camera.", ""},
    };
    update.insert(update.end(), login.begin(), login.end());
    return {
        {"devices list", "", "list network speakers", "", {jsonOption}, Command::Server, listDevices},
        {"devices add", "NAME ADDRESS PORT", "add a network speaker", "", login, Command::Server, addDevice},
        {"devices update", "ID [NAME [ADDRESS [PORT]]]", "change a network speaker",
         "What is not named stays as it is, the password too.", update, Command::Server, updateDevice},
        {"devices delete", "ID", "delete a network speaker", "", {jsonOption}, Command::Server, deleteDevice},
    };
}
