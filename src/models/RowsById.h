#pragma once

#include <QHash>
#include <QObject>

class QAbstractItemModel;

/**
 * The lookup of findRowById for many ids. Reads the ids of the model at the first lookup and again after a
 * change of the model, and returns the row that findRowById returns.
 */
class RowsById
{
public:
    /** @param model outlives the object */
    explicit RowsById(const QAbstractItemModel* model);

    /** Returns the row that findRowById finds; -1 when it finds none. */
    int find(int id);

private:
    void read();

    const QAbstractItemModel* m_model;
    QHash<int, int> m_rows; ///< The first row whose id's text begins with a number's, by that number.
    bool m_stale = true;
    QObject m_receiver; ///< Its connections end with this object.
};
