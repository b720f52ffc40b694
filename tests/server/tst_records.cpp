// The records of the reference server: what it accepts and refuses, and that it keeps what it confirmed.

#include "protocol/CommandTable.h"
#include "tests/server/ServerHarness.h"
#include "tests/support/FileReaders.h"
#include "tests/support/SoundFiles.h"
#include "tests/support/Variants.h"
#include "tests/support/WavFiles.h"

#include <QDir>

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
    void additionsNeedTheirFields();
    void changesKeepWhatTheyDoNotName();
    void passwordsStayWithTheirHost();
    void answersAreWhatIsStored();
    void deletionsReachTheirReferences();
    void unknownIds_data();
    void unknownIds();
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
    QTest::newRow("line break behind an address") << with(good, "ip", "10.0.0.5\n") << "413";
    QTest::newRow("line break behind a host") << with(good, "ip", "host\n") << "413";
    QTest::newRow("escape in a scope") << with(good, "ip", "fe80::1%\x1b[31mred") << "413";
    QTest::newRow("long scope of an address") << with(good, "ip", "fe80::1%" + QString(300, 'x')) << "413";
    QTest::newRow("port 0") << with(good, "port", 0) << "414";
    QTest::newRow("port 65536") << with(good, "port", 65536) << "414";
    QTest::newRow("negative port") << with(good, "port", -1) << "414";
    QTest::newRow("long password") << with(good, "password", QString(257, 'x')) << "415";
    QTest::newRow("empty camera") << with(good, "bindingCameraList", "a||b") << "416";
    QTest::newRow("camera twice") << with(good, "bindingCameraList", "a|a") << "416";
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
    QCOMPARE(reply.errorText.contains("32 MiB"), payload["content"].toByteArray().size() > (44 << 20));
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

void TestRecords::additionsNeedTheirFields()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.upload(path("tone.wav"));
    const auto code = [&](const char* command, QVariantMap record, const char* missing) {
        record.remove(missing);
        return harness.ask(command, record).returnCode;
    };
    QCOMPARE(harness.ask("AddIPAudio", QVariantMap()).returnCode, QString("411"));
    QCOMPARE(code("AddIPAudio", ServerHarness::device("x"), "ip"), QString("413"));
    QCOMPARE(code("AddIPAudio", ServerHarness::device("x"), "port"), QString("414"));
    QCOMPARE(harness.ask("AddNetworkAudioGroup", QVariantMap()).returnCode, QString("411"));
    QCOMPARE(code("AddNetworkAudioSchedule", schedule(1, "1"), "scheduleType"), QString("417"));
    QCOMPARE(code("AddNetworkAudioSchedule", schedule(1, "1"), "audioID"), QString("402"));
    // A value that is none is missing, too.
    QCOMPARE(harness.ask("AddIPAudio", with(ServerHarness::device("x"), "port", QVariant())).returnCode,
             QString("414"));
}

void TestRecords::changesKeepWhatTheyDoNotName()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.ask("UpdateIPAudio", QVariantMap{{"deviceID", 1}, {"bindingCameraList", "cam b|cam a"}});
    harness.addGroup("g", "1");
    harness.upload(path("tone.wav"));
    harness.ask("AddNetworkAudioSchedule", with(schedule(1, "1"), "groupIDList", "1"));
    const auto compare = [&](const char* update, const char* list, const QVariantMap& change) {
        QVariantMap expected = harness.ask(list).result.toList()[0].toMap();
        for (auto field = change.begin(); field != change.end(); ++field) {
            if (field.value().isValid()) {
                expected[field.key()] = field.value();
            }
        }
        COMPARE_VARIANTS(harness.ask(update, change).result, expected);
        COMPARE_VARIANTS(harness.ask(list).result, QVariantList{expected});
    };
    const QVariantMap device{{"deviceID", 1}};
    for (const QVariantMap& change :
         {device, with(device, "port", 555), with(device, "deviceName", "b"), with(device, "username", ""),
          with(device, "password", "q"), with(device, "bindingCameraList", ""),
          with(device, "ip", QVariant())}) {
        compare("UpdateIPAudio", "RetrieveIPAudioModel", change);
        QVERIFY(!QTest::currentTestFailed());
    }
    const QVariantMap group{{"groupID", 1}};
    for (const QVariantMap& change :
         {group, with(group, "groupName", "h"), with(group, "networkAudioIDList", "")}) {
        compare("UpdateNetworkAudioGroup", "GetNetworkAudioGroup", change);
        QVERIFY(!QTest::currentTestFailed());
    }
    const QVariantMap entry{{"scheduleID", 1}};
    for (const QVariantMap& change :
         {entry, with(entry, "enableSchedule", false), with(entry, "scheduleName", "Night"),
          with(entry, "groupIDList", ""), with(entry, "scheduleStartTime", "2026-03-02T12:00:00"),
          with(entry, "enableScheduleEndTime", false), with(entry, "scheduleEndTime", ""),
          with(entry, "scheduleType", 1), with(entry, "scheduleSettings", QVariantMap()),
          with(entry, "networkAudioIDList", "")}) {
        compare("UpdateNetworkAudioSchedule", "GetNetworkAudioSchedule", change);
        QVERIFY(!QTest::currentTestFailed());
    }
    compare("UpdateNetworkAudioSchedule", "GetNetworkAudioSchedule",
            with(with(entry, "enableSchedule", true), "networkAudioIDList", "1"));
    QCOMPARE(harness.ask("UpdateNetworkAudioSchedule", with(entry, "networkAudioIDList", "")).returnCode,
             QString("421")); // it is enabled, and would have nobody to play on
    COMPARE_VARIANTS(harness.ask("DeleteIPAudio", 1.0).result, 1);
}

