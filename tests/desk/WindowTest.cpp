#include "tests/desk/WindowTest.h"

#include "tests/desk/QmlComplaints.h"

void WindowTest::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY2(m_pulse->ready(), "PulseAudio does not start. Is the package pulseaudio installed?");
}

void WindowTest::cleanup()
{
    QCOMPARE(QmlComplaints::take(), QStringList());
}

void WindowTest::addSpeaker(WindowFixture& desk, const QString& name, const QString& address)
{
    desk.page("speakers");
    desk.key(Qt::Key_N, Qt::ControlModifier);
    desk.fill("speakerName", name);
    desk.fill("speakerAddress", address);
    desk.fill("speakerPort", "8080");
    desk.click("Save");
    QVERIFY(desk.gone("save"));
}

void WindowTest::sendFile(WindowFixture& desk)
{
    desk.page("files");
    desk.drop(desk.item("fileList"), {QUrl::fromLocalFile(ANNOUNCEMENT_WAV)});
    QVERIFY(desk.control("announcement.wav: Play…"));
}
