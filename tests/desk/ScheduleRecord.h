#pragma once

#include "protocol/Words.h"
#include "src/vocabulary/Vocabulary.h"

#include <QVariantMap>

/** A schedule that can be saved. @param start ISO 8601 */
inline QVariantMap scheduleRecord(int type, const char* start)
{
    return {{Vocabulary::scheduleName, "Bell"},
            {Vocabulary::enableSchedule, true},
            {Vocabulary::scheduleType, type},
            {Vocabulary::scheduleSettings, QVariantMap{{Words::weekdays, QVariantList{3, 1}}}},
            {Vocabulary::scheduleStartTime, start},
            {Vocabulary::scheduleEndTime, ""},
            {Vocabulary::enableScheduleEndTime, false},
            {Vocabulary::audioID, 4},
            {Vocabulary::groupIDList, QVariantList{}},
            {Vocabulary::networkAudioIDList, QVariantList{7}}};
}
