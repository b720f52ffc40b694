#pragma once

#include <QVariantMap>

/** A schedule that can be saved. @param start ISO 8601 */
inline QVariantMap scheduleRecord(int type, const char* start)
{
    return {
        {"scheduleName", "Bell"},         {"enableSchedule", true},
        {"scheduleType", type},           {"scheduleSettings", QVariantMap{{"weekdays", QVariantList{3, 1}}}},
        {"scheduleStartTime", start},     {"scheduleEndTime", ""},
        {"enableScheduleEndTime", false}, {"audioID", 4},
        {"groupIDList", QVariantList{}},  {"networkAudioIDList", QVariantList{7}}};
}
