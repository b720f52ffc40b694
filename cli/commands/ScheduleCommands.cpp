#include "cli/RecordFinder.h"
#include "cli/commands/Commands.h"
#include "cli/commands/RecordChange.h"
#include "cli/commands/ScheduleOptions.h"
#include "cli/commands/Table.h"
#include "protocol/ScheduleRule.h"
#include "protocol/Words.h"

#include <cstdio>

namespace {

QString typeText(int type)
{
    return type == ScheduleRule::Once    ? QStringLiteral("once")
           : type == ScheduleRule::Daily ? QStringLiteral("daily")
                                         : QStringLiteral("weekly");
}

int listSchedules(const CommandArguments& arguments)
{
    PluginSession session(arguments.client());
    ExitStatus status = session.open();
    status = status == ExitSuccess ? session.readSchedules() : status;
    if (status != ExitSuccess) {
        return status;
    }
    const ScheduleModel* model = session.plugin().getNetworkAudioScheduleModel(&session);
    Table table({{"id", "id"},
                 {"name", "name"},
                 {"on", "enabled"},
                 {"start", "start"},
                 {"repeat", "type"},
                 {"on weekdays", "weekdays"},
                 {"until", "end"},
                 {"file", "file"},
                 {"groups", "groups"},
                 {"devices", "devices"}});
    for (int row = 0; row < model->rowCount(); ++row) {
        const ScheduleRow schedule = model->schedule(row);
        const bool weekly = schedule.type == ScheduleRule::Weekly;
        table.add({schedule.id, schedule.name, schedule.enabled, schedule.start, typeText(schedule.type),
                   weekly ? schedule.settings.value(Words::weekdays).toList() : QVariantList(),
                   schedule.endEnabled ? schedule.end : QVariant(),
                   schedule.file > 0 ? schedule.file : QVariant(), toVariants(schedule.groups),
                   toVariants(schedule.devices)});
    }
    std::fputs(qUtf8Printable(table.text(arguments.json())), stdout);
    return ExitSuccess;
}

int addSchedule(const CommandArguments& arguments)
{
    const auto options = ScheduleOptions::read(arguments);
    if (!options) {
        return ExitUsage;
    }
    if (!arguments.isSet("at") || !arguments.isSet("file")) {
        return arguments.usage(
            QStringLiteral("--%1 is missing").arg(QLatin1String(arguments.isSet("at") ? "file" : "at")));
    }
    QVariantMap record{{Vocabulary::scheduleName, arguments.word(0)},
                       {Vocabulary::enableSchedule, true},
                       {Vocabulary::scheduleType, static_cast<int>(ScheduleRule::Once)},
                       {Vocabulary::scheduleSettings, QVariantMap()},
                       {Vocabulary::scheduleEndTime, QString()},
                       {Vocabulary::enableScheduleEndTime, false},
                       {Vocabulary::groupIDList, QVariantList()},
                       {Vocabulary::networkAudioIDList, QVariantList()}};
    options->applyTo(&record);
    if (!options->isPossible(record)) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    if (!options->applyTargets(finder, &record)) {
        return finder.status();
    }
    const quint64 request =
        session.send([&](PluginClient& plugin) { plugin.addNetworkAudioSchedule(record); });
    return RecordChange{"added schedule", Vocabulary::scheduleID}.finish(session, arguments, request);
}

/** Reads a record, changes what is named, and sends it back whole: the protocol knows no less. */
int changeSchedule(const CommandArguments& arguments, const QVariantMap& changes,
                   const ScheduleOptions* options, const char* done)
{
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto id = finder.find(RecordFinder::Schedule, arguments.word(0));
    auto record = id ? finder.schedule(*id) : std::nullopt;
    if (!record) {
        return finder.status();
    }
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        record->insert(change.key(), change.value());
    }
    if (options != nullptr) {
        options->applyTo(&*record);
        if (!options->isPossible(*record)) {
            return ExitUsage;
        }
        if (!options->applyTargets(finder, &*record)) {
            return finder.status();
        }
    }
    const quint64 request =
        session.send([&](PluginClient& plugin) { plugin.updateNetworkAudioSchedule(*id, *record); });
    return RecordChange{done, Vocabulary::scheduleID, *id}.finish(session, arguments, request);
}

int updateSchedule(const CommandArguments& arguments)
{
    const auto options = ScheduleOptions::read(arguments);
    if (!options) {
        return ExitUsage;
    }
    QVariantMap changes;
    if (arguments.words() > 1) {
        changes.insert(Vocabulary::scheduleName, arguments.word(1));
    }
    if (changes.isEmpty() && options->isEmpty()) {
        return arguments.usage(QStringLiteral("nothing is named that is to be changed"));
    }
    return changeSchedule(arguments, changes, &*options, "updated schedule");
}

int enableSchedule(const CommandArguments& arguments)
{
    // No option changes the times; but a schedule that is switched on must have a run to come.
    const auto options = ScheduleOptions::read(arguments);
    return options ? changeSchedule(arguments, {{Vocabulary::enableSchedule, true}}, &*options,
                                    "enabled schedule")
                   : ExitUsage;
}

int disableSchedule(const CommandArguments& arguments)
{
    return changeSchedule(arguments, {{Vocabulary::enableSchedule, false}}, nullptr, "disabled schedule");
}

int deleteSchedule(const CommandArguments& arguments)
{
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto id = finder.find(RecordFinder::Schedule, arguments.word(0));
    if (!id) {
        return finder.status();
    }
    const quint64 request =
        session.send([&](PluginClient& plugin) { plugin.deleteNetworkAudioSchedule(*id); });
    return RecordChange{"deleted schedule", Vocabulary::scheduleID, *id}.finish(session, arguments, request);
}

} // namespace

std::vector<Command> scheduleCommands()
{
    const std::vector<CommandOption> none{jsonOption};
    return {
        {"schedules list", "", "list when the server plays which file", "", none, Command::Server,
         listSchedules},
        {"schedules add", "NAME", "add a schedule", ScheduleOptions::details, ScheduleOptions::ofAddition(),
         Command::Server, addSchedule},
        {"schedules update", "ID [NAME]", "change a schedule", ScheduleOptions::detailsOfUpdate,
         ScheduleOptions::ofUpdate(), Command::Server, updateSchedule},
        {"schedules enable", "ID", "switch a schedule on", "", none, Command::Server, enableSchedule},
        {"schedules disable", "ID", "switch a schedule off", "", none, Command::Server, disableSchedule},
        {"schedules delete", "ID", "delete a schedule", "", none, Command::Server, deleteSchedule},
    };
}
