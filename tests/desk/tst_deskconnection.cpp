// Servers that refuse, go away, come back, or never answer, as the window tells of them.

#include "server/access/SocketServer.h"
#include "server/core/ServerSession.h"
#include "server/devices/simulated/SimulatedDevices.h"
#include "system/ProgramEnd.h"
#include "tests/desk/QmlComplaints.h"
#include "tests/desk/WindowFixture.h"
#include "tests/server/AwkwardBackend.h"
#include "tests/server/SilentServer.h"

#include <QSignalSpy>

class TestDeskConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void signIn();
    void malformedFingerprint();
    void pictureOverASocket();
    void wrongPassword();
    void serverThatIsNotThere();
    void serverThatGoesAndComesBack();
    void serverThatNeverAnswers();
    void cameraThatIsLost();
    void cameraThatIsAdded();
    void serverThatCannotStart();
    void nothingIsKeptOfAnotherServer();

private:
    void signInAs(WindowFixture& desk, const QString& secret);

    std::unique_ptr<PulseServer> m_pulse;
    QTemporaryDir m_folder;
    UserStore m_users;
    ServerConfig m_config;
    std::unique_ptr<RecordingServer> m_server;
    std::unique_ptr<SocketServer> m_door;
};

void TestDeskConnection::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY(m_pulse->ready());
    QVERIFY(m_users.setPassword("anna", "right"));
    SimulatedConfig simulated;
    simulated.cameras = defaultCameras();
    simulated.recordingDirectory = m_folder.path();
    simulated.cameras.front().name = "Far away gate";
    m_config.devices = simulatedDevices(simulated);
}

void TestDeskConnection::init()
{
    m_server = std::make_unique<RecordingServer>(m_config);
    SocketConfig config;
    config.users = m_users;
    m_door = std::make_unique<SocketServer>(*m_server, config, nullptr);
    QVERIFY(m_door->listen());
}

void TestDeskConnection::cleanup()
{
    m_door.reset();
    m_server.reset();
    QCOMPARE(QmlComplaints::take(), QStringList());
}

void TestDeskConnection::signInAs(WindowFixture& desk, const QString& secret)
{
    desk.page("connection");
    desk.fill("serverUrl", QString("ws://127.0.0.1:%1").arg(m_door->url().port()));
    desk.fill("serverUser", "anna");
    desk.fill("serverSecret", secret);
    desk.click("Sign in");
}

void TestDeskConnection::signIn()
{
    WindowFixture desk;
    desk.page("connection");
    desk.fill("serverUrl", "http://nonsense");
    QVERIFY(desk.shows("An address looks like"));
    QVERIFY(!desk.item("signIn")->isEnabled());
    signInAs(desk, "right");
    QVERIFY(desk.shows("Connected: ws://127.0.0.1"));
    desk.shoot("signed-in");
    desk.page("talk");
    QVERIFY(desk.control("Far away gate"));
    desk.page("connection");
    desk.click("Use the server on this computer");
    QVERIFY(desk.shows("Connected: the server on this computer"));
    desk.page("talk");
    QVERIFY(desk.control("Front gate"));
}

void TestDeskConnection::malformedFingerprint()
{
    WindowFixture desk;
    DeskConnection& connection = *desk.desk().connection();
    QTRY_VERIFY(connection.isOnline());
    desk.page("connection");
    desk.fill("serverUser", "anna");
    desk.fill("serverSecret", "right");
    desk.fill("serverFingerprint", "aa:bb:cc");
    QVERIFY(desk.shows("64 hexadecimal digits"));
    desk.fill("serverUrl", QString("ws://127.0.0.1:%1").arg(m_door->url().port()));
    desk.key(Qt::Key_Return); // of the address, which is right
    QVERIFY(!desk.item("signIn")->isEnabled());
    const QString url = QString("ws://127.0.0.1:%1").arg(m_door->url().port());
    QVERIFY(!connection.useRemote(url, "anna", "right", QString(63, 'a')));
    QVERIFY(!connection.useRemote(url, "anna", "right", QString(64, 'g')));
    QVERIFY(!connection.useRemote("http://nonsense", "anna", "right", QString()));
    QVERIFY(connection.isLocal() && connection.isOnline()); // nothing has changed
    const QString digits(64, 'A');
    QVERIFY(connection.useRemote(url, "anna", "right", digits.left(32) + ": " + digits.mid(32)));
    QCOMPARE(connection.fingerprint(), digits.toLower());
}

