// A server that asks a scripted ONVIF camera for its picture.

#include "server/devices/onvif/OnvifDevices.h"
#include "tests/onvif/ScriptedCamera.h"
#include "tests/server/ServerHarness.h"
#include "tests/server/onvif/ScriptedRtsp.h"

namespace {

struct Server
{
    explicit Server(const OnvifPictureTimes& times = {2000, 60000, 60000}, int presence = 0)
    {
        OnvifConfig onvif;
        onvif.pictures = times;
        onvif.servicePort = 1;                                       // nobody listens there
        onvif.presence.period = std::chrono::milliseconds(presence); // 0: it is asked for pictures alone
        ServerConfig config;
        config.devices = onvifDevices(onvif);
        config.pictureInterval = std::chrono::milliseconds(0); // each request is a question to the camera
        harness = std::make_unique<ServerHarness>(config);
    }

    /** Adds a camera with its login. @return its id */
    QString add(const ScriptedCamera& camera, const QString& password = QStringLiteral("secret"))
    {
        return harness
            ->ask("AddCamera", QVariantMap{{"camName", QString("Camera %1").arg(++cameras)},
                                           {"camKind", "onvif"},
                                           {"camAddress", camera.url().toString()},
                                           {"username", "anna"},
                                           {"password", password}})
            .result.toMap()["camId"]
            .toString();
    }
    /** Adds a camera that is known by its stream. @return its id */
    QString addStream(const QString& address)
    {
        return harness
            ->ask("AddCamera",
                  QVariantMap{{"camName", address}, {"camKind", "onvif"}, {"camAddress", address}})
            .result.toMap()["camId"]
            .toString();
    }
    bool isOnline(const QString& id)
    {
        const QVariantList all = harness->ask("GetCamera").result.toList();
        return std::any_of(all.begin(), all.end(), [&](const QVariant& each) {
            return each.toMap()["camId"] == QVariant(id) && each.toMap()["online"] == QVariant(true);
        });
    }
    ServerReply picture(const QString& id) { return harness->ask("GetCameraPicture", id); }

    int cameras = 0;
    std::unique_ptr<ServerHarness> harness;
};

void setLogin(ScriptedCamera& camera)
{
    camera.user = "anna";
    camera.password = "secret";
    camera.digestAlgorithm = "MD5";
}

} // namespace

class TestOnvifPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picture();
    void addressIsAskedForOnce();
    void addressThatFailsIsAskedForAgain();
    void addressOfAnotherHost();
    void noAddress();
    void loginIsNotTriedAgainAndAgain();
    void changedRecordIsAskedAtOnce();
    void badPictures_data();
    void badPictures();
    void othersGoOn();
    void cameraThatIsThereWithoutOnvif();
    void pictureShowsThatTheCameraIsThere();
};

void TestOnvifPictures::picture()
{
    ScriptedCamera camera;
    setLogin(camera);
    camera.wantsToken = false;
    Server server;
    const QString id = server.add(camera);
    const ServerReply reply = server.picture(id);
    QCOMPARE(reply.returnCode, ReturnCode::success);
    QCOMPARE(reply.result, QVariant(QVariantMap{{"camId", id}, {"picture", camera.picture}}));
    QVERIFY(!camera.requests.isEmpty());
    QCOMPARE(camera.requests.last().name, ScriptedCamera::still());
    for (const auto& request : camera.requests) {
        QVERIFY(!request.text.contains("secret"));
    }
}

void TestOnvifPictures::addressIsAskedForOnce()
{
    ScriptedCamera camera;
    Server server;
    const QString id = server.add(camera);
    QCOMPARE(camera.requests.size(), 0); // not before somebody looks
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(server.picture(id).returnCode, ReturnCode::success);
    }
    QCOMPARE(camera.names().count("GetSnapshotUri"), 1);
    QCOMPARE(camera.names().count(ScriptedCamera::still()), 3);
}

void TestOnvifPictures::addressThatFailsIsAskedForAgain()
{
    ScriptedCamera camera;
    Server server({2000, 0, 0});
    const QString id = server.add(camera);
    QCOMPARE(server.picture(id).returnCode, ReturnCode::success);
    camera.setReply(ScriptedCamera::still(), ScriptedCamera::http(404, ""));
    QCOMPARE(server.picture(id).returnCode, ReturnCode::noPicture);
    camera.setReply(ScriptedCamera::still(), ScriptedCamera::http(200, camera.picture));
    QCOMPARE(server.picture(id).returnCode, ReturnCode::success);
    QCOMPARE(camera.names().count("GetSnapshotUri"), 2);
}

void TestOnvifPictures::addressOfAnotherHost()
{
    ScriptedCamera camera;
    camera.setBody("GetSnapshotUri", "<tr2:GetSnapshotUriResponse><tr2:Uri>http://8.8.8.8/still.jpg</tr2:Uri>"
                                     "</tr2:GetSnapshotUriResponse>");
    Server server;
    const ServerReply reply = server.picture(server.add(camera));
    QCOMPARE(reply.returnCode, ReturnCode::noPicture);
    QVERIFY(reply.errorText.contains("no address of its own"));
    QVERIFY(!camera.names().contains(ScriptedCamera::still()));
}

