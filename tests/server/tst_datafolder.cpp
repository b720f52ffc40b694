// The data folder of a server: its database, key, files and lock at a start, whatever is wrong with them.

#include "tests/server/ServerHarness.h"
#include "tests/server/SqlFile.h"
#include "tests/support/FullDisk.h"
#include "tests/support/WavFiles.h"

#include <QDir>

class TestDataFolder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void lostKeyIsReported();
    void lostKeyIsNotReplaced_data();
    void lostKeyIsNotReplaced();
    void keyThatCannotBeWritten();
    void firstStartOnAFullDisk_data();
    void firstStartOnAFullDisk();
    void uploadOnAFullDisk();
    void olderSchemaIsMigrated();
    void contentFromElsewhereIsKept_data();
    void contentFromElsewhereIsKept();
    void newerSchemaIsRefused_data();
    void newerSchemaIsRefused();
    void notADatabase();
    void nothingIsDeletedAtAStart_data();
    void nothingIsDeletedAtAStart();
    void successorMayStart_data();
    void successorMayStart();
    void lockOfAKilledProcessOfTheSameNumber();

private:
    ServerConfig persistent() const
    {
        ServerConfig config;
        config.dataDirectory = m_folder.filePath("data-" + QString::fromLatin1(QTest::currentTestFunction()));
        return config;
    }
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    QTemporaryDir m_folder;
};

namespace {

/** Damages the index of 300 more contents, so that reading it ends in the middle. */
void damageIndexOfFiles(const QString& file)
{
    runSql(file, {"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 300) "
                  "INSERT INTO files (name, length, status, content) "
                  "SELECT i, 1, 2, printf('content-%04d', i) FROM n"});
    QFile bytes(file);
    QVERIFY(bytes.open(QIODevice::ReadWrite));
    constexpr qint64 pageSize = 4096;
    constexpr char indexLeaf = 10; // SQLite's type of a page
    const QByteArray pages = bytes.readAll();
    for (int page = 0; page < pages.size(); page += pageSize) {
        if (pages[page] == indexLeaf && pages.mid(page, pageSize).contains("content-0299")) {
            QVERIFY(bytes.seek(page));
            QCOMPARE(bytes.write(QByteArray(pageSize, '\xFF')), pageSize);
            return;
        }
    }
    QFAIL("no such index");
}

} // namespace

void TestDataFolder::initTestCase()
{
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(440, 0.3, 1.5, 8000), 8000));
}

void TestDataFolder::lostKeyIsReported()
{
    const ServerConfig config = persistent();
    {
        ServerHarness harness(config);
        harness.addDevice("Gate");
    }
    QFile key(QDir(config.dataDirectory).filePath("secret.key"));
    QVERIFY(key.open(QIODevice::WriteOnly));
    key.write("short");
    key.close();
    const RecordingServer server(config);
    QVERIFY(!server.isOpen());
    QVERIFY(server.errorString().contains("secret.key"));
}

void TestDataFolder::lostKeyIsNotReplaced_data()
{
    QTest::addColumn<bool>("empty");
    QTest::addColumn<QString>("password");
    QTest::newRow("missing, with a password") << false << "s3cret";
    QTest::newRow("empty, with a password") << true << "s3cret";
    QTest::newRow("missing, with a device without a password") << false << "";
    QTest::newRow("empty, as a start on a full disk left it") << true << "";
}

void TestDataFolder::lostKeyIsNotReplaced()
{
    QFETCH(bool, empty);
    QFETCH(QString, password);
    ServerConfig config = persistent();
    config.dataDirectory += QString::fromLatin1(QTest::currentDataTag());
    {
        ServerHarness harness(config);
        QVariantMap device = ServerHarness::device("Gate");
        device["password"] = password;
        harness.ask("AddIPAudio", device);
    }
    QFile key(config.dataDirectory + "/secret.key");
    QVERIFY(empty ? key.resize(0) : key.remove());
    {
        ServerHarness harness(config);
        QCOMPARE(harness.server->isOpen(), password.isEmpty());
        QCOMPARE(harness.server->errorString().contains(config.dataDirectory + "/secret.key"),
                 !password.isEmpty());
    }
    QCOMPARE(key.size(), qint64{password.isEmpty() ? 32 : 0});
    QCOMPARE(key.exists(), empty || password.isEmpty());
}

void TestDataFolder::keyThatCannotBeWritten()
{
#ifdef Q_OS_WIN
    QSKIP("Needs a symbolic link.");
#endif
    const ServerConfig config = persistent();
    QVERIFY(QDir().mkpath(config.dataDirectory));
    QVERIFY(QFile::link("/nonexistent/key", config.dataDirectory + "/secret.key"));
    const RecordingServer server(config);
    QVERIFY(!server.isOpen());
    QVERIFY2(
        server.errorString().contains(config.dataDirectory + "/secret.key cannot be written: No such file"),
        qPrintable(server.errorString()));
}

