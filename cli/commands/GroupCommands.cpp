#include "cli/commands/CommandArguments.h"
#include "cli/commands/CommandResult.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"

#include <QAbstractItemModel>

#include <cstdio>

namespace {

enum Role
{
    IdRole = Qt::UserRole + 1,
    NameRole,
    DevicesRole,
    DeviceNamesRole,
};

int listGroups(PluginSession& session, const QString& filter)
{
    // The names of devices are looked up when the groups come: first the one, then the other.
    session.waitFor("ipAudioModelChanged");
    session.forget();
    QMetaObject::invokeMethod(session.plugin(), "getNetworkAudioGroup");
    if (session.waitForReply(QStringLiteral("GetNetworkAudioGroup")).isEmpty()) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    QAbstractItemModel* model = session.model("getNetworkAudioGroupModel");
    QMetaObject::invokeMethod(model, "setFilter", Q_ARG(QString, filter));
    Table table(
        {{"id", "id"}, {"name", "name"}, {"devices", "devices"}, {"names of devices", "deviceNames"}});
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, 0);
        table.add({index.data(IdRole).toInt(), index.data(NameRole), index.data(DevicesRole),
                   index.data(DeviceNamesRole)});
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
    bool accepted = false;
    if (verb == QLatin1String("delete")) {
        QMetaObject::invokeMethod(session.plugin(), "deleteNetworkAudioGroup", Q_RETURN_ARG(bool, accepted),
                                  Q_ARG(int, *id));
        return reportChange(session, accepted, "deleteNetworkAudioGroupResponse", "deleted group");
    }
    if (update) {
        QMetaObject::invokeMethod(session.plugin(), "updateNetworkAudioGroup", Q_RETURN_ARG(bool, accepted),
                                  Q_ARG(int, *id), Q_ARG(QString, arguments.word(2)),
                                  Q_ARG(QVariant, QVariant(*devices)));
        return reportChange(session, accepted, "updateNetworkAudioGroupResponse", "updated group");
    }
    QMetaObject::invokeMethod(session.plugin(), "addNetworkAudioGroup", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(QString, arguments.word(1)), Q_ARG(QVariant, QVariant(*devices)));
    return reportChange(session, accepted, "addNetworkAudioGroupResponse", "added group");
}
