// The records of the reference server: what it accepts and refuses, and that it keeps what it confirmed.

#include "tests/server/ServerHarness.h"
#include "tests/support/FileReaders.h"
#include "tests/support/FullDisk.h"
#include "tests/support/SoundFiles.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QSqlDatabase>
#include <QSqlQuery>

class TestRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void devices();
    void refusedDevices_data();
    void refusedDevices();
    void passwordsAreSealed();
    void recordsOutliveTheServer();
    void lostKeyIsReported();
    void lostKeyIsNotReplaced_data();
    void lostKeyIsNotReplaced();
    void keyThatCannotBeWritten();
    void firstStartOnAFullDisk_data();
    void firstStartOnAFullDisk();
    void uploadOnAFullDisk();
    void groups();
    void refusedGroups();
    void files_data();
    void files();
    void fileRates();
    void refusedFiles_data();
    void refusedFiles();
    void deletedFilesLeaveTheDisk();
    void schedules();
    void refusedSchedules_data();
    void refusedSchedules();
    void deletionsReachTheirReferences();
    void unknownIds_data();
    void unknownIds();
    void olderSchemaIsMigrated();
    void newerSchemaIsRefused();
    void notADatabase();
    void nothingIsDeletedAtAStart_data();
    void nothingIsDeletedAtAStart();
    void successorMayStart_data();
    void successorMayStart();
    void lockOfAKilledProcessOfTheSameNumber();
    void everyCommandIsAnswered();

private:
    ServerConfig persistent() const
    {
        ServerConfig config;
        config.dataDirectory = m_folder.filePath("data-" + QString::fromLatin1(QTest::currentTestFunction()));
        return config;
    }
    static QByteArray wavOfRate(int rate);
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    QTemporaryDir m_folder;
};

namespace {

QVariantMap schedule(int file, const QString& devices)
{
    return {{"scheduleName", "Noon"},
            {"enableSchedule", true},
            {"scheduleType", 2},
            {"scheduleSettings", QVariantMap{{"weekdays", QVariantList{1, 5}}}},
            {"scheduleStartTime", "2026-03-01T12:00:00"},
            {"scheduleEndTime", "2026-12-31T12:00:00"},
            {"enableScheduleEndTime", true},
            {"audioID", file},
            {"groupIDList", ""},
            {"networkAudioIDList", devices}};
}

QVariantMap with(QVariantMap record, const char* key, const QVariant& value)
{
    record[key] = value;
    return record;
}

} // namespace

void TestRecords::initTestCase()
{
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(440, 0.3, 1.5, 8000), 8000));
    const auto tone = WavFiles::sine(440, 0.3, 1.5, 44100);
    QVERIFY(SoundFiles::write(path("tone.mp3"), tone, 44100));
    QVERIFY(SoundFiles::write(path("tone.m4a"), tone, 44100));
    QVERIFY(SoundFiles::write(path("tone.aac"), tone, 44100));
}

void TestRecords::devices()
{
    ServerHarness harness;
    const auto record = with(ServerHarness::device("Gate"), "bindingCameraList", "cam b|cam a");
    const ServerReply added = harness.ask("AddIPAudio", record);
    QCOMPARE(added.returnCode, QString("0"));
    QCOMPARE(added.result.toMap(), with(record, "deviceID", 1));
    const auto changed = with(with(record, "deviceName", "Dock"), "deviceID", 1);
    QCOMPARE(harness.ask("UpdateIPAudio", with(changed, "bindingCameraList", "x")).result.toMap(),
             with(changed, "bindingCameraList", "x"));
    harness.addDevice("Second");
    const QVariantList list = harness.ask("RetrieveIPAudioModel").result.toList();
    QCOMPARE(list.size(), 2);
    QCOMPARE(list[0].toMap(), with(changed, "bindingCameraList", "x"));
    QCOMPARE(harness.ask("DeleteIPAudio", 1).result, QVariant(1));
    QCOMPARE(harness.ask("RetrieveIPAudioModel").result.toList().size(), 1);
    QCOMPARE(harness.addDevice("Third"), 3); // ids are not used again
}

