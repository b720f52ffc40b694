#pragma once

#include "src/VoiceDeskExport.h"

#include <QSortFilterProxyModel>

/**
 * The proxy through which a front end sees the groups: those whose name, or the name of one of whose devices,
 * contains the search text, in either case. Its own search text decides; the filter properties of the base
 * class have no effect. Used on the thread of the models.
 */
class VOICEDESK_EXPORT NetworkAudioGroupTreeSortFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    /** Makes a proxy without a source model that shows every row, in ascending order of the sort role. */
    explicit NetworkAudioGroupTreeSortFilterModel(QObject* parent);

    /** Shows the groups that contain this text, at once; all of them for an empty one. */
    Q_INVOKABLE virtual void setFilter(const QString& filter);

    /** Sorts by the sort role in this order. */
    Q_INVOKABLE virtual void setSort(Qt::SortOrder order);

protected:
    /** Returns whether the row's group contains the search text; false for an invalid row. */
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    QString m_filter;
};
