// What a server answers when its database cannot be read, and what a transaction promises.

#include "server/records/RecordDatabase.h"
#include "tests/server/ServerHarness.h"
#include "tests/server/SqlFile.h"
#include "tests/support/WavFiles.h"

class TestStorage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void transactionThatCannotBegin();
    void reasonOutlivesTheRollback();
    void commitWaitsForTheDisk();
    void rowsThatCannotBeRead();
    void unreadableTable_data();
    void unreadableTable();
    void playsWithoutTheDatabase();
    void schedulesRunWithoutTheDatabase();

private:
    QTemporaryDir m_folder;
};

namespace {

int rowsOf(RecordDatabase& database, const QString& table)
{
    int rows = -1;
    database.read("SELECT count(*) FROM " + table, {},
                  [&](const QSqlQuery& row) { rows = row.value(0).toInt(); });
    return rows;
}

} // namespace

void TestStorage::transactionThatCannotBegin()
{
    RecordDatabase database((QString()));
    const QString insert = "INSERT INTO groups (name) VALUES (?)";
    {
        RecordDatabase::Transaction outer(database);
        {
            RecordDatabase::Transaction inner(database); // SQLite has no transaction inside another
            const QString reason = database.errorString();
            QVERIFY(!reason.isEmpty());
            QVERIFY(!database.run(insert, {"lost"}));
            QCOMPARE(rowsOf(database, "groups"), -1);
            QVERIFY(!inner.commit());
            QCOMPARE(database.errorString(), reason);
        }
        QVERIFY(database.run(insert, {"kept"}));
        QVERIFY(outer.commit());
    }
    QCOMPARE(rowsOf(database, "groups"), 1);
}

void TestStorage::reasonOutlivesTheRollback()
{
    RecordDatabase database((QString()));
    QString reason;
    {
        const RecordDatabase::Transaction transaction(database);
        // SQLite rolls back by itself, as after an I/O error; so there is nothing left to roll back.
        QVERIFY(!database.run("INSERT OR ROLLBACK INTO groups (name) VALUES ('a'), ('a')"));
        reason = database.errorString();
        QVERIFY2(reason.contains("UNIQUE"), qPrintable(reason));
    }
    QCOMPARE(database.errorString(), reason);
}

// What was confirmed is there after a power failure, too.
void TestStorage::commitWaitsForTheDisk()
{
    RecordDatabase database(m_folder.filePath("full.sqlite"));
    constexpr int full = 2; // in SQLite's numbers
    int level = -1;
    QVERIFY(
        database.read("PRAGMA synchronous", {}, [&](const QSqlQuery& row) { level = row.value(0).toInt(); }));
    QCOMPARE(level, full);
}

void TestStorage::rowsThatCannotBeRead()
{
    RecordDatabase database((QString()));
    int rows = 0;
    // The second row fails while the first has been read.
    QVERIFY(!database.read("SELECT abs(column1) FROM (VALUES (1), (-9223372036854775808))", {},
                           [&](const QSqlQuery&) { ++rows; }));
    QCOMPARE(rows, 1);
    QVERIFY2(database.errorString().contains("overflow"), qPrintable(database.errorString()));
}

void TestStorage::unreadableTable_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QVariant>("payload");
    QTest::addColumn<QVariant>("result");
    const auto row = [](const char* table, const char* command, const QVariant& payload = QVariant(),
                        const QVariant& result = QVariant()) {
        QTest::addRow("%s, %s", command, table) << QString(table) << QString(command) << payload << result;
    };
    const QVariantMap schedule{{"scheduleName", "s"},
                               {"scheduleType", 1},
                               {"scheduleSettings", QVariantMap()},
                               {"scheduleStartTime", "2026-03-01T12:00:00"},
                               {"audioID", 1},
                               {"groupIDList", "1"},
                               {"networkAudioIDList", "1"}};
    const QVariantMap group{{"groupName", "g"}, {"networkAudioIDList", "1"}};
    row("devices", "RetrieveIPAudioModel");
    row("device_cameras", "RetrieveIPAudioModel");
    row("groups", "GetNetworkAudioGroup");
    row("group_devices", "GetNetworkAudioGroup");
    row("files", "GetAudioFile");
    row("schedules", "GetNetworkAudioSchedule");
    row("schedule_groups", "GetNetworkAudioSchedule");
    row("files", "DeleteFile", 1);
    row("devices", "AddNetworkAudioGroup", group);
    row("devices", "AddNetworkAudioSchedule", schedule);
    row("groups", "AddNetworkAudioSchedule", schedule);
    row("files", "AddNetworkAudioSchedule", schedule);
}

