// The page of cameras, their tests and their pictures as an operator uses them.

#include "system/ProgramEnd.h"
#include "tests/desk/HostileServer.h"
#include "tests/desk/WindowTest.h"

class TestDeskCameraPage : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void cameras();
    void codecOfAnotherServer();
    void emptyListOfCameras();
    void keysOfAList();
    void camerasAreFoundAndAsked();
    void cameraIsTested();
    void pictureOfTheCamera();
};

void TestDeskCameraPage::cameras()
{
    WindowFixture desk;
    desk.page("cameras");
    QVERIFY(desk.shows("Front gate"));
    QVERIFY(desk.shows("Offline")); // the car park's
    desk.click("Add a camera…");
    desk.fill("cameraName", "Hall");
    desk.fill("cameraAddress", "ftp://10.0.0.7");
    QVERIFY(desk.shows("An IP address or a host name, also with a port like host:8080"));
    QVERIFY(desk.shows("The address is not right."));
    QVERIFY(!desk.item("save")->isEnabled());
    desk.fill("cameraAddress", "10.0.0.7");
    desk.fill("cameraPassword", "secret");
    QVERIFY(desk.shows("A password needs a user name."));
    desk.fill("cameraUser", "anna");
    QVERIFY(desk.item("save")->isEnabled());
    desk.click("Kind");
    desk.click("Simulated camera");
    desk.shoot("camera-dialog");
    desk.click("Advanced");
    desk.fill("cameraDscp", "64");
    QVERIFY(desk.shows("0 to 63."));
    QVERIFY(!desk.item("save")->isEnabled());
    desk.fill("cameraDscp", "63");
    desk.fill("cameraDelay", "10001");
    QVERIFY(desk.shows("0 to 10000."));
    desk.fill("cameraDelay", "250");
    desk.click("Codec to the camera");
    desk.click("PCMA");
    desk.click(desk.item("cameraHalfDuplex"));
    desk.shoot("camera-advanced");
    desk.click("Save");
    QVERIFY(desk.gone("save"));
    QVERIFY(desk.control("Hall: edit"));
    QVERIFY(desk.shows("Simulated camera  ·  10.0.0.7"));
    desk.shoot("cameras");
    // What is not changed stays as it is; the password does not come back.
    desk.click("Hall: edit");
    QCOMPARE(desk.item("cameraPassword")->property("text").toString(), QString());
    QCOMPARE(desk.item("cameraUser")->property("text").toString(), QString("anna"));
    desk.click("Advanced");
    QCOMPARE(desk.item("cameraDelay")->property("text").toString(), QString("250"));
    QVERIFY(desk.item("cameraHalfDuplex")->property("checked").toBool());
    QCOMPARE(desk.item("cameraCodec")->property("displayText").toString(), QString("PCMA"));
    desk.click("Camera");
    desk.fill("cameraName", "Main hall");
    desk.key(Qt::Key_Return);
    QVERIFY(desk.gone("save"));
    QVERIFY(desk.control("Main hall: edit"));
    // What the server refuses is shown in its words; the dialog stays.
    desk.click("Add a camera…");
    desk.fill("cameraName", "Main hall");
    desk.fill("cameraAddress", "10.0.0.8");
    desk.click("Save");
    QVERIFY(desk.shows("the name is taken (the server: there is a camera named \"Main hall\" already)"));
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.gone("save"));
    // It can be talked to at once.
    QVERIFY(desk.desk().targets()->find("camera:1") != nullptr);
    desk.click("Main hall: delete");
    QVERIFY(desk.shows("This cannot be undone."));
    desk.click("Keep");
    desk.click("Main hall: delete");
    desk.click("Delete");
    QTRY_VERIFY(desk.desk().targets()->find("camera:1") == nullptr);
    QTRY_COMPARE(desk.desk().cameras()->rowCount(), 3);
}

/** A codec that this program does not offer stays in the record. */

