// The pages of speakers, files and groups as an operator uses them, and the lists of all dialogs.

#include "system/ProgramEnd.h"
#include "tests/desk/WindowTest.h"

#include <QSignalSpy>

class TestDeskRecordPages : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void speakers();
    void files();
    void groups();
    void listsOfADialogAreSearched();
    void listsThatChange_data();
    void listsThatChange();
};

void TestDeskRecordPages::speakers()
{
    WindowFixture desk;
    desk.page("speakers");
    desk.click("Add a speaker…");
    desk.fill("speakerName", "Hall");
    desk.fill("speakerAddress", "not an address");
    QVERIFY(desk.shows("the address is neither an IP address nor a host name"));
    desk.fill("speakerPort", "99999");
    QVERIFY(desk.shows("1 to 65535."));
    QVERIFY(!desk.item("save")->isEnabled());
    desk.shoot("speaker-wrong");
    desk.fill("speakerAddress", "10.0.0.7");
    desk.fill("speakerPort", "8080");
    desk.click("Loading dock");
    QVERIFY(desk.item("save")->isEnabled());
    desk.shoot("speaker-dialog");
    desk.click("Save");
    QVERIFY(desk.control("Hall: edit"));
    QVERIFY(desk.shows("10.0.0.7:8080  ·  1 camera"));

    desk.click("Hall: Test");
    QVERIFY(desk.shows("The speaker answers."));
    desk.shoot("speakers");

    desk.click("Hall: edit");
    desk.fill("speakerName", "Main hall");
    desk.key(Qt::Key_Return);
    QVERIFY(desk.control("Main hall: edit"));

    // The same name twice is the server's to refuse; the dialog stays, and says so.
    desk.click("Add a speaker…");
    desk.fill("speakerName", "Main hall");
    desk.fill("speakerAddress", "10.0.0.8");
    desk.click("Save");
    QVERIFY(desk.shows("the name is taken"));
    desk.key(Qt::Key_Escape);

    desk.click("Main hall: delete");
    QVERIFY(desk.shows("This cannot be undone."));
    desk.shoot("delete-asks");
    desk.click("Keep");
    QVERIFY(desk.control("Main hall: delete"));
    desk.click("Main hall: delete");
    desk.click("Delete");
    QVERIFY(desk.shows("No speakers yet."));
}

void TestDeskRecordPages::files()
{
    WindowFixture desk;
    addSpeaker(desk, "Hall", "10.0.0.1");
    sendFile(desk);
    QVERIFY(desk.shows("0:0"));
    desk.shoot("files");
    desk.click("announcement.wav: Play…");
    QVERIFY(desk.shows("On a group"));
    desk.shoot("play-dialog");
    desk.click("Hall");
    QVERIFY(desk.shows("announcement.wav on Hall"));
    QTRY_VERIFY(desk.desk().playback()->index(0).data(PlaybackModel::ProgressRole).toReal() > 0.05);
    desk.shoot("playing");
    desk.click("announcement.wav on Hall: Stop");
    QTRY_COMPARE(desk.desk().playback()->rowCount(), 0);
    desk.click("announcement.wav: delete");
    desk.click("Delete");
    QVERIFY(desk.shows("No audio files yet."));
}

void TestDeskRecordPages::groups()
{
    WindowFixture desk;
    addSpeaker(desk, "Hall", "10.0.0.1");
    addSpeaker(desk, "Stairs", "10.0.0.2");
    desk.page("groups");
    desk.click("Add a group…");
    desk.fill("groupName", "Ground floor");
    QVERIFY(!desk.item("save")->isEnabled());
    desk.click("Hall");
    desk.click("Stairs");
    desk.shoot("group-dialog");
    desk.click("Save");
    QVERIFY(desk.shows("2 speakers: Hall, Stairs"));
    // Members are searched, too.
    desk.fill("groupSearch", "stai");
    QVERIFY(desk.control("Ground floor: edit"));
    desk.fill("groupSearch", "cellar");
    QVERIFY(desk.shows("Nothing is found."));
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.control("Ground floor: edit"));
    desk.shoot("groups");
    desk.click("Ground floor: edit");
    desk.click("Stairs");
    desk.click("Save");
    QVERIFY(desk.shows("1 speaker: Hall"));
}

