#include "cli/commands/ScheduleOptions.h"

#include "protocol/ScheduleRule.h"
#include "protocol/Words.h"

namespace {

constexpr int daysPerWeek = 7;
constexpr int widestZoneDifference = 26; // hours between the clocks of two places

// Names of options.
constexpr char weekdaysOption[] = "weekdays";

/** A local time in the one form of the protocol; empty for any other text. A bare date is taken only with a
 * time of day for it. */
QString storedTime(const QString& text, const QTime& ofBareDate)
{
    if (const QDate date = QDate::fromString(text, Qt::ISODate);
        date.isValid() && text.size() == date.toString(Qt::ISODate).size()) {
        return ofBareDate.isValid()
                   ? QDateTime(date, ofBareDate, Qt::UTC).toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"))
                   : QString();
    }
    for (const char* form :
         {"yyyy-MM-ddTHH:mm:ss", "yyyy-MM-ddTHH:mm", "yyyy-MM-dd HH:mm:ss", "yyyy-MM-dd HH:mm"}) {
        QDateTime time = QDateTime::fromString(text, QString::fromLatin1(form));
        time.setTimeSpec(Qt::UTC); // the server's clock: not one of this place, which may skip hours
        if (time.isValid() && time.toString(QString::fromLatin1(form)) == text) {
            return time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
        }
    }
    return QString();
}

} // namespace

const char ScheduleOptions::details[] =
    "Times are the server's local times, like 2026-03-01T08:30:00 or 2026-03-01T08:30.";
const char ScheduleOptions::detailsOfUpdate[] =
    "What is not named stays as it is.\n"
    "Times are the server's local times, like 2026-03-01T08:30:00 or 2026-03-01T08:30.";

std::vector<CommandOption> ScheduleOptions::ofAddition()
{
    return {
        {"at", "TIME", "First run.", ""},
        {"daily", nullptr, "Run every day.", ""},
        {weekdaysOption, "DAY,...", "Run on these days of the week, 1 Monday to 7 Sunday.", ""},
        {"until", "TIME", "No run starts after this; a date without a time means the whole day.", ""},
        {"file", "FILE", "The audio file.", ""},
        {"devices", "DEVICE,...", "Devices to play on.", ""},
        {"groups", "GROUP,...", "Groups to play on.", ""},
        {"disabled", nullptr, "Switched off.", ""},
        jsonOption,
    };
}

std::vector<CommandOption> ScheduleOptions::ofUpdate()
{
    std::vector<CommandOption> options = ofAddition();
    options.insert(options.end() - 1, {
                                          {"once", nullptr, "Run once.", ""},
                                          {"no-until", nullptr, "Without an end.", ""},
                                          {"no-devices", nullptr, "On no single device.", ""},
                                          {"no-groups", nullptr, "On no group.", ""},
                                          {"enabled", nullptr, "Switched on.", ""},
                                      });
    return options;
}

