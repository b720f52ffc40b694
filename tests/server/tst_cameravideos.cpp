// Videos of cameras: who opens them, who gets which pictures, and when they end.

#include "protocol/Limits.h"
#include "server/cameras/CameraVideos.h"
#include "tests/server/ServerHarness.h"

namespace {

/** Cameras whose videos are the test's. */
class ShowingCameras : public CameraBackend
{
public:
    using Videos = std::map<QString, CameraVideo*>; // those that are there

    class Video : public CameraVideo
    {
    public:
        Video(std::shared_ptr<Videos> videos, QString camera)
            : m_videos(std::move(videos)), m_camera(std::move(camera))
        {
            (*m_videos)[m_camera] = this;
        }
        ~Video() override
        {
            if ((*m_videos)[m_camera] == this) {
                m_videos->erase(m_camera);
            }
        }

    private:
        std::shared_ptr<Videos> m_videos;
        QString m_camera;
    };

    explicit ShowingCameras(std::shared_ptr<Videos> videos) : m_videos(std::move(videos)) {}

    void setRecords(const QList<CameraRecord>&) override {}
    QList<Camera> cameras() const override { return {{"blind", "Blind", true}}; }
    std::unique_ptr<DeviceTalk> openTalk(const QString&) override { return nullptr; }
    std::unique_ptr<CameraVideo> openVideo(const QString& camera) override
    {
        return camera.startsWith("eye") ? std::make_unique<Video>(m_videos, camera) : nullptr;
    }

private:
    std::shared_ptr<Videos> m_videos;
};

/** One more client. */
struct Client
{
    explicit Client(CommandExecutor& server) : session(server)
    {
        QObject::connect(
            &session, &ServerSession::replied,
            [this](const QString&, quint64, const ServerReply& reply) { replies.append(reply); });
        QObject::connect(&session, &ServerSession::eventRaised,
                         [this](const QString& event, const QVariant& payload) {
                             ServerHarness::checkEvent(event, payload.toMap());
                             events.append({event, payload.toMap()});
                         });
    }
    void watch(const QString& camera = "eye") { session.submit("WatchCamera", camera, ++request); }
    void unwatch(const QString& camera = "eye") { session.submit("UnwatchCamera", camera, ++request); }
    /** The positions of the pictures that came. */
    QList<int> shown() const
    {
        QCoreApplication::processEvents();
        QList<int> positions;
        for (const auto& event : events) {
            if (event.first == "CameraVideo") {
                positions.append(event.second["position"].toInt());
            }
        }
        return positions;
    }

    ServerSession session;
    quint64 request = 0;
    QList<ServerReply> replies;
    QList<QPair<QString, QVariantMap>> events;
};

struct Shown
{
    explicit Shown(std::chrono::milliseconds linger = std::chrono::milliseconds(60000))
    {
        ServerConfig config;
        config.videoTimes.linger = linger;
        config.videoTimes.refusal = std::chrono::milliseconds(300);
        config.devices.cameras.push_back(
            {"showing", [all = videos] { return std::make_unique<ShowingCameras>(all); }});
        server = std::make_unique<RecordingServer>(config);
    }
    void show(int position, bool isKeyFrame, const QString& camera = "eye")
    {
        Q_EMIT videos->at(camera)->showed({QByteArray::number(position), isKeyFrame, position});
    }
    ServerReply last(Client& client)
    {
        QCoreApplication::processEvents();
        return client.replies.isEmpty() ? ServerReply{"none", QVariant(), QString()} : client.replies.last();
    }

    std::shared_ptr<ShowingCameras::Videos> videos = std::make_shared<ShowingCameras::Videos>();
    std::unique_ptr<RecordingServer> server;
};

} // namespace

class TestCameraVideos : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void watched();
    void watchersShareOneVideo();
    void endsAWhileAfterTheLast();
    void comesBackMeanwhile();
    void sessionEnds();
    void leavesBeforeTheFirstPicture();
    void refused();
    void refusedByAnotherRecord();
    void lost();
    void slowClient();
    void watchedTwice();
    void tooManyOfOneClient();
    void tooManyCameras();
    void notThere();
    void serverEnds();
};

void TestCameraVideos::watched()
{
    Shown shown;
    Client client(*shown.server);
    client.watch();
    QCOMPARE(shown.last(client).returnCode, QString("none"));
    shown.show(0, true);
    shown.show(40, false);
    QCOMPARE(shown.last(client).returnCode, ReturnCode::success);
    QCOMPARE(shown.last(client).result, QVariant(QVariantMap{{"camId", "eye"}}));
    QCOMPARE(client.shown(), (QList<int>{0, 40}));
    const QVariantMap first = client.events[0].second;
    QCOMPARE(first,
             (QVariantMap{
                 {"camId", "eye"}, {"accessUnit", QByteArray("0")}, {"keyFrame", true}, {"position", 0}}));
    QCOMPARE(first["accessUnit"].userType(), static_cast<int>(QMetaType::QByteArray));
    QCOMPARE(first["keyFrame"].userType(), static_cast<int>(QMetaType::Bool));
    QCOMPARE(first["position"].userType(), static_cast<int>(QMetaType::Int));
    client.unwatch();
    QCOMPARE(shown.last(client).returnCode, ReturnCode::success);
    shown.show(80, false);
    QCOMPARE(client.shown(), (QList<int>{0, 40}));
}

