// Talks to a camera over TLS (scheme "rtsps").

#include "protocol/ServerReply.h"
#include "server/access/ServerCertificate.h"
#include "server/devices/onvif/RtspSession.h"
#include "tests/onvif/ScriptedCamera.h"
#include "tests/server/onvif/TalkProbe.h"

#include <atomic>
#include <thread>
#include <utility>

class TestOnvifTls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void refusesACertificateThatNobodyTrusts();
    void hintsAtTls();
    void takesAnyCertificateWhenItIsSet();
    void asksASilentCamera();
    void endsWhileItSends_data();
    void endsWhileItSends();
    void refusesACameraWithoutTls();
    void serviceByHttps_data();
    void serviceByHttps();

private:
    QStringList options() const
    {
        return {"--certificate", m_folder.filePath("camera.pem"),
                "--user",        "anna",
                "--password",    "secret",
                "--jitter",      "20"};
    }

    QTemporaryDir m_folder;
    std::optional<ServerCertificate> m_certificate;
    CameraSettings m_anyCertificate;
};

/** Makes the camera's certificate, which nobody has signed but itself. */
void TestOnvifTls::initTestCase()
{
    m_anyCertificate.anyCertificate = true;
    QString error;
    m_certificate = ServerCertificate::loadOrCreate(m_folder.path(), &error);
    QVERIFY2(m_certificate, qPrintable(error));
    QFile file(m_folder.filePath("camera.pem"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(m_certificate->certificate.toPem() + m_certificate->key.toPem());
}

void TestOnvifTls::refusesACertificateThatNobodyTrusts()
{
    TestCamera camera(options());
    TalkProbe probe(camera.address("rtsps"), CameraSettings(), "anna", "secret");
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    QVERIFY2(probe.reason.contains("certificate"), qPrintable(probe.reason));
    QVERIFY2(probe.reason.contains("\"anyCertificate\""), qPrintable(probe.reason));
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
    QVERIFY(!camera.waitFor("client 1").isEmpty());
    QCOMPARE(camera.count("option"), 0); // nothing was sent, least of all a login
    QCOMPARE(camera.count("describe"), 0);
}

void TestOnvifTls::hintsAtTls()
{
    TestCamera camera(options());
    TalkProbe probe(camera.address("rtsp"), CameraSettings(), "anna", "secret");
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    QVERIFY2(probe.reason.contains("rtsps://"), qPrintable(probe.reason));
}

void TestOnvifTls::takesAnyCertificateWhenItIsSet()
{
    TestCamera camera(options());
    TalkProbe probe(camera.address("rtsps"), m_anyCertificate, "anna", "secret");
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(camera.count("describe") > 0);
    QVERIFY(probe.say(3));
    QVERIFY(probe.waitFor([&] { return !probe.heard.empty(); }));
    QVERIFY(probe.close());
    QVERIFY(!camera.waitFor("closed 1").isEmpty());
    QCOMPARE(camera.count("teardown"), 1);
    QCOMPARE(camera.heard().size(), std::size_t{3 * 640});
}

/** The questions that keep the line of a silent camera go by TLS, too. */
void TestOnvifTls::asksASilentCamera()
{
    TestCamera camera(options() + QStringList{"--voice", "mute"});
    OnvifConfig config;
    config.silence = std::chrono::milliseconds(1000);
    TalkProbe probe(camera.address("rtsps"), m_anyCertificate, "anna", "secret", config);
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(probe.say(20));
    QCOMPARE(probe.lostAfter, qint64{-1});
    QVERIFY(probe.close());
}

void TestOnvifTls::endsWhileItSends_data()
{
    QTest::addColumn<bool>("hangs");
    QTest::newRow("to a camera that reads") << false;
    QTest::newRow("to a camera that reads nothing") << true;
}

/** A packet that is half sent would, with the next request, make the TLS library end the program. */
void TestOnvifTls::endsWhileItSends()
{
    QFETCH(bool, hangs);
    struct : RtspSessionListener
    {
        void sessionIsAlive() override { isAlive = true; }
        void sessionSpoke(const VoicePacket& /*packet*/) override {}
        std::atomic<bool> isAlive{false};
    } listener;
    TestCamera camera(options());
    const CameraRecord record{"1",    "Gate",   onvifKind(),     camera.address("rtsps"),
                              "anna", "secret", m_anyCertificate};
    for (int round = 1; round <= (hangs ? 1 : 8); ++round) {
        RtspSession session(record, OnvifConfig(), listener);
        listener.isAlive = false;
        QVERIFY(session.start(RtspSession::Way::Play));
        QTRY_VERIFY(listener.isAlive);
        if (hangs) {
            camera.stop();
        }
        std::atomic<int> pushed{0};
        std::atomic<bool> hasStopped{false};
        std::thread sender([&] {
            while (!hasStopped) {
                session.push({QByteArray(1400, 'x'), 0, false, 20});
                ++pushed;
            }
        });
        int before = -1;
        // A camera that reads nothing is waited for.
        const bool isSending = TalkProbe::waitFor(
            [&] { return hangs ? std::exchange(before, pushed.load()) == pushed : pushed > round * 3; });
        QElapsedTimer clock;
        clock.start();
        session.stop();
        const qint64 elapsed = clock.elapsed();
        hasStopped = true;
        sender.join();
        QVERIFY(isSending);
        QVERIFY2(elapsed < 1500, qPrintable(QString::number(elapsed)));
        QVERIFY(hangs || !camera.waitFor(QString("closed %1").arg(round)).isEmpty());
        QVERIFY(hangs || camera.count("teardown") == round);
    }
}

void TestOnvifTls::refusesACameraWithoutTls()
{
    TestCamera camera({"--user", "anna", "--password", "secret"});
    TalkProbe probe(camera.address("rtsps"), m_anyCertificate, "anna", "secret");
    QVERIFY(probe.refuse());
    qInfo("%s: %s", qPrintable(probe.returnCode), qPrintable(probe.reason));
    QCOMPARE(camera.count("describe"), 0);
}

void TestOnvifTls::serviceByHttps_data()
{
    QTest::addColumn<bool>("any");
    QTest::newRow("a certificate that nobody trusts") << false;
    QTest::newRow("any certificate") << true;
}

/** The device service of a camera may be behind TLS, too: presence, talk and picture. */
void TestOnvifTls::serviceByHttps()
{
    QFETCH(bool, any);
    TestCamera camera({"--jitter", "20"});
    ScriptedCamera service;
    service.user = "anna";
    service.password = "secret";
    service.digestAlgorithm = "MD5";
    service.wantsToken = false;
    service.setCertificate(m_certificate->certificate, m_certificate->key);
    service.setBody("GetStreamUri", "<tr2:GetStreamUriResponse><tr2:Uri>" + camera.address().toLatin1() +
                                        "</tr2:Uri></tr2:GetStreamUriResponse>");
    QCOMPARE(service.url().scheme(), QString("https"));
    const CameraSettings settings = any ? m_anyCertificate : CameraSettings();
    {
        // Whether it is there is asked without a login, whoever has signed its certificate.
        OnvifCameras cameras{OnvifConfig()};
        cameras.setRecords(
            {{"1", "Gate", onvifKind(), service.url().toString(), "anna", "secret", settings}});
        QTRY_VERIFY(cameras.cameras().first().online);
    }
    QCOMPARE(service.names(), QStringList{"GetSystemDateAndTime"});
    QVERIFY(!service.requests.first().text.contains("anna"));
    service.requests.clear();

    TalkProbe probe(service.url().toString(), settings, "anna", "secret");
    QCOMPARE(probe.open(), any);
    QCOMPARE(probe.returnCode, any ? QString() : ReturnCode::talkRefused);
    QCOMPARE(probe.reason.contains("certificate is not trusted"), !any);
    std::optional<CameraPicture> picture;
    probe.cameras.askPicture("1", [&](const CameraPicture& taken) { picture = taken; });
    QVERIFY(TalkProbe::waitFor([&] { return picture.has_value(); }));
    QCOMPARE(picture->jpeg, any ? service.picture : QByteArray());
    QCOMPARE(picture->reason.contains("certificate is not trusted"), !any);
    QCOMPARE(service.requests.isEmpty(), !any);
    QVERIFY(probe.close());
}

QTEST_GUILESS_MAIN(TestOnvifTls)
#include "tst_onviftls.moc"