std::optional<ScheduleOptions> ScheduleOptions::read(const CommandArguments& arguments)
{
    ScheduleOptions options;
    options.m_arguments = &arguments;
    for (const auto& [option, other] :
         {std::pair{"daily", weekdaysOption}, std::pair{"daily", "once"}, std::pair{weekdaysOption, "once"},
          std::pair{"until", "no-until"}, std::pair{"devices", "no-devices"},
          std::pair{"groups", "no-groups"}, std::pair{"enabled", "disabled"}}) {
        if (!arguments.onlyOne(option, other)) {
            return std::nullopt;
        }
    }
    const auto days = arguments.list(weekdaysOption);
    const auto devices = arguments.list("devices");
    const auto groups = arguments.list("groups");
    if (!days || !devices || !groups) {
        return std::nullopt;
    }
    if (arguments.isSet("at")) {
        const QString time = storedTime(arguments.value("at"), QTime());
        if (time.isEmpty()) {
            arguments.usage(
                QStringLiteral("--at takes a local time with its time of day, like 2026-03-01T08:30:00"));
            return std::nullopt;
        }
        options.m_fields.insert(Vocabulary::scheduleStartTime, time);
    }
    if (arguments.isSet("until")) {
        const QString time = storedTime(arguments.value("until"), QTime(23, 59, 59));
        if (time.isEmpty()) {
            arguments.usage(QStringLiteral("--until takes a date or a local time, like 2026-03-01T08:30:00"));
            return std::nullopt;
        }
        options.m_fields.insert(Vocabulary::scheduleEndTime, time);
    }
    if (arguments.isSet("until") || arguments.isSet("no-until")) {
        options.m_fields.insert(Vocabulary::enableScheduleEndTime, arguments.isSet("until"));
    }
    if (arguments.isSet("daily") || arguments.isSet("once")) {
        options.m_fields.insert(
            Vocabulary::scheduleType,
            static_cast<int>(arguments.isSet("daily") ? ScheduleRule::Daily : ScheduleRule::Once));
    }
    if (arguments.isSet(weekdaysOption)) {
        options.m_weekdays.emplace();
        for (const QString& text : *days) {
            bool valid = false;
            const int day = text.toInt(&valid);
            if (!valid || day < 1 || day > daysPerWeek) {
                arguments.usage(QStringLiteral("--weekdays takes numbers from 1 Monday to 7 Sunday"));
                return std::nullopt;
            }
            options.m_weekdays->append(day);
        }
        options.m_fields.insert(Vocabulary::scheduleType, static_cast<int>(ScheduleRule::Weekly));
    }
    if (arguments.isSet("enabled") || arguments.isSet("disabled")) {
        options.m_fields.insert(Vocabulary::enableSchedule, arguments.isSet("enabled"));
    }
    if (arguments.isSet("file")) {
        options.m_file = arguments.value("file");
    }
    if (arguments.isSet("devices") || arguments.isSet("no-devices")) {
        options.m_devices = devices;
    }
    if (arguments.isSet("groups") || arguments.isSet("no-groups")) {
        options.m_groups = groups;
    }
    return options;
}

void ScheduleOptions::applyTo(QVariantMap* record) const
{
    for (auto field = m_fields.begin(); field != m_fields.end(); ++field) {
        record->insert(field.key(), field.value());
    }
    if (m_weekdays) {
        QVariantMap settings = record->value(Vocabulary::scheduleSettings).toMap();
        settings.insert(Words::weekdays, *m_weekdays);
        record->insert(Vocabulary::scheduleSettings, settings);
    }
}

bool ScheduleOptions::applyTargets(RecordFinder& finder, QVariantMap* record) const
{
    if (m_file) {
        const auto file = finder.find(RecordFinder::File, *m_file);
        if (!file) {
            return false;
        }
        record->insert(Vocabulary::audioID, *file);
    }
    const auto replace = [&](RecordFinder::Kind kind, const std::optional<QStringList>& names,
                             const QString& key) {
        if (!names) {
            return true;
        }
        const auto ids = finder.findAll(kind, *names);
        record->insert(key, ids.value_or(QVariantList()));
        return ids.has_value();
    };
    return replace(RecordFinder::Device, m_devices, Vocabulary::networkAudioIDList) &&
           replace(RecordFinder::Group, m_groups, Vocabulary::groupIDList);
}

bool ScheduleOptions::isPossible(const QVariantMap& record) const
{
    QString error;
    const auto rule = ScheduleRule::fromRecord(record, &error);
    if (!rule) {
        m_arguments->usage(error);
        return false;
    }
    if (!record.value(Vocabulary::enableSchedule).toBool()) {
        return true;
    }
    // A server elsewhere may have another time zone: what may still run there is its to refuse.
    QDateTime now = QDateTime::currentDateTime();
    if (!m_arguments->client().serverUrl.isEmpty()) {
        now = now.addSecs(-widestZoneDifference * 3600);
    }
    if (!rule->nextRun(now, QTimeZone::systemTimeZone())) {
        m_arguments->usage(
            QStringLiteral("the schedule would never run: all of its times are past or after its end"));
        return false;
    }
    return true;
}