void TestRecords::refusedDevices_data()
{
    QTest::addColumn<QVariantMap>("record");
    QTest::addColumn<QString>("code");
    const auto good = ServerHarness::device("Gate");
    QTest::newRow("no name") << with(good, "deviceName", "") << "411";
    QTest::newRow("blank name") << with(good, "deviceName", "  ") << "411";
    QTest::newRow("long name") << with(good, "deviceName", QString(129, 'x')) << "411";
    QTest::newRow("control character") << with(good, "deviceName", "a\nb") << "411";
    QTest::newRow("taken name") << with(good, "deviceName", "Taken") << "412";
    QTest::newRow("no address") << with(good, "ip", "") << "413";
    QTest::newRow("bad address") << with(good, "ip", "10.0.0.256") << "413";
    QTest::newRow("short address") << with(good, "ip", "10.1") << "413";
    QTest::newRow("blank in the address") << with(good, "ip", "a b") << "413";
    QTest::newRow("port 0") << with(good, "port", 0) << "414";
    QTest::newRow("port 65536") << with(good, "port", 65536) << "414";
    QTest::newRow("negative port") << with(good, "port", -1) << "414";
    QTest::newRow("no number") << with(good, "port", "http") << "414";
    QTest::newRow("long password") << with(good, "password", QString(257, 'x')) << "415";
    QTest::newRow("empty camera") << with(good, "bindingCameraList", "a||b") << "416";
    QTest::newRow("camera twice") << with(good, "bindingCameraList", "a|a") << "416";
    QTest::newRow("nothing at all") << QVariantMap() << "411";
}

void TestRecords::refusedDevices()
{
    QFETCH(QVariantMap, record);
    QFETCH(QString, code);
    ServerHarness harness;
    harness.addDevice("Taken");
    const int own = harness.addDevice("Own");
    const ServerReply add = harness.ask("AddIPAudio", record);
    QCOMPARE(add.returnCode, code);
    QVERIFY(!add.errorText.isEmpty());
    const ServerReply update = harness.ask("UpdateIPAudio", with(record, "deviceID", own));
    QCOMPARE(update.returnCode, code);
    QCOMPARE(update.result.toMap()["deviceID"], QVariant(own)); // so the client knows whom it concerns
    QCOMPARE(harness.ask("RetrieveIPAudioModel").result.toList().size(), 2);
    // Its own name is no other's.
    QCOMPARE(harness.ask("UpdateIPAudio", with(ServerHarness::device("Own"), "deviceID", own)).returnCode,
             QString("0"));
    for (const char* address : {"::1", "fe80::1", "speaker.example", "speaker-7", "192.168.1.20"}) {
        QCOMPARE(harness.ask("UpdateIPAudio", with(ServerHarness::device("Own", address), "deviceID", own))
                     .returnCode,
                 QString("0"));
    }
}

void TestRecords::passwordsAreSealed()
{
    const ServerConfig config = persistent();
    {
        ServerHarness harness(config);
        harness.ask("AddIPAudio", with(ServerHarness::device("Gate"), "password", "s3cretWord"));
    }
    const QDir folder(config.dataDirectory);
    for (const QString& name : folder.entryList(QDir::Files)) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY2(!file.readAll().contains("s3cretWord"), qPrintable(name));
    }
    QVERIFY(FileReaders::isPrivate(folder.filePath("secret.key")));
    ServerHarness harness(config);
    QCOMPARE(harness.ask("RetrieveIPAudioModel").result.toList()[0].toMap()["password"],
             QVariant("s3cretWord"));
}

void TestRecords::recordsOutliveTheServer()
{
    const ServerConfig config = persistent();
    {
        ServerHarness harness(config);
        harness.addDevice("Gate");
        harness.addGroup("Yard", "1");
        QCOMPARE(harness.upload(path("tone.wav")), 1);
        QCOMPARE(harness.ask("AddNetworkAudioSchedule", schedule(1, "1")).returnCode, QString("0"));
    }
    ServerHarness harness(config);
    QCOMPARE(harness.ask("RetrieveIPAudioModel").result.toList().size(), 1);
    QCOMPARE(harness.ask("GetNetworkAudioGroup").result.toList()[0].toMap(),
             (QVariantMap{{"groupID", 1}, {"groupName", "Yard"}, {"networkAudioIDList", "1"}}));
    QCOMPARE(harness.ask("GetAudioFile").result.toList().size(), 1);
    QCOMPARE(harness.ask("GetNetworkAudioSchedule").result.toList()[0].toMap(),
             with(schedule(1, "1"), "scheduleID", 1));
}