void TestDeskRecordPages::listsOfADialogAreSearched()
{
    WindowFixture desk;
    PluginClient& plugin = *desk.desk().plugin();
    const DeviceModel* devices = plugin.getIPAudioModel(desk.window());
    const GroupModel* groups = plugin.getNetworkAudioGroupModel(desk.window());
    QVERIFY(plugin.addIPAudio("Hall (old)", "10.0.0.1", 80, QString(), QString(), {}));
    QVERIFY(plugin.addIPAudio("Roof", "10.0.0.2", 80, QString(), QString(), {}));
    QTRY_COMPARE(devices->rowCount(), 2);
    QVERIFY(plugin.addNetworkAudioGroup("North", QVariantList{1}));
    QVERIFY(plugin.addNetworkAudioGroup("South", QVariantList{2}));
    QTRY_COMPARE(groups->rowCount(), 2);
    desk.page("schedules");
    desk.click("Add a schedule…");
    const auto entries = [&](const char* list) {
        QStringList texts;
        desk.visit([&](QQuickItem* view) {
            if (!view->inherits("QQuickListView") || !desk.item(list)->isAncestorOf(view)) {
                return;
            }
            for (int i = 0; i < view->property("count").toInt(); ++i) {
                QQuickItem* entry = nullptr;
                QMetaObject::invokeMethod(view, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, entry),
                                          Q_ARG(int, i));
                texts.append(entry != nullptr ? entry->property("text").toString() : QString());
            }
        });
        return texts;
    };
    QTRY_COMPARE(entries("scheduleGroups"), (QStringList{"North", "South"}));
    desk.fill("scheduleGroupsSearch", "nor");
    QTRY_COMPARE(entries("scheduleGroups"), QStringList{"North"});
    QCOMPARE(entries("scheduleSpeakers"), (QStringList{"Hall (old)", "Roof"}));
    desk.fill("scheduleGroupsSearch", "roof"); // a member's name
    QTRY_COMPARE(entries("scheduleGroups"), QStringList{"South"});
    desk.fill("scheduleSpeakersSearch", "l (o");
    QTRY_COMPARE(entries("scheduleSpeakers"), QStringList{"Hall (old)"});
    desk.click("Cancel");
    QVERIFY(desk.gone("save"));
    desk.click("Add a schedule…"); // without the searches of the last time
    QTRY_COMPARE(entries("scheduleSpeakers"), (QStringList{"Hall (old)", "Roof"}));
    QTRY_COMPARE(entries("scheduleGroups"), (QStringList{"North", "South"}));
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.gone("save"));

    desk.page("groups");
    desk.click("Add a group…");
    desk.fill("groupMembersSearch", "roof");
    QTRY_COMPARE(entries("groupMembers"), QStringList{"Roof"});
    desk.click("Cancel");
    QVERIFY(desk.gone("save"));
    desk.click("Add a group…");
    QTRY_COMPARE(entries("groupMembers"), (QStringList{"Hall (old)", "Roof"}));
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.gone("save"));

    desk.page("speakers");
    desk.click("Add a speaker…");
    QTRY_COMPARE(entries("speakerCameras").size(), 3);
    desk.fill("speakerCamerasSearch", "DOCK");
    QTRY_COMPARE(entries("speakerCameras"), QStringList{"Loading dock"});
    desk.click("Loading dock");
    Q_EMIT desk.desk().targets()->listed(); // what is found stays so
    QTRY_COMPARE(entries("speakerCameras"), QStringList{"Loading dock"});
    QVERIFY(desk.shows("(1 chosen)"));
    desk.key(Qt::Key_Escape);
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.gone("save"));
    desk.click("Add a speaker…");
    QTRY_COMPARE(entries("speakerCameras").size(), 3);
}

void TestDeskRecordPages::listsThatChange_data()
{
    QTest::addColumn<QString>("page");
    for (const char* page : {"speakers", "groups", "schedules"}) {
        QTest::newRow(page) << page;
    }
}

/** Rows come, change, go and are found again while they are shown; the fixture fails on what QML complains
 * of. */