void TestRecords::passwordsStayWithTheirHost()
{
    ServerHarness harness;
    harness.addDevice("a");
    const auto password = [&](const QVariantMap& change) {
        return harness.ask("UpdateIPAudio", with(change, "deviceID", 1)).result.toMap()["password"];
    };
    COMPARE_VARIANTS(password({{"ip", "10.0.0.1"}, {"port", 555}}), "p");
    COMPARE_VARIANTS(password({{"ip", "10.0.0.2"}, {"password", "q"}}), "q");
    COMPARE_VARIANTS(password({{"ip", "10.0.0.3"}}), "");
    COMPARE_VARIANTS(password({{"password", "r"}}), "r");
    COMPARE_VARIANTS(password({{"ip", "10.0.0.4"}, {"password", QVariant()}}), ""); // undefined is missing
}

// Numbers and times come in more types than one; they are stored in one, and answered as they are stored.
void TestRecords::answersAreWhatIsStored()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.upload(path("tone.wav"));
    const auto stored = [&](const char* list) { return harness.ask(list).result.toList().last(); };
    const QVariant device = harness.ask("AddIPAudio", with(ServerHarness::device("b"), "port", 555.0)).result;
    COMPARE_VARIANTS(device, stored("RetrieveIPAudioModel"));
    COMPARE_VARIANTS(device.toMap()["port"], 555);
    QVariantMap record = schedule(1, "1,");
    record["scheduleType"] = 2.0;
    record["audioID"] = 1U;
    record["scheduleStartTime"] = QDateTime(QDate(2026, 3, 1), QTime(12, 0));
    record["scheduleSettings"] = QVariantMap{{"weekdays", QVariantList{1, 5.0}}, {"note", QByteArray("x")}};
    const QVariant added = harness.ask("AddNetworkAudioSchedule", record).result;
    COMPARE_VARIANTS(added, stored("GetNetworkAudioSchedule"));
    COMPARE_VARIANTS(added.toMap()["scheduleStartTime"], "2026-03-01T12:00:00");
    COMPARE_VARIANTS(added.toMap()["audioID"], 1);
    COMPARE_VARIANTS(added.toMap()["scheduleType"], 2);
    COMPARE_VARIANTS(added.toMap()["networkAudioIDList"], "1");
    record["scheduleID"] = 1LL;
    COMPARE_VARIANTS(harness.ask("UpdateNetworkAudioSchedule", record).result, added);
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
    QTest::newRow("nonsense id") << "DeleteIPAudio" << QVariant(QVariantMap()) << "102";
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
    const PayloadShape& shape = CommandTable::find(command)->refusal;
    if (shape.kind == PayloadShape::Map) {
        const QString& key = shape.keys.first();
        COMPARE_VARIANTS(reply.result.toMap()[key], payload.toMap()[key]);
    } else if (shape.kind == PayloadShape::Number && payload.userType() == QMetaType::Int) {
        COMPARE_VARIANTS(reply.result, payload);
    }
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
