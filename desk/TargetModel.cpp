#include "desk/TargetModel.h"

#include "client/RecordModels.h"
#include "protocol/Limits.h"
#include "protocol/Words.h"

#include <algorithm>

TargetModel::TargetModel()
{
    m_rebuild.setSingleShot(true);
    connect(&m_rebuild, &QTimer::timeout, this, &TargetModel::rebuild);
}

int TargetModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_shown.size());
}

QVariant TargetModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount()) {
        return QVariant();
    }
    const Target& target = m_targets[m_shown[static_cast<std::size_t>(index.row())]];
    switch (role) {
    case KeyRole:
        return target.key();
    case KindRole:
        return target.camera ? QStringLiteral("camera") : QStringLiteral("speaker");
    case Qt::DisplayRole:
    case NameRole:
        return target.name;
    case DetailRole:
        return target.detail;
    case StateRole:
        return target.state;
    case ChosenRole:
        return m_chosen.contains(target.key());
    default:
        return QVariant();
    }
}

QHash<int, QByteArray> TargetModel::roleNames() const
{
    return {{KeyRole, "key"},       {KindRole, "kind"},   {NameRole, "name"},
            {DetailRole, "detail"}, {StateRole, "state"}, {ChosenRole, "chosen"}};
}

void TargetModel::setSearch(const QString& text)
{
    if (m_search == text) {
        return;
    }
    m_search = text;
    Q_EMIT searchChanged();
    rearrange(m_targets);
}

void TargetModel::setSpeakers(DeviceModel* speakers)
{
    m_speakers = speakers;
    const auto later = [this] { m_rebuild.start(0); };
    connect(speakers, &QAbstractItemModel::rowsInserted, this, later);
    connect(speakers, &QAbstractItemModel::rowsRemoved, this, later);
    connect(speakers, &QAbstractItemModel::modelReset, this, later);
    connect(speakers, &QAbstractItemModel::dataChanged, this, later);
    connect(speakers, &QAbstractItemModel::layoutChanged, this, later);
    rebuild();
}

void TargetModel::setCameras(const QVariantList& cameras)
{
    if (m_cameras != cameras) {
        m_cameras = cameras;
        rebuild();
    }
}

void TargetModel::forgetServer()
{
    m_cameras.clear();
    m_speakersListed = false;
    rebuild();
}

void TargetModel::speakersListed()
{
    if (!m_speakersListed) {
        m_speakersListed = true;
        rebuild();
    }
}

void TargetModel::rebuild()
{
    QHash<QString, State> states;
    for (const Target& target : m_targets) {
        states.insert(target.key(), target.state);
    }
    std::vector<Target> targets;
    for (const QVariant& entry : qAsConst(m_cameras)) {
        const QVariantMap camera = entry.toMap();
        Target target;
        target.camera = true;
        target.id = camera.value(Vocabulary::camId).toString();
        target.name = camera.value(Words::camName).toString();
        target.detail = camera.value(Words::camAddress).toString().left(Limits::maxUrlLength);
        target.online = camera.value(Words::online, true).toBool();
        targets.push_back(target);
    }
    for (int row = 0; m_speakersListed && m_speakers && row < m_speakers->rowCount(); ++row) {
        const DeviceRow speaker = m_speakers->device(row);
        Target target;
        target.id = QString::number(speaker.id);
        target.name = speaker.name;
        target.detail = speaker.address;
        targets.push_back(target);
    }
    QSet<QString> keys;
    for (Target& target : targets) {
        target.state = target.online ? states.value(target.key(), Ready) : Offline;
        target.state = target.online && target.state == Offline ? Ready : target.state;
        keys.insert(target.key());
    }
    const int before = m_chosen.size();
    m_chosen.intersect(keys);
    rearrange(std::move(targets));
    Q_EMIT listed();
    if (m_chosen.size() != before) {
        Q_EMIT chosenChanged();
    }
}