void TestDeskConnection::pictureOverASocket()
{
    WindowFixture desk;
    signInAs(desk, "right");
    QVERIFY(desk.shows("Connected: ws://127.0.0.1"));
    desk.page("talk");
    desk.click("Far away gate");
    QTRY_VERIFY(desk.desk().view()->hasPicture());
    QVERIFY(desk.item("cameraPicture"));
    // With its connection goes the news; what is left is marked.
    m_door.reset();
    QVERIFY(desk.item("pictureMark"));
    QVERIFY(desk.desk().view()->isStale());
    // With another server the picture goes, too.
    desk.desk().connection()->useLocal();
    QVERIFY(!desk.desk().view()->hasPicture());
    QVERIFY(desk.gone("cameraPicture"));
    QCOMPARE(desk.desk().view()->camera(), QString());
}

void TestDeskConnection::wrongPassword()
{
    WindowFixture desk;
    signInAs(desk, "wrong");
    QTRY_COMPARE(desk.desk().connection()->state(), DeskConnection::Refused);
    QVERIFY(desk.shows("Sign-in refused"));
    desk.shoot("sign-in-refused");
    // A talk says what is the matter.
    desk.page("talk");
    QCOMPARE(desk.desk().targets()->total(), 0); // nobody of the server before
    desk.click(desk.item("talkButton"));
    QVERIFY(desk.shows("There is no connection to the server."));
    signInAs(desk, "right");
    QTRY_COMPARE(desk.desk().connection()->state(), DeskConnection::Online);
}

/** What never was is not lost. */
void TestDeskConnection::serverThatIsNotThere()
{
    WindowFixture desk;
    desk.page("connection");
    desk.fill("serverUrl", QString("ws://127.0.0.1:%1").arg(m_door->url().port()));
    desk.fill("serverUser", "anna");
    desk.fill("serverSecret", "right");
    m_door.reset();
    desk.click("Sign in");
    QTRY_COMPARE(desk.desk().connection()->state(), DeskConnection::Reconnecting);
    QVERIFY(desk.shows("No connection; trying again…"));
}

void TestDeskConnection::serverThatGoesAndComesBack()
{
    WindowFixture desk;
    signInAs(desk, "right");
    QVERIFY(desk.shows("Connected: ws://127.0.0.1"));
    desk.page("talk");
    desk.click("Far away gate");
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
    const quint16 port = static_cast<quint16>(m_door->url().port());
    m_door.reset();
    QTRY_COMPARE(desk.desk().connection()->state(), DeskConnection::Reconnecting);
    QVERIFY(desk.shows("Connection lost; trying again…"));
    QVERIFY(desk.shows("The connection to the server was lost; the talk has ended."));
    QCOMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
    desk.shoot("connection-lost");
    SocketConfig config;
    config.users = m_users;
    config.port = port;
    m_door = std::make_unique<SocketServer>(*m_server, config, nullptr);
    QVERIFY(m_door->listen());
    QTRY_COMPARE_WITH_TIMEOUT(desk.desk().connection()->state(), DeskConnection::Online, 20000);
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(desk.desk().talk()->phase(), TalkControl::Talking);
}

void TestDeskConnection::serverThatNeverAnswers()
{
    const SilentServer server;
    WindowFixture desk([&server](ClientOptions& options) {
        server.applyTo(options);
        options.timeout = 500;
    });
    // It was asked for its lists already.
    QVERIFY(desk.shows("The server does not answer."));
    desk.page("speakers");
    desk.click("Add a speaker…");
    desk.fill("speakerName", "Hall");
    desk.fill("speakerAddress", "10.0.0.1");
    desk.click("Save");
    QVERIFY(desk.shows("The server did not answer. Nobody knows whether it was done"));
    QVERIFY(desk.item("save")->isEnabled()); // it may be tried again
    desk.shoot("no-answer");
    desk.key(Qt::Key_Escape);
    desk.click("Close the message");
    QVERIFY(!desk.desk().watch()->isOverdue());
}

void TestDeskConnection::cameraThatIsLost()
{
    const auto devices = std::make_shared<AwkwardDevices>();
    devices->cameras = {{"gate", "Front gate"}};
    devices->opens = true;
    devices->losesAfter = 10;
    WindowFixture desk([&devices](ClientOptions& options) {
        options.simulated.cameras.clear();
        options.embedded.devices = devices->kinds();
    });
    desk.click("Front gate");
    desk.click(desk.item("talkButton"));
    QVERIFY(desk.shows("The other side was lost; the talk has ended."));
    QCOMPARE(desk.desk().talk()->phase(), TalkControl::Idle);
    desk.shoot("target-lost");
}

