// Names come from elsewhere: whatever looks like markup in them is shown as it is, and nothing is fetched.

#include "system/ProgramEnd.h"
#include "tests/desk/QmlComplaints.h"
#include "tests/desk/WindowFixture.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTcpServer>

class TestDeskNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void everyTextElementIsPlain();
    void talks();
    void cameras();
    void speakers();
    void filesAndPlaybacks();
    void groups();
    void schedules();
    void connection();

private:
    /** A name that a rich text would fetch a picture for. */
    QString hostile(const QString& name) const;
    std::function<void(ClientOptions&)> hostileCameras() const;
    /** One speaker that answers, one that is offline, a file, a group and a schedule. */
    void fillWithRecords(WindowFixture& desk);
    /** Fails unless a name is on the screen, and every text with markup in it is drawn as it is. */
    void look(WindowFixture& desk, const QString& name);

    std::unique_ptr<PulseServer> m_pulse;
    QTcpServer m_listener; ///< What the names point to.
    QString m_file;        ///< With a name that is markup.
    QTemporaryDir m_folder;
};

QString TestDeskNames::hostile(const QString& name) const
{
    return QString("<img src=\"http://127.0.0.1:%1/%2.png\"> <b>%2</b>")
        .arg(m_listener.serverPort())
        .arg(name);
}

std::function<void(ClientOptions&)> TestDeskNames::hostileCameras() const
{
    return [this](ClientOptions& options) {
        options.simulated.cameras.front().name = hostile("gate");
        options.simulated.cameras.back().name = hostile("park");
        options.simulated.offlineAddresses = {"10.0.0.2"};
    };
}

void TestDeskNames::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY(m_pulse->ready());
    QVERIFY(m_listener.listen(QHostAddress::LocalHost));
    // A file's name holds no slash.
    m_file = m_folder.filePath("<font size=7>bell.wav");
    QVERIFY(QFile::copy(ANNOUNCEMENT_WAV, m_file));
}

void TestDeskNames::cleanup()
{
    QVERIFY2(!m_listener.hasPendingConnections(), "a name was fetched");
    QCOMPARE(QmlComplaints::take(), QStringList());
}

void TestDeskNames::look(WindowFixture& desk, const QString& name)
{
    QVERIFY2(desk.shows(name), qPrintable(name));
    QStringList rich;
    desk.visit([&rich](QQuickItem* item) {
        const QVariant format = item->property("textFormat");
        const QString text = item->property("text").toString();
        if (format.isValid() && text.contains('<') && format.toInt() != Qt::PlainText) {
            rich.append(text);
        }
    });
    QCOMPARE(rich, QStringList());
}

void TestDeskNames::fillWithRecords(WindowFixture& desk)
{
    QObject* plugin = desk.desk().plugin();
    bool accepted = false;
    for (const auto& [name, address] :
         {std::make_pair("hall", "10.0.0.1"), std::make_pair("roof", "10.0.0.2")}) {
        QMetaObject::invokeMethod(plugin, "addIPAudio", Q_RETURN_ARG(bool, accepted),
                                  Q_ARG(QString, hostile(name)), Q_ARG(QString, address), Q_ARG(int, 80),
                                  Q_ARG(QString, QString()), Q_ARG(QString, QString()),
                                  Q_ARG(QStringList, QStringList()));
        QVERIFY(accepted);
    }
    QTRY_COMPARE(desk.desk().targets()->total(), 5);
    QMetaObject::invokeMethod(plugin, "addNetworkAudioGroup", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(QString, hostile("yard")), Q_ARG(QVariant, QVariantList({1, 2})));
    QVERIFY(accepted);
    QMetaObject::invokeMethod(plugin, "uploadFile", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(QUrl, QUrl::fromLocalFile(m_file)));
    QVERIFY(accepted);
    QTRY_COMPARE(plugin->property("audioFileList").toList().value(0).toMap()["audioID"].toInt(), 1);
    const QVariantMap schedule{{"scheduleName", hostile("closing")},
                               {"enableSchedule", true},
                               {"scheduleType", 1},
                               {"scheduleSettings", QVariantMap()},
                               {"scheduleStartTime", "2026-01-01T17:45:00"},
                               {"scheduleEndTime", ""},
                               {"enableScheduleEndTime", false},
                               {"audioID", 1},
                               {"groupIDList", QVariantList{1}},
                               {"networkAudioIDList", QVariantList{1}}};
    QMetaObject::invokeMethod(plugin, "addNetworkAudioSchedule", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(QVariantMap, schedule));
    QVERIFY(accepted);
}

void TestDeskNames::everyTextElementIsPlain()
{
    // Texts are made of PlainText, lists that drop down of DropDown; the stock elements guess the format.
    const QRegularExpression element(R"((^|[\s:])(Text|Label|ComboBox|TextArea|TextEdit)\s*\{)");
    int files = 0;
    QDirIterator sources(":/desk", {"*.qml"});
    while (sources.hasNext()) {
        QFile source(sources.next());
        QVERIFY(source.open(QIODevice::ReadOnly));
        ++files;
        const bool own =
            source.fileName().endsWith("/PlainText.qml") || source.fileName().endsWith("/DropDown.qml");
        QVERIFY2(own || !QString::fromUtf8(source.readAll()).contains(element),
                 qPrintable(source.fileName()));
    }
    QVERIFY(files > 30);
}