void TestRecords::lostKeyIsReported()
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

void TestRecords::lostKeyIsNotReplaced_data()
{
    QTest::addColumn<bool>("empty");
    QTest::addColumn<QString>("password");
    QTest::newRow("missing, with a password") << false << "s3cret";
    QTest::newRow("empty, with a password") << true << "s3cret";
    QTest::newRow("missing, with a device without a password") << false << "";
    QTest::newRow("empty, as a start on a full disk left it") << true << "";
}

void TestRecords::lostKeyIsNotReplaced()
{
    QFETCH(bool, empty);
    QFETCH(QString, password);
    ServerConfig config = persistent();
    config.dataDirectory += QString::fromLatin1(QTest::currentDataTag());
    {
        ServerHarness harness(config);
        harness.ask("AddIPAudio", with(ServerHarness::device("Gate"), "password", password));
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

void TestRecords::keyThatCannotBeWritten()
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

void TestRecords::firstStartOnAFullDisk_data()
{
    QTest::addColumn<int>("room");
    for (const int room : {0, 4096, 40960}) {
        QTest::addRow("%d bytes", room) << room;
    }
}

void TestRecords::firstStartOnAFullDisk()
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

void TestRecords::uploadOnAFullDisk()
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

void TestRecords::groups()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.addDevice("b");
    const QVariantMap record{{"groupName", "Yard"}, {"networkAudioIDList", "2,1"}};
    QCOMPARE(harness.ask("AddNetworkAudioGroup", record).result.toMap(), with(record, "groupID", 1));
    const QVariantMap changed{{"groupID", 1}, {"groupName", "Hall"}, {"networkAudioIDList", ""}};
    QCOMPARE(harness.ask("UpdateNetworkAudioGroup", changed).result.toMap(), changed);
    QCOMPARE(harness.ask("GetNetworkAudioGroup").result.toList(), QVariantList{changed});
    QCOMPARE(harness.ask("DeleteNetworkAudioGroup", 1).result, QVariant(1));
    QCOMPARE(harness.ask("GetNetworkAudioGroup").result.toList(), QVariantList());
}

void TestRecords::refusedGroups()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.addGroup("Taken", "1");
    const auto add = [&](const QString& name, const QString& ids) {
        return harness
            .ask("AddNetworkAudioGroup", QVariantMap{{"groupName", name}, {"networkAudioIDList", ids}})
            .returnCode;
    };
    QCOMPARE(add("", "1"), QString("411"));
    QCOMPARE(add("Taken", "1"), QString("412"));
    QCOMPARE(add("x", "9"), QString("416"));
    QCOMPARE(add("x", "1,1"), QString("416"));
    QCOMPARE(add("x", "1,y"), QString("416"));
    QCOMPARE(harness.ask("GetNetworkAudioGroup").result.toList().size(), 1);
}

void TestRecords::files_data()
{
    QTest::addColumn<int>("tolerance");
    QTest::newRow("tone.wav") << 1;
    QTest::newRow("tone.mp3") << 100;
    QTest::newRow("tone.m4a") << 100;
    QTest::newRow("tone.aac") << 100;
}

void TestRecords::files()
{
    QFETCH(int, tolerance);
    ServerHarness harness;
    QCOMPARE(harness.upload(path(QTest::currentDataTag())), 1);
    const QVariantMap entry = harness.ask("GetAudioFile").result.toList()[0].toMap();
    QCOMPARE(entry["audioName"], QVariant(QString::fromLatin1(QTest::currentDataTag())));
    QCOMPARE(entry["audioStatus"], QVariant(2));
    const int length = entry["audioLength"].toInt();
    QVERIFY2(qAbs(length - 1500) <= tolerance, qPrintable(QString::number(length)));
}

QByteArray TestRecords::wavOfRate(int rate)
{
    return WavFiles::riff(WavFiles::chunk("fmt ", WavFiles::pcmFormat(1, rate, 16)) +
                          WavFiles::chunk("data", QByteArray(20000, 'x')));
}

