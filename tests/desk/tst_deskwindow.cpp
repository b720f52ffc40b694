// The whole window as an operator sees it: a real display, a real sound server, the real plug-in, a server
// inside.

#include "system/ProgramEnd.h"
#include "tests/desk/HostileServer.h"
#include "tests/desk/WindowTest.h"

class TestDeskWindow : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void emptyPages();
    void languageWithoutAFile();
    void questionsInGerman();
};

void TestDeskWindow::emptyPages()
{
    WindowFixture desk;
    const QMap<QString, QString> texts{{"talk", "Choose whom to talk to"}, {"cameras", "Part of the server"},
                                       {"speakers", "No speakers yet."},   {"files", "No audio files yet."},
                                       {"groups", "No groups yet."},       {"schedules", "No schedules yet."},
                                       {"connection", "Another server"}};
    for (const QString& page : desk.pages()) {
        desk.page(page);
        QVERIFY2(desk.shows(texts.value(page)), qPrintable(page));
        desk.shoot(QString("empty-%1").arg(page));
    }
}

void TestDeskWindow::languageWithoutAFile()
{
    WindowFixture desk({}, "fr");
    QVERIFY(desk.desk().plugin()->addIPAudio("Hall", "10.0.0.1", 80, QString(), QString(),
                                             {"camera-1", "camera-2"}));
    desk.page("speakers");
    QVERIFY(desk.shows("2 cameras"));
}

void TestDeskWindow::questionsInGerman()
{
    WindowFixture desk({}, "de"); // where more of them need two lines
    desk.click("Front gate");
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    for (const char* language : {"de", "en", "de"}) {
        desk.desk().settings()->setLanguage(language);
        QVERIFY(!desk.window()->close());
        QVERIFY(desk.shows(QString(language) == "de" ? "Es läuft ein Gespräch mit Front gate."
                                                     : "You are talking to Front gate."));
        desk.shoot(QString("%1-closing-asks").arg(language));
        desk.key(Qt::Key_Escape);
        QVERIFY(desk.item("talkButton"));
    }
    desk.desk().talk()->stop();
}

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskWindow>(argc, argv));
}

#include "tst_deskwindow.moc"