void TestDeskConnection::cameraThatIsAdded()
{
    WindowFixture desk;
    signInAs(desk, "right");
    QVERIFY(desk.shows("Connected: ws://127.0.0.1"));
    desk.page("talk");
    QVERIFY(desk.control("Far away gate"));
    ServerSession another(*m_server);
    QString id;
    connect(&another, &ServerSession::replied, this,
            [&id](const QString&, quint64, const ServerReply& reply) {
                id = reply.result.toMap()["camId"].toString();
            });
    another.submit(
        "AddCamera",
        QVariantMap{{"camName", "Back door"}, {"camKind", "simulated"}, {"camAddress", "10.0.0.9"}}, 1);
    QTRY_VERIFY(!id.isEmpty());
    const QString key = "camera:" + id;
    QTRY_VERIFY(desk.desk().targets()->find(key) != nullptr); // the desk does not have to ask again and again
    QVERIFY(desk.control("Back door"));
    another.submit("DeleteCamera", QString(id), 1);
    QTRY_VERIFY(desk.desk().targets()->find(key) == nullptr);
}

void TestDeskConnection::serverThatCannotStart()
{
    WindowFixture desk([](ClientOptions& options) { options.embedded.dataDirectory = "/proc/nowhere"; });
    QCOMPARE(desk.desk().connection()->state(), DeskConnection::Failed);
    QVERIFY(desk.shows("The server cannot start"));
    desk.shoot("server-failed");
}

void TestDeskConnection::nothingIsKeptOfAnotherServer()
{
    // Both servers have a camera "camera-1" and a speaker of number 1.
    WindowFixture desk;
    Desk& model = desk.desk();
    const auto addSpeaker = [&](const char* name) {
        bool accepted = false;
        QMetaObject::invokeMethod(model.plugin(), "addIPAudio", Q_RETURN_ARG(bool, accepted),
                                  Q_ARG(QString, name), Q_ARG(QString, "10.0.0.1"), Q_ARG(int, 80),
                                  Q_ARG(QString, QString()), Q_ARG(QString, QString()),
                                  Q_ARG(QStringList, QStringList()));
        QVERIFY(accepted);
        QTRY_VERIFY(model.targets()->find("speaker:1") != nullptr);
        QCOMPARE(model.targets()->find("speaker:1")->name, QString(name));
    };
    signInAs(desk, "right");
    QTRY_COMPARE(model.connection()->state(), DeskConnection::Online);
    addSpeaker("Elsewhere");
    desk.click("Use the server on this computer");
    QTRY_COMPARE(model.connection()->state(), DeskConnection::Online);
    QTRY_VERIFY(model.targets()->find("camera:camera-1") != nullptr);
    addSpeaker("Hall");

    desk.page("speakers");
    desk.click("Hall: Test");
    QVERIFY(desk.shows("The speaker answers."));
    model.playback()->play(false, 1, "Hall", 1, "bell.wav", 60000);
    desk.page("talk");
    desk.click("Front gate");
    desk.click("Hall");
    QTRY_COMPARE(model.targets()->chosenCount(), 2);
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(model.talk()->partners(), QString("Front gate, Hall"));
    // A choice outlives a connection that is made anew with the same server.
    QSignalSpy listed(model.targets(), &TargetModel::listed);
    model.connection()->retry();
    QCOMPARE(model.talk()->phase(), TalkControl::Idle);
    QTRY_VERIFY(listed.size() > 0);
    QCOMPARE(model.targets()->chosenCount(), 2);
    QVERIFY(model.playback()->rowCount() > 0);
    desk.click(desk.item("talkButton"));
    QTRY_COMPARE(model.talk()->partners(), QString("Front gate, Hall"));
    bool ended = false; // when the last server is forgotten
    connect(model.connection(), &DeskConnection::serverChanged, &desk.desk(),
            [&] { ended = model.talk()->phase() == TalkControl::Idle; });

    signInAs(desk, "right");
    QVERIFY(ended);
    QCOMPARE(model.targets()->total(), 0); // until the other server lists its own
    QCOMPARE(model.targets()->chosenCount(), 0);
    QCOMPARE(model.playback()->rowCount(), 0);
    QTRY_COMPARE(model.targets()->total(), 4);
    QCOMPARE(model.targets()->find("speaker:1")->name, QString("Elsewhere"));
    QCOMPARE(model.targets()->find("camera:camera-1")->name, QString("Far away gate"));
    QCOMPARE(model.targets()->chosenCount(), 0);
    desk.page("speakers");
    QVERIFY(desk.control("Elsewhere: edit"));
    desk.visit([](QQuickItem* item) {
        QVERIFY(!item->property("text").toString().contains("The speaker answers."));
    });
}

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskConnection>(argc, argv));
}

#include "tst_deskconnection.moc"