void TestRecords::fileRates()
{
    ServerHarness harness;
    int files = 0;
    for (const int rate : {1000, 384000}) {
        const ServerReply reply = harness.ask(
            "UploadFile", QVariantMap{{"filename", "a.wav"}, {"content", wavOfRate(rate).toBase64()}});
        QCOMPARE(reply.returnCode, QString("0"));
        QCOMPARE(reply.result.toList().size(), ++files);
    }
}

void TestRecords::refusedFiles_data()
{
    QTest::addColumn<QVariantMap>("payload");
    QFile wav(path("tone.wav"));
    QVERIFY(wav.open(QIODevice::ReadOnly));
    const QByteArray good = wav.readAll();
    const auto payload = [](const QString& name, const QVariant& content) {
        return QVariantMap{{"filename", name}, {"content", content}, {"length", 1}};
    };
    QTest::newRow("no name") << payload("", good.toBase64());
    QTest::newRow("empty") << payload("a.wav", QByteArray());
    QTest::newRow("not Base64") << payload("a.wav", QByteArray("!!!!"));
    QTest::newRow("no sound") << payload("a.wav", QByteArray(5000, 'x').toBase64());
    QTest::newRow("header alone") << payload("a.wav", good.left(44).toBase64());
    QTest::newRow("a playlist") << payload("a.m3u8",
                                           QByteArray("#EXTM3U\n#EXTINF:1,\n/etc/passwd\n").toBase64());
    QTest::newRow("too large") << payload("a.wav", QByteArray(45 << 20, 'A'));
    for (const int rate : {1, 999, 384001, 84000000}) {
        QTest::addRow("%d Hz", rate) << payload("a.wav", wavOfRate(rate).toBase64());
    }
    QTest::newRow("nothing") << QVariantMap();
}

void TestRecords::refusedFiles()
{
    QFETCH(QVariantMap, payload);
    const ServerConfig config = persistent();
    ServerHarness harness(config);
    const ServerReply reply = harness.ask("UploadFile", payload);
    QCOMPARE(reply.returnCode, QString("-2"));
    QVERIFY(!reply.errorText.isEmpty());
    QVERIFY(harness.ask("GetAudioFile").result.toList().isEmpty());
    QVERIFY(QDir(config.dataDirectory + "/files").entryList(QDir::Files).isEmpty());
}

void TestRecords::deletedFilesLeaveTheDisk()
{
    const ServerConfig config = persistent();
    ServerHarness harness(config);
    harness.upload(path("tone.wav"));
    const QDir folder(config.dataDirectory + "/files");
    QCOMPARE(folder.entryList(QDir::Files).size(), 1);
    QVERIFY(harness.ask("DeleteFile", 1).result.toList().isEmpty());
    QVERIFY(folder.entryList(QDir::Files).isEmpty());
}

void TestRecords::schedules()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.addGroup("g", "1");
    harness.upload(path("tone.wav"));
    const QVariantMap record = schedule(1, "1");
    QCOMPARE(harness.ask("AddNetworkAudioSchedule", record).result.toMap(), with(record, "scheduleID", 1));
    const QVariantMap changed =
        with(with(with(record, "scheduleID", 1), "networkAudioIDList", ""), "groupIDList", "1");
    QCOMPARE(harness.ask("UpdateNetworkAudioSchedule", changed).result.toMap(), changed);
    QCOMPARE(harness.ask("GetNetworkAudioSchedule").result.toList(), QVariantList{changed});
    QCOMPARE(harness.ask("DeleteNetworkAudioSchedule", 1).result, QVariant(1));
    QCOMPARE(harness.ask("GetNetworkAudioSchedule").result.toList(), QVariantList());
}