void TestDataFolder::firstStartOnAFullDisk_data()
{
    QTest::addColumn<int>("room");
    for (const int room : {0, 4096, 40960}) {
        QTest::addRow("%d bytes", room) << room;
    }
}

void TestDataFolder::firstStartOnAFullDisk()
{
    if (!FullDisk::possible) {
        QSKIP("Needs a limit of a file's size.");
    }
    QFETCH(int, room);
    ServerConfig config = persistent();
    config.dataDirectory += QString::number(room);
    {
        const FullDisk disk(static_cast<unsigned long>(room));
        const RecordingServer server(config);
        QVERIFY(!server.isOpen());
        const QString reason = server.errorString();
        QVERIFY2(reason.contains(config.dataDirectory + (room == 0 ? "/server.lock" : "/records.sqlite")),
                 qPrintable(reason));
        QVERIFY2(reason.contains("full") || reason.contains("I/O"),
                 qPrintable(reason)); // not what follows from it
        QVERIFY(!QFile::exists(config.dataDirectory + "/secret.key"));
    }
    const RecordingServer server(config); // with room again
    QVERIFY2(server.isOpen(), qPrintable(server.errorString()));
}

void TestDataFolder::uploadOnAFullDisk()
{
    if (!FullDisk::possible) {
        QSKIP("Needs a limit of a file's size.");
    }
    const ServerConfig config = persistent();
    ServerHarness harness(config);
    QCOMPARE(harness.upload(path("tone.wav")), 1);
    const QDir files(config.dataDirectory + "/files");
    const QStringList before = files.entryList(QDir::Files);
    {
        // All but the last bytes have room.
        const FullDisk disk(static_cast<unsigned long>(QFileInfo(path("tone.wav")).size() - 10));
        QFile file(path("tone.wav"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const ServerReply reply = harness.ask(
            "UploadFile", QVariantMap{{"filename", "tone.wav"}, {"content", file.readAll().toBase64()}});
        QCOMPARE(reply.returnCode, QString("-2"));
        QVERIFY2(reply.errorText.contains("cannot be stored: "), qPrintable(reply.errorText));
    }
    QCOMPARE(files.entryList(QDir::Files), before);
}

void TestDataFolder::olderSchemaIsMigrated()
{
    const ServerConfig config = persistent();
    {
        ServerHarness harness(config);
        harness.addDevice("Gate");
        harness.upload(path("tone.wav"));
    }
    runSql(config.dataDirectory + "/records.sqlite",
           {"DROP INDEX group_members", "DROP INDEX schedule_group_members",
            "DROP INDEX schedule_device_members", "DROP TABLE cameras",
            "ALTER TABLE files DROP COLUMN uploaded", "PRAGMA user_version = 1"});
    ServerHarness harness(config);
    QVERIFY2(harness.server->isOpen(), qPrintable(harness.server->errorString()));
    QCOMPARE(harness.ask("RetrieveIPAudioModel").result.toList().size(), 1);
    QCOMPARE(harness.upload(path("tone.wav")), 2);
}

void TestDataFolder::newerSchemaIsRefused_data()
{
    QTest::addColumn<QString>("version");
    for (const int version : {RecordDatabase::schemaVersion + 1, 99, -1}) {
        QTest::addRow("%d", version) << QString::number(version);
    }
}

void TestDataFolder::newerSchemaIsRefused()
{
    QFETCH(QString, version);
    ServerConfig config = persistent();
    config.dataDirectory += version;
    {
        const RecordingServer server(config);
    }
    runSql(config.dataDirectory + "/records.sqlite", {"PRAGMA user_version = " + version});
    const RecordingServer server(config);
    QVERIFY(!server.isOpen());
    QVERIFY(server.errorString().contains("schema " + version + ','));
}

void TestDataFolder::notADatabase()
{
    const ServerConfig config = persistent();
    QDir().mkpath(config.dataDirectory);
    QFile file(config.dataDirectory + "/records.sqlite");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(5000, 'x'));
    file.close();
    ServerHarness harness(config);
    QVERIFY(!harness.server->isOpen());
    QVERIFY(harness.server->errorString().contains("records.sqlite"));
    for (const char* command : {"AddIPAudio", "RetrieveIPAudioModel", "UploadFile", "GetCamera"}) {
        const ServerReply reply = harness.ask(command, ServerHarness::device("a"));
        QCOMPARE(reply.returnCode, QString("301"));
        QCOMPARE(reply.errorText, harness.server->errorString());
    }
}

void TestDataFolder::nothingIsDeletedAtAStart_data()
{
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<bool>("starts");
    QTest::newRow("missing database") << QStringList() << true;
    QTest::newRow("empty database") << QStringList() << true;
    QTest::newRow("database without the files") << QStringList{"DELETE FROM files"} << true;
    QTest::newRow("newer database") << QStringList{"DELETE FROM files", "PRAGMA user_version = 99"} << false;
    QTest::newRow("damaged database") << QStringList() << true;
}

void TestDataFolder::nothingIsDeletedAtAStart()
{
    QFETCH(QStringList, statements);
    QFETCH(bool, starts);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    ServerConfig config = persistent();
    config.dataDirectory += row;
    const QString database = config.dataDirectory + "/records.sqlite";
    const QDir files(config.dataDirectory + "/files");
    {
        ServerHarness harness(config);
        QCOMPARE(harness.upload(path("tone.wav")), 1);
    }
    // What is the user's own, and a content of an upload that was cut off.
    QVERIFY(QFile::copy(path("tone.wav"), files.filePath("thesis.odt")));
    QVERIFY(QFile::copy(path("tone.wav"), files.filePath("0a0b0c0d-0000-4000-8000-000000000000")));
    const QStringList before = files.entryList(QDir::Files);
    QCOMPARE(before.size(), 3);
    runSql(database, statements);
    if (row == "missing database") {
        QVERIFY(QFile::remove(database));
    } else if (row == "empty database") {
        QVERIFY(QFile::resize(database, 0));
    } else if (row == "damaged database") {
        damageIndexOfFiles(database);
    }
    for (int start = 0; start < 2; ++start) {
        const RecordingServer server(config);
        QCOMPARE(server.isOpen(), starts);
        QCOMPARE(files.entryList(QDir::Files), before);
    }
}

void TestDataFolder::successorMayStart_data()
{
    QTest::addColumn<QString>("way"); // to the same folder, beside it
    QTest::newRow("the same path") << "data";
    QTest::newRow("a detour") << "data/../data";
#ifndef Q_OS_WIN // whose links are files
    QTest::newRow("a link") << "link";
#endif
}

void TestDataFolder::successorMayStart()
{
    QFETCH(QString, way);
    // A window makes its next server before the one before is deleted.
    const QDir folder(persistent().dataDirectory + QString::fromLatin1(QTest::currentDataTag()));
    ServerConfig config;
    config.dataDirectory = folder.filePath("data");
    auto first = std::make_unique<ServerHarness>(config);
    first->addDevice("Gate");
    if (way == "link") {
        QVERIFY(QFile::link(config.dataDirectory, folder.filePath("link")));
    }
    ServerConfig same;
    same.dataDirectory = folder.filePath(way);
    ServerHarness second(same);
    QVERIFY2(second.server->isOpen(), qPrintable(second.server->errorString()));
    first.reset();
    QVERIFY(QFile::exists(config.dataDirectory + "/server.lock")); // the second one's, too
    QCOMPARE(second.ask("RetrieveIPAudioModel").result.toList().size(), 1);
}

void TestDataFolder::lockOfAKilledProcessOfTheSameNumber()
{
    const ServerConfig config = persistent();
    QFile lock(config.dataDirectory + "/server.lock");
    QByteArray left;
    {
        const RecordingServer server(config);
        QVERIFY(lock.open(QIODevice::ReadOnly));
        left = lock.readAll();
        lock.close();
        QVERIFY(left.startsWith(QByteArray::number(QCoreApplication::applicationPid())));
    }
    const QByteArray host = QSysInfo::machineHostName().toUtf8();
    QVERIFY(left.toLower().contains('\n' + host.toLower() + '\n'));
    left.replace('\n' + host + '\n', '\n' + host.toUpper() + '\n');
    QVERIFY(lock.open(QIODevice::WriteOnly));
    QCOMPARE(lock.write(left), qint64{left.size()});
    lock.close();
    const RecordingServer server(config);
    QVERIFY2(server.isOpen(), qPrintable(server.errorString()));
}

void TestDataFolder::contentFromElsewhereIsKept_data()
{
    QTest::addColumn<QString>("content");
    QTest::newRow("absolute") << path("precious");
    QTest::newRow("upwards") << "../secret.key";
    QTest::newRow("no upload's name") << "precious";
    QTest::newRow("none") << "";
}

void TestDataFolder::contentFromElsewhereIsKept()
{
    QFETCH(QString, content);
    const ServerConfig config = persistent();
    const QString file = QDir(config.dataDirectory + "/files").filePath(content);
    int id = 0;
    {
        ServerHarness harness(config);
        id = harness.upload(path("tone.wav"));
    }
    QVERIFY(QFile::exists(file) || QFile::copy(path("tone.wav"), file));
    runSql(config.dataDirectory + "/records.sqlite",
           {QStringLiteral("UPDATE files SET content = '%1' WHERE id = %2").arg(content).arg(id)});
    ServerHarness harness(config);
    const int device = harness.addDevice(QTest::currentDataTag());
    QCOMPARE(harness.ask("PlayAudio", QVariantMap{{"ipAudioId", device}, {"audioFileId", id}}).returnCode,
             ReturnCode::brokenFile);
    QCOMPARE(harness.ask("DeleteFile", id).returnCode, ReturnCode::success);
    QVERIFY(QFile::exists(file));
}

QTEST_GUILESS_MAIN(TestDataFolder)
#include "tst_datafolder.moc"
