// Pictures of cameras: how often a camera is asked, and who gets which answer.

#include "protocol/Limits.h"
#include "server/cameras/CameraPictures.h"
#include "tests/server/ServerHarness.h"

namespace {

constexpr std::chrono::milliseconds longInterval{60000};

/** Cameras that give a picture when the test does. */
class SeeingCameras : public CameraBackend
{
public:
    using Questions = QList<QPair<QString, TakePicture>>;

    explicit SeeingCameras(std::shared_ptr<Questions> questions) : m_questions(std::move(questions)) {}

    void setRecords(const QList<CameraRecord>&) override {}
    QList<Camera> cameras() const override { return {}; }
    std::unique_ptr<DeviceTalk> openTalk(const QString&) override { return nullptr; }
    bool askPicture(const QString& camera, TakePicture take) override
    {
        if (camera.startsWith("eye")) {
            m_questions->append({camera, take});
        }
        return camera.startsWith("eye");
    }

private:
    std::shared_ptr<Questions> m_questions;
};

/** Cameras without pictures. */
class BlindCameras : public CameraBackend
{
public:
    void setRecords(const QList<CameraRecord>&) override {}
    QList<Camera> cameras() const override { return {{"blind", "Blind", true}}; }
    std::unique_ptr<DeviceTalk> openTalk(const QString&) override { return nullptr; }
};

struct Seen
{
    explicit Seen(std::chrono::milliseconds interval = longInterval)
    {
        ServerConfig config;
        config.pictureInterval = interval;
        config.devices.cameras.push_back(
            {"seeing", [all = questions] { return std::make_unique<SeeingCameras>(all); }});
        config.devices.cameras.push_back({"blind", [] { return std::make_unique<BlindCameras>(); }});
        harness = std::make_unique<ServerHarness>(config);
    }

    quint64 ask(const QString& camera) { return harness->submit("GetCameraPicture", camera); }
    ServerReply answer(quint64 request) { return harness->waitForReply(request); }
    bool hasAnswer(quint64 request) const
    {
        QCoreApplication::processEvents();
        return std::any_of(harness->replies.begin(), harness->replies.end(),
                           [&](const auto& each) { return each.request == request; });
    }
    void give(const CameraPicture& picture) { questions->last().second(picture); }

    std::shared_ptr<SeeingCameras::Questions> questions = std::make_shared<SeeingCameras::Questions>();
    std::unique_ptr<ServerHarness> harness;
};

CameraPicture still(const QByteArray& bytes)
{
    return {bytes, ReturnCode::success, QString()};
}

QVariant answerOf(const QString& camera, const QByteArray& bytes)
{
    return QVariantMap{{"camId", camera}, {"picture", bytes}};
}

} // namespace

class TestCameraPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picture();
    void waitersShareOneQuestion();
    void oneQuestionInAnInterval();
    void askedAgainAfterIt();
    void refusal();
    void recordsHaveChanged();
    void notThere();
    void tooManyOfOneClient();
    void tooManyCameras();
    void clientThatGoes();
    void answersTwice();
    void tooLarge();
    void simulated();
};

void TestCameraPictures::picture()
{
    Seen seen;
    const quint64 request = seen.ask("eye");
    QVERIFY(!seen.hasAnswer(request));
    QCOMPARE(seen.questions->size(), 1);
    QCOMPARE(seen.questions->last().first, QString("eye"));
    seen.give(still("one"));
    QCOMPARE(seen.answer(request).returnCode, ReturnCode::success);
    QCOMPARE(seen.answer(request).result, answerOf("eye", "one"));
    QCOMPARE(seen.answer(request).result.toMap()["picture"].userType(),
             static_cast<int>(QMetaType::QByteArray));
}

void TestCameraPictures::waitersShareOneQuestion()
{
    Seen seen;
    const quint64 first = seen.ask("eye");
    const quint64 second = seen.ask("eye");
    QCOMPARE(seen.questions->size(), 1);
    seen.give(still("one"));
    QCOMPARE(seen.answer(first).result, answerOf("eye", "one"));
    QCOMPARE(seen.answer(second).result, answerOf("eye", "one"));
}

void TestCameraPictures::oneQuestionInAnInterval()
{
    Seen seen;
    seen.ask("eye");
    seen.give(still("one"));
    QCOMPARE(seen.answer(seen.ask("eye")).result, answerOf("eye", "one"));
    QCOMPARE(seen.questions->size(), 1);
    seen.ask("eye 2"); // another camera
    QCOMPARE(seen.questions->size(), 2);
}

void TestCameraPictures::askedAgainAfterIt()
{
    constexpr std::chrono::milliseconds interval{200};
    Seen seen(interval);
    QElapsedTimer clock;
    clock.start();
    seen.answer((seen.ask("eye"), seen.give(still("one")), seen.ask("eye")));
    QTRY_VERIFY((seen.ask("eye"), seen.questions->size() == 2));
    QVERIFY(clock.elapsed() >= interval.count());
    const quint64 request = seen.ask("eye");
    seen.give(still("two"));
    QCOMPARE(seen.answer(request).result, answerOf("eye", "two"));
}

void TestCameraPictures::refusal()
{
    Seen seen;
    const quint64 request = seen.ask("eye");
    seen.give({QByteArray(), ReturnCode::loginRefused, "the camera refuses the login"});
    QCOMPARE(seen.answer(request).returnCode, ReturnCode::loginRefused);
    QCOMPARE(seen.answer(request).errorText, QString("the camera refuses the login"));
    QVERIFY(!seen.answer(request).result.isValid());
    QCOMPARE(seen.answer(seen.ask("eye")).returnCode, ReturnCode::loginRefused);
    QCOMPARE(seen.questions->size(), 1);
}

