// Cameras that are none, or that are after something: what they get, and that the others go on.

#include "onvif/OnvifDevice.h"
#include "tests/onvif/ScriptedCamera.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

Q_DECLARE_METATYPE(ScriptedCamera::Trick)

namespace {

constexpr OnvifDevice::Options shortTimes{400, 1500}; // ms

/** Asks a camera with its signal at hand. */
struct Question
{
    explicit Question(const ScriptedCamera& camera, const OnvifDevice::Options& options = shortTimes)
        : device(camera.url(), {QStringLiteral("anna"), QStringLiteral("geheim")}, options),
          spy(&device, &OnvifDevice::abilitiesKnown)
    {
        QObject::connect(&device, &OnvifDevice::abilitiesKnown,
                         [this](const CameraAbilities& abilities) { known = abilities; });
        clock.start();
        device.askAbilities();
    }

    OnvifDevice device;
    QSignalSpy spy;
    CameraAbilities known;
    QElapsedTimer clock;
};

} // namespace

class TestOnvifHostile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tricks_data();
    void tricks();
    void replies_data();
    void replies();
    void otherContentType();
    void redirectsAreNotFollowed();
    void allQuestionsHaveOneLimit();
    void othersGoOn();
    void namesForPeople();
};

void TestOnvifHostile::tricks_data()
{
    QTest::addColumn<ScriptedCamera::Trick>("trick");
    QTest::addColumn<OnvifError>("error");
    QTest::newRow("silence") << ScriptedCamera::Silence << OnvifError::TimedOut;
    QTest::newRow("close") << ScriptedCamera::Close << OnvifError::NotOnvif;
    QTest::newRow("close inside") << ScriptedCamera::CloseInside << OnvifError::NotOnvif;
    QTest::newRow("drip") << ScriptedCamera::Drip << OnvifError::TimedOut;
    QTest::newRow("endless body") << ScriptedCamera::EndlessBody << OnvifError::TooLarge;
    QTest::newRow("endless header") << ScriptedCamera::EndlessHeader << OnvifError::TooLarge;
}

void TestOnvifHostile::tricks()
{
    QFETCH(ScriptedCamera::Trick, trick);
    QFETCH(OnvifError, error);
    for (const char* request : {"GetSystemDateAndTime", "GetProfiles"}) {
        ScriptedCamera camera;
        camera.hasMedia = false;
        camera.tricks.insert(request, trick);
        Question question(camera, {400, 20000});
        QTRY_COMPARE(question.spy.count(), 1);
        QCOMPARE(question.known.error, error);
        QVERIFY(question.clock.elapsed() < 2500); // one question's limit, and what a loaded machine takes
        QCOMPARE(question.known.hears, Ability::Unknown);
    }
}

void TestOnvifHostile::replies_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<OnvifError>("error");
    const auto of = [](const QByteArray& body) { return ScriptedCamera::http(200, body); };
    const auto row = [](const char* title, const QByteArray& reply, OnvifError error) {
        QTest::newRow(title) << reply << error;
    };
    row("no HTTP", "220 mail.example ESMTP\r\n", OnvifError::NotOnvif);
    row("a page", of("<html><body>Login</body></html>"), OnvifError::NotOnvif);
    row("a page that is missing", ScriptedCamera::http(404, "<html/>"), OnvifError::NotOnvif);
    row("nothing", of(""), OnvifError::NotOnvif);
    row("broken", of(ScriptedCamera::envelope("<a>").chopped(30)), OnvifError::NotOnvif);
    row("deep",
        of(ScriptedCamera::envelope(QByteArray("<a>").repeated(10000) + QByteArray("</a>").repeated(10000))),
        OnvifError::NotOnvif);
    row("entities",
        of("<!DOCTYPE a [<!ENTITY a 'x'><!ENTITY b '&a;&a;&a;&a;'>]>" +
           ScriptedCamera::envelope("<a>&b;</a>")),
        OnvifError::NotOnvif);
    row("gigabytes promised", "HTTP/1.1 200 OK\r\nContent-Length: 4000000000\r\n\r\n", OnvifError::TooLarge);
    row("too large", of(QByteArray(SoapMessage::maxBytes + 1, ' ')), OnvifError::TooLarge);
    row("a large chunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n7fffffff\r\n",
        OnvifError::TooLarge);
    row("packed", ScriptedCamera::http(200, "\x1f\x8b\x08", "Content-Encoding: gzip\r\n"),
        OnvifError::NotOnvif);
}

