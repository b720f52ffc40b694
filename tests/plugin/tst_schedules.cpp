#include "tests/plugin/RecordsFixture.h"

#include <QTest>

class TestSchedules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requests();
    void addSendsACopy();
    void updateSetsTheId();
    void addReply();
    void updateReply();
    void updateSetsEachField();
    void updateFindsThePrefix();
    void orderOfChangesAndSignals();
    void updateOfAnUnknownSchedule();
    void deleteReply();
    void getReply();
    void failures();
    void otherRecordsLeaveSchedulesAlone();
};

namespace {

QVariantMap schedule(int id, const QString& name)
{
    return {{"scheduleID", id},
            {"enableSchedule", true},
            {"scheduleName", name},
            {"scheduleStartTime", "2026-01-01T08:00:00"},
            {"scheduleType", 2},
            {"scheduleSettings", QVariantMap{{"days", QVariantList{1, 5}}}},
            {"scheduleEndTime", 17.5},
            {"enableScheduleEndTime", "yes"},
            {"audioID", 9},
            {"groupIDList", "1,2"},
            {"networkAudioIDList", "3,"}};
}

} // namespace

void TestSchedules::requests()
{
    RecordsFixture fixture;
    QVERIFY(fixture.plugin->deleteNetworkAudioSchedule(4));
    fixture.plugin->getNetworkAudioSchedule();
    QCOMPARE(fixture.framework.names(),
             (QStringList{"DeleteNetworkAudioSchedule", "GetNetworkAudioSchedule"}));
    COMPARE_VARIANTS(fixture.framework.commands[0].param, QVariant(4));
    QVERIFY(!fixture.framework.commands[1].param.isValid());
    PluginVoiceDesk orphan;
    QVERIFY(!orphan.addNetworkAudioSchedule({}));
    QVERIFY(!orphan.updateNetworkAudioSchedule(1, {}));
    QVERIFY(!orphan.deleteNetworkAudioSchedule(1));
    orphan.getNetworkAudioSchedule();
}

void TestSchedules::addSendsACopy()
{
    RecordsFixture fixture;
    const QVariantMap given{{"scheduleName", "Noon"},
                            {"colour", "red"},
                            {"scheduleType", 2},
                            {"networkAudioIDList", QVariantList{7}}};
    QVariantMap argument = given;
    QVERIFY(fixture.plugin->addNetworkAudioSchedule(argument));
    COMPARE_VARIANTS(argument, given);
    QCOMPARE(fixture.framework.commands[0].command, QString("AddNetworkAudioSchedule"));
    COMPARE_VARIANTS(fixture.framework.commands[0].map(), (QVariantMap{{"scheduleName", "Noon"},
                                                                       {"colour", "red"},
                                                                       {"scheduleType", 2},
                                                                       {"groupIDList", ""},
                                                                       {"networkAudioIDList", "7"}}));
    fixture.plugin->addNetworkAudioSchedule({{"groupIDList", QVariantList{1, 2}}});
    COMPARE_VARIANTS(fixture.framework.commands[1].map()["groupIDList"], QVariant("1,2"));
    QVERIFY(!fixture.framework.commands[1].map().contains("scheduleID"));
}

void TestSchedules::updateSetsTheId()
{
    RecordsFixture fixture;
    fixture.plugin->updateNetworkAudioSchedule(7, {{"scheduleID", 99}, {"groupIDList", QStringList{"5"}}});
    QCOMPARE(fixture.framework.commands[0].command, QString("UpdateNetworkAudioSchedule"));
    COMPARE_VARIANTS(fixture.framework.commands[0].map(),
                     (QVariantMap{{"scheduleID", 7}, {"groupIDList", "5"}, {"networkAudioIDList", ""}}));
}

