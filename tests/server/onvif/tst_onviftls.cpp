// Talks to a camera over TLS (scheme "rtsps").

#include "protocol/ServerReply.h"
#include "server/access/ServerCertificate.h"
#include "tests/server/onvif/TalkProbe.h"

class TestOnvifTls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void refusesACertificateThatNobodyTrusts();
    void takesAnyCertificateWhenItIsSet();
    void asksASilentCamera();
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
    QVERIFY(probe.waitFor([&] { return probe.isClosed; }));
    QVERIFY(!camera.waitFor("client 1").isEmpty());
    QCOMPARE(camera.count("option"), 0); // nothing was sent, least of all a login
    QCOMPARE(camera.count("describe"), 0);
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
