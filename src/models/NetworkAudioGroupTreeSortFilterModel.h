#pragma once

#include "src/VoiceDeskExport.h"

#include <QSortFilterProxyModel>

/**
 * The groups as a front end sees them: those whose name, or the name of one of whose devices, contains the
 * search text, in either case; sorted by name.
 */
class VOICEDESK_EXPORT NetworkAudioGroupTreeSortFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit NetworkAudioGroupTreeSortFilterModel(QObject* parent);

    /** Shows the groups that contain this text; all of them for an empty one. */
    Q_INVOKABLE virtual void setFilter(const QString& filter);

    /** Sorts up or down. */
    Q_INVOKABLE virtual void setSort(Qt::SortOrder order);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    QString m_filter;
};
