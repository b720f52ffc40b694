// Cameras as records of the server.

#include "protocol/Words.h"
#include "tests/server/AwkwardBackend.h"
#include "tests/server/ServerHarness.h"

#include <QSqlDatabase>
#include <QSqlQuery>

class TestCameras : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void areAddedChangedAndDeleted();
    void everyClientHearsOfIt();
    void refusals_data();
    void refusals();
    void areTalkedTo();
    void surviveARestart();
    void ofAnUnknownKindAreKept();
    void ofAKindThatIsNotBuiltIn();
    void openTalkOutlivesItsRecord();
    void backEndsReportChanges();
    void olderDatabaseGetsThem();
};

namespace {

QVariantMap camera(const QString& name, const QString& kind = "simulated",
                   const QString& address = "10.0.0.9")
{
    return {{"camName", name}, {"camKind", kind}, {"camAddress", address}};
}

QVariantMap withId(QVariantMap record, const QString& id)
{
    record["camId"] = id;
    return record;
}

QVariantMap listed(const QVariantMap& record, const QString& id, bool online = true)
{
    QVariantMap entry = withId(record, id);
    entry["online"] = online;
    return entry;
}

int changes(ServerHarness& harness)
{
    QCoreApplication::processEvents();
    return static_cast<int>(
        std::count_if(harness.events.begin(), harness.events.end(), [](const auto& event) {
            return event.name == Words::CamerasChanged && event.payload.isEmpty();
        }));
}

} // namespace

void TestCameras::areAddedChangedAndDeleted()
{
    ServerHarness harness;
    QCOMPARE(changes(harness), 0);
    const ServerReply added = harness.ask("AddCamera", camera("Gate"));
    QCOMPARE(added.returnCode, ReturnCode::success);
    QCOMPARE(added.result, QVariant(withId(camera("Gate"), "1")));
    QCOMPARE(changes(harness), 1);
    QCOMPARE(harness.ask("GetCamera").result, QVariant(QVariantList{listed(camera("Gate"), "1")}));
    const QVariantMap changed = withId(camera("Dock", "simulated", "dock.example"), "1");
    QCOMPARE(harness.ask("UpdateCamera", changed).result, QVariant(changed));
    QCOMPARE(changes(harness), 2);
    QCOMPARE(harness.ask("UpdateCamera", changed).returnCode, ReturnCode::success);
    QCOMPARE(changes(harness), 2); // it is as it was
    QCOMPARE(harness.ask("GetCamera").result,
             QVariant(QVariantList{listed(camera("Dock", "simulated", "dock.example"), "1")}));
    QCOMPARE(harness.ask("DeleteCamera", "1").result, QVariant("1"));
    QCOMPARE(changes(harness), 3);
    QCOMPARE(harness.ask("GetCamera").result, QVariant(QVariantList()));
    QCOMPARE(harness.ask("AddCamera", camera("Gate")).result.toMap()["camId"], QVariant("2")); // no id twice
}

void TestCameras::everyClientHearsOfIt()
{
    ServerHarness harness;
    ServerSession other(*harness.server);
    QSignalSpy events(&other, &ServerSession::eventRaised);
    harness.ask("AddCamera", camera("Gate"));
    QVERIFY(ServerHarness::waitFor([&] { return events.size() == 1; }));
    QCOMPARE(events[0][0].toString(), Words::CamerasChanged);
}

void TestCameras::refusals_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QVariant>("payload");
    QTest::addColumn<QString>("code");
    const auto row = [](const char* name, const char* command, const QVariant& payload, const QString& code) {
        QTest::newRow(name) << QString(command) << payload << code;
    };
    row("nothing", "AddCamera", QVariant(), ReturnCode::badName);
    row("no name", "AddCamera", camera(""), ReturnCode::badName);
    row("a name twice", "AddCamera", camera("Gate"), ReturnCode::nameTaken);
    row("no address", "AddCamera", camera("Dock", "simulated", ""), ReturnCode::badAddress);
    row("an unknown kind", "AddCamera", camera("Dock", "carrier pigeon"), ReturnCode::badCameraKind);
    row("no kind", "AddCamera", camera("Dock", ""), ReturnCode::badCameraKind);
    row("an unknown id", "UpdateCamera", withId(camera("Dock"), "7"), ReturnCode::noSuchCamera);
    row("not an id", "UpdateCamera", withId(camera("Dock"), "camera-1"), ReturnCode::noSuchCamera);
    row("a bad change", "UpdateCamera", withId(camera(""), "1"), ReturnCode::badName);
    row("deleting an unknown id", "DeleteCamera", "7", ReturnCode::noSuchCamera);
    row("deleting one that is no record", "DeleteCamera", "camera-1", ReturnCode::noSuchCamera);
    row("deleting nothing", "DeleteCamera", QVariant(), ReturnCode::noSuchCamera);
}

void TestCameras::refusals()
{
    QFETCH(QString, command);
    QFETCH(QVariant, payload);
    QFETCH(QString, code);
    SimulatedConfig simulated;
    simulated.cameras = defaultCameras();
    ServerHarness harness(ServerConfig(), simulated);
    harness.ask("AddCamera", camera("Gate"));
    const QVariant before = harness.ask("GetCamera").result;
    const int reported = changes(harness);
    const ServerReply reply = harness.ask(command, payload);
    QCOMPARE(reply.returnCode, code);
    QVERIFY(!reply.errorText.isEmpty());
    if (command == "UpdateCamera") {
        QCOMPARE(reply.result, QVariant(QVariantMap{{"camId", payload.toMap()["camId"]}}));
    }
    QCOMPARE(harness.ask("GetCamera").result, before);
    QCOMPARE(changes(harness), reported);
}

