#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include <functional>

/**
 * The SQLite file of the server's records. It is created, or migrated to the current schema, when it is
 * opened. Foreign keys are on. It has a write-ahead log, so committed data survive the end of the process at
 * any moment. Used on one thread.
 */
class RecordDatabase
{
public:
    static constexpr int schemaVersion = 4; ///< The current schema; files of a later one are refused.

    /** @param path the file; empty for a database in memory */
    explicit RecordDatabase(const QString& path);
    ~RecordDatabase();
    RecordDatabase(const RecordDatabase&) = delete;
    RecordDatabase& operator=(const RecordDatabase&) = delete;

    /** Returns whether the database can be used. */
    bool isOpen() const { return m_open; }

    /** Returns why the database is not open, or the last error. */
    QString errorString() const { return m_error; }

    /**
     * Runs one statement.
     *
     * @param query     receives the rows
     * @param statement SQL with a question mark for each value
     * @param values    a null text is stored as an empty one
     * @return false when it fails; errorString then returns the reason
     */
    bool run(QSqlQuery& query, const QString& statement, const QVariantList& values = QVariantList());
    /** Runs one statement whose rows are not needed. */
    bool run(const QString& statement, const QVariantList& values = QVariantList());

    /**
     * Runs one statement and reads its rows.
     *
     * @param row called with each row, in order
     * @return false when the statement fails, or reading stops before the last row; errorString then returns
     * the reason
     */
    bool read(const QString& statement, const QVariantList& values,
              const std::function<void(const QSqlQuery&)>& row);

    /** Returns an empty query of this database, for run; it reads forward only. */
    QSqlQuery query() const;

    /**
     * A transaction: all changes between its construction and commit are stored, or none. One that could not
     * begin lets no statement run as long as it lives.
     */
    class Transaction
    {
    public:
        /** Begins the transaction; run, read and commit fail when that fails. */
        explicit Transaction(RecordDatabase& database);
        /** Rolls back when commit was not called, or failed. */
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;

        /** Stores the changes; returns false when that fails. */
        bool commit();

    private:
        RecordDatabase& m_database;
        bool m_ended = false;
        bool m_failed = false; ///< It did not begin.
    };

private:
    bool open(const QString& path);
    bool migrate();

    QString m_connection;
    QString m_error;
    bool m_open = false;
    bool m_runsNothing = false; ///< A transaction could not begin; m_error says why.
};
