#include "RecordsFixture.h"

#include <QTest>

class TestIPAudioDevices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requests();
    void requestsWithoutAHost();
    void emptyBindings();
    void nothingIsChecked();
    void requestsChangeNothing();
    void addReply();
    void bindingsOfReplies_data();
    void bindingsOfReplies();
    void addReplyWithoutData();
    void failedReplies();
    void updateReply();
    void updateOfAnUnknownDevice();
    void deleteReply();
    void deleteFindsThePrefix();
    void retrieveReplaces();
    void failedRetrieveEmpties();
    void queryOfBindings();
};

void TestIPAudioDevices::requests()
{
    RecordsFixture fixture;
    QVERIFY(fixture.plugin->addIPAudio("Gate", "10.0.0.9", 8080, "user", "secret", {"cam1", "cam2"}));
    QVERIFY(fixture.plugin->updateIPAudio(7, "Dock", "h", 1, "u", "p", {"c"}));
    QVERIFY(fixture.plugin->deleteIPAudio(7));
    fixture.plugin->retrieveIPAudioModel();
    const auto& commands = fixture.framework.commands;
    QCOMPARE(fixture.framework.names(),
             (QStringList{"AddIPAudio", "UpdateIPAudio", "DeleteIPAudio", "RetrieveIPAudioModel"}));
    QCOMPARE(commands[0].map(), (QVariantMap{{"deviceName", "Gate"},
                                             {"ip", "10.0.0.9"},
                                             {"port", 8080},
                                             {"username", "user"},
                                             {"password", "secret"},
                                             {"bindingCameraList", "cam1|cam2"}}));
    QCOMPARE(commands[1].map(), (QVariantMap{{"deviceID", 7},
                                             {"deviceName", "Dock"},
                                             {"ip", "h"},
                                             {"port", 1},
                                             {"username", "u"},
                                             {"password", "p"},
                                             {"bindingCameraList", "c"}}));
    QCOMPARE(commands[2].param, QVariant(7));
    QVERIFY(!commands[3].param.isValid());
    for (const auto& command : commands) {
        QCOMPARE(command.userData, nullptr);
        QCOMPARE(command.flag, false);
        QCOMPARE(command.extra, QString());
    }
}

void TestIPAudioDevices::requestsWithoutAHost()
{
    PluginVoiceDesk plugin;
    QVERIFY(!plugin.addIPAudio("n", "i", 1, "u", "p", {}));
    QVERIFY(!plugin.updateIPAudio(1, "n", "i", 1, "u", "p", {}));
    QVERIFY(!plugin.deleteIPAudio(1));
    plugin.retrieveIPAudioModel();
    QVERIFY(plugin.queryBindingIPAudio("c").isEmpty());
    RecordsFixture fixture;
    fixture.framework.accepts = false;
    QVERIFY(!fixture.plugin->addIPAudio("n", "i", 1, "u", "p", {}));
    QVERIFY(!fixture.plugin->deleteIPAudio(1));
}

void TestIPAudioDevices::emptyBindings()
{
    RecordsFixture fixture;
    fixture.plugin->addIPAudio("n", "i", 1, "u", "p", {});
    const QVariant sent = fixture.framework.commands[0].map()["bindingCameraList"];
    QCOMPARE(sent, QVariant(QString("")));
    QCOMPARE(sent.type(), QVariant::String);
}

void TestIPAudioDevices::nothingIsChecked()
{
    RecordsFixture fixture;
    QVERIFY(fixture.plugin->addIPAudio("", "", -70000, "", "", {}));
    QCOMPARE(fixture.framework.commands[0].map()["port"], QVariant(-70000));
}

void TestIPAudioDevices::requestsChangeNothing()
{
    RecordsFixture fixture;
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    fixture.addDevice(1, "Gate");
    fixture.plugin->addIPAudio("Dock", "i", 1, "u", "p", {});
    fixture.plugin->updateIPAudio(1, "Dock", "i", 1, "u", "p", {});
    fixture.plugin->deleteIPAudio(1);
    QCOMPARE(RecordsFixture::column(*fixture.devices, 258), QVariantList{"Gate"});
    QCOMPARE(changed.size(), 1);
}

