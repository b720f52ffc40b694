#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>
#include <QTest>

/** Runs statements on a database file, beside a server that may have it open. */
inline void runSql(const QString& file, const QStringList& statements)
{
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "test");
        database.setDatabaseName(file);
        QVERIFY(database.open());
        for (const QString& statement : statements) {
            QSqlQuery query(database);
            QVERIFY2(query.exec(statement), qPrintable(statement));
        }
        database.close();
    }
    QSqlDatabase::removeDatabase("test");
}
