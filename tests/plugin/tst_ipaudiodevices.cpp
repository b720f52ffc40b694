#include "tests/plugin/RecordsFixture.h"

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
    void updateTakesTexts();
    void updateFindsThePrefix();
    void orderOfChangesAndSignals();
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
    COMPARE_VARIANTS(commands[0].map(), (QVariantMap{{"deviceName", "Gate"},
                                                     {"ip", "10.0.0.9"},
                                                     {"port", 8080},
                                                     {"username", "user"},
                                                     {"password", "secret"},
                                                     {"bindingCameraList", "cam1|cam2"}}));
    COMPARE_VARIANTS(commands[1].map(), (QVariantMap{{"deviceID", 7},
                                                     {"deviceName", "Dock"},
                                                     {"ip", "h"},
                                                     {"port", 1},
                                                     {"username", "u"},
                                                     {"password", "p"},
                                                     {"bindingCameraList", "c"}}));
    COMPARE_VARIANTS(commands[2].param, QVariant(7));
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
    COMPARE_VARIANTS(sent, QVariant(QString("")));
}

void TestIPAudioDevices::nothingIsChecked()
{
    RecordsFixture fixture;
    QVERIFY(fixture.plugin->addIPAudio("", "", -70000, "", "", {}));
    COMPARE_VARIANTS(fixture.framework.commands[0].map()["port"], QVariant(-70000));
}

void TestIPAudioDevices::requestsChangeNothing()
{
    RecordsFixture fixture;
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    fixture.addDevice(1, "Gate");
    fixture.plugin->addIPAudio("Dock", "i", 1, "u", "p", {});
    fixture.plugin->updateIPAudio(1, "Dock", "i", 1, "u", "p", {});
    fixture.plugin->deleteIPAudio(1);
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 258), QVariantList{"Gate"});
    QCOMPARE(changed.size(), 1);
}

void TestIPAudioDevices::addReply()
{
    RecordsFixture fixture;
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::addIPAudioResponse);
    fixture.addDevice(4, "Gate", "cam1|cam2");
    const QModelIndex row = fixture.devices->sourceModel()->index(0, 0);
    COMPARE_VARIANTS(row.data(257), QVariant(4));
    COMPARE_VARIANTS(row.data(258), QVariant("Gate"));
    COMPARE_VARIANTS(row.data(259), QVariant("10.0.0.1"));
    COMPARE_VARIANTS(row.data(260), QVariant(554)); // as the server sent it
    COMPARE_VARIANTS(row.data(261), QVariant("u"));
    COMPARE_VARIANTS(row.data(262), QVariant("p"));
    COMPARE_VARIANTS(row.data(263), QVariant(QStringList{"cam1", "cam2"}));
    QCOMPARE(changed.size(), 1);
    QCOMPARE(response.size(), 1);
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 4}));
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
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 263)[0], QVariant(list));
    fixture.reply("UpdateIPAudio", "0", RecordsFixture::device(1, "b", text));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 263)[0], QVariant(list));
    fixture.reply("RetrieveIPAudioModel", "0", QVariantList{RecordsFixture::device(1, "c", text)});
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 263)[0], QVariant(list));
}

void TestIPAudioDevices::addReplyWithoutData()
{
    RecordsFixture fixture;
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::addIPAudioResponse);
    fixture.reply("AddIPAudio", "0");
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 0}));
    const QModelIndex row = fixture.devices->sourceModel()->index(0, 0);
    QVERIFY(row.isValid());
    QVERIFY(!row.data(257).isValid());
    COMPARE_VARIANTS(row.data(263), QVariant(QStringList()));
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
    COMPARE_VARIANTS(add[0], (QVariantList{false, "77", 0}));
    COMPARE_VARIANTS(update[0], (QVariantList{false, "00", 1}));
    COMPARE_VARIANTS(remove[0], (QVariantList{false, "", 1}));
    QCOMPARE(changed.size(), 0);
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 258), QVariantList{"Gate"});
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
    COMPARE_VARIANTS(row.data(257), QVariant(1));
    COMPARE_VARIANTS(row.data(258), QVariant("Dock"));
    COMPARE_VARIANTS(row.data(259), QVariant(""));
    COMPARE_VARIANTS(row.data(260), QVariant("99")); // a number before
    COMPARE_VARIANTS(row.data(261), QVariant(""));
    COMPARE_VARIANTS(row.data(262), QVariant(""));
    COMPARE_VARIANTS(row.data(263), QVariant(QStringList{"cam9"})); // replaced, not merged
    QCOMPARE(changed.size(), 1);
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 1}));
}

void TestIPAudioDevices::updateTakesTexts()
{
    RecordsFixture fixture;
    fixture.addDevice(1, "Gate");
    fixture.reply("UpdateIPAudio", "0",
                  QVariantMap{{"deviceID", 1},
                              {"deviceName", 10},
                              {"ip", 11},
                              {"port", 12},
                              {"username", 13},
                              {"password", 14},
                              {"bindingCameraList", 15}});
    const QModelIndex row = fixture.devices->sourceModel()->index(0, 0);
    QVariantList fields;
    for (int role = 257; role <= 263; ++role) {
        fields.append(row.data(role));
    }
    COMPARE_VARIANTS(fields, (QVariantList{1, "10", "11", "12", "13", "14", QStringList{"15"}}));
}