void TestCameras::areTalkedTo()
{
    ServerHarness harness;
    harness.ask("AddCamera", camera("Gate"));
    const ServerReply reply = harness.ask("StartTalk", QVariantMap{{"camId", "1"}});
    QCOMPARE(reply.returnCode, ReturnCode::success);
    QCOMPARE(reply.result.toMap()["camId"], QVariant("1"));
    QCOMPARE(harness.simulated.recordings->talks.size(), 1);
}

void TestCameras::surviveARestart()
{
    const QTemporaryDir folder;
    ServerConfig config;
    config.dataDirectory = folder.filePath("data");
    {
        ServerHarness harness(config);
        harness.ask("AddCamera", camera("Gate"));
    }
    ServerHarness harness(config);
    QCOMPARE(harness.ask("GetCamera").result, QVariant(QVariantList{listed(camera("Gate"), "1")}));
    QCOMPARE(changes(harness), 0);
}

void TestCameras::ofAnUnknownKindAreKept()
{
    const QTemporaryDir folder;
    ServerConfig config;
    config.dataDirectory = folder.filePath("data");
    {
        ServerHarness harness(config);
        harness.ask("AddCamera", camera("Gate"));
    }
    {
        SimulatedConfig none;
        none.hasCameras = false;
        none.cameras = defaultCameras();
        ServerHarness harness(config, none);
        QCOMPARE(harness.ask("GetCamera").result, QVariant(QVariantList{listed(camera("Gate"), "1", false)}));
        QCOMPARE(harness.ask("StartTalk", QVariantMap{{"camId", "1"}}).returnCode, ReturnCode::cameraOffline);
        QCOMPARE(harness.ask("StartTalk", QVariantMap{{"camId", "camera-1"}}).returnCode,
                 ReturnCode::noSuchCamera);
        QCOMPARE(harness.ask("AddCamera", camera("Dock")).returnCode, ReturnCode::badCameraKind);
    }
    ServerHarness harness(config);
    QCOMPARE(harness.ask("GetCamera").result, QVariant(QVariantList{listed(camera("Gate"), "1")}));
}

void TestCameras::ofAKindThatIsNotBuiltIn()
{
    ServerConfig config;
    config.devices.absentCameras = {{"onvif", "built without it"}};
    ServerHarness harness(config);
    const ServerReply reply = harness.ask("AddCamera", camera("Gate", "onvif"));
    QCOMPARE(reply.returnCode, ReturnCode::badCameraKind);
    QCOMPARE(reply.errorText, QString("built without it"));
    QCOMPARE(harness.ask("AddCamera", camera("Gate", "pigeon")).errorText,
             QString("this server has no cameras of the kind \"pigeon\""));
}

void TestCameras::openTalkOutlivesItsRecord()
{
    ServerHarness harness;
    harness.ask("AddCamera", camera("Gate"));
    const QVariant token = harness.ask("StartTalk", QVariantMap{{"camId", "1"}}).result.toMap()["talkToken"];
    harness.ask("DeleteCamera", "1");
    QCOMPARE(harness.ask("StopTalk", QVariantMap{{"talkToken", token}}).returnCode, ReturnCode::success);
}

void TestCameras::backEndsReportChanges()
{
    const auto devices = std::make_shared<AwkwardDevices>();
    devices->cameras = {{"gate", "Gate"}};
    ServerConfig config;
    config.devices = devices->kinds();
    ServerHarness harness(config);
    devices->cameras.front().online = false;
    for (int i = 0; i < 100; ++i) {
        devices->change(); // on another thread
    }
    QVERIFY(ServerHarness::waitFor([&] { return changes(harness) > 0; }));
    QCOMPARE(changes(harness), 1); // one event for all that changed at a time
    QCOMPARE(harness.ask("GetCamera").result.toList()[0].toMap()["online"], QVariant(false));
}

void TestCameras::olderDatabaseGetsThem()
{
    const QTemporaryDir folder;
    ServerConfig config;
    config.dataDirectory = folder.filePath("data");
    {
        ServerHarness harness(config);
        harness.addDevice("Hall");
    }
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "older");
        database.setDatabaseName(config.dataDirectory + "/records.sqlite");
        QVERIFY(database.open());
        QSqlQuery query(database);
        QVERIFY(query.exec("DROP TABLE cameras"));
        QVERIFY(query.exec("PRAGMA user_version = 2"));
    }
    QSqlDatabase::removeDatabase("older");
    ServerHarness harness(config);
    QVERIFY2(harness.server->isOpen(), qPrintable(harness.server->errorString()));
    QCOMPARE(harness.ask("RetrieveIPAudioModel").result.toList().size(), 1);
    QCOMPARE(harness.ask("AddCamera", camera("Gate")).returnCode, ReturnCode::success);
}

QTEST_GUILESS_MAIN(TestCameras)
#include "tst_cameras.moc"
