#include "src/models/ItemRows.h"

#include "src/models/ItemRoles.h"
#include "src/vocabulary/Vocabulary.h"

#include <QAbstractItemModel>
#include <QStandardItem>

namespace {

struct Field
{
    int role;
    const QString& key;
};

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
                               {IPAudioRole::idRole, Vocabulary::deviceID},
                               {IPAudioRole::deviceNameRole, Vocabulary::deviceName},
                               {IPAudioRole::ipRole, Vocabulary::ip},
                               {IPAudioRole::portRole, Vocabulary::port},
                               {IPAudioRole::userRole, Vocabulary::username},
                               {IPAudioRole::passwordRole, Vocabulary::password},
                               {IPAudioRole::bindingCameraListRole, Vocabulary::bindingCameraList},
                           });
}

QStandardItem* makeNetworkAudioGroupRow(const QVariantMap& record)
{
    return makeRow(record,
                   {
                       {NetworkAudioGroupRole::idRole, Vocabulary::groupID},
                       {NetworkAudioGroupRole::nameRole, Vocabulary::groupName},
                       {NetworkAudioGroupRole::networkAudioIDListRole, Vocabulary::networkAudioIDList},
                       {NetworkAudioGroupRole::networkAudioNameListRole, Vocabulary::networkAudioNameList},
                   });
}

QStandardItem* makeNetworkAudioScheduleRow(const QVariantMap& record)
{
    return makeRow(record,
                   {
                       {NetworkAudioScheduleRole::idRole, Vocabulary::scheduleID},
                       {NetworkAudioScheduleRole::enableRole, Vocabulary::enableSchedule},
                       {NetworkAudioScheduleRole::nameRole, Vocabulary::scheduleName},
                       {NetworkAudioScheduleRole::startTimeRole, Vocabulary::scheduleStartTime},
                       {NetworkAudioScheduleRole::scheduleTypeRole, Vocabulary::scheduleType},
                       {NetworkAudioScheduleRole::scheduleSettingsRole, Vocabulary::scheduleSettings},
                       {NetworkAudioScheduleRole::endTimeRole, Vocabulary::scheduleEndTime},
                       {NetworkAudioScheduleRole::enableEndTimeRole, Vocabulary::enableScheduleEndTime},
                       {NetworkAudioScheduleRole::audioFileIDRole, Vocabulary::audioID},
                       {NetworkAudioScheduleRole::groupIDListRole, Vocabulary::groupIDList},
                       {NetworkAudioScheduleRole::networkAudioIDListRole, Vocabulary::networkAudioIDList},
                   });
}

QModelIndexList findRowById(const QAbstractItemModel* model, int id)
{
    // Deliberate: ids are compared as text prefixes.
    return model->match(model->index(0, 0), idRole, QVariant(id), 1, Qt::MatchStartsWith | Qt::MatchWrap);
}
