// The page of schedules as an operator uses it.

#include "system/ProgramEnd.h"
#include "tests/desk/ScheduleRecord.h"
#include "tests/desk/WindowTest.h"

class TestDeskSchedulePage : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void schedules();
    void typedScheduleTimes();
    void aScheduleThatIsOverStaysOff();
};

void TestDeskSchedulePage::schedules()
{
    WindowFixture desk;
    addSpeaker(desk, "Hall", "10.0.0.1");
    sendFile(desk);
    desk.page("schedules");
    desk.click("Add a schedule…");
    desk.fill("scheduleName", "Opening");
    QVERIFY(desk.shows("Choose at least one speaker or group."));
    desk.click("Hall");
    QVERIFY(desk.item("save")->isEnabled());
    QVERIFY(desk.shows("Next run: "));
    desk.shoot("schedule-dialog");
    desk.click("Save");
    QVERIFY(desk.shows("announcement.wav, once"));
    desk.shoot("schedules");
    desk.click("Week");
    QVERIFY(desk.shows("This week"));
    desk.shoot("week");
    desk.click("List");
    desk.click("Opening: switched on");
    QVERIFY(desk.shows("Next run: switched off"));
}

void TestDeskSchedulePage::typedScheduleTimes()
{
    WindowFixture desk;
    addSpeaker(desk, "Hall", "10.0.0.1");
    sendFile(desk);
    desk.page("schedules");
    desk.click("Add a schedule…");
    desk.fill("scheduleName", "Opening");
    desk.click("Hall");
    const QDate day = QDate::currentDate().addDays(3);
    desk.click("Start: day, like 2026-12-31");
    desk.key(Qt::Key_A, Qt::ControlModifier);
    for (const QChar character : day.toString(Qt::ISODate)) {
        QTest::keyClick(desk.window(), character.toLatin1());
    }
    desk.click("Start: time, like 08:30");
    desk.key(Qt::Key_A, Qt::ControlModifier);
    for (const char character : {'0', '7', ':', '4', '1'}) {
        QTest::keyClick(desk.window(), character);
    }
    QVERIFY(desk.item("save")->isEnabled());
    desk.key(Qt::Key_Backspace);
    QVERIFY(!desk.item("save")->isEnabled());
    QVERIFY(desk.shows("The start is not a date and time."));
    QTest::keyClick(desk.window(), '5');
    QTRY_VERIFY(desk.item("save")->isEnabled());
    desk.click("Save");
    QVERIFY(desk.gone("save"));
    QVERIFY(desk.control("Opening: edit"));
    const ScheduleModel* schedules = desk.desk().plugin()->getNetworkAudioScheduleModel(desk.window());
    QCOMPARE(schedules->schedule(0).start, day.toString(Qt::ISODate) + "T07:45:00");
}

void TestDeskSchedulePage::aScheduleThatIsOverStaysOff()
{
    WindowFixture desk;
    addSpeaker(desk, "Hall", "10.0.0.1");
    sendFile(desk);
    PluginClient& plugin = *desk.desk().plugin();
    const ScheduleModel* schedules = plugin.getNetworkAudioScheduleModel(desk.window());
    QVariantMap record = scheduleRecord(0, "2020-03-01T08:00:00");
    record["enableSchedule"] = false;
    record["audioID"] = 1;
    record["networkAudioIDList"] = QVariantList{1};
    QVERIFY(plugin.addNetworkAudioSchedule(record));
    QTRY_COMPARE(schedules->rowCount(), 1);
    desk.page("schedules");
    const quint64 sent = desk.desk().watch()->lastSent();
    desk.click("Bell: switched on");
    QVERIFY(desk.shows("It would never run: its time is over."));
    QCOMPARE(desk.desk().watch()->lastSent(), sent);
    QVERIFY(!desk.control("Bell: switched on")->property("checked").toBool());
}

/** It has English plurals. */

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskSchedulePage>(argc, argv));
}

#include "tst_deskschedulepage.moc"