void TestOnvifPictures::noAddress()
{
    ScriptedCamera camera;
    camera.setFault("GetSnapshotUri", "ActionNotSupported");
    Server server;
    const QString id = server.add(camera);
    QCOMPARE(server.picture(id).returnCode, ReturnCode::noPicture);
    const int asked = camera.requests.size();
    QCOMPARE(server.picture(id).returnCode, ReturnCode::noPicture);
    QCOMPARE(camera.requests.size(), asked); // it was told once
}

void TestOnvifPictures::loginIsNotTriedAgainAndAgain()
{
    ScriptedCamera camera;
    setLogin(camera);
    Server server;
    const QString id = server.add(camera, "wrong");
    for (int i = 0; i < 3; ++i) {
        const ServerReply reply = server.picture(id);
        QCOMPARE(reply.returnCode, ReturnCode::loginRefused);
        QVERIFY(reply.errorText.contains("login"));
    }
    QCOMPARE(camera.names().count("GetServices"), 2); // asked, and once more with the login
}

void TestOnvifPictures::changedRecordIsAskedAtOnce()
{
    ScriptedCamera camera;
    setLogin(camera);
    Server server;
    const QString id = server.add(camera, "wrong");
    QCOMPARE(server.picture(id).returnCode, ReturnCode::loginRefused);
    QCOMPARE(server.harness
                 ->ask("UpdateCamera", QVariantMap{{"camId", id},
                                                   {"camName", "Gate"},
                                                   {"camKind", "onvif"},
                                                   {"camAddress", camera.url().toString()},
                                                   {"password", "secret"}})
                 .returnCode,
             ReturnCode::success);
    QCOMPARE(server.picture(id).returnCode, ReturnCode::success);
    QCOMPARE(server.harness->ask("DeleteCamera", id).returnCode, ReturnCode::success);
    QCOMPARE(server.picture(id).returnCode, ReturnCode::noSuchCamera);
}

void TestOnvifPictures::badPictures_data()
{
    QTest::addColumn<int>("trick");
    QTest::addColumn<QString>("code");
    QTest::newRow("gigabytes") << int(ScriptedCamera::EndlessBody) << ReturnCode::noPicture;
    QTest::newRow("slow") << int(ScriptedCamera::Drip) << ReturnCode::cameraTimedOut;
    QTest::newRow("silence") << int(ScriptedCamera::Silence) << ReturnCode::cameraTimedOut;
    QTest::newRow("cut") << int(ScriptedCamera::CloseInside) << ReturnCode::noPicture;
}

void TestOnvifPictures::badPictures()
{
    QFETCH(int, trick);
    QFETCH(QString, code);
    ScriptedCamera camera;
    camera.tricks.insert(ScriptedCamera::still(), static_cast<ScriptedCamera::Trick>(trick));
    Server server({400, 60000, 60000});
    const ServerReply reply = server.picture(server.add(camera));
    QCOMPARE(reply.returnCode, code);
    QVERIFY(!reply.errorText.isEmpty());
    QVERIFY(!reply.result.isValid());
}

void TestOnvifPictures::othersGoOn()
{
    ScriptedCamera slow;
    slow.tricks.insert("GetProfiles", ScriptedCamera::Silence);
    ScriptedCamera camera;
    Server server;
    const QString first = server.add(slow);
    const QString second = server.add(camera);
    server.harness->submit("GetCameraPicture", first);
    QCOMPARE(server.picture(second).returnCode, ReturnCode::success);
    QVERIFY(slow.names().contains("GetSystemDateAndTime"));
}

void TestOnvifPictures::cameraThatIsThereWithoutOnvif()
{
    ScriptedRtsp stream;
    Server server({2000, 60000, 60000}, 60000);
    const QString there = server.addStream(stream.address());
    const QString gone = server.addStream("rtsp://127.0.0.1:2/");
    QTRY_VERIFY(server.isOnline(there));
    const QString words =
        "the camera does not answer ONVIF questions at http://127.0.0.1:1/onvif/device_service";
    for (int i = 0; i < 2; ++i) { // asked, and remembered
        const ServerReply reply = server.picture(there);
        QCOMPARE(reply.returnCode, ReturnCode::noPicture);
        QVERIFY2(reply.errorText.startsWith(words), qPrintable(reply.errorText));
        QVERIFY2(reply.errorText.endsWith("talks may still work"), qPrintable(reply.errorText));
    }
    QCOMPARE(server.picture(gone).returnCode, ReturnCode::cameraOffline);
}

void TestOnvifPictures::pictureShowsThatTheCameraIsThere()
{
    ScriptedCamera camera;
    Server server;
    const QString id = server.add(camera);
    QVERIFY(!server.isOnline(id));
    QCOMPARE(server.picture(id).returnCode, ReturnCode::success);
    QVERIFY(server.isOnline(id));
}

QTEST_GUILESS_MAIN(TestOnvifPictures)
#include "tst_onvifpictures.moc"