void TestIPAudioDevices::addReply()
{
    RecordsFixture fixture;
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::addIPAudioResponse);
    fixture.addDevice(4, "Gate", "cam1|cam2");
    const QModelIndex row = fixture.devices->sourceModel()->index(0, 0);
    QCOMPARE(row.data(257), QVariant(4));
    QCOMPARE(row.data(258), QVariant("Gate"));
    QCOMPARE(row.data(259), QVariant("10.0.0.1"));
    QCOMPARE(row.data(260), QVariant(554)); // as the server sent it
    QCOMPARE(row.data(261), QVariant("u"));
    QCOMPARE(row.data(262), QVariant("p"));
    QCOMPARE(row.data(263), QVariant(QStringList{"cam1", "cam2"}));
    QCOMPARE(changed.size(), 1);
    QCOMPARE(response.size(), 1);
    QCOMPARE(response[0], (QVariantList{true, "0", 4}));
}

void TestIPAudioDevices::bindingsOfReplies_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("list");
    QTest::newRow("empty") << "" << QStringList();
    QTest::newRow("one") << "a" << QStringList{"a"};
    QTest::newRow("two") << "a|b" << QStringList{"a", "b"};
    QTest::newRow("separator at the end") << "a|" << QStringList{"a", ""};
    QTest::newRow("two separators") << "a||b" << QStringList{"a", "", "b"};
    QTest::newRow("not trimmed") << " a | b " << QStringList{" a ", " b "};
    QTest::newRow("separator alone") << "|" << QStringList{"", ""};
}

void TestIPAudioDevices::bindingsOfReplies()
{
    QFETCH(QString, text);
    QFETCH(QStringList, list);
    RecordsFixture fixture;
    fixture.addDevice(1, "a", text);
    QCOMPARE(RecordsFixture::column(*fixture.devices, 263)[0], QVariant(list));
    fixture.reply("UpdateIPAudio", "0", RecordsFixture::device(1, "b", text));
    QCOMPARE(RecordsFixture::column(*fixture.devices, 263)[0], QVariant(list));
    fixture.reply("RetrieveIPAudioModel", "0", QVariantList{RecordsFixture::device(1, "c", text)});
    QCOMPARE(RecordsFixture::column(*fixture.devices, 263)[0], QVariant(list));
}

void TestIPAudioDevices::addReplyWithoutData()
{
    RecordsFixture fixture;
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::addIPAudioResponse);
    fixture.reply("AddIPAudio", "0");
    QCOMPARE(response[0], (QVariantList{true, "0", 0}));
    const QModelIndex row = fixture.devices->sourceModel()->index(0, 0);
    QVERIFY(row.isValid());
    QVERIFY(!row.data(257).isValid());
    QCOMPARE(row.data(263), QVariant(QStringList()));
}

void TestIPAudioDevices::failedReplies()
{
    RecordsFixture fixture;
    fixture.addDevice(1, "Gate");
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    const QSignalSpy add(fixture.plugin.get(), &PluginVoiceDesk::addIPAudioResponse);
    const QSignalSpy update(fixture.plugin.get(), &PluginVoiceDesk::updateIPAudioResponse);
    const QSignalSpy remove(fixture.plugin.get(), &PluginVoiceDesk::deleteIPAudioResponse);
    fixture.reply("AddIPAudio", "77");
    fixture.reply("UpdateIPAudio", "00", RecordsFixture::device(1, "Dock"));
    fixture.reply("DeleteIPAudio", "", 1);
    QCOMPARE(add[0], (QVariantList{false, "77", 0}));
    QCOMPARE(update[0], (QVariantList{false, "00", 1}));
    QCOMPARE(remove[0], (QVariantList{false, "", 1}));
    QCOMPARE(changed.size(), 0);
    QCOMPARE(RecordsFixture::column(*fixture.devices, 258), QVariantList{"Gate"});
}

void TestIPAudioDevices::updateReply()
{
    RecordsFixture fixture;
    fixture.addDevice(1, "Gate", "cam1|cam2");
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::updateIPAudioResponse);
    fixture.reply(
        "UpdateIPAudio", "0",
        QVariantMap{{"deviceID", 1}, {"deviceName", "Dock"}, {"port", 99}, {"bindingCameraList", "cam9"}});
    const QModelIndex row = fixture.devices->sourceModel()->index(0, 0);
    QCOMPARE(row.data(257), QVariant(1));
    QCOMPARE(row.data(258), QVariant("Dock"));
    QCOMPARE(row.data(259), QVariant(""));
    QCOMPARE(row.data(260).type(), QVariant::String); // a number before
    QCOMPARE(row.data(260), QVariant("99"));
    QCOMPARE(row.data(261), QVariant(""));
    QCOMPARE(row.data(262), QVariant(""));
    QCOMPARE(row.data(263), QVariant(QStringList{"cam9"})); // replaced, not merged
    QCOMPARE(changed.size(), 1);
    QCOMPARE(response[0], (QVariantList{true, "0", 1}));
}