void TestCameraPictures::recordsHaveChanged()
{
    Seen seen;
    seen.ask("eye");
    seen.give(still("one"));
    seen.harness->ask("AddCamera",
                      QVariantMap{{"camName", "Gate"}, {"camKind", "seeing"}, {"camAddress", "10.0.0.1"}});
    seen.ask("eye");
    QCOMPARE(seen.questions->size(), 2);
}

void TestCameraPictures::notThere()
{
    Seen seen;
    QCOMPARE(seen.answer(seen.ask("nobody")).returnCode, ReturnCode::noSuchCamera);
    QCOMPARE(seen.answer(seen.ask("blind")).returnCode, ReturnCode::noPicture);
    QVERIFY(seen.answer(seen.ask("blind")).errorText.contains("no pictures"));
}

void TestCameraPictures::tooManyOfOneClient()
{
    Seen seen;
    for (int i = 0; i < CameraPictures::maxOfSession; ++i) {
        QVERIFY(!seen.hasAnswer(seen.ask("eye")));
    }
    QCOMPARE(seen.answer(seen.ask("eye")).returnCode, ReturnCode::tooManyRequests);
    ServerSession other(*seen.harness->server);
    QList<ServerReply> replies;
    connect(&other, &ServerSession::replied, this,
            [&replies](const QString&, quint64, const ServerReply& reply) { replies.append(reply); });
    other.submit("GetCameraPicture", "eye", 1);
    seen.give(still("one"));
    QTRY_COMPARE(replies.size(), 1);
    QCOMPARE(replies[0].result, answerOf("eye", "one"));
}

void TestCameraPictures::tooManyCameras()
{
    Seen seen;
    std::vector<std::unique_ptr<ServerSession>> others;
    for (int i = 0; i < CameraPictures::maxAsked; ++i) {
        others.push_back(std::make_unique<ServerSession>(*seen.harness->server));
        others.back()->submit("GetCameraPicture", QString("eye %1").arg(i), 1);
    }
    QCOMPARE(seen.questions->size(), CameraPictures::maxAsked);
    QVERIFY(!seen.hasAnswer(seen.ask("eye"))); // a client that waits for none gets one
    QCOMPARE(seen.questions->size(), CameraPictures::maxAsked + 1);
    QCOMPARE(seen.answer(seen.ask("eye of another")).returnCode, ReturnCode::tooManyRequests);
    QVERIFY(!seen.hasAnswer(seen.ask("eye 0"))); // that is asked anyway
    for (int i = CameraPictures::maxAsked + 1; i < CameraPictures::maxAskedInAll; ++i) {
        others.push_back(std::make_unique<ServerSession>(*seen.harness->server));
        others.back()->submit("GetCameraPicture", QString("eye %1").arg(i), 1);
    }
    others.push_back(std::make_unique<ServerSession>(*seen.harness->server));
    others.back()->submit("GetCameraPicture", "eye of the last", 1);
    QCOMPARE(seen.questions->size(), CameraPictures::maxAskedInAll);
    seen.give(still("one"));
    others.push_back(std::make_unique<ServerSession>(*seen.harness->server));
    others.back()->submit("GetCameraPicture", "eye of the last", 1);
    QCOMPARE(seen.questions->size(), CameraPictures::maxAskedInAll + 1);
}

void TestCameraPictures::clientThatGoes()
{
    Seen seen;
    auto other = std::make_unique<ServerSession>(*seen.harness->server);
    other->submit("GetCameraPicture", "eye", 1);
    const quint64 request = seen.ask("eye");
    other.reset();
    seen.give(still("one"));
    QCOMPARE(seen.answer(request).result, answerOf("eye", "one"));
    const auto late = seen.questions->last().second;
    seen.harness.reset();
    late(still("two")); // the server is gone
}

void TestCameraPictures::answersTwice()
{
    Seen seen;
    const quint64 request = seen.ask("eye");
    seen.give(still("one"));
    seen.give(still("two"));
    QCOMPARE(seen.answer(request).result, answerOf("eye", "one"));
    QCOMPARE(seen.answer(seen.ask("eye")).result, answerOf("eye", "one"));
}

void TestCameraPictures::tooLarge()
{
    Seen seen;
    const quint64 request = seen.ask("eye");
    seen.give(still(QByteArray(Limits::maxPictureBytes + 1, 'x')));
    QCOMPARE(seen.answer(request).returnCode, ReturnCode::noPicture);
}

void TestCameraPictures::simulated()
{
    SimulatedConfig config;
    config.cameras = defaultCameras();
    ServerHarness harness(ServerConfig(), config);
    const ServerReply reply = harness.ask("GetCameraPicture", "camera-1");
    QCOMPARE(reply.returnCode, ReturnCode::success);
    const QByteArray jpeg = reply.result.toMap()["picture"].toByteArray();
    QVERIFY(jpeg.startsWith("\xff\xd8\xff"));
    QVERIFY(jpeg.endsWith("\xff\xd9"));
    QCOMPARE(harness.ask("GetCameraPicture", "camera-3").returnCode, ReturnCode::cameraOffline);
    QCOMPARE(harness.ask("GetCameraPicture", "camera-4").returnCode, ReturnCode::noSuchCamera);
}

QTEST_GUILESS_MAIN(TestCameraPictures)
#include "tst_camerapictures.moc"
