#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

/**
 * The SQLite file of the server's records: created and brought up to the present schema when it is opened,
 * with foreign keys on and a write-ahead log, so that what was committed survives the end of the process at
 * any moment. Used on one thread.
 */
class RecordDatabase
{
public:
    static constexpr int schemaVersion = 3;

    /** @param path the file; empty for records that end with the object */
    explicit RecordDatabase(const QString& path);
    ~RecordDatabase();
    RecordDatabase(const RecordDatabase&) = delete;
    RecordDatabase& operator=(const RecordDatabase&) = delete;

    bool isOpen() const { return m_open; }

    /** Why it is not open, or what failed last. */
    QString errorString() const { return m_error; }

    /** Runs one statement with its values; false, and errorString set, when it fails. */
    bool run(QSqlQuery& query, const QString& statement, const QVariantList& values = QVariantList());
    bool run(const QString& statement, const QVariantList& values = QVariantList());

    QSqlQuery query() const;

    /** Everything between its making and its commit happens, or nothing of it. */
    class Transaction
    {
    public:
        explicit Transaction(RecordDatabase& database);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;

        bool commit();

    private:
        RecordDatabase& m_database;
        bool m_ended = false;
    };

private:
    bool open(const QString& path);
    bool migrate();

    QString m_connection;
    QString m_error;
    bool m_open = false;
};