void TestSchedules::addReply()
{
    RecordsFixture fixture;
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::addNetworkAudioScheduleResponse);
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(3, "Noon"));
    const QModelIndex row = fixture.schedules->sourceModel()->index(0, 0);
    COMPARE_VARIANTS(row.data(257), QVariant(3));
    COMPARE_VARIANTS(row.data(258), QVariant(true));
    COMPARE_VARIANTS(row.data(259), QVariant("Noon"));
    COMPARE_VARIANTS(row.data(260), QVariant("2026-01-01T08:00:00"));
    COMPARE_VARIANTS(row.data(261), QVariant(2));
    COMPARE_VARIANTS(row.data(262).toMap(), (QVariantMap{{"days", QVariantList{1, 5}}}));
    COMPARE_VARIANTS(row.data(263), QVariant(17.5));
    COMPARE_VARIANTS(row.data(264), QVariant("yes"));
    COMPARE_VARIANTS(row.data(265), QVariant(9));
    COMPARE_VARIANTS(row.data(266), QVariant(QVariantList{1, 2}));
    COMPARE_VARIANTS(row.data(267), QVariant(QVariantList{3}));
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 3}));
    fixture.reply("AddNetworkAudioSchedule", "0");
    COMPARE_VARIANTS(response[1], (QVariantList{true, "0", 0}));
    COMPARE_VARIANTS(fixture.schedules->sourceModel()->index(1, 0).data(266), QVariant(QVariantList()));
}

void TestSchedules::updateReply()
{
    RecordsFixture fixture;
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(3, "Noon"));
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::updateNetworkAudioScheduleResponse);
    QVariantMap record = schedule(3, "Night");
    record.remove("scheduleEndTime");
    record.remove("groupIDList");
    fixture.reply("UpdateNetworkAudioSchedule", "0", record);
    const QModelIndex row = fixture.schedules->sourceModel()->index(0, 0);
    COMPARE_VARIANTS(row.data(257), QVariant(3));
    COMPARE_VARIANTS(row.data(259), QVariant("Night"));
    QVERIFY(!row.data(263).isValid()); // replaced whole, not merged
    COMPARE_VARIANTS(row.data(266), QVariant(QVariantList()));
    COMPARE_VARIANTS(row.data(267), QVariant(QVariantList{3}));
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 3}));
}

void TestSchedules::updateSetsEachField()
{
    RecordsFixture fixture;
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(3, "Noon"));
    fixture.reply("UpdateNetworkAudioSchedule", "0",
                  QVariantMap{{"scheduleID", "3"},
                              {"enableSchedule", 10},
                              {"scheduleName", 11},
                              {"scheduleStartTime", 12},
                              {"scheduleType", 13},
                              {"scheduleSettings", 14},
                              {"scheduleEndTime", 15},
                              {"enableScheduleEndTime", 16},
                              {"audioID", 17},
                              {"groupIDList", "18"},
                              {"networkAudioIDList", "19,20"}});
    const QModelIndex row = fixture.schedules->sourceModel()->index(0, 0);
    QVariantList fields;
    for (int role = 257; role <= 267; ++role) {
        fields.append(row.data(role));
    }
    COMPARE_VARIANTS(
        fields, (QVariantList{3, 10, 11, 12, 13, 14, 15, 16, 17, QVariantList{18}, QVariantList{19, 20}}));
}

void TestSchedules::updateFindsThePrefix()
{
    RecordsFixture fixture;
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(12, "twelve"));
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(1, "one"));
    fixture.reply("UpdateNetworkAudioSchedule", "0", schedule(1, "changed"));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.schedules, 257), (QVariantList{12, 1}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.schedules, 259), (QVariantList{"changed", "one"}));
}

