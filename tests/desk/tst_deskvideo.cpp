// The live video of a camera, from its RTP to the window.

#include "system/ProgramEnd.h"
#include "tests/desk/WindowFixture.h"
#include "tests/server/onvif/TestCamera.h"

#include <QSignalSpy>

class TestDeskVideo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void besideTheTalk();
};

void TestDeskVideo::besideTheTalk()
{
    TestCamera camera({"--video", QStringLiteral(TEST_DATA_DIR "/h264/quadrants.h264")});
    WindowFixture desk;
    CameraView& view = *desk.desk().view();
    QVERIFY(desk.desk().cameraRequests()->add(
        {{"camName", "Loading ramp"}, {"camKind", "onvif"}, {"camAddress", camera.address()}}));
    QVERIFY(desk.control("Loading ramp"));
    QCOMPARE(camera.count("shows"), 0); // not before somebody looks
    desk.click("Loading ramp");
    QTRY_VERIFY(view.isLive());
    QQuickItem* picture = desk.item("cameraPicture");
    QVERIFY(picture != nullptr);
    const auto colourAt = [&](qreal x, qreal y) {
        const qreal width = std::min(picture->width(), picture->height() * 160 / 96); // with its proportions
        const qreal height = width * 96 / 160;
        const QPointF at = picture->mapToScene(QPointF((picture->width() - width) / 2 + width * x,
                                                       (picture->height() - height) / 2 + height * y));
        return desk.window()->grabWindow().pixelColor(at.toPoint());
    };
    QTRY_VERIFY(colourAt(0.1, 0.2).red() > 180 && colourAt(0.1, 0.2).green() < 80);
    QVERIFY(colourAt(0.6, 0.2).green() > 140 && colourAt(0.6, 0.2).red() < 80);
    QVERIFY(colourAt(0.2, 0.8).blue() > 180 && colourAt(0.2, 0.8).red() < 80);
    QVERIFY(colourAt(0.8, 0.9).red() > 200 && colourAt(0.8, 0.9).blue() > 200);
    QVERIFY(desk.shows("Live"));
    desk.shoot("video");
    // The talk beside it takes nothing away.
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    QSignalSpy images(&view, &CameraView::imageChanged);
    QTRY_VERIFY(images.size() > 25);
    desk.desk().settings()->setTheme("dark");
    desk.shoot("video-dark");
    desk.desk().talk()->stop();
    QCOMPARE(camera.count("shows"), 1);
    // Nobody looks on another page; the camera is left, and comes back by itself.
    desk.page("connection");
    QVERIFY(!view.isLive());
    QVERIFY(!camera.waitFor("shown 1").isEmpty());
    desk.page("talk");
    QTRY_VERIFY(view.isLive());
    QCOMPARE(camera.count("shows"), 2);
    // A camera that is gone leaves an old picture, and says why.
    camera.kill();
    QTRY_VERIFY(!view.isLive());
    QVERIFY(desk.item("pictureMark"));
    desk.shoot("video-lost");
}

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskVideo>(argc, argv));
}

#include "tst_deskvideo.moc"
