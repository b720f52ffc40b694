#include "cli/commands/CommandArguments.h"
#include "cli/commands/CommandResult.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"
#include "protocol/ScheduleRule.h"
#include "protocol/Words.h"

#include <cstdio>

namespace {

QString repeatText(const ScheduleRow& schedule)
{
    switch (schedule.type) {
    case ScheduleRule::Once:
        return QStringLiteral("once");
    case ScheduleRule::Daily:
        return QStringLiteral("daily");
    default: {
        QStringList days;
        const QVariantList weekdays = schedule.settings.value(Words::weekdays).toList();
        for (const QVariant& day : weekdays) {
            days.append(day.toString());
        }
        return QStringLiteral("weekly on ") + days.join(QLatin1Char(','));
    }
    }
}

int listSchedules(PluginSession& session)
{
    session.forget();
    session.plugin().getNetworkAudioSchedule();
    if (session.waitForReply(Vocabulary::GetNetworkAudioSchedule).isEmpty()) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    const ScheduleModel* model = session.plugin().getNetworkAudioScheduleModel(&session);
    Table table({{"id", "id"},
                 {"name", "name"},
                 {"on", "enabled"},
                 {"start", "start"},
                 {"repeat", "repeat"},
                 {"until", "end"},
                 {"file", "file"},
                 {"groups", "groups"},
                 {"devices", "devices"}});
    for (int row = 0; row < model->rowCount(); ++row) {
        const ScheduleRow schedule = model->schedule(row);
        table.add({schedule.id, schedule.name, schedule.enabled, schedule.start, repeatText(schedule),
                   schedule.endEnabled ? schedule.end : QString(), schedule.file, toVariants(schedule.groups),
                   toVariants(schedule.devices)});
    }
    std::fputs(qUtf8Printable(table.text(session.options().json)), stdout);
    return ExitSuccess;
}

/** The record of an add or update; empty after a complaint. */
std::optional<QVariantMap> recordOf(CommandArguments& arguments, const QString& name)
{
    const auto weekdays = arguments.ids("weekdays");
    const auto groups = arguments.ids("groups");
    const auto devices = arguments.ids("devices");
    const auto file = arguments.number(arguments.value("file"), "file id (--file)");
    if (!weekdays || !groups || !devices || !file) {
        return std::nullopt;
    }
    const int type = arguments.isSet("weekdays") ? ScheduleRule::Weekly
                     : arguments.isSet("daily")  ? ScheduleRule::Daily
                                                 : ScheduleRule::Once;
    return QVariantMap{
        {Vocabulary::scheduleName, name},
        {Vocabulary::enableSchedule, !arguments.isSet("disabled")},
        {Vocabulary::scheduleType, type},
        {Vocabulary::scheduleSettings, QVariantMap{{Words::weekdays, *weekdays}}},
        {Vocabulary::scheduleStartTime, arguments.value("at")},
        {Vocabulary::scheduleEndTime, arguments.value("until")},
        {Vocabulary::enableScheduleEndTime, arguments.isSet("until")},
        {Vocabulary::audioID, *file},
        {Vocabulary::groupIDList, *groups},
        {Vocabulary::networkAudioIDList, *devices},
    };
}

} // namespace

int runSchedules(const QStringList& words)
{
    CommandArguments arguments(
        QStringLiteral("When the server plays which file.\n\n"
                       "  list\n  add NAME\n  update ID NAME\n  delete ID\n\n"
                       "Times are the server's local times, like 2026-03-01T08:30:00."));
    arguments.option("at", "First run.", "time");
    arguments.flag("daily", "Run every day.");
    arguments.option("weekdays", "Run on these days of the week, 1 Monday to 7 Sunday.", "days");
    arguments.option("until", "No run starts after this.", "time");
    arguments.option("file", "Id of the audio file.", "id", "0");
    arguments.option("devices", "Ids of devices to play on.", "ids");
    arguments.option("groups", "Ids of groups to play on.", "ids");
    arguments.flag("disabled", "Switched off.");
    if (!arguments.read(words)) {
        return arguments.exitStatus();
    }
    const QString verb = arguments.word(0);
    const bool update = verb == QLatin1String("update");
    const bool remove = verb == QLatin1String("delete");
    const bool known = (verb == QLatin1String("list") && arguments.words() == 1) ||
                       (verb == QLatin1String("add") && arguments.words() == 2) ||
                       (update && arguments.words() == 3) || (remove && arguments.words() == 2);
    if (!known) {
        return arguments.usage(QStringLiteral("schedules list, add NAME, update ID NAME, or delete ID"));
    }
    const auto id = update || remove ? arguments.number(arguments.word(1), "id") : std::optional(0);
    const auto record = recordOf(arguments, arguments.word(update ? 2 : 1));
    if (!id || !record) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    if (verb == QLatin1String("list")) {
        return listSchedules(session);
    }
    if (remove) {
        return change(
            session, &PluginClient::deleteNetworkAudioScheduleResponse,
            [&](PluginClient& plugin) { return plugin.deleteNetworkAudioSchedule(*id); }, "deleted schedule");
    }
    if (update) {
        return change(
            session, &PluginClient::updateNetworkAudioScheduleResponse,
            [&](PluginClient& plugin) { return plugin.updateNetworkAudioSchedule(*id, *record); },
            "updated schedule");
    }
    return change(
        session, &PluginClient::addNetworkAudioScheduleResponse,
        [&](PluginClient& plugin) { return plugin.addNetworkAudioSchedule(*record); }, "added schedule");
}