void TestSchedules::orderOfChangesAndSignals()
{
    RecordsFixture fixture;
    QStringList notes;
    const PluginVoiceDesk* plugin = fixture.plugin.get();
    const QAbstractItemModel* source = fixture.schedules->sourceModel();
    for (const auto response : {&PluginVoiceDesk::addNetworkAudioScheduleResponse,
                                &PluginVoiceDesk::updateNetworkAudioScheduleResponse,
                                &PluginVoiceDesk::deleteNetworkAudioScheduleResponse}) {
        connect(plugin, response, this,
                [&] { notes << QStringLiteral("answer, rows %1").arg(source->rowCount()); });
    }
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(3, "Noon"));
    QCOMPARE(notes, QStringList{"answer, rows 1"});
    notes.clear();
    RecordsFixture::noteRoles(*fixture.schedules, notes);
    fixture.reply("UpdateNetworkAudioSchedule", "0", QVariantMap{{"scheduleID", 3}}); // empties each field
    QCOMPARE(notes, (QStringList{"258", "259", "260", "261", "262", "263", "264", "265", "266", "267",
                                 "answer, rows 1"}));
    notes.clear();
    fixture.reply("DeleteNetworkAudioSchedule", "0", 3);
    QCOMPARE(notes, QStringList{"answer, rows 0"});
}

void TestSchedules::updateOfAnUnknownSchedule()
{
    RecordsFixture fixture;
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::updateNetworkAudioScheduleResponse);
    fixture.reply("UpdateNetworkAudioSchedule", "0", schedule(3, "Noon"));
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 3}));
    QCOMPARE(fixture.schedules->rowCount(), 0);
}

void TestSchedules::deleteReply()
{
    RecordsFixture fixture;
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(12, "a"));
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(1, "b"));
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::deleteNetworkAudioScheduleResponse);
    fixture.reply("DeleteNetworkAudioSchedule", "0", 1);
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.schedules, 257), QVariantList{1});
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 1}));
}

void TestSchedules::getReply()
{
    RecordsFixture fixture;
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(9, "old"));
    fixture.reply("GetNetworkAudioSchedule", "0", QVariantList{schedule(2, "z"), schedule(1, "a")});
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.schedules, 257), (QVariantList{2, 1}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.schedules, 266)[0], QVariant(QVariantList{1, 2}));
    fixture.reply("GetNetworkAudioSchedule", "3");
    QCOMPARE(fixture.schedules->rowCount(), 0);
    // The code is not read: what a failed reply brings along is shown.
    fixture.reply("GetNetworkAudioSchedule", "3", QVariantList{schedule(4, "x")});
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.schedules, 257), QVariantList{4});
}

void TestSchedules::failures()
{
    RecordsFixture fixture;
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(1, "a"));
    const QSignalSpy add(fixture.plugin.get(), &PluginVoiceDesk::addNetworkAudioScheduleResponse);
    const QSignalSpy update(fixture.plugin.get(), &PluginVoiceDesk::updateNetworkAudioScheduleResponse);
    const QSignalSpy remove(fixture.plugin.get(), &PluginVoiceDesk::deleteNetworkAudioScheduleResponse);
    fixture.reply("AddNetworkAudioSchedule", "4");
    fixture.reply("UpdateNetworkAudioSchedule", "4", schedule(1, "b"));
    fixture.reply("DeleteNetworkAudioSchedule", "4", 1);
    COMPARE_VARIANTS(add[0], (QVariantList{false, "4", 0}));
    COMPARE_VARIANTS(update[0], (QVariantList{false, "4", 1}));
    COMPARE_VARIANTS(remove[0], (QVariantList{false, "4", 1}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.schedules, 259), QVariantList{"a"});
}

void TestSchedules::otherRecordsLeaveSchedulesAlone()
{
    RecordsFixture fixture;
    fixture.addDevice(3, "Gate");
    fixture.addGroup(1, "Yard", "3");
    fixture.reply("AddNetworkAudioSchedule", "0", schedule(1, "a"));
    fixture.reply("DeleteIPAudio", "0", 3);
    fixture.reply("DeleteNetworkAudioGroup", "0", 1);
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.schedules, 266)[0], QVariant(QVariantList{1, 2}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.schedules, 267)[0], QVariant(QVariantList{3}));
}

QTEST_GUILESS_MAIN(TestSchedules)
#include "tst_schedules.moc"