void TestDeskCameraPage::codecOfAnotherServer()
{
    WindowFixture desk;
    desk.page("cameras");
    QVERIFY(desk.shows("Front gate"));
    desk.desk().cameraRequests()->add({{"camName", "Hall"},
                                       {"camKind", "simulated"},
                                       {"camAddress", "10.0.0.7"},
                                       {"camSettings", QVariantMap{{"talkCodec", "opus"}}}});
    const auto codec = [&desk] {
        CameraModel* cameras = desk.desk().cameras();
        return cameras->index(cameras->rowCount() - 1, 0)
            .data(CameraModel::SettingsRole)
            .toMap()["talkCodec"];
    };
    desk.click("Hall: edit");
    desk.click("Advanced");
    QCOMPARE(desk.item("cameraCodec")->property("displayText").toString(), QString("opus"));
    desk.fill("cameraDelay", "20");
    desk.click("Save");
    QVERIFY(desk.gone("save"));
    QCOMPARE(codec(), QVariant("opus"));
}

void TestDeskCameraPage::emptyListOfCameras()
{
    WindowFixture desk([](ClientOptions& options) { options.simulated.cameras.clear(); });
    QVERIFY(desk.shows("Add a camera on the page Cameras"));
    desk.page("cameras");
    QVERIFY(desk.shows("No cameras yet."));
    int buttons = 0;
    desk.visit([&buttons](QQuickItem* item) {
        buttons +=
            item->inherits("QQuickButton") && item->property("text") == QVariant("Find cameras…") ? 1 : 0;
    });
    QCOMPARE(buttons, 2); // above the list, and in its place
}

/** Tab goes from the list to the buttons of the current row alone. */

void TestDeskCameraPage::keysOfAList()
{
    WindowFixture desk;
    desk.page("cameras");
    QVERIFY(desk.shows("Front gate"));
    QQuickItem* list = desk.item("cameraList")->property("list").value<QQuickItem*>();
    QVERIFY(list != nullptr);
    list->forceActiveFocus();
    QCOMPARE(list->property("currentIndex").toInt(), 0);
    desk.key(Qt::Key_End);
    QCOMPARE(list->property("currentIndex").toInt(), 2);
    desk.key(Qt::Key_Tab);
    QCOMPARE(desk.window()->activeFocusItem(), desk.control("Car park: Test"));
    list->forceActiveFocus();
    desk.key(Qt::Key_Home);
    QCOMPARE(list->property("currentIndex").toInt(), 0);
    desk.key(Qt::Key_Tab);
    QCOMPARE(desk.window()->activeFocusItem(), desk.control("Front gate: Test"));
    desk.key(Qt::Key_Tab); // none of another row
    QVERIFY(desk.window()->activeFocusItem() != desk.control("Loading dock: Test"));
    list->forceActiveFocus();
    desk.key(Qt::Key_T);
    QCOMPARE(desk.desk().cameraTest()->camera(), QString("camera-1"));
    desk.key(Qt::Key_T); // the button says Cancel now
    QCOMPARE(desk.desk().cameraTest()->camera(), QString());
}

void TestDeskCameraPage::camerasAreFoundAndAsked()
{
    HostileServer server;
    const QString address = "http://10.0.0.9/onvif/device_service";
    server.answer("FindCameras", QVariantList{QVariantMap{{"camName", "<b>Gate</b>"},
                                                          {"hardware", "X-1"},
                                                          {"location", "Yard"},
                                                          {"camAddress", address},
                                                          {"remark", ""}},
                                              QVariantMap{{"camName", QString(100000, 'x')},
                                                          {"remark", "names only addresses of other hosts"}},
                                              QVariant(7)});
    server.answer("AskCamera", QVariantMap{{"hears", "no"},
                                           {"hearsReason", "the camera has no loudspeaker"},
                                           {"speaks", "yes"},
                                           {"voiceCodecs", QVariantList{"PCMU/8000"}},
                                           {"model", "<img src=\"http://127.0.0.1:1/x.png\">"}});
    server.answer("AddCamera", QVariantMap());
    WindowFixture desk([&server](ClientOptions& options) { server.applyTo(options); });
    QTRY_COMPARE(desk.desk().connection()->state(), DeskConnection::Online);
    desk.page("cameras");
    desk.click("Find cameras…");
    QVERIFY(desk.item("foundCameras"));
    QVERIFY(desk.shows(address));
    QVERIFY(desk.shows("It gives no address of its own."));
    desk.shoot("cameras-found");
    // By the keyboard: the first is the current one, Enter takes it.
    desk.key(Qt::Key_Return);
    QVERIFY(desk.gone("foundCameras"));
    QVERIFY(desk.item("cameraName"));
    QTRY_COMPARE(desk.item("cameraName")->property("text").toString(), QString("<b>Gate</b>"));
    QCOMPARE(desk.item("cameraAddress")->property("text").toString(), address);
    QCOMPARE(desk.item("cameraUser")->property("text").toString(), QString());
    desk.click("Abilities");
    desk.click("What can it do?");
    QVERIFY(desk.shows("Plays what is said: no (the camera has no loudspeaker)"));
    QVERIFY(desk.shows("Can be heard: yes, in PCMU/8000"));
    desk.shoot("camera-abilities");
    // With another address it is another camera.
    desk.click("Camera");
    desk.fill("cameraAddress", "10.0.0.10");
    desk.click("Abilities");
    QCOMPARE(desk.item("cameraAnswers")->property("count").toInt(), 0);
    desk.click("Save");
    QVERIFY(desk.gone("save"));
    // A server that has none says so.
    server.answer("FindCameras", QVariantList());
    desk.click("Find cameras…");
    QVERIFY(desk.shows("No camera answered."));
    desk.click("Close");
}

