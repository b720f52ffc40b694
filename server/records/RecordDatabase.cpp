#include "server/records/RecordDatabase.h"

#include <QSqlError>
#include <QStringList>
#include <QUuid>

namespace {

/** What turns a schema of a version into the next; the first makes the tables. */
const QList<QStringList>& migrations()
{
    static const QList<QStringList> steps{
        {
            QStringLiteral(
                "CREATE TABLE devices (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, "
                "ip TEXT NOT NULL, port INTEGER NOT NULL, username TEXT NOT NULL, "
                "password BLOB NOT NULL)"),
            QStringLiteral("CREATE TABLE device_cameras (device INTEGER NOT NULL REFERENCES devices(id) "
                           "ON DELETE CASCADE, position INTEGER NOT NULL, camera TEXT NOT NULL, "
                           "PRIMARY KEY (device, position))"),
            QStringLiteral("CREATE TABLE files (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL, "
                           "length INTEGER NOT NULL, status INTEGER NOT NULL, content TEXT NOT NULL UNIQUE)"),
            QStringLiteral(
                "CREATE TABLE groups (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE)"),
            QStringLiteral("CREATE TABLE group_devices (owner INTEGER NOT NULL REFERENCES groups(id) "
                           "ON DELETE CASCADE, position INTEGER NOT NULL, member INTEGER NOT NULL "
                           "REFERENCES devices(id) ON DELETE CASCADE, PRIMARY KEY (owner, position))"),
            QStringLiteral(
                "CREATE TABLE schedules (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL, "
                "enabled INTEGER NOT NULL, type INTEGER NOT NULL, settings TEXT NOT NULL, "
                "start TEXT NOT NULL, end TEXT NOT NULL, end_enabled INTEGER NOT NULL, "
                "file INTEGER REFERENCES files(id) ON DELETE SET NULL)"),
            QStringLiteral("CREATE TABLE schedule_groups (owner INTEGER NOT NULL REFERENCES schedules(id) "
                           "ON DELETE CASCADE, position INTEGER NOT NULL, member INTEGER NOT NULL "
                           "REFERENCES groups(id) ON DELETE CASCADE, PRIMARY KEY (owner, position))"),
            QStringLiteral("CREATE TABLE schedule_devices (owner INTEGER NOT NULL REFERENCES schedules(id) "
                           "ON DELETE CASCADE, position INTEGER NOT NULL, member INTEGER NOT NULL "
                           "REFERENCES devices(id) ON DELETE CASCADE, PRIMARY KEY (owner, position))"),
        },
        {
            QStringLiteral("ALTER TABLE files ADD COLUMN uploaded TEXT NOT NULL DEFAULT ''"),
            QStringLiteral("CREATE INDEX group_members ON group_devices (member)"),
            QStringLiteral("CREATE INDEX schedule_group_members ON schedule_groups (member)"),
            QStringLiteral("CREATE INDEX schedule_device_members ON schedule_devices (member)"),
        },
        {
            QStringLiteral("CREATE TABLE cameras (id INTEGER PRIMARY KEY AUTOINCREMENT, "
                           "name TEXT NOT NULL UNIQUE, kind TEXT NOT NULL, address TEXT NOT NULL)"),
        },
        {
            QStringLiteral("ALTER TABLE cameras ADD COLUMN username TEXT NOT NULL DEFAULT ''"),
            QStringLiteral("ALTER TABLE cameras ADD COLUMN password BLOB NOT NULL DEFAULT x''"),
            QStringLiteral("ALTER TABLE cameras ADD COLUMN settings TEXT NOT NULL DEFAULT ''"),
        },
    };
    return steps;
}

} // namespace

RecordDatabase::RecordDatabase(const QString& path)
    : m_connection(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
    m_open = open(path.isEmpty() ? QStringLiteral(":memory:") : path) && migrate();
    if (!m_open) {
        QSqlDatabase::database(m_connection, false)
            .close(); // nothing runs any more: the error stays the first one
    }
}

RecordDatabase::~RecordDatabase()
{
    QSqlDatabase::database(m_connection, false).close();
    QSqlDatabase::removeDatabase(m_connection);
}

bool RecordDatabase::open(const QString& path)
{
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    database.setDatabaseName(path);
    if (!database.open()) {
        m_error = database.lastError().text();
        return false;
    }
    return run(QStringLiteral("PRAGMA journal_mode = WAL")) &&
           run(QStringLiteral("PRAGMA synchronous = FULL")) &&
           run(QStringLiteral("PRAGMA foreign_keys = ON"));
}

bool RecordDatabase::migrate()
{
    QSqlQuery version = query();
    if (!run(version, QStringLiteral("PRAGMA user_version")) || !version.next()) {
        return false;
    }
    const int found = version.value(0).toInt();
    version.finish();
    static_assert(schemaVersion == 4, "a new version needs its step in migrations");
    if (found > schemaVersion || found < 0) {
        m_error =
            QStringLiteral("the database has schema %1, this server knows %2 at most; use a newer server")
                .arg(found)
                .arg(schemaVersion);
        return false;
    }
    for (int step = found; step < schemaVersion; ++step) {
        Transaction transaction(*this);
        for (const QString& statement : migrations().at(step)) {
            if (!run(statement)) {
                return false;
            }
        }
        if (!run(QStringLiteral("PRAGMA user_version = %1").arg(step + 1)) || !transaction.commit()) {
            return false;
        }
    }
    return true;
}

QSqlQuery RecordDatabase::query() const
{
    QSqlQuery made(QSqlDatabase::database(m_connection, false));
    made.setForwardOnly(true);
    return made;
}

bool RecordDatabase::run(QSqlQuery& query, const QString& statement, const QVariantList& values)
{
    if (m_runsNothing || !QSqlDatabase::database(m_connection, false).isOpen()) {
        return false; // errorString has the reason
    }
    bool done = query.prepare(statement);
    if (done) {
        for (const QVariant& value : values) {
            // A null text is an empty one, not the absence of a value.
            const bool emptyText = value.type() == QVariant::String && value.isNull();
            query.addBindValue(emptyText ? QVariant(QLatin1String("")) : value);
        }
        done = query.exec();
    }
    if (!done) {
        m_error = query.lastError().text();
    }
    return done;
}

bool RecordDatabase::run(const QString& statement, const QVariantList& values)
{
    QSqlQuery once = query();
    return run(once, statement, values);
}

bool RecordDatabase::read(const QString& statement, const QVariantList& values,
                          const std::function<void(const QSqlQuery&)>& row)
{
    QSqlQuery rows = query();
    if (!run(rows, statement, values)) {
        return false;
    }
    while (rows.next()) {
        row(rows);
    }
    if (rows.lastError().isValid()) {
        m_error = rows.lastError().text();
        return false;
    }
    return true;
}

RecordDatabase::Transaction::Transaction(RecordDatabase& database) : m_database(database)
{
    // IMMEDIATE: the right to write is there from the start, not asked for half-way.
    m_failed = !m_database.run(QStringLiteral("BEGIN IMMEDIATE"));
    m_ended = m_failed;
    m_database.m_runsNothing |= m_failed;
}

RecordDatabase::Transaction::~Transaction()
{
    if (m_failed) {
        m_database.m_runsNothing = false;
    }
    if (!m_ended) {
        const QString error = m_database.m_error; // why it comes to this
        m_database.run(QStringLiteral("ROLLBACK"));
        m_database.m_error = error;
    }
}

bool RecordDatabase::Transaction::commit()
{
    if (m_ended) {
        return false;
    }
    m_ended = m_database.run(QStringLiteral("COMMIT"));
    return m_ended;
}
