#include "tests/support/ProgramRun.h"

#include <QTest>

class TestProgramStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void settings();
    void whatTheUserHasSetStays();

private:
    static QString started()
    {
        return ProgramRun::of(TESTS_DIR "/starting_program", QStringLiteral("."), {}).out;
    }
};

void TestProgramStart::init()
{
    for (const char* name :
         {"PULSE_LATENCY_MSEC", "QT_GSTREAMER_WIDGET_VIDEOSINK", "QT_GSTREAMER_WINDOW_VIDEOSINK"}) {
        qunsetenv(name);
    }
}

void TestProgramStart::settings()
{
    QCOMPARE(started(), QStringLiteral("PULSE_LATENCY_MSEC=80\n"
                                       "QT_GSTREAMER_WIDGET_VIDEOSINK=fakesink\n"
                                       "QT_GSTREAMER_WINDOW_VIDEOSINK=fakesink\n"));
}

void TestProgramStart::whatTheUserHasSetStays()
{
    qputenv("PULSE_LATENCY_MSEC", "120");
    qputenv("QT_GSTREAMER_WIDGET_VIDEOSINK", "ximagesink");
    QCOMPARE(started(), QStringLiteral("PULSE_LATENCY_MSEC=120\n"
                                       "QT_GSTREAMER_WIDGET_VIDEOSINK=ximagesink\n"
                                       "QT_GSTREAMER_WINDOW_VIDEOSINK=fakesink\n"));
}

QTEST_GUILESS_MAIN(TestProgramStart)
#include "tst_programstart.moc"