void TestOnvifHostile::replies()
{
    QFETCH(QByteArray, reply);
    QFETCH(OnvifError, error);
    ScriptedCamera camera;
    camera.setReply("GetSystemDateAndTime", reply);
    Question question(camera, {3000, 3000});
    QTRY_COMPARE(question.spy.count(), 1);
    QCOMPARE(question.known.error, error);
    QCOMPARE(camera.names(), QStringList{"GetSystemDateAndTime"}); // no login for what is no camera
}

/** Devices are careless with it; the message itself decides. */
void TestOnvifHostile::otherContentType()
{
    ScriptedCamera camera;
    const QByteArray body = ScriptedCamera::envelope("<tds:GetServicesResponse><tds:Service><tds:Namespace>"
                                                     "http://www.onvif.org/ver20/media/wsdl</tds:Namespace>"
                                                     "<tds:XAddr>" +
                                                     camera.url().toEncoded() +
                                                     "</tds:XAddr></tds:Service></tds:GetServicesResponse>");
    camera.setReply("GetServices", "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: " +
                                       QByteArray::number(body.size()) + "\r\n\r\n" + body);
    Question question(camera);
    QTRY_COMPARE(question.spy.count(), 1);
    QCOMPARE(question.known.error, OnvifError::None);
    QVERIFY(!camera.names().contains("GetCapabilities"));
}

void TestOnvifHostile::redirectsAreNotFollowed()
{
    ScriptedCamera victim;
    for (const int status : {301, 302, 307, 308}) {
        ScriptedCamera camera;
        camera.setReply("GetServices",
                        ScriptedCamera::http(status, "", "Location: " + victim.url().toEncoded() + "\r\n"));
        camera.setReply("GetCapabilities",
                        ScriptedCamera::http(status, "", "Location: " + victim.url().toEncoded() + "\r\n"));
        Question question(camera);
        QTRY_COMPARE(question.spy.count(), 1);
        QCOMPARE(question.known.error, OnvifError::NotOnvif);
        QVERIFY2(question.known.detail.contains(QString::number(status)), qPrintable(question.known.detail));
    }
    QCOMPARE(victim.connections, 0);
}

void TestOnvifHostile::allQuestionsHaveOneLimit()
{
    ScriptedCamera camera;
    for (const char* request :
         {"GetStreamUri", "GetAudioSourceConfigurations", "GetAudioOutputConfigurations",
          "GetAudioDecoderConfigurationOptions", "GetAudioEncoderConfigurations"}) {
        camera.tricks.insert(request, ScriptedCamera::Drip);
    }
    Question question(camera, {400, 1000});
    QTRY_COMPARE(question.spy.count(), 1);
    QVERIFY(question.clock.elapsed() >= 900);
    QVERIFY(question.clock.elapsed() < 3000);
    QCOMPARE(question.known.error, OnvifError::TimedOut);
    // What is known stays known.
    QCOMPARE(question.known.model, QString("Test & camera"));
    QCOMPARE(question.known.hears, Ability::Yes);
    QCOMPARE(question.known.speaks, Ability::Unknown);
}

void TestOnvifHostile::othersGoOn()
{
    ScriptedCamera endless;
    endless.tricks.insert("GetSystemDateAndTime", ScriptedCamera::EndlessBody);
    ScriptedCamera silent;
    silent.tricks.insert("GetSystemDateAndTime", ScriptedCamera::Silence);
    ScriptedCamera good;
    Question first(endless);
    Question second(silent);
    Question third(good);
    QTRY_COMPARE(third.spy.count(), 1);
    QCOMPARE(third.known.error, OnvifError::None);
    QCOMPARE(second.spy.count(), 0);
    QTRY_COMPARE(first.spy.count() + second.spy.count(), 2);
}

void TestOnvifHostile::namesForPeople()
{
    ScriptedCamera camera;
    camera.setBody("GetDeviceInformation", "<tds:GetDeviceInformationResponse><tds:Model>a\n\xc2\x9b"
                                           "31mb" +
                                               QByteArray(5000, 'x') +
                                               "</tds:Model></tds:GetDeviceInformationResponse>");
    Question question(camera);
    QTRY_COMPARE(question.spy.count(), 1);
    QCOMPARE(question.known.error, OnvifError::None);
    QCOMPARE(question.known.model.size(), 128);
    QVERIFY2(question.known.model.startsWith("a 31mbx"), qPrintable(question.known.model));
}

QTEST_GUILESS_MAIN(TestOnvifHostile)
#include "tst_onvifhostile.moc"