void TestCameraVideos::watchersShareOneVideo()
{
    Shown shown;
    Client first(*shown.server);
    Client second(*shown.server);
    first.watch();
    shown.show(0, true);
    const CameraVideo* video = shown.videos->at("eye");
    second.watch();
    QCOMPARE(shown.last(second).returnCode, ReturnCode::success);
    QCOMPARE(shown.videos->at("eye"), video);
    shown.show(40, false);
    shown.show(80, true);
    shown.show(120, false);
    QCOMPARE(first.shown(), (QList<int>{0, 40, 80, 120}));
    QCOMPARE(second.shown(), (QList<int>{80, 120})); // from a key frame on
}

void TestCameraVideos::endsAWhileAfterTheLast()
{
    constexpr std::chrono::milliseconds linger{100};
    Shown shown(linger);
    Client first(*shown.server);
    Client second(*shown.server);
    first.watch();
    second.watch();
    shown.show(0, true);
    first.unwatch();
    QElapsedTimer clock;
    QVERIFY(!ServerHarness::waitFor([&] { return shown.videos->empty(); }, 3 * linger.count()));
    clock.start();
    second.unwatch();
    QVERIFY(ServerHarness::waitFor([&] { return shown.videos->empty(); }));
    QVERIFY(clock.elapsed() >= linger.count() - 5); // timers are coarse
}

void TestCameraVideos::comesBackMeanwhile()
{
    constexpr std::chrono::milliseconds linger{100};
    Shown shown(linger);
    Client client(*shown.server);
    client.watch();
    shown.show(0, true);
    client.unwatch();
    client.watch();
    QVERIFY(!ServerHarness::waitFor([&] { return shown.videos->empty(); }, 3 * linger.count()));
    shown.show(40, false); // it has missed something
    shown.show(80, true);
    QCOMPARE(client.shown(), (QList<int>{0, 80}));
}

void TestCameraVideos::sessionEnds()
{
    Shown shown(std::chrono::milliseconds(0));
    auto client = std::make_unique<Client>(*shown.server);
    client->watch();
    client->watch("eye 2");
    shown.show(0, true);
    client.reset();
    shown.show(40, false); // to nobody
    QVERIFY(ServerHarness::waitFor([&] { return shown.videos->empty(); }));
}

void TestCameraVideos::leavesBeforeTheFirstPicture()
{
    Shown shown(std::chrono::milliseconds(0));
    Client client(*shown.server);
    client.watch();
    client.unwatch();
    QVERIFY(ServerHarness::waitFor([&] { return client.replies.size() == 2; }));
    QCOMPARE(client.replies[0].returnCode, ReturnCode::noPicture);
    QCOMPARE(client.replies[1].returnCode, ReturnCode::success);
    QVERIFY(ServerHarness::waitFor([&] { return shown.videos->empty(); }));
    client.unwatch(); // of what is not watched
    QCOMPARE(shown.last(client).returnCode, ReturnCode::success);
}

void TestCameraVideos::refused()
{
    Shown shown;
    Client first(*shown.server);
    Client second(*shown.server);
    first.watch();
    second.watch();
    Q_EMIT shown.videos->at("eye")->refused(ReturnCode::loginRefused, "the camera refuses the login");
    for (Client* client : {&first, &second}) {
        QCOMPARE(shown.last(*client).returnCode, ReturnCode::loginRefused);
        QCOMPARE(shown.last(*client).errorText, QString("the camera refuses the login"));
        QVERIFY(!shown.last(*client).result.isValid());
        QVERIFY(client->events.isEmpty());
    }
    QVERIFY(shown.videos->empty());
    QElapsedTimer clock;
    clock.start();
    while (shown.videos->empty() && clock.elapsed() < 20000) { // it is asked again, but not at once
        first.watch();
        QCOMPARE(shown.last(first).returnCode, ReturnCode::loginRefused);
    }
    QVERIFY(clock.elapsed() >= 200);
    QCOMPARE(shown.videos->size(), std::size_t{1});
}

void TestCameraVideos::refusedByAnotherRecord()
{
    Shown shown;
    Client client(*shown.server);
    client.watch();
    Q_EMIT shown.videos->at("eye")->refused(ReturnCode::loginRefused, "the camera refuses the login");
    QTRY_VERIFY(shown.videos->empty());
    client.session.submit(
        "AddCamera", QVariantMap{{"camName", "Gate"}, {"camKind", "showing"}, {"camAddress", "10.0.0.1"}},
        99);
    QTRY_COMPARE(client.replies.size(), 2);
    QCOMPARE(client.replies.last().returnCode, ReturnCode::success);
    client.watch();
    QCOMPARE(shown.videos->size(), std::size_t{1}); // the login may be another one
    Q_EMIT shown.videos->at("eye")->refused(ReturnCode::cameraOffline, "it is not there"); // it may come
    QTRY_VERIFY(shown.videos->empty());
    client.watch();
    QCOMPARE(shown.videos->size(), std::size_t{1});
}