void TestIPAudioDevices::updateOfAnUnknownDevice()
{
    RecordsFixture fixture;
    fixture.addDevice(1, "Gate");
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::updateIPAudioResponse);
    fixture.reply("UpdateIPAudio", "0", RecordsFixture::device(9, "Dock"));
    QCOMPARE(response[0], (QVariantList{true, "0", 9}));
    QCOMPARE(changed.size(), 0);
    QCOMPARE(RecordsFixture::column(*fixture.devices, 258), QVariantList{"Gate"});
}

void TestIPAudioDevices::deleteReply()
{
    RecordsFixture fixture;
    fixture.addDevice(1, "Gate");
    fixture.addDevice(2, "Dock");
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::deleteIPAudioResponse);
    fixture.reply("DeleteIPAudio", "0", 1);
    fixture.reply("DeleteIPAudio", "0", 8);
    fixture.reply("DeleteIPAudio", "0", "no number");
    QCOMPARE(RecordsFixture::column(*fixture.devices, 257), QVariantList{2});
    QCOMPARE(changed.size(), 1);
    QCOMPARE(response[0], (QVariantList{true, "0", 1}));
    QCOMPARE(response[1], (QVariantList{true, "0", 8}));
    QCOMPARE(response[2], (QVariantList{true, "0", 0}));
}

void TestIPAudioDevices::deleteFindsThePrefix()
{
    RecordsFixture fixture;
    fixture.addDevice(12, "twelve");
    fixture.addDevice(1, "one");
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::deleteIPAudioResponse);
    fixture.reply("DeleteIPAudio", "0", 1);
    QCOMPARE(RecordsFixture::column(*fixture.devices, 257), QVariantList{1});
    QCOMPARE(response[0], (QVariantList{true, "0", 1}));
}

void TestIPAudioDevices::retrieveReplaces()
{
    RecordsFixture fixture;
    fixture.addDevice(1, "Gate");
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    fixture.reply("RetrieveIPAudioModel", "0",
                  QVariantList{RecordsFixture::device(9, "z"), RecordsFixture::device(3, "a"), "no map"});
    QCOMPARE(RecordsFixture::column(*fixture.devices, 257), (QVariantList{9, 3, QVariant()}));
    QCOMPARE(changed.size(), 1);
    fixture.reply("RetrieveIPAudioModel", "0", QVariantList());
    QCOMPARE(fixture.devices->rowCount(), 0);
    QCOMPARE(changed.size(), 2);
}

void TestIPAudioDevices::failedRetrieveEmpties()
{
    RecordsFixture fixture;
    fixture.addDevice(1, "Gate");
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    fixture.reply("RetrieveIPAudioModel", "1");
    QCOMPARE(fixture.devices->rowCount(), 0);
    QCOMPARE(changed.size(), 1);
    // The code is not read: what a failed reply brings along is shown.
    fixture.reply("RetrieveIPAudioModel", "1", QVariantList{RecordsFixture::device(2, "x")});
    QCOMPARE(fixture.devices->rowCount(), 1);
}

void TestIPAudioDevices::queryOfBindings()
{
    RecordsFixture fixture;
    QCOMPARE(fixture.plugin->queryBindingIPAudio("cam1"), QVariantMap());
    fixture.addDevice(5, "Gate", "cam1|cam2");
    fixture.addDevice(6, "Dock", "cam2|cam3");
    fixture.framework.commands.clear();
    QCOMPARE(fixture.plugin->queryBindingIPAudio("cam3"), (QVariantMap{{"id", 6}, {"name", "Dock"}}));
    QCOMPARE(fixture.plugin->queryBindingIPAudio("cam2"), (QVariantMap{{"id", 5}, {"name", "Gate"}}));
    QCOMPARE(fixture.plugin->queryBindingIPAudio("CAM2"), QVariantMap());
    QCOMPARE(fixture.plugin->queryBindingIPAudio("cam"), QVariantMap());
    QCOMPARE(fixture.plugin->queryBindingIPAudio(""), QVariantMap());
    QVERIFY(fixture.framework.commands.empty());
}

QTEST_GUILESS_MAIN(TestIPAudioDevices)
#include "tst_ipaudiodevices.moc"
