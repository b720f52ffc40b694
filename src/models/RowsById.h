#pragma once

#include <QHash>
#include <QObject>

class QAbstractItemModel;

/**
 * findRowById for many ids: reads the model's ids once, at the first look-up and again after a change of the
 * model, and gives the same row for every id.
 */
class RowsById
{
public:
    /** @param model outlives the object */
    explicit RowsById(const QAbstractItemModel* model);

    /** The row that findRowById finds; -1 when it finds none. */
    int find(int id);

private:
    void read();

    const QAbstractItemModel* m_model;
    QHash<int, int> m_rows; ///< The first row whose id's text begins with a number's, by that number.
    bool m_stale = true;
    QObject m_receiver; ///< Its connections end with this object.
};
