#include "desk/CameraModel.h"

#include "protocol/CameraSettingsRecord.h"
#include "protocol/Limits.h"
#include "protocol/Words.h"

#include <algorithm>

namespace {

QString textOf(const QVariantMap& camera, const QString& key, int limit)
{
    return camera.value(key).toString().left(limit);
}

/** All settings: those of a camera that this program knows and finds valid, the defaults for the others. */
QVariantMap settingsOf(const QVariantMap& given)
{
    CameraSettings settings;
    QString error;
    for (auto each = given.begin(); each != given.end(); ++each) {
        settings =
            CameraSettingsRecord::fromMap({{each.key(), each.value()}}, settings, &error).value_or(settings);
    }
    return CameraSettingsRecord::toMap(settings);
}

} // namespace

CameraModel::Row CameraModel::rowOf(const QVariantMap& camera)
{
    Row row;
    row.id = camera.value(Vocabulary::camId).toString(); // whole: it is sent back
    row.name = textOf(camera, Words::camName, Limits::maxNameLength);
    row.kind = textOf(camera, Words::camKind, Limits::maxNameLength);
    row.address = textOf(camera, Words::camAddress, Limits::maxUrlLength);
    row.user = textOf(camera, Vocabulary::username, Limits::maxCredentialLength);
    row.online = camera.value(Words::online).toBool();
    row.settings = settingsOf(camera.value(Words::camSettings).toMap());
    return row;
}

int CameraModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant CameraModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount()) {
        return QVariant();
    }
    const Row& row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case IdRole:
        return row.id;
    case Qt::DisplayRole:
    case NameRole:
        return row.name;
    case KindRole:
        return row.kind;
    case AddressRole:
        return row.address;
    case UserRole:
        return row.user;
    case OnlineRole:
        return row.online;
    case SettingsRole:
        return row.settings;
    case RecordRole:
        return !row.address.isEmpty();
    default:
        return QVariant();
    }
}

QHash<int, QByteArray> CameraModel::roleNames() const
{
    return {{IdRole, "cameraId"},
            {NameRole, "cameraName"},
            {KindRole, "cameraKind"},
            {AddressRole, "cameraAddress"},
            {UserRole, "cameraUser"},
            {OnlineRole, "cameraOnline"},
            {SettingsRole, "cameraSettings"},
            {RecordRole, "cameraIsRecord"}};
}

void CameraModel::setSearch(const QString& text)
{
    if (m_search != text) {
        m_search = text;
        Q_EMIT searchChanged();
        filter();
    }
}

void CameraModel::setCameras(const QVariantList& cameras)
{
    std::vector<Row> rows;
    rows.reserve(static_cast<std::size_t>(cameras.size()));
    for (const QVariant& camera : cameras) {
        rows.push_back(rowOf(camera.toMap()));
    }
    m_all = std::move(rows);
    filter();
}

void CameraModel::filter()
{
    std::vector<Row> found;
    std::copy_if(m_all.begin(), m_all.end(), std::back_inserter(found), [this](const Row& row) {
        return row.name.contains(m_search, Qt::CaseInsensitive) ||
               row.address.contains(m_search, Qt::CaseInsensitive);
    });
    show(std::move(found));
}

/** Shows other rows: those at the start and at the end that stay keep their place, and a cursor on them. */
void CameraModel::show(std::vector<Row> rows)
{
    const auto same = [](const Row& one, const Row& other) { return one.id == other.id; };
    const auto ends = std::mismatch(m_rows.begin(), m_rows.end(), rows.begin(), rows.end(), same);
    const auto first = static_cast<int>(ends.first - m_rows.begin());
    const auto lasts = std::mismatch(m_rows.rbegin(), std::make_reverse_iterator(ends.first), rows.rbegin(),
                                     std::make_reverse_iterator(ends.second), same);
    const auto kept = static_cast<int>(lasts.first - m_rows.rbegin());
    const int removed = rowCount() - first - kept;
    const int added = static_cast<int>(rows.size()) - first - kept;
    if (removed > 0) {
        beginRemoveRows(QModelIndex(), first, first + removed - 1);
        m_rows.erase(m_rows.begin() + first, m_rows.begin() + first + removed);
        endRemoveRows();
    }
    if (added > 0) {
        beginInsertRows(QModelIndex(), first, first + added - 1);
        m_rows.insert(m_rows.begin() + first, rows.begin() + first, rows.begin() + first + added);
        endInsertRows();
    }
    for (int row = 0; row < rowCount(); ++row) {
        Row& shown = m_rows[static_cast<std::size_t>(row)];
        Row& now = rows[static_cast<std::size_t>(row)];
        if (!(shown == now)) {
            shown = std::move(now);
            Q_EMIT dataChanged(index(row), index(row));
        }
    }
}