void TestStorage::unreadableTable()
{
    QFETCH(QString, table);
    QFETCH(QString, command);
    QFETCH(QVariant, payload);
    QFETCH(QVariant, result);
    const QString tone = m_folder.filePath("tone.wav");
    QVERIFY(WavFiles::write(tone, WavFiles::sine(440, 0.3, 0.2, 8000), 8000));
    ServerConfig config;
    config.dataDirectory = m_folder.filePath(QString::fromLatin1(QTest::currentDataTag()));
    ServerHarness harness(config);
    harness.addDevice("a");
    harness.addGroup("all", "1");
    QCOMPARE(harness.upload(tone), 1);
    runSql(config.dataDirectory + "/records.sqlite",
           {"PRAGMA legacy_alter_table = ON", "ALTER TABLE " + table + " RENAME TO gone"});
    const ServerReply reply = harness.ask(command, payload);
    QCOMPARE(reply.returnCode, ReturnCode::storageFailed);
    QVERIFY2(reply.errorText.contains(table), qPrintable(reply.errorText));
    QCOMPARE(reply.result, result);
}

/** Sound goes on from what is known when the database cannot be read any more. */
void TestStorage::playsWithoutTheDatabase()
{
    const QString tone = m_folder.filePath("tone.wav");
    QVERIFY(WavFiles::write(tone, WavFiles::sine(440, 0.3, 0.2, 8000), 8000));
    ServerConfig config;
    config.dataDirectory = m_folder.filePath("without");
    ServerHarness harness(config);
    harness.addDevice("a");
    harness.addGroup("all", "1");
    QCOMPARE(harness.upload(tone), 1);
    runSql(config.dataDirectory + "/records.sqlite",
           {"PRAGMA legacy_alter_table = ON", "ALTER TABLE devices RENAME TO gone_devices",
            "ALTER TABLE files RENAME TO gone_files", "ALTER TABLE groups RENAME TO gone_groups",
            "ALTER TABLE group_devices RENAME TO gone_members"});
    const QVariantMap play{{"ipAudioId", 1}, {"audioFileId", 1}};
    QCOMPARE(harness.ask("PlayAudio", play).returnCode, ReturnCode::success);
    QCOMPARE(harness.ask("StopCurrentAudio", 1).returnCode, ReturnCode::success);
    const QVariantMap playGroup{{"groupID", 1}, {"audioFileId", 1}};
    QCOMPARE(harness.ask("PlayGroupAudio", playGroup).returnCode, ReturnCode::success);
    QCOMPARE(harness.ask("StopCurrentGroupAudio", 1).returnCode, ReturnCode::success);
    QVERIFY(!harness.ask("StartTalkToIPAudio", 1).result.toMap().value("talkToken").toString().isEmpty());
    QCOMPARE(harness.ask("RetrieveIPAudioModel").returnCode, ReturnCode::storageFailed);
}

void TestStorage::schedulesRunWithoutTheDatabase()
{
    const auto time = std::make_shared<QDateTime>(QDate(2026, 3, 1), QTime(11, 59, 50), Qt::UTC);
    ServerConfig config;
    config.dataDirectory = m_folder.filePath("later");
    config.clock.zone = QTimeZone::utc();
    config.clock.now = [time] { return *time; };
    const QString tone = m_folder.filePath("tone.wav");
    QVERIFY(WavFiles::write(tone, WavFiles::sine(440, 0.3, 0.2, 8000), 8000));
    ServerHarness harness(config, ServerHarness::offlineAt("10.0.0.66"));
    harness.addDevice("a", "10.0.0.66"); // offline: each run raises an event at once
    harness.upload(tone);
    QCOMPARE(harness
                 .ask("AddNetworkAudioSchedule", QVariantMap{{"scheduleName", "s"},
                                                             {"enableSchedule", true},
                                                             {"scheduleType", 1},
                                                             {"scheduleSettings", QVariantMap()},
                                                             {"scheduleStartTime", "2026-03-01T12:00:00"},
                                                             {"audioID", 1},
                                                             {"groupIDList", ""},
                                                             {"networkAudioIDList", "1"}})
                 .returnCode,
             ReturnCode::success);
    const QString file = config.dataDirectory + "/records.sqlite";
    runSql(file, {"PRAGMA legacy_alter_table = ON", "ALTER TABLE schedules RENAME TO gone"});
    *time = time->addSecs(12);
    harness.server->checkDueSchedules();
    QVERIFY(ServerHarness::waitFor([&] { return harness.events.size() == 1; }));
}

QTEST_GUILESS_MAIN(TestStorage)
#include "tst_storage.moc"
