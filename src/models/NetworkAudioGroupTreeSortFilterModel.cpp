#include "src/models/NetworkAudioGroupTreeSortFilterModel.h"

#include "src/models/ItemRoles.h"

#include <algorithm>

NetworkAudioGroupTreeSortFilterModel::NetworkAudioGroupTreeSortFilterModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{
    QSortFilterProxyModel::sort(0, Qt::AscendingOrder);
}

void NetworkAudioGroupTreeSortFilterModel::setFilter(const QString& filter)
{
    m_filter = filter;
    invalidateFilter();
}

void NetworkAudioGroupTreeSortFilterModel::setSort(Qt::SortOrder order)
{
    sort(0, order);
    invalidate();
}

bool NetworkAudioGroupTreeSortFilterModel::filterAcceptsRow(int sourceRow,
                                                            const QModelIndex& sourceParent) const
{
    const QModelIndex index = sourceModel()->index(sourceRow, 0, sourceParent);
    if (!index.isValid()) {
        return false;
    }
    const auto contains = [this](const QVariant& text) {
        return text.toString().indexOf(m_filter, 0, Qt::CaseInsensitive) != -1;
    };
    if (contains(index.data(NetworkAudioGroupRole::nameRole))) {
        return true;
    }
    const QVariantList names = index.data(NetworkAudioGroupRole::networkAudioNameListRole).toList();
    return std::any_of(names.begin(), names.end(), contains);
}
