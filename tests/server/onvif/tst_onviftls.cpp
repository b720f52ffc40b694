// Talks to a camera over TLS (scheme "rtsps").

#include "protocol/ServerReply.h"
#include "server/access/ServerCertificate.h"
#include "server/devices/onvif/RtspSession.h"
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

private:
    QStringList options() const
    {
        return {"--certificate", m_folder.filePath("camera.pem"),
                "--user",        "anna",
                "--password",    "secret",
                "--jitter",      "20"};
    }

    QTemporaryDir m_folder;
    CameraSettings m_anyCertificate;
};

/** Makes the camera's certificate, which nobody has signed but itself. */
void TestOnvifTls::initTestCase()
{
    m_anyCertificate.anyCertificate = true;
    QString error;
    const auto made = ServerCertificate::loadOrCreate(m_folder.path(), &error);
    QVERIFY2(made, qPrintable(error));
    QFile file(m_folder.filePath("camera.pem"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(made->certificate.toPem() + made->key.toPem());
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

QTEST_GUILESS_MAIN(TestOnvifTls)
#include "tst_onviftls.moc"
