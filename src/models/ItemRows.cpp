#include "ItemRows.h"

#include "ItemRoles.h"
#include "vocabulary/Vocabulary.h"

#include <QAbstractItemModel>
#include <QStandardItem>

namespace {

struct Field
{
    int role;
    const QString& key;
};

constexpr int idRole = Qt::UserRole + 1; // in every model

template<std::size_t Count>
QStandardItem* makeRow(const QVariantMap& record, const Field (&fields)[Count])
{
    auto* item = new QStandardItem;
    for (const Field& field : fields) {
        item->setData(record.value(field.key), field.role);
    }
    return item;
}

} // namespace

QStandardItem* makeIPAudioRow(const QVariantMap& record)
{
    return makeRow(record, {
                               {IPAudioIdRole, Vocabulary::deviceID},
                               {IPAudioDeviceNameRole, Vocabulary::deviceName},
                               {IPAudioIpRole, Vocabulary::ip},
                               {IPAudioPortRole, Vocabulary::port},
                               {IPAudioUserRole, Vocabulary::username},
                               {IPAudioPasswordRole, Vocabulary::password},
                               {IPAudioBindingCameraListRole, Vocabulary::bindingCameraList},
                           });
}

QStandardItem* makeNetworkAudioGroupRow(const QVariantMap& record)
{
    return makeRow(record, {
                               {NetworkAudioGroupIdRole, Vocabulary::groupID},
                               {NetworkAudioGroupNameRole, Vocabulary::groupName},
                               {NetworkAudioGroupNetworkAudioIDListRole, Vocabulary::networkAudioIDList},
                               {NetworkAudioGroupNetworkAudioNameListRole, Vocabulary::networkAudioNameList},
                           });
}

QStandardItem* makeNetworkAudioScheduleRow(const QVariantMap& record)
{
    return makeRow(record, {
                               {NetworkAudioScheduleIdRole, Vocabulary::scheduleID},
                               {NetworkAudioScheduleEnableRole, Vocabulary::enableSchedule},
                               {NetworkAudioScheduleNameRole, Vocabulary::scheduleName},
                               {NetworkAudioScheduleStartTimeRole, Vocabulary::scheduleStartTime},
                               {NetworkAudioScheduleScheduleTypeRole, Vocabulary::scheduleType},
                               {NetworkAudioScheduleScheduleSettingsRole, Vocabulary::scheduleSettings},
                               {NetworkAudioScheduleEndTimeRole, Vocabulary::scheduleEndTime},
                               {NetworkAudioScheduleEnableEndTimeRole, Vocabulary::enableScheduleEndTime},
                               {NetworkAudioScheduleAudioFileIDRole, Vocabulary::audioID},
                               {NetworkAudioScheduleGroupIDListRole, Vocabulary::groupIDList},
                               {NetworkAudioScheduleNetworkAudioIDListRole, Vocabulary::networkAudioIDList},
                           });
}

QModelIndexList findRowById(const QAbstractItemModel* model, int id)
{
    // Deliberate: ids are compared as text prefixes.
    return model->match(model->index(0, 0), idRole, QVariant(id), 1, Qt::MatchStartsWith | Qt::MatchWrap);
}
