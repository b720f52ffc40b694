// How often the window is drawn while somebody talks: a count of frames, whatever the machine takes for one.

#include "system/ProgramEnd.h"
#include "tests/desk/WindowFixture.h"

#include <QElapsedTimer>
#include <QSignalSpy>

class TestDeskDrawing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void metersAreDrawnTwentyTimesASecond();
    void nothingOfThemIsDrawnOnAnotherPage();

private:
    struct Drawn
    {
        double seconds = 0;
        int frames = 0;
    };
    /** Talks to the camera that echoes. */
    static void talk(WindowFixture& desk);
    /** Counts frames until the meters have changed so many times. */
    static Drawn whileMetersChange(WindowFixture& desk, int times);

    std::unique_ptr<PulseServer> m_pulse;
};

void TestDeskDrawing::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY(m_pulse->ready());
}

void TestDeskDrawing::talk(WindowFixture& desk)
{
    QTRY_VERIFY(desk.desk().targets()->total() > 0);
    desk.desk().targets()->choose("camera:camera-1", true);
    desk.desk().talk()->start();
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    QTRY_VERIFY(desk.desk().meters()->captured() > 0.3);
}

TestDeskDrawing::Drawn TestDeskDrawing::whileMetersChange(WindowFixture& desk, int times)
{
    constexpr int patience = 30000; // ms
    const QSignalSpy ticks(desk.desk().meters(), &TalkMeters::ticked);
    const QSignalSpy frames(desk.window(), &QQuickWindow::frameSwapped);
    QElapsedTimer clock;
    clock.start();
    if (!QTest::qWaitFor([&] { return ticks.size() >= times; }, patience)) {
        QTest::qFail("the meters do not change", __FILE__, __LINE__);
    }
    return {static_cast<double>(clock.elapsed()) / 1000, frames.size()};
}

void TestDeskDrawing::metersAreDrawnTwentyTimesASecond()
{
    WindowFixture desk;
    desk.page("talk");
    talk(desk);
    QVERIFY(!QTest::currentTestFailed());
    const Drawn drawn = whileMetersChange(desk, 60);
    const double most = 20 * drawn.seconds  // meters and lines together
                        + 4 * drawn.seconds // the clock, the camera's picture
                        + 3;                // at both ends
    QVERIFY2(drawn.frames <= most, qPrintable(QString("%1 of %2").arg(drawn.frames).arg(most)));
    QVERIFY2(drawn.frames >= 30, qPrintable(QString::number(drawn.frames))); // half of the changes are seen
}

void TestDeskDrawing::nothingOfThemIsDrawnOnAnotherPage()
{
    WindowFixture desk;
    talk(desk);
    QVERIFY(!QTest::currentTestFailed());
    desk.page("files");
    const Drawn drawn = whileMetersChange(desk, 40);
    QVERIFY2(drawn.frames <= 8, qPrintable(QString::number(drawn.frames)));
}

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskDrawing>(argc, argv));
}

#include "tst_deskdrawing.moc"