void TestDeskRecordPages::listsThatChange()
{
    QFETCH(QString, page);
    WindowFixture desk;
    PluginClient& plugin = *desk.desk().plugin();
    DeviceModel* devices = plugin.getIPAudioModel(desk.window());
    GroupModel* groups = plugin.getNetworkAudioGroupModel(desk.window());
    ScheduleModel* schedules = plugin.getNetworkAudioScheduleModel(desk.window());
    sendFile(desk);
    desk.page(page);
    const auto draw = [&] { desk.window()->grabWindow(); };
    const auto schedule = [](const QString& name, int id) {
        return QVariantMap{{"scheduleName", name},
                           {"enableSchedule", true},
                           {"scheduleType", 1},
                           {"scheduleSettings", QVariantMap()},
                           {"scheduleStartTime", "2026-01-01T17:45:00"},
                           {"scheduleEndTime", ""},
                           {"enableScheduleEndTime", false},
                           {"audioID", 1},
                           {"groupIDList", QVariantList{id}},
                           {"networkAudioIDList", QVariantList{id}}};
    };
    constexpr int rows = 20; // more than are seen
    const auto visitEveryPage = [&] {
        for (const QString& each : desk.pages()) {
            desk.page(each);
            draw();
        }
        desk.page(page);
        draw();
        desk.desk().settings()->setLanguage("de"); // which asks every binding anew
        draw();
        desk.desk().settings()->setLanguage("en");
        draw();
    };
    for (int i = 1; i <= rows; ++i) {
        const QString name = QString("%1 %2").arg(i % 2 == 0 ? "even" : "odd").arg(i);
        QVERIFY(plugin.addIPAudio(name, "10.0.0.1", i, QString(), QString(), {}));
        QTRY_COMPARE(devices->rowCount(), i);
        QVERIFY(plugin.addNetworkAudioGroup(name, QVariantList{i}));
        QTRY_COMPARE(groups->rowCount(), i);
        QVERIFY(plugin.addNetworkAudioSchedule(schedule(name, i)));
        QTRY_COMPARE(schedules->rowCount(), i);
        draw();
    }
    desk.key(Qt::Key_F, Qt::ControlModifier);
    desk.key(Qt::Key_Tab);
    desk.key(Qt::Key_Tab);
    for (const auto key : {Qt::Key_Down, Qt::Key_End, Qt::Key_Home, Qt::Key_PageDown}) {
        desk.key(key);
        draw();
    }
    desk.key(Qt::Key_F, Qt::ControlModifier);
    for (const char* text : {"even", "nothing", ""}) {
        if (desk.window()->activeFocusItem()->inherits("QQuickTextField")) {
            desk.type(text);
        }
        draw();
    }
    visitEveryPage();
    // From one end of the list to the other.
    for (const int id : {1, 2, 19, 20, 10}) {
        for (const char* end : {"a", "z"}) {
            const QString name = QString("%1 %2").arg(end).arg(id);
            QSignalSpy changed(&plugin, &PluginClient::updateNetworkAudioScheduleResponse);
            QVERIFY(plugin.updateIPAudio(id, name, "10.0.0.1", 80, QString(), QString(), {}));
            QVERIFY(plugin.updateNetworkAudioGroup(id, name, QVariantList{id}));
            QVERIFY(plugin.updateNetworkAudioSchedule(id, schedule(name, id)));
            QTRY_COMPARE(changed.count(), 1);
            draw();
        }
    }
    for (int i = 1; i <= rows; i += 3) {
        QVERIFY(plugin.deleteNetworkAudioSchedule(i));
        QVERIFY(plugin.deleteNetworkAudioGroup(i));
        QVERIFY(plugin.deleteIPAudio(i));
        const int left = rows - i / 3 - 1;
        QTRY_COMPARE(schedules->rowCount(), left);
        QTRY_COMPARE(groups->rowCount(), left);
        QTRY_COMPARE(devices->rowCount(), left);
        draw();
    }
    visitEveryPage();
    // The lists come anew between two languages; a language asks every binding anew.
    QSignalSpy listed(schedules, &QAbstractItemModel::modelReset);
    for (const char* language : {"de", "en", "de", "en"}) {
        const int left = schedules->rowCount();
        listed.clear();
        plugin.retrieveIPAudioModel();
        QTRY_VERIFY(listed.count() > 0 && schedules->rowCount() == left);
        desk.desk().settings()->setLanguage(language);
        QVERIFY(plugin.deleteNetworkAudioSchedule(schedules->schedule(0).id));
        QVERIFY(plugin.deleteNetworkAudioGroup(groups->group(0).id));
        QVERIFY(plugin.deleteIPAudio(devices->device(0).id));
        QTRY_COMPARE(devices->rowCount(), left - 1);
        draw();
    }
    // Then those of another server, which are empty.
    desk.desk().connection()->useRemote("ws://127.0.0.1:1", "anna", "secret", QString());
    QTRY_COMPARE(desk.desk().connection()->state(), DeskConnection::Reconnecting);
    visitEveryPage();
    desk.desk().connection()->useLocal();
    QTRY_VERIFY(devices->rowCount() > 0);
    visitEveryPage();
}

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskRecordPages>(argc, argv));
}

#include "tst_deskrecordpages.moc"
