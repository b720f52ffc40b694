// Toy cameras, through a server.

#include "server/devices/toy/ToyCameras.h"
#include "tests/server/ServerHarness.h"

class TestToyCameras : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void areListedAndTalkedTo();
};

void TestToyCameras::areListedAndTalkedTo()
{
    ServerConfig config;
    config.devices = toyDevices();
    ServerHarness harness(config);
    const QVariantMap record{{"camName", "Toy"}, {"camKind", "toy"}, {"camAddress", "10.0.0.9"}};
    const ServerReply added = harness.ask("AddCamera", record);
    QCOMPARE(added.returnCode, QString("0"));
    const QString id = added.result.toMap()["camId"].toString();

    QVariantMap listed = record;
    listed["camId"] = id;
    listed["online"] = true;
    QVERIFY(harness.ask("GetCamera").result.toList().contains(listed));

    const ServerReply started = harness.ask("StartTalk", QVariantMap{{"camId", id}, {"relayPath", ""}});
    QCOMPARE(started.returnCode, QString("0"));
    const QVariant token = started.result.toMap()["talkToken"];
    const ServerReply stopped = harness.ask("StopTalk", QVariantMap{{"talkToken", token}, {"relayPath", ""}});
    QCOMPARE(stopped.returnCode, QString("0"));
}

QTEST_GUILESS_MAIN(TestToyCameras)
#include "tst_toycameras.moc"
