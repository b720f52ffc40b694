#include "cli/commands/CommandArguments.h"
#include "cli/commands/CommandResult.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"

#include <QAbstractItemModel>

#include <cstdio>

namespace {

// The model's roles, as its role names tell them.
enum Role
{
    IdRole = Qt::UserRole + 1,
    NameRole,
    AddressRole,
    PortRole,
    UserRole,
    PasswordRole,
    CamerasRole,
};

int listDevices(PluginSession& session)
{
    if (!session.waitFor("ipAudioModelChanged")) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    const QAbstractItemModel* model = session.model("getIPAudioModel");
    Table table({{"id", "id"},
                 {"name", "name"},
                 {"address", "ip"},
                 {"port", "port"},
                 {"user", "username"},
                 {"cameras", "cameras"}});
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, 0);
        table.add({index.data(IdRole).toInt(), index.data(NameRole), index.data(AddressRole),
                   index.data(PortRole).toInt(), index.data(UserRole), index.data(CamerasRole)});
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
    bool accepted = false;
    if (update) {
        QMetaObject::invokeMethod(session.plugin(), "updateIPAudio", Q_RETURN_ARG(bool, accepted),
                                  Q_ARG(int, *id), Q_ARG(QString, name), Q_ARG(QString, address),
                                  Q_ARG(int, *port), Q_ARG(QString, user), Q_ARG(QString, password),
                                  Q_ARG(QStringList, cameras));
        return reportChange(session, accepted, "updateIPAudioResponse", "updated device");
    }
    QMetaObject::invokeMethod(session.plugin(), "addIPAudio", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(QString, name), Q_ARG(QString, address), Q_ARG(int, *port),
                              Q_ARG(QString, user), Q_ARG(QString, password), Q_ARG(QStringList, cameras));
    return reportChange(session, accepted, "addIPAudioResponse", "added device");
}

int deleteDevice(PluginSession& session, CommandArguments& arguments)
{
    const auto id = arguments.number(arguments.word(1), "id");
    if (!id) {
        return ExitUsage;
    }
    bool accepted = false;
    QMetaObject::invokeMethod(session.plugin(), "deleteIPAudio", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(int, *id));
    return reportChange(session, accepted, "deleteIPAudioResponse", "deleted device");
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