void TestDeskCameraPage::cameraIsTested()
{
    WindowFixture desk;
    desk.page("cameras");
    desk.click("Front gate: Test");
    QVERIFY(desk.control("Front gate: Cancel"));
    QVERIFY(desk.shows("testing…"));
    QVERIFY(desk.shows("Front gate: The line opens, and the tone comes back after"));
    desk.shoot("camera-tested");
    desk.click("Car park: Test");
    QVERIFY(desk.shows("Car park: The line does not open: the camera is offline"));
    // A talk ends a test.
    desk.click("Front gate: Test");
    QVERIFY(desk.control("Front gate: Cancel"));
    desk.desk().targets()->choose("camera:camera-2", true);
    desk.desk().talk()->start();
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    QCOMPARE(desk.desk().cameraTest()->camera(), QString());
    desk.desk().talk()->stop();
}

void TestDeskCameraPage::pictureOfTheCamera()
{
    WindowFixture desk;
    CameraView& view = *desk.desk().view();
    QVERIFY(desk.shows("Choose a camera to see its picture."));
    QVERIFY(view.isActive());
    desk.click("Front gate");
    QQuickItem* picture = desk.item("cameraPicture");
    QVERIFY(picture != nullptr);
    QVERIFY(view.hasPicture());
    const QImage first = view.image();
    QCOMPARE(first.size(), QSize(640, 360));
    // It is drawn, with its proportions: the second of its bars is yellow, the seventh blue.
    const auto colourAt = [&](qreal part) {
        const qreal width = picture->height() * 16 / 9; // in the middle of its place
        const QPointF at = picture->mapToScene(
            QPointF((picture->width() - width) / 2 + width * part, picture->height() / 3));
        return desk.window()->grabWindow().pixelColor(at.toPoint());
    };
    QTRY_VERIFY(colourAt(3.0 / 16).red() > 180 && colourAt(3.0 / 16).blue() < 80);
    QVERIFY(colourAt(13.0 / 16).blue() > 180 && colourAt(13.0 / 16).red() < 80);
    QTRY_VERIFY(view.image() != first); // the next one: its light has moved
    desk.shoot("picture");
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    desk.shoot("picture-talking");
    QVERIFY(view.isActive());
    desk.desk().talk()->stop();
    // A camera that gives none says why, in the place of another's picture.
    desk.click("Car park");
    QVERIFY(desk.gone("cameraPicture"));
    QVERIFY(desk.shows("No picture: the camera is offline"));
    desk.shoot("picture-refused");
    // An old one is marked.
    desk.click("Front gate");
    QVERIFY(desk.item("cameraPicture"));
    view.setOnline(false);
    QVERIFY(desk.item("pictureMark"));
    desk.shoot("picture-stale");
    view.setOnline(true);
    QVERIFY(desk.gone("pictureMark"));
    // Nobody looks on another page, and with the window minimised or hidden.
    desk.page("connection");
    QVERIFY(!view.isActive());
    desk.page("talk");
    QVERIFY(view.isActive());
    desk.window()->showMinimized();
    QTRY_VERIFY(!view.isActive());
    desk.window()->showNormal();
    QTRY_VERIFY(view.isActive());
    desk.window()->hide();
    QVERIFY(!view.isActive());
}

/** The cameras of an open dialog, and of a talk, are those that the server has now. */

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskCameraPage>(argc, argv));
}

#include "tst_deskcamerapage.moc"
