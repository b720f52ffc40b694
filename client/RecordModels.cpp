#include "client/RecordModels.h"

#include "src/vocabulary/Vocabulary.h"

#include <QMetaMethod>
#include <QSortFilterProxyModel>

namespace {

QList<int> ids(const QVariant& value)
{
    QList<int> list;
    const QVariantList entries = value.toList();
    for (const QVariant& entry : entries) {
        list.append(entry.toInt());
    }
    return list;
}

// In the order of the role names that the constructors give.
namespace Device {
enum Field
{
    Id,
    Name,
    Address,
    Port,
    User,
    Password,
    Cameras,
};
} // namespace Device

namespace Group {
enum Field
{
    Id,
    Name,
    Devices,
    DeviceNames,
};
} // namespace Group

namespace Schedule {
enum Field
{
    Id,
    Enabled,
    Name,
    Start,
    Type,
    Settings,
    End,
    EndEnabled,
    File,
    Groups,
    Devices,
};
} // namespace Schedule

constexpr char setFilterMethod[] = "setFilter(QString)";
constexpr char setSortMethod[] = "setSort(Qt::SortOrder)";

/** A method of an object by its signature; invalid without one. */
QMetaMethod methodOf(const QObject* object, const char* signature)
{
    const QMetaObject* meta = object->metaObject();
    return meta->method(meta->indexOfMethod(signature));
}

} // namespace

RecordModel::RecordModel(QAbstractItemModel* source, const QVector<FieldType>& fields, QObject* parent)
    : QIdentityProxyModel(parent)
{
    setSourceModel(source);
    const QHash<int, QByteArray> roles = source->roleNames();
    for (const FieldType& each : fields) {
        m_roles.append(roles.key(each.role, -1));
        if (m_roles.last() < 0) {
            m_missing.append(QString::fromLatin1(each.role));
        }
        m_types.insert(m_roles.last(), each.type);
    }
}

QVariant RecordModel::data(const QModelIndex& index, int role) const
{
    QVariant value = QIdentityProxyModel::data(index, role);
    const auto type = m_types.find(role);
    if (type != m_types.end() && index.isValid() && value.userType() != *type && !value.convert(*type)) {
        value = QVariant(*type, nullptr);
    }
    return value;
}

QVariant RecordModel::field(int row, int number) const
{
    const int role = m_roles[number];
    return role < 0 ? QVariant() : index(row, 0).data(role);
}

DeviceModel::DeviceModel(QAbstractItemModel* source, QObject* parent)
    : RecordModel(source,
                  {{"idRole", QMetaType::Int},
                   {"deviceNameRole", QMetaType::QString},
                   {"ipRole", QMetaType::QString},
                   {"portRole", QMetaType::Int},
                   {"userRole", QMetaType::QString},
                   {"passwordRole", QMetaType::QString},
                   {"bindingCameraListRole", QMetaType::QStringList}},
                  parent)
{
}

DeviceRow DeviceModel::device(int row) const
{
    DeviceRow device;
    device.id = field(row, Device::Id).toInt();
    device.name = field(row, Device::Name).toString();
    device.address = field(row, Device::Address).toString();
    device.port = field(row, Device::Port).toInt();
    device.user = field(row, Device::User).toString();
    device.password = field(row, Device::Password).toString();
    device.cameras = field(row, Device::Cameras).toStringList();
    return device;
}

void DeviceModel::setFilter(const QString& text)
{
    if (auto* source = qobject_cast<QSortFilterProxyModel*>(sourceModel())) {
        source->setFilterFixedString(text);
    }
}

GroupModel::GroupModel(QAbstractItemModel* source, QObject* parent)
    : RecordModel(source,
                  {{"idRole", QMetaType::Int},
                   {"nameRole", QMetaType::QString},
                   {"networkAudioIDListRole", QMetaType::QVariantList},
                   {"networkAudioNameListRole", QMetaType::QStringList}},
                  parent)
{
}

GroupRow GroupModel::group(int row) const
{
    return {field(row, Group::Id).toInt(), field(row, Group::Name).toString(),
            ids(field(row, Group::Devices)), field(row, Group::DeviceNames).toStringList()};
}

void GroupModel::setFilter(const QString& text)
{
    methodOf(sourceModel(), setFilterMethod)
        .invoke(sourceModel(), Qt::DirectConnection, Q_ARG(QString, text));
}

void GroupModel::setSort(Qt::SortOrder order)
{
    methodOf(sourceModel(), setSortMethod)
        .invoke(sourceModel(), Qt::DirectConnection, Q_ARG(Qt::SortOrder, order));
}

QStringList GroupModel::sourceMethods()
{
    return {QLatin1String(setFilterMethod), QLatin1String(setSortMethod)};
}

ScheduleModel::ScheduleModel(QAbstractItemModel* source, QObject* parent)
    : RecordModel(source,
                  {{"idRole", QMetaType::Int},
                   {"enableRole", QMetaType::Bool},
                   {"nameRole", QMetaType::QString},
                   {"startTimeRole", QMetaType::QString},
                   {"scheduleTypeRole", QMetaType::Int},
                   {"scheduleSettingsRole", QMetaType::QVariantMap},
                   {"endTimeRole", QMetaType::QString},
                   {"enableEndTimeRole", QMetaType::Bool},
                   {"audioFileIDRole", QMetaType::Int},
                   {"groupIDListRole", QMetaType::QVariantList},
                   {"networkAudioIDListRole", QMetaType::QVariantList}},
                  parent)
{
}

ScheduleRow ScheduleModel::schedule(int row) const
{
    ScheduleRow schedule;
    schedule.id = field(row, Schedule::Id).toInt();
    schedule.enabled = field(row, Schedule::Enabled).toBool();
    schedule.name = field(row, Schedule::Name).toString();
    schedule.start = field(row, Schedule::Start).toString();
    schedule.type = field(row, Schedule::Type).toInt();
    schedule.settings = field(row, Schedule::Settings).toMap();
    schedule.end = field(row, Schedule::End).toString();
    schedule.endEnabled = field(row, Schedule::EndEnabled).toBool();
    schedule.file = field(row, Schedule::File).toInt();
    schedule.groups = ids(field(row, Schedule::Groups));
    schedule.devices = ids(field(row, Schedule::Devices));
    return schedule;
}

QVariantMap ScheduleModel::record(int row) const
{
    if (row < 0 || row >= rowCount()) {
        return {};
    }
    // The values as they came: what this program does not know of them goes back to the server unchanged.
    return {
        {Vocabulary::scheduleID, field(row, Schedule::Id)},
        {Vocabulary::enableSchedule, field(row, Schedule::Enabled)},
        {Vocabulary::scheduleName, field(row, Schedule::Name)},
        {Vocabulary::scheduleStartTime, field(row, Schedule::Start)},
        {Vocabulary::scheduleType, field(row, Schedule::Type)},
        {Vocabulary::scheduleSettings, field(row, Schedule::Settings)},
        {Vocabulary::scheduleEndTime, field(row, Schedule::End)},
        {Vocabulary::enableScheduleEndTime, field(row, Schedule::EndEnabled)},
        {Vocabulary::audioID, field(row, Schedule::File)},
        {Vocabulary::groupIDList, field(row, Schedule::Groups)},
        {Vocabulary::networkAudioIDList, field(row, Schedule::Devices)},
    };
}