void TestCameraVideos::lost()
{
    Shown shown;
    Client client(*shown.server);
    client.watch();
    shown.show(0, true);
    Q_EMIT shown.videos->at("eye")->lost("the camera sends nothing any more");
    QVERIFY(ServerHarness::waitFor([&] { return client.events.size() == 2; }));
    QCOMPARE(client.events[1].first, QString("CameraVideoEnded"));
    QCOMPARE(client.events[1].second,
             (QVariantMap{{"camId", "eye"}, {"error", "the camera sends nothing any more"}}));
    QVERIFY(shown.videos->empty());
    client.watch();
    shown.show(0, true);
    QCOMPARE(client.shown(), (QList<int>{0, 0}));
}

void TestCameraVideos::slowClient()
{
    Shown shown;
    Client slow(*shown.server);
    Client other(*shown.server);
    qint64 waiting = 0;
    slow.session.setWaiting([&waiting] { return waiting; });
    slow.watch();
    other.watch();
    shown.show(0, true);
    waiting = Limits::maxWaitingForVideo;
    shown.show(1, false);
    waiting = Limits::maxWaitingForVideo + 1;
    shown.show(2, false);
    shown.show(3, true); // a key frame does not fit, either
    waiting = 0;
    shown.show(4, false); // it needs those before
    shown.show(5, true);
    shown.show(6, false);
    QCOMPARE(slow.shown(), (QList<int>{0, 1, 5, 6}));
    QCOMPARE(other.shown(), (QList<int>{0, 1, 2, 3, 4, 5, 6}));
}

void TestCameraVideos::watchedTwice()
{
    Shown shown(std::chrono::milliseconds(0));
    Client client(*shown.server);
    client.watch();
    client.watch();
    shown.show(0, true);
    QVERIFY(ServerHarness::waitFor([&] { return client.replies.size() == 2; }));
    QCOMPARE(client.replies[0].returnCode, ReturnCode::success);
    QCOMPARE(client.replies[1].returnCode, ReturnCode::success);
    client.watch();
    shown.show(40, false);
    QCOMPARE(client.shown(), (QList<int>{0, 40}));
    client.unwatch();
    QVERIFY(ServerHarness::waitFor([&] { return shown.videos->empty(); }));
    for (int i = 0; i < 9; ++i) {
        client.watch();
    }
    QCOMPARE(shown.last(client).returnCode, ReturnCode::tooManyRequests);
}

void TestCameraVideos::tooManyOfOneClient()
{
    Shown shown;
    Client client(*shown.server);
    for (int i = 0; i < Limits::maxVideosPerSession; ++i) {
        client.watch(QString("eye %1").arg(i));
    }
    QCOMPARE(shown.last(client).returnCode, QString("none"));
    client.watch();
    QCOMPARE(shown.last(client).returnCode, ReturnCode::tooManyRequests);
    QVERIFY(!shown.last(client).errorText.isEmpty());
    client.unwatch("eye 0");
    client.watch();
    QCOMPARE(shown.videos->count("eye"), std::size_t{1});
}

void TestCameraVideos::tooManyCameras()
{
    Shown shown;
    std::vector<std::unique_ptr<Client>> others;
    for (int i = 0; i < Limits::maxVideosAtOnce; ++i) {
        others.push_back(std::make_unique<Client>(*shown.server));
        others.back()->watch(QString("eye %1").arg(i));
    }
    Client client(*shown.server);
    client.watch();
    QCOMPARE(shown.last(client).returnCode, ReturnCode::tooManyRequests);
    client.watch("eye 0"); // that is there anyway
    shown.show(0, true, "eye 0");
    QCOMPARE(shown.last(client).returnCode, ReturnCode::success);
    others[1]->unwatch("eye 1"); // gives its place at once
    client.watch();
    QCOMPARE(shown.videos->count("eye"), std::size_t{1});
    QVERIFY(ServerHarness::waitFor([&] { return shown.videos->count("eye 1") == 0; }));
    QCOMPARE(shown.videos->size(), static_cast<std::size_t>(Limits::maxVideosAtOnce));
}

void TestCameraVideos::notThere()
{
    Shown shown;
    Client client(*shown.server);
    client.watch("nobody");
    QCOMPARE(shown.last(client).returnCode, ReturnCode::noSuchCamera);
    client.watch("blind");
    QCOMPARE(shown.last(client).returnCode, ReturnCode::noPicture);
    QVERIFY(shown.last(client).errorText.contains("no video"));
    QVERIFY(shown.videos->empty());
}

void TestCameraVideos::serverEnds()
{
    Shown shown;
    auto client = std::make_unique<Client>(*shown.server);
    client->watch();
    shown.show(0, true);
    client.reset();
    shown.server.reset();
    QVERIFY(shown.videos->empty());
}

QTEST_GUILESS_MAIN(TestCameraVideos)
#include "tst_cameravideos.moc"
