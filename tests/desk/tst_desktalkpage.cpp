// The talk page as an operator uses it, its key and its questions.

#include "system/ProgramEnd.h"
#include "tests/desk/WindowTest.h"
#include "tests/support/MonitorRecorder.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/WavFiles.h"

#include <QDir>

#include <algorithm>

class TestDeskTalkPage : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void talkToACamera();
    void talkKey();
    void hintOfTheTalkKey();
    void closingDuringATalk();
    void talkKeyAfterASearch();
    void talkKeyAfterAnotherPagesSearch();
    void refusedTalk();
    void camerasComeAndGo();
    void cursorStaysWithItsTarget();
    void severalSpeakersAtOnce();
};

void TestDeskTalkPage::talkToACamera()
{
    WindowFixture desk;
    MonitorRecorder loudspeaker;
    QVERIFY(loudspeaker.running());
    desk.click("Front gate");
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    QVERIFY(desk.shows("Talking to Front gate"));
    QTRY_VERIFY(desk.item("capturedMeter")->property("level").toReal() > 0.3);
    QTRY_VERIFY(desk.item("receivedMeter")->property("level").toReal() > 0.3); // the camera's echo
    QTRY_COMPARE(desk.item("talkClock")->property("text").toString(), QString("0:02"));
    QVERIFY(SignalMeasure::levelDbfs(loudspeaker.sound()) > -40); // and it is heard in the room
    desk.shoot("talking");
    desk.click("Mute the microphone");
    QVERIFY(desk.item("mutedSign"));
    QTRY_COMPARE(desk.item("capturedMeter")->property("level").toReal(), 0.0);
    desk.shoot("muted");
    desk.page("files");
    QVERIFY(desk.shows("The microphone is muted."));
    desk.key(Qt::Key_M, Qt::ControlModifier);
    QVERIFY(desk.shows("Talking to Front gate"));
    desk.shoot("talking-elsewhere");
    desk.click("End the talk");
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
    QVERIFY(!desk.desk().plugin()->property("talking").toBool());
    // What the camera heard.
    const QDir recordings(desk.folder() + "/recordings");
    const QStringList files = recordings.entryList({"camera-1*.wav"}, QDir::Files);
    QCOMPARE(files.size(), 1);
    const auto received = WavFiles::read(recordings.filePath(files.first()));
    QVERIFY(std::any_of(received.begin(), received.end(),
                        [](std::int16_t sample) { return std::abs(sample) > 3000; }));
}

