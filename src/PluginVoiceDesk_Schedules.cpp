// Network audio schedules: the replies that change their model. Times, types and settings pass through
// unread.

#include "src/PluginVoiceDesk.h"
#include "src/models/ItemRoles.h"
#include "src/models/ItemRows.h"
#include "src/vocabulary/PluginWords.h"
#include "src/vocabulary/Vocabulary.h"

using ReturnCode::success;

QStandardItem* PluginVoiceDesk::makeScheduleRow(QVariantMap record)
{
    for (const QString& key : {Vocabulary::groupIDList, Vocabulary::networkAudioIDList}) {
        record[key] = toList(record.value(key).toString());
    }
    return makeNetworkAudioScheduleRow(record);
}

void PluginVoiceDesk::handleAddNetworkAudioSchedule(const QVariant& result, const QString& returnCode)
{
    const QVariantMap record = result.toMap();
    if (returnCode == success) {
        m_networkAudioScheduleModel->appendRow(makeScheduleRow(record));
    }
    Q_EMIT addNetworkAudioScheduleResponse(returnCode == success, returnCode,
                                           record.value(Vocabulary::scheduleID).toInt());
}

void PluginVoiceDesk::handleUpdateNetworkAudioSchedule(const QVariant& result, const QString& returnCode)
{
    const QVariantMap record = result.toMap();
    const int id = record.value(Vocabulary::scheduleID).toInt();
    const QModelIndexList hits =
        returnCode == success ? findRowById(m_networkAudioScheduleModel.data(), id) : QModelIndexList();
    if (!hits.isEmpty()) {
        // The reply replaces the row's fields whole: a key that it lacks empties the field.
        const QPersistentModelIndex row = hits.at(0);
        const auto set = [&](int role, const QVariant& value) {
            m_networkAudioScheduleModel->setData(row, value, role);
        };
        set(NetworkAudioScheduleRole::enableRole, record.value(Vocabulary::enableSchedule));
        set(NetworkAudioScheduleRole::nameRole, record.value(Vocabulary::scheduleName));
        set(NetworkAudioScheduleRole::startTimeRole, record.value(Vocabulary::scheduleStartTime));
        set(NetworkAudioScheduleRole::scheduleTypeRole, record.value(Vocabulary::scheduleType));
        set(NetworkAudioScheduleRole::scheduleSettingsRole, record.value(Vocabulary::scheduleSettings));
        set(NetworkAudioScheduleRole::endTimeRole, record.value(Vocabulary::scheduleEndTime));
        set(NetworkAudioScheduleRole::enableEndTimeRole, record.value(Vocabulary::enableScheduleEndTime));
        set(NetworkAudioScheduleRole::audioFileIDRole, record.value(Vocabulary::audioID));
        set(NetworkAudioScheduleRole::groupIDListRole,
            toList(record.value(Vocabulary::groupIDList).toString()));
        set(NetworkAudioScheduleRole::networkAudioIDListRole,
            toList(record.value(Vocabulary::networkAudioIDList).toString()));
    }
    Q_EMIT updateNetworkAudioScheduleResponse(returnCode == success, returnCode, id);
}

void PluginVoiceDesk::handleDeleteNetworkAudioSchedule(const QVariant& result, const QString& returnCode)
{
    const int id = result.toInt();
    const QModelIndexList hits =
        returnCode == success ? findRowById(m_networkAudioScheduleModel.data(), id) : QModelIndexList();
    if (!hits.isEmpty()) {
        m_networkAudioScheduleModel->removeRow(hits.at(0).row());
    }
    Q_EMIT deleteNetworkAudioScheduleResponse(returnCode == success, returnCode, id);
}

void PluginVoiceDesk::handleGetNetworkAudioSchedule(const QVariant& result, const QString& /*returnCode*/)
{
    m_networkAudioScheduleModel->clear(); // deliberate: whatever the code, so a failure leaves an empty model
    const QVariantList records = result.toList();
    for (const QVariant& record : records) {
        m_networkAudioScheduleModel->appendRow(makeScheduleRow(record.toMap()));
    }
}