void TestRecords::refusedSchedules_data()
{
    QTest::addColumn<QVariantMap>("record");
    QTest::addColumn<QString>("code");
    const QVariantMap good = schedule(1, "1");
    QTest::newRow("no name") << with(good, "scheduleName", "") << "411";
    QTest::newRow("type 3") << with(good, "scheduleType", 3) << "417";
    QTest::newRow("no type") << with(good, "scheduleType", QVariant()) << "417";
    QTest::newRow("no start") << with(good, "scheduleStartTime", "") << "417";
    QTest::newRow("bad start") << with(good, "scheduleStartTime", "2026-02-30T00:00:00") << "417";
    QTest::newRow("start with an offset") << with(good, "scheduleStartTime", "2026-02-03T00:00:00Z") << "417";
    QTest::newRow("no weekdays") << with(good, "scheduleSettings", QVariantMap()) << "417";
    QTest::newRow("weekday 8") << with(good, "scheduleSettings", QVariantMap{{"weekdays", QVariantList{8}}})
                               << "417";
    QTest::newRow("end before the start") << with(good, "scheduleEndTime", "2026-02-28T12:00:00") << "417";
    QTest::newRow("no end") << with(good, "scheduleEndTime", "") << "417";
    QTest::newRow("unknown file") << with(good, "audioID", 9) << "402";
    QTest::newRow("unknown device") << with(good, "networkAudioIDList", "9") << "416";
    QTest::newRow("unknown group") << with(good, "groupIDList", "9") << "416";
    QTest::newRow("nobody to play on") << with(good, "networkAudioIDList", "") << "421";
    QTest::newRow("huge settings") << with(good, "scheduleSettings",
                                           QVariantMap{{"weekdays", QVariantList{1}},
                                                       {"x", QString(70000, 'x')}})
                                   << "417";
}

void TestRecords::refusedSchedules()
{
    QFETCH(QVariantMap, record);
    QFETCH(QString, code);
    ServerHarness harness;
    harness.addDevice("a");
    harness.upload(path("tone.wav"));
    const ServerReply reply = harness.ask("AddNetworkAudioSchedule", record);
    QCOMPARE(reply.returnCode, code);
    QVERIFY(!reply.errorText.isEmpty());
    harness.ask("AddNetworkAudioSchedule", schedule(1, "1"));
    const ServerReply update = harness.ask("UpdateNetworkAudioSchedule", with(record, "scheduleID", 1));
    QCOMPARE(update.returnCode, code);
    QCOMPARE(update.result.toMap()["scheduleID"], QVariant(1));
}

void TestRecords::deletionsReachTheirReferences()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.addDevice("b");
    harness.addGroup("g", "1,2");
    harness.upload(path("tone.wav"));
    harness.ask("AddNetworkAudioSchedule", with(schedule(1, "1,2"), "groupIDList", "1"));
    harness.ask("DeleteIPAudio", 1);
    QCOMPARE(harness.ask("GetNetworkAudioGroup").result.toList()[0].toMap()["networkAudioIDList"],
             QVariant("2"));
    harness.ask("DeleteNetworkAudioGroup", 1);
    harness.ask("DeleteFile", 1);
    const QVariantMap left = harness.ask("GetNetworkAudioSchedule").result.toList()[0].toMap();
    QCOMPARE(left["networkAudioIDList"], QVariant("2"));
    QCOMPARE(left["groupIDList"], QVariant(""));
    QCOMPARE(left["audioID"], QVariant(0));
}

void TestRecords::unknownIds_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QVariant>("payload");
    QTest::addColumn<QString>("code");
    QTest::newRow("update device") << "UpdateIPAudio"
                                   << QVariant(with(ServerHarness::device("x"), "deviceID", 9)) << "401";
    QTest::newRow("delete device") << "DeleteIPAudio" << QVariant(9) << "401";
    QTest::newRow("delete file") << "DeleteFile" << QVariant(9) << "402";
    QTest::newRow("update group") << "UpdateNetworkAudioGroup"
                                  << QVariant(QVariantMap{{"groupID", 9}, {"groupName", "x"}}) << "403";
    QTest::newRow("delete group") << "DeleteNetworkAudioGroup" << QVariant(9) << "403";
    QTest::newRow("update schedule") << "UpdateNetworkAudioSchedule"
                                     << QVariant(with(schedule(1, "1"), "scheduleID", 9)) << "404";
    QTest::newRow("delete schedule") << "DeleteNetworkAudioSchedule" << QVariant(9) << "404";
    QTest::newRow("play on device") << "PlayAudio"
                                    << QVariant(QVariantMap{{"ipAudioId", 9}, {"audioFileId", 1}}) << "401";
    QTest::newRow("play file") << "PlayAudio" << QVariant(QVariantMap{{"ipAudioId", 1}, {"audioFileId", 9}})
                               << "402";
    QTest::newRow("play on group") << "PlayGroupAudio"
                                   << QVariant(QVariantMap{{"groupID", 9}, {"audioFileId", 1}}) << "403";
    QTest::newRow("stop device") << "StopCurrentAudio" << QVariant(9) << "401";
    QTest::newRow("stop group") << "StopCurrentGroupAudio" << QVariant(9) << "403";
    QTest::newRow("stop talk") << "StopTalkToIPAudio" << QVariant(1) << "203";
    QTest::newRow("nonsense id") << "DeleteIPAudio" << QVariant(QVariantMap()) << "401";
}

