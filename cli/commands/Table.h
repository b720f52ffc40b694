#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <vector>

/** Rows for people (aligned columns) or programs (a JSON array of objects). */
class Table
{
public:
    struct Column
    {
        QString title;
        QString key; ///< In JSON.
    };

    explicit Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

    /** @param values one for each column */
    void add(const QVariantList& values) { m_rows.append(values); }

    int rows() const { return m_rows.size(); }

    QString text(bool json) const;

private:
    std::vector<Column> m_columns;
    QList<QVariantList> m_rows;
};

/** Ids as the value of a cell. */
QVariantList toVariants(const QList<int>& ids);