void TestIPAudioDevices::updateFindsThePrefix()
{
    RecordsFixture fixture;
    fixture.addDevice(12, "twelve");
    fixture.addDevice(1, "one");
    fixture.reply("UpdateIPAudio", "0", RecordsFixture::device(1, "changed"));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 257), (QVariantList{12, 1}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 258), (QVariantList{"changed", "one"}));
}

void TestIPAudioDevices::orderOfChangesAndSignals()
{
    RecordsFixture fixture;
    QStringList notes;
    const PluginVoiceDesk* plugin = fixture.plugin.get();
    const QAbstractItemModel* source = fixture.devices->sourceModel();
    connect(plugin, &PluginVoiceDesk::ipAudioModelChanged, this,
            [&] { notes << QStringLiteral("changed, rows %1").arg(source->rowCount()); });
    for (const auto response : {&PluginVoiceDesk::addIPAudioResponse, &PluginVoiceDesk::updateIPAudioResponse,
                                &PluginVoiceDesk::deleteIPAudioResponse}) {
        connect(plugin, response, this, [&notes] { notes << "answer"; });
    }
    fixture.addDevice(1, "Gate");
    QCOMPARE(notes, (QStringList{"changed, rows 1", "answer"}));
    notes.clear();
    RecordsFixture::noteRoles(*fixture.devices, notes);
    fixture.reply("UpdateIPAudio", "0",
                  QVariantMap{{"deviceID", 1}, {"deviceName", "n"}, {"bindingCameraList", "c"}});
    QCOMPARE(notes, (QStringList{"258", "259", "260", "261", "262", "263", "changed, rows 1", "answer"}));
    notes.clear();
    fixture.reply("DeleteIPAudio", "0", 1);
    QCOMPARE(notes, (QStringList{"changed, rows 0", "answer"}));
}

void TestIPAudioDevices::updateOfAnUnknownDevice()
{
    RecordsFixture fixture;
    fixture.addDevice(1, "Gate");
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::updateIPAudioResponse);
    fixture.reply("UpdateIPAudio", "0", RecordsFixture::device(9, "Dock"));
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 9}));
    QCOMPARE(changed.size(), 0);
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 258), QVariantList{"Gate"});
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
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 257), QVariantList{2});
    QCOMPARE(changed.size(), 1);
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 1}));
    COMPARE_VARIANTS(response[1], (QVariantList{true, "0", 8}));
    COMPARE_VARIANTS(response[2], (QVariantList{true, "0", 0}));
}

void TestIPAudioDevices::deleteFindsThePrefix()
{
    RecordsFixture fixture;
    fixture.addDevice(12, "twelve");
    fixture.addDevice(1, "one");
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::deleteIPAudioResponse);
    fixture.reply("DeleteIPAudio", "0", 1);
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 257), QVariantList{1});
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 1}));
}

void TestIPAudioDevices::retrieveReplaces()
{
    RecordsFixture fixture;
    fixture.addDevice(1, "Gate");
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::ipAudioModelChanged);
    fixture.reply("RetrieveIPAudioModel", "0",
                  QVariantList{RecordsFixture::device(9, "z"), RecordsFixture::device(3, "a"), "no map"});
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 257), (QVariantList{9, 3, QVariant()}));
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
    COMPARE_VARIANTS(fixture.plugin->queryBindingIPAudio("cam1"), QVariantMap());
    fixture.addDevice(5, "Gate", "cam1|cam2");
    fixture.addDevice(6, "Dock", "cam2|cam3");
    fixture.framework.commands.clear();
    COMPARE_VARIANTS(fixture.plugin->queryBindingIPAudio("cam3"), (QVariantMap{{"id", 6}, {"name", "Dock"}}));
    COMPARE_VARIANTS(fixture.plugin->queryBindingIPAudio("cam2"), (QVariantMap{{"id", 5}, {"name", "Gate"}}));
    COMPARE_VARIANTS(fixture.plugin->queryBindingIPAudio("CAM2"), QVariantMap());
    COMPARE_VARIANTS(fixture.plugin->queryBindingIPAudio("cam"), QVariantMap());
    COMPARE_VARIANTS(fixture.plugin->queryBindingIPAudio(""), QVariantMap());
    fixture.reply("AddIPAudio", "0",
                  QVariantMap{{"deviceID", "7"}, {"deviceName", 8}, {"bindingCameraList", "cam7"}});
    COMPARE_VARIANTS(fixture.plugin->queryBindingIPAudio("cam7"), (QVariantMap{{"id", 7}, {"name", "8"}}));
    QVERIFY(fixture.framework.commands.empty());
}

QTEST_GUILESS_MAIN(TestIPAudioDevices)
#include "tst_ipaudiodevices.moc"
