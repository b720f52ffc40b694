#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <vector>

/** Rows for people (aligned columns) or programs (a JSON array of objects). */
class Table
{
public:
    /** A column of the table. */
    struct Column
    {
        QString title; ///< For people.
        QString key;   ///< In JSON.
    };

    /** Makes a table without rows. */
    explicit Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

    /** Adds a row, with one value for each column. */
    void add(const QVariantList& values) { m_rows.append(values); }

    /** Returns the number of rows. */
    int rows() const { return m_rows.size(); }

    /** Returns the whole table as JSON or as lines. */
    QString text(bool json) const;

private:
    std::vector<Column> m_columns;
    QList<QVariantList> m_rows;
};

/** Converts ids to the value of a cell. */
QVariantList toVariants(const QList<int>& ids);

/** Prints an object as JSON to stdout. */
void printJson(const QVariantMap& object);