void TestDeskTalkPage::talkKey()
{
    WindowFixture desk;
    desk.click("Front gate");
    QTest::keyPress(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    QVERIFY(desk.shows("Talking while you hold the space bar"));
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
    // A space in a text is a space.
    desk.click(desk.item("targetSearch"));
    desk.type("front gate");
    QCOMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
    QCOMPARE(desk.desk().targets()->rowCount(), 1);
    // On other pages the space bar is not the talk key.
    desk.page("connection");
    QTest::keyPress(desk.window(), Qt::Key_Space);
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    QCOMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
}

void TestDeskTalkPage::hintOfTheTalkKey()
{
    WindowFixture desk;
    TalkControl& talk = *desk.desk().talk();
    const auto hint = [&] { return desk.item("talkHint")->property("text").toString(); };
    const QString held = "Talking while you hold the space bar";
    QTest::keyPress(desk.window(), Qt::Key_Space); // to nobody
    QVERIFY(desk.shows("Nobody is chosen."));
    QCOMPARE(hint(), QString("Hold the space bar to talk, or press the button"));
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    desk.click("Front gate");
    QTest::keyPress(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(talk.phase(), TalkControl::Talking);
    QCOMPARE(hint(), held);
    desk.key(Qt::Key_M, Qt::ControlModifier);
    QVERIFY(desk.item("mutedSign"));
    QVERIFY(desk.gone("talkHint"));
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(talk.phase(), TalkControl::Idle);
    // Muted at rest: the key lifts the mute, and the sign goes.
    QTest::keyPress(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(talk.phase(), TalkControl::Talking);
    QVERIFY(desk.gone("mutedSign"));
    QCOMPARE(hint(), held);
    QTRY_VERIFY(desk.item("capturedMeter")->property("level").toReal() > 0.3);
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(talk.phase(), TalkControl::Idle);
    QVERIFY(desk.item("mutedSign"));
    talk.setMuted(false);
    // Refused, with the key still down.
    desk.click("Car park");
    QTest::keyPress(desk.window(), Qt::Key_Space);
    QVERIFY(desk.shows("Car park cannot be talked to"));
    QCOMPARE(hint(), QString("Hold the space bar to talk, or press the button"));
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    // In a talk that the button opened nothing depends on the key.
    desk.click("Front gate");
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(talk.phase(), TalkControl::Talking);
    QTest::keyPress(desk.window(), Qt::Key_Space);
    QCOMPARE(hint(), QString("Press the button to end the talk"));
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    desk.click(desk.item("talkButton"));
    // In the search the space bar writes.
    desk.click(desk.item("targetSearch"));
    QTRY_COMPARE(hint(), QString("Press the button to talk"));
}

void TestDeskTalkPage::closingDuringATalk()
{
    WindowFixture desk;
    TalkControl& talk = *desk.desk().talk();
    const auto questions = [&] {
        int count = 0;
        desk.visit([&count](QQuickItem* item) {
            count += item->property("text").toString() == "Closing during a talk" ? 1 : 0;
        });
        return count;
    };
    desk.click("Front gate");
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(talk.phase(), TalkControl::Talking);
    QVERIFY(!desk.window()->close());
    QVERIFY(desk.shows("You are talking to Front gate. Closing the window ends the talk."));
    QVERIFY(!desk.window()->close()); // no second question
    QCOMPARE(questions(), 1);
    desk.shoot("closing-asks");
    // By keys: Escape and "Keep talking" keep the talk.
    desk.key(Qt::Key_Escape);
    QTRY_COMPARE(questions(), 0);
    QVERIFY(!desk.window()->close());
    QTRY_COMPARE(desk.window()->activeFocusItem()->property("text").toString(), QString("Keep talking"));
    desk.key(Qt::Key_Space);
    QTRY_COMPARE(questions(), 0);
    QCOMPARE(talk.phase(), TalkControl::Talking);
    // A talk that ends meanwhile takes the question with it.
    QVERIFY(!desk.window()->close());
    QTRY_COMPARE(questions(), 1);
    talk.stop();
    QTRY_COMPARE(questions(), 0);
    QVERIFY(desk.window()->isVisible());
    // A held key keeps its talk while the question is open.
    QTest::keyPress(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(talk.phase(), TalkControl::Talking);
    QVERIFY(!desk.window()->close());
    QTRY_COMPARE(questions(), 1);
    QTRY_COMPARE(talk.seconds(), 1); // well after a key that is let go
    QVERIFY(talk.isWhileHeld());
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(talk.phase(), TalkControl::Idle);
    QTRY_COMPARE(questions(), 0);
    // On another page, from the keyboard.
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(talk.phase(), TalkControl::Talking);
    desk.page("connection");
    QVERIFY(!desk.window()->close());
    QTRY_COMPARE(desk.window()->activeFocusItem()->property("text").toString(), QString("Keep talking"));
    desk.key(Qt::Key_Tab);
    desk.key(Qt::Key_Return);
    QTRY_VERIFY(!desk.window()->isVisible());
    QCOMPARE(talk.phase(), TalkControl::Idle);
    // Without a talk nothing is asked.
    desk.window()->show();
    QVERIFY(desk.window()->close());
    QVERIFY(!desk.window()->isVisible());
}

void TestDeskTalkPage::talkKeyAfterASearch()
{
    WindowFixture desk;
    desk.click(desk.item("targetSearch"));
    for (const char character : {'g', 'a', 't', 'e'}) {
        QTest::keyClick(desk.window(), character);
    }
    desk.click("Front gate");
    QTest::keyPress(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    QCOMPARE(desk.desk().talk()->partners(), QString("Front gate"));
    QCOMPARE(desk.item("targetSearch")->property("text").toString(), QString("gate"));
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
}

void TestDeskTalkPage::talkKeyAfterAnotherPagesSearch()
{
    WindowFixture desk;
    desk.click("Front gate");
    QTest::keyClick(desk.window(), Qt::Key_2, Qt::ControlModifier);
    QTest::keyClick(desk.window(), Qt::Key_F, Qt::ControlModifier);
    QTest::keyClick(desk.window(), Qt::Key_1, Qt::ControlModifier);
    QTest::keyPress(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    QTest::keyRelease(desk.window(), Qt::Key_Space);
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
}

void TestDeskTalkPage::refusedTalk()
{
    WindowFixture desk;
    desk.click(desk.item("talkButton"));
    QVERIFY(desk.shows("Nobody is chosen."));
    desk.click("Car park");
    desk.click(desk.item("talkButton"));
    QVERIFY(desk.shows("Car park cannot be talked to: the camera is offline"));
    desk.shoot("refused");
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
    desk.click("Close the message");
    QVERIFY(desk.desk().talk()->problem().isEmpty());
}

void TestDeskTalkPage::camerasComeAndGo()
{
    WindowFixture desk;
    TargetModel& targets = *desk.desk().targets();
    QTRY_VERIFY(targets.find("camera:camera-2") != nullptr);
    QVERIFY(disconnect(&desk.desk().connection()->link(), nullptr, &targets, nullptr)); // the test lists them
    const auto camera = [](const char* id, const char* name) {
        return QVariantMap{{"camId", id}, {"camName", name}, {"online", true}};
    };
    desk.page("speakers");
    desk.key(Qt::Key_N, Qt::ControlModifier);
    desk.click("Loading dock");
    QVERIFY(desk.shows("(1 chosen)"));
    targets.setCameras({camera("camera-2", "Loading dock"), camera("new", "New gate")});
    QVERIFY(desk.control("New gate"));
    QVERIFY(desk.shows("(1 chosen)"));
    QVERIFY(desk.control("Loading dock")->property("checked").toBool());
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.gone("save"));

    targets.setCameras({camera("camera-1", "Front gate")});
    desk.page("talk");
    desk.click("Front gate");
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    targets.setCameras({}); // its talk outlives its record
    QCOMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    QCOMPARE(desk.desk().talk()->partners(), QString("camera-1"));
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
    QVERIFY(!desk.desk().plugin()->talking());
}

void TestDeskTalkPage::cursorStaysWithItsTarget()
{
    WindowFixture desk;
    QObject* plugin = desk.desk().plugin();
    TargetModel& targets = *desk.desk().targets();
    const auto save = [&](int id, const char* name) {
        bool accepted = false;
        const auto common = [&](const char* invokable, auto... first) {
            QMetaObject::invokeMethod(plugin, invokable, Q_RETURN_ARG(bool, accepted), first...,
                                      Q_ARG(QString, name), Q_ARG(QString, "10.0.0.1"), Q_ARG(int, 80 + id),
                                      Q_ARG(QString, QString()), Q_ARG(QString, QString()),
                                      Q_ARG(QStringList, QStringList()));
        };
        if (id == 0) {
            const int before = targets.total();
            common("addIPAudio");
            QTRY_COMPARE(targets.total(), before + 1);
        } else {
            common("updateIPAudio", Q_ARG(int, id));
            QTRY_COMPARE(targets.find(QString("speaker:%1").arg(id))->name, QString(name));
        }
        QVERIFY(accepted);
    };
    const auto enter = [&] {
        desk.key(Qt::Key_Return);
        const QString chosen = targets.chosenNames();
        desk.key(Qt::Key_Return);
        return chosen;
    };
    QTRY_COMPARE(targets.total(), 3);
    save(0, "Hall");
    save(0, "Roof");
    desk.key(Qt::Key_F, Qt::ControlModifier);
    desk.key(Qt::Key_Down);
    for (int row = 0; row < 3; ++row) {
        desk.key(Qt::Key_Down);
    }
    QCOMPARE(enter(), QString("Hall"));
    save(0, "Cellar"); // above it
    QCOMPARE(targets.rowOf("speaker:1"), 4);
    QCOMPARE(enter(), QString("Hall"));
    save(3, "Yard"); // from above to below
    QCOMPARE(targets.rowOf("speaker:1"), 3);
    QCOMPARE(enter(), QString("Hall"));
    save(1, "Zoo"); // itself to the end
    QCOMPARE(targets.rowOf("speaker:1"), 5);
    QCOMPARE(enter(), QString("Zoo"));
    // Under a search.
    targets.setSearch("o"); // Front gate, Loading dock, Roof, Zoo
    QCOMPARE(enter(), QString("Zoo"));
    save(0, "Office");
    QCOMPARE(enter(), QString("Zoo"));
    bool accepted = false;
    QMetaObject::invokeMethod(plugin, "deleteIPAudio", Q_RETURN_ARG(bool, accepted), Q_ARG(int, 2));
    QVERIFY(accepted);
    QTRY_COMPARE(targets.find("speaker:2"), nullptr);
    QCOMPARE(enter(), QString("Zoo"));
    // Without its target there is no cursor.
    QMetaObject::invokeMethod(plugin, "deleteIPAudio", Q_RETURN_ARG(bool, accepted), Q_ARG(int, 1));
    QVERIFY(accepted);
    QTRY_COMPARE(targets.find("speaker:1"), nullptr);
    QCOMPARE(enter(), QString());
}

void TestDeskTalkPage::severalSpeakersAtOnce()
{
    WindowFixture desk([](ClientOptions& options) { options.simulated.offlineAddresses = {"10.0.0.3"}; });
    addSpeaker(desk, "Hall", "10.0.0.1");
    addSpeaker(desk, "Stairs", "10.0.0.2");
    addSpeaker(desk, "Roof", "10.0.0.3");
    desk.page("talk");
    desk.click("Hall");
    desk.click("Stairs");
    desk.click("Roof"); // it is offline
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    QTRY_COMPARE(desk.desk().talk()->partners(), QString("Hall, Stairs"));
    QVERIFY(desk.shows("Roof cannot be talked to"));
    QVERIFY(desk.shows("The talk goes on with the others."));
    QTRY_VERIFY(desk.item("capturedMeter")->property("level").toReal() > 0.3);
    desk.shoot("several-speakers");
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
}

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskTalkPage>(argc, argv));
}

#include "tst_desktalkpage.moc"