/** Shows what the search finds in a list; a row that stays is neither removed nor moved. */
void TargetModel::rearrange(std::vector<Target> targets)
{
    std::vector<std::size_t> shown;
    for (std::size_t i = 0; i < targets.size(); ++i) {
        if (targets[i].name.contains(m_search, Qt::CaseInsensitive) ||
            targets[i].detail.contains(m_search, Qt::CaseInsensitive)) {
            shown.push_back(i);
        }
    }
    // Same rows at the start and at the end stay; what lies between is taken out and put in anew.
    const auto same = [&](std::size_t before, std::size_t after) {
        return m_targets[before].isSameAs(targets[after]);
    };
    const auto ends = std::mismatch(m_shown.begin(), m_shown.end(), shown.begin(), shown.end(), same);
    const auto first = static_cast<std::size_t>(ends.first - m_shown.begin());
    const auto lasts = std::mismatch(m_shown.rbegin(), std::make_reverse_iterator(ends.first), shown.rbegin(),
                                     std::make_reverse_iterator(ends.second), same);
    const auto kept = static_cast<std::size_t>(lasts.first - m_shown.rbegin());
    const auto removed = m_shown.size() - first - kept;
    const auto added = shown.size() - first - kept;
    std::vector<std::size_t> changed;
    for (std::size_t row = 0; row < shown.size(); ++row) {
        const bool stays = row < first || row >= first + added;
        if (stays &&
            !m_targets[m_shown[row < first ? row : row - added + removed]].looksLike(targets[shown[row]])) {
            changed.push_back(row);
        }
    }

    const bool moves = removed > 0 || added > 0;
    if (moves) {
        Q_EMIT aboutToRearrange();
    }
    if (removed > 0) {
        beginRemoveRows(QModelIndex(), static_cast<int>(first), static_cast<int>(first + removed) - 1);
        const auto from = m_shown.begin() + static_cast<std::ptrdiff_t>(first);
        m_shown.erase(from, from + static_cast<std::ptrdiff_t>(removed));
        endRemoveRows();
    }
    m_targets = std::move(targets);
    m_shown = shown;
    const auto at = m_shown.begin() + static_cast<std::ptrdiff_t>(first);
    m_shown.erase(at, at + static_cast<std::ptrdiff_t>(added));
    if (added > 0) {
        beginInsertRows(QModelIndex(), static_cast<int>(first), static_cast<int>(first + added) - 1);
        m_shown = std::move(shown);
        endInsertRows();
    }
    for (const std::size_t row : changed) {
        const QModelIndex changedRow = index(static_cast<int>(row));
        Q_EMIT dataChanged(changedRow, changedRow);
    }
    if (moves) {
        Q_EMIT rearranged();
    }
}

void TargetModel::refresh(const QString& key)
{
    for (std::size_t row = 0; row < m_shown.size(); ++row) {
        if (m_targets[m_shown[row]].key() == key) {
            const QModelIndex changed = index(static_cast<int>(row));
            Q_EMIT dataChanged(changed, changed, {StateRole, ChosenRole});
        }
    }
}

const TargetModel::Target* TargetModel::find(const QString& key) const
{
    const auto found = std::find_if(m_targets.begin(), m_targets.end(),
                                    [&](const Target& target) { return target.key() == key; });
    return found == m_targets.end() ? nullptr : &*found;
}

void TargetModel::setState(const QString& key, State state)
{
    for (Target& target : m_targets) {
        if (target.key() == key && target.state != state) {
            target.state = state;
            refresh(key);
        }
    }
}

void TargetModel::endStates()
{
    for (Target& target : m_targets) {
        if (target.state == Talking || target.state == Asked) {
            target.state = Ready;
            refresh(target.key());
        }
    }
}

std::vector<TargetModel::Target> TargetModel::chosen() const
{
    std::vector<Target> targets;
    std::copy_if(m_targets.begin(), m_targets.end(), std::back_inserter(targets),
                 [this](const Target& target) { return m_chosen.contains(target.key()); });
    return targets;
}

QString TargetModel::chosenNames() const
{
    QStringList names;
    for (const Target& target : chosen()) {
        names.append(target.name);
    }
    return names.join(QStringLiteral(", "));
}

QString TargetModel::chosenCamera() const
{
    const auto targets = chosen();
    return !targets.empty() && targets.front().camera ? targets.front().id : QString();
}

QString TargetModel::chosenCameraName() const
{
    const auto targets = chosen();
    return !targets.empty() && targets.front().camera ? targets.front().name : QString();
}

void TargetModel::choose(const QString& key, bool chosen)
{
    const Target* target = find(key);
    if (target == nullptr || m_chosen.contains(key) == chosen) {
        return;
    }
    QStringList changed{key};
    if (!chosen) {
        m_chosen.remove(key);
    } else {
        if (target->camera) {
            for (const Target& other : m_targets) {
                if (other.camera && m_chosen.remove(other.key())) {
                    changed.append(other.key());
                }
            }
        }
        m_chosen.insert(key);
    }
    for (const QString& each : qAsConst(changed)) {
        refresh(each);
    }
    Q_EMIT chosenChanged();
}

void TargetModel::chooseOnly(const QString& key)
{
    const QSet<QString> before = m_chosen;
    for (const QString& other : before) {
        if (other != key) {
            choose(other, false);
        }
    }
    choose(key, true);
}

QString TargetModel::keyAt(int row) const
{
    return index(row).data(KeyRole).toString();
}

int TargetModel::rowOf(const QString& key) const
{
    const auto found = std::find_if(m_shown.begin(), m_shown.end(),
                                    [&](std::size_t shown) { return m_targets[shown].key() == key; });
    return found == m_shown.end() ? -1 : static_cast<int>(found - m_shown.begin());
}

QVariantList TargetModel::cameras() const
{
    QVariantList list;
    for (const Target& target : m_targets) {
        if (target.camera) {
            list.append(
                QVariantMap{{QStringLiteral("id"), target.id}, {QStringLiteral("name"), target.name}});
        }
    }
    return list;
}