void TestRecords::unknownIds()
{
    QFETCH(QString, command);
    QFETCH(QVariant, payload);
    QFETCH(QString, code);
    ServerHarness harness;
    harness.addDevice("a");
    harness.upload(path("tone.wav"));
    const ServerReply reply = harness.ask(command, payload);
    QCOMPARE(reply.returnCode, code);
    QVERIFY(!reply.errorText.isEmpty());
}

namespace {

/** Runs statements on a database file of their own making. */
void runSql(const QString& file, const QStringList& statements)
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

void TestRecords::olderSchemaIsMigrated()
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

void TestRecords::newerSchemaIsRefused()
{
    const ServerConfig config = persistent();
    {
        const RecordingServer server(config);
    }
    runSql(config.dataDirectory + "/records.sqlite", {"PRAGMA user_version = 99"});
    const RecordingServer server(config);
    QVERIFY(!server.isOpen());
    QVERIFY(server.errorString().contains("99"));
}

void TestRecords::notADatabase()
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

void TestRecords::nothingIsDeletedAtAStart_data()
{
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<bool>("starts");
    QTest::newRow("missing database") << QStringList() << true;
    QTest::newRow("empty database") << QStringList() << true;
    QTest::newRow("database without the files") << QStringList{"DELETE FROM files"} << true;
    QTest::newRow("newer database") << QStringList{"DELETE FROM files", "PRAGMA user_version = 99"} << false;
    QTest::newRow("damaged database") << QStringList() << true;
}

void TestRecords::nothingIsDeletedAtAStart()
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

void TestRecords::successorMayStart_data()
{
    QTest::addColumn<QString>("way"); // to the same folder, beside it
    QTest::newRow("the same path") << "data";
    QTest::newRow("a detour") << "data/../data";
#ifndef Q_OS_WIN // whose links are files
    QTest::newRow("a link") << "link";
#endif
}

void TestRecords::successorMayStart()
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

void TestRecords::lockOfAKilledProcessOfTheSameNumber()
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
    QVERIFY(lock.open(QIODevice::WriteOnly));
    QCOMPARE(lock.write(left), qint64{left.size()});
    lock.close();
    const RecordingServer server(config);
    QVERIFY2(server.isOpen(), qPrintable(server.errorString()));
}

void TestRecords::everyCommandIsAnswered()
{
    ServerHarness harness;
    for (const char* command : {"AddIPAudio",
                                "AddNetworkAudioGroup",
                                "AddNetworkAudioSchedule",
                                "AlarmPlayIPAudio",
                                "DeleteFile",
                                "DeleteNetworkAudioGroup",
                                "DeleteNetworkAudioSchedule",
                                "DeleteIPAudio",
                                "GetAudioFile",
                                "RetrieveIPAudioModel",
                                "GetNetworkAudioGroup",
                                "GetNetworkAudioSchedule",
                                "PlayAudio",
                                "PlayGroupAudio",
                                "TalkData",
                                "StartTalk",
                                "StartTalkToIPAudio",
                                "StopCurrentAudio",
                                "StopCurrentGroupAudio",
                                "StopTalk",
                                "StopTalkToIPAudio",
                                "UpdateNetworkAudioGroup",
                                "UpdateNetworkAudioSchedule",
                                "UpdateIPAudio",
                                "UploadFile"}) {
        const ServerReply reply = harness.ask(command);
        QVERIFY2(reply.returnCode != "101" && reply.returnCode != "none", command);
    }
}

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