void TestDeskNames::talks()
{
    WindowFixture desk(hostileCameras());
    fillWithRecords(desk);
    look(desk, hostile("hall"));
    desk.click(hostile("park"));
    look(desk, hostile("park")); // the heading
    desk.click(desk.item("talkButton"));
    QVERIFY(desk.shows("cannot be talked to"));
    look(desk, hostile("park")); // the banner
    desk.click(hostile("gate"));
    desk.click(hostile("hall"));
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    QVERIFY(desk.shows("Talking to <img"));
    look(desk, hostile("gate"));
    desk.page("connection");
    QVERIFY(desk.shows("Talking to <img")); // on the air
    look(desk, hostile("gate"));
    desk.desk().talk()->stop();
}

void TestDeskNames::cameras()
{
    WindowFixture desk(hostileCameras());
    desk.page("cameras");
    look(desk, hostile("gate"));
    const QString name = hostile("dock");
    QVERIFY(desk.desk().cameraRequests()->add(
        {{"camName", name}, {"camKind", "simulated"}, {"camAddress", "10.0.0.3"}}));
    look(desk, name);
    desk.click(name + ": edit");
    look(desk, "Camera \"" + name);
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.gone("save"));
    desk.click(name + ": delete");
    look(desk, "Delete the camera \"" + name);
}

void TestDeskNames::speakers()
{
    WindowFixture desk(hostileCameras());
    fillWithRecords(desk);
    desk.page("speakers");
    look(desk, hostile("hall"));
    desk.click(hostile("roof") + ": Test");
    QVERIFY(desk.shows("The speaker does not answer"));
    look(desk, hostile("roof"));
    desk.click(hostile("hall") + ": edit");
    look(desk, "Speaker \"" + hostile("hall"));
    look(desk, hostile("gate")); // cameras to be bound to
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.gone("save"));
    desk.click(hostile("hall") + ": delete");
    look(desk, "Delete the speaker \"" + hostile("hall"));
}

void TestDeskNames::filesAndPlaybacks()
{
    WindowFixture desk(hostileCameras());
    fillWithRecords(desk);
    desk.page("files");
    const QString file = QFileInfo(m_file).fileName();
    look(desk, file);
    desk.click(file + ": Play…");
    look(desk, "Play \"" + file);
    look(desk, hostile("hall"));
    desk.click("On a group");
    look(desk, hostile("yard"));
    desk.click("On a speaker");
    desk.click(hostile("hall"));
    QVERIFY(desk.gone("playTargets"));
    look(desk, file + " on " + hostile("hall"));
    // Of a playback that fails the window tells on every page.
    Q_EMIT desk.desk().playback()->failed(hostile("failure"));
    look(desk, hostile("failure"));
    desk.click(file + ": delete");
    look(desk, "Delete \"" + file);
}

void TestDeskNames::groups()
{
    WindowFixture desk(hostileCameras());
    fillWithRecords(desk);
    desk.page("groups");
    look(desk, hostile("yard"));
    look(desk, "2 speakers: " + hostile("hall"));
    desk.click(hostile("yard") + ": edit");
    look(desk, "Group \"" + hostile("yard"));
    look(desk, hostile("roof")); // a member
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.gone("save"));
    desk.click(hostile("yard") + ": delete");
    look(desk, "Delete the group \"" + hostile("yard"));
}

void TestDeskNames::schedules()
{
    WindowFixture desk(hostileCameras());
    fillWithRecords(desk);
    desk.page("schedules");
    look(desk, hostile("closing"));
    desk.click("Week");
    look(desk, hostile("closing"));
    desk.click("List");
    desk.click(hostile("closing") + ": edit");
    look(desk, "Schedule \"" + hostile("closing"));
    look(desk, hostile("hall"));
    look(desk, hostile("yard"));
    desk.click("Audio file"); // the list drops down
    look(desk, QFileInfo(m_file).fileName());
    desk.key(Qt::Key_Escape);
    desk.key(Qt::Key_Escape);
    QVERIFY(desk.gone("save"));
    desk.click(hostile("closing") + ": delete");
    look(desk, "Delete the schedule \"" + hostile("closing"));
}

void TestDeskNames::connection()
{
    WindowFixture desk;
    const QString url = "ws://127.0.0.1:1/&lt;b&gt;nowhere"; // tags alone are no URL
    QVERIFY(desk.desk().connection()->useRemote(url, "anna", "secret", QString()));
    QTRY_COMPARE(desk.desk().connection()->state(), DeskConnection::Reconnecting);
    look(desk, url); // in the banner
    desk.page("connection");
    look(desk, url);
}

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskNames>(argc, argv));
}

#include "tst_desknames.moc"
