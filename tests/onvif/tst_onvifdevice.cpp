// What a camera can do, by its own answers: asked of a camera that follows a script.

#include "onvif/OnvifDevice.h"
#include "server/access/ServerCertificate.h"
#include "tests/onvif/ScriptedCamera.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <ctime>
#include <memory>
#include <vector>

namespace {

const OnvifLogin login{"anna", "geheim"};

CameraAbilities ask(const ScriptedCamera& camera, const OnvifLogin& with = login)
{
    CameraAbilities known;
    known.error = OnvifError::TimedOut;
    known.detail = "no signal";
    OnvifDevice device(camera.url(), with);
    QObject::connect(&device, &OnvifDevice::abilitiesKnown,
                     [&known](const CameraAbilities& abilities) { known = abilities; });
    QSignalSpy spy(&device, &OnvifDevice::abilitiesKnown);
    device.askAbilities();
    spy.wait(15000);
    return known;
}

ScriptedCamera& locked(ScriptedCamera& camera)
{
    camera.user = login.user;
    camera.password = login.password;
    return camera;
}

} // namespace

class TestOnvifDevice : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void twoWays();
    void oldCamera();
    void mediaFallback();
    void logins_data();
    void logins();
    void wrongLogins_data();
    void wrongLogins();
    void wrongClock_data();
    void wrongClock();
    void behindNat();
    void addressesOfOthers();
    void noLoudspeaker_data();
    void noLoudspeaker();
    void noMicrophone();
    void noProfileWithSound();
    void unusedLoudspeaker();
    void noMedia();
    void oneAddressForEachOfSomeProfiles();
    void presence();
    void certificates();
    void presenceOfMany();
    void nobodyThere();
    void deletedInside();
    void askedAgain();
};

void TestOnvifDevice::twoWays()
{
    ScriptedCamera camera;
    const CameraAbilities abilities = ask(locked(camera));
    QVERIFY2(abilities.error == OnvifError::None, qPrintable(errorSentence(abilities)));
    QCOMPARE(errorSentence(abilities), QString());
    QCOMPARE(abilities.device, camera.url());
    QCOMPARE(abilities.manufacturer, QString("Nobody"));
    QCOMPARE(abilities.model, QString("Test & camera"));
    QCOMPARE(abilities.firmware, QString("1.2"));
    QVERIFY(qAbs(abilities.clockOffset) < 2000);
    QCOMPARE(abilities.speaks, Ability::Yes);
    QCOMPARE(abilities.hears, Ability::Yes);
    QCOMPARE(abilities.speaksReason + abilities.hearsReason, QString());
    QVERIFY((abilities.talkCodecs ==
             std::vector<CameraCodec>{{"PCMU", {8000}}, {"MPEG4-GENERIC", {8000, 16000, 48000}}}));
    QVERIFY(
        (abilities.voiceCodecs == std::vector<CameraCodec>{{"PCMU", {8000}}, {"MPEG4-GENERIC", {16000}}}));
    QCOMPARE(abilities.streams.size(), std::size_t(2));
    const CameraStream& main = abilities.streams.front();
    QCOMPARE(main.name, QString("Main"));
    QCOMPARE(main.token, QString("main&1"));
    QVERIFY(main.hasVoice && main.hasLoudspeaker && main.hasPicture);
    QCOMPARE(main.address, QUrl("rtsp://127.0.0.1:8554/live?profile=1"));
    QVERIFY(!abilities.streams.back().hasVoice && !abilities.streams.back().hasLoudspeaker);
    QCOMPARE(abilities.snapshot.path(), QString("/still.jpg"));
    QCOMPARE(abilities.remarks, QStringList());
    QCOMPARE(camera.names(),
             (QStringList{"GetSystemDateAndTime", "GetServices", "GetDeviceInformation", "GetProfiles",
                          "GetStreamUri", "GetStreamUri", "GetAudioSourceConfigurations",
                          "GetAudioOutputConfigurations", "GetAudioDecoderConfigurationOptions",
                          "GetAudioEncoderConfigurations", "GetSnapshotUri"}));
    QVERIFY(!camera.requests.constFirst().hasToken); // the time is asked for without a login
    for (const auto& request : qAsConst(camera.requests)) {
        QVERIFY(!request.text.contains("geheim"));
        QCOMPARE(request.path, request.name.startsWith("GetS") && request.name != "GetStreamUri" &&
                                       request.name != "GetSnapshotUri"
                                   ? QString("/onvif/device_service")
                               : request.name == "GetDeviceInformation" ? QString("/onvif/device_service")
                                                                        : QString("/onvif/media2"));
    }
    QVERIFY(camera.requests[4].text.contains("<ProfileToken>main&amp;1</ProfileToken>"));
}

void TestOnvifDevice::oldCamera()
{
    ScriptedCamera camera;
    camera.hasServices = false;
    camera.hasMedia2 = false;
    const CameraAbilities abilities = ask(locked(camera));
    QCOMPARE(abilities.error, OnvifError::None);
    QCOMPARE(abilities.speaks, Ability::Yes);
    QCOMPARE(abilities.hears, Ability::Yes);
    QVERIFY(camera.names().contains("GetCapabilities"));
    QVERIFY((abilities.talkCodecs ==
             std::vector<CameraCodec>{{"G711", {8000}}, {"MPEG4-GENERIC", {8000, 16000}}}));
    QVERIFY(
        (abilities.voiceCodecs == std::vector<CameraCodec>{{"G711", {8000}}, {"MPEG4-GENERIC", {16000}}}));
    QCOMPARE(abilities.streams.front().address, QUrl("rtsp://127.0.0.1:8554/live?profile=1"));
    QCOMPARE(abilities.snapshot.path(), QString("/still.jpg"));
}

void TestOnvifDevice::mediaFallback()
{
    ScriptedCamera camera;
    camera.setFault("GetProfiles", "ActionNotSupported");
    const CameraAbilities without = ask(locked(camera));
    QCOMPARE(without.error, OnvifError::NotSupported); // of both services
    QCOMPARE(camera.names().count("GetProfiles"), 2);
    QCOMPARE(camera.requests.constLast().path, QString("/onvif/media"));
}

void TestOnvifDevice::logins_data()
{
    QTest::addColumn<QByteArray>("algorithm");
    QTest::addColumn<bool>("token");
    QTest::addColumn<bool>("stale");
    QTest::addColumn<int>("refusals"); // 401 on the way
    QTest::newRow("token") << QByteArray() << true << false << 0;
    QTest::newRow("MD5") << QByteArray("MD5") << false << false << 1;
    QTest::newRow("SHA-256") << QByteArray("SHA-256") << false << false << 1;
    QTest::newRow("both") << QByteArray("MD5") << true << false << 1;
    QTest::newRow("a nonce for each request") << QByteArray("MD5") << false << true << 10;
}

void TestOnvifDevice::logins()
{
    QFETCH(QByteArray, algorithm);
    QFETCH(bool, token);
    QFETCH(bool, stale);
    QFETCH(int, refusals);
    ScriptedCamera camera;
    camera.digestAlgorithm = algorithm;
    camera.wantsToken = token;
    camera.staleNonces = stale;
    const CameraAbilities abilities = ask(locked(camera));
    QVERIFY2(abilities.error == OnvifError::None, qPrintable(errorSentence(abilities)));
    QCOMPARE(camera.requests.size(), 11 + refusals);
    for (const auto& request : qAsConst(camera.requests)) {
        QVERIFY(!request.text.contains("Authorization: Basic"));
        QVERIFY(!request.text.contains("geheim"));
    }
}

void TestOnvifDevice::wrongLogins_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QByteArray>("algorithm");
    QTest::addColumn<OnvifError>("error");
    for (const QByteArray& algorithm : {QByteArray(), QByteArray("MD5")}) {
        const QByteArray title = algorithm.isEmpty() ? "token: " : "digest: ";
        QTest::newRow((title + "nobody").constData()) << ""
                                                      << "" << algorithm << OnvifError::LoginNeeded;
        QTest::newRow((title + "wrong user").constData())
            << "otto"
            << "geheim" << algorithm << OnvifError::LoginRefused;
        QTest::newRow((title + "wrong password").constData())
            << "anna"
            << "Geheim" << algorithm << OnvifError::LoginRefused;
        QTest::newRow((title + "a line end").constData())
            << "anna\r\nX: y"
            << "geheim" << algorithm << OnvifError::LoginRefused;
    }
}

void TestOnvifDevice::wrongLogins()
{
    QFETCH(QString, user);
    QFETCH(QString, password);
    QFETCH(QByteArray, algorithm);
    QFETCH(OnvifError, error);
    ScriptedCamera camera;
    camera.digestAlgorithm = algorithm;
    const CameraAbilities abilities = ask(locked(camera), {user, password});
    QCOMPARE(abilities.error, error);
    QCOMPARE(abilities.speaks, Ability::Unknown);
    QCOMPARE(abilities.hears, Ability::Unknown);
    QCOMPARE(abilities.hearsReason, onvifErrorText(error));
    QVERIFY(camera.requests.size() <= 3); // it does not go on trying, which locks accounts
}

void TestOnvifDevice::wrongClock_data()
{
    QTest::addColumn<qint64>("offset");
    QTest::newRow("a day behind") << qint64(-86400000);
    QTest::newRow("years ahead") << qint64(400) * 86400000;
    QTest::newRow("since 1970") << QDateTime::currentDateTimeUtc().msecsTo(
        QDateTime(QDate(1970, 1, 2), QTime(), Qt::UTC));
}

void TestOnvifDevice::wrongClock()
{
    QFETCH(qint64, offset);
    ScriptedCamera camera;
    camera.clockOffset = offset;
    const CameraAbilities abilities = ask(locked(camera));
    QVERIFY2(abilities.error == OnvifError::None, qPrintable(errorSentence(abilities)));
    QVERIFY(qAbs(abilities.clockOffset - offset) < 2000);
}

void TestOnvifDevice::behindNat()
{
    ScriptedCamera camera;
    camera.host = "192.168.1.64"; // nobody in this network
    const CameraAbilities abilities = ask(locked(camera));
    QVERIFY2(abilities.error == OnvifError::None, qPrintable(errorSentence(abilities)));
    QCOMPARE(abilities.streams.front().address, QUrl("rtsp://127.0.0.1:8554/live?profile=1"));
    QCOMPARE(abilities.snapshot.host(), QString("127.0.0.1"));
    QCOMPARE(abilities.snapshot.port(), camera.url().port());
    QCOMPARE(abilities.hears, Ability::Yes);
}

void TestOnvifDevice::addressesOfOthers()
{
    ScriptedCamera camera;
    camera.host = "203.0.113.9"; // a network for documents, RFC 5737
    const CameraAbilities refused = ask(locked(camera));
    QCOMPARE(refused.error, OnvifError::Elsewhere);
    QCOMPARE(camera.names(), (QStringList{"GetSystemDateAndTime", "GetServices"}));

    ScriptedCamera other;
    other.setBody(
        "GetStreamUri",
        "<tr2:GetStreamUriResponse><tr2:Uri>rtsp://203.0.113.9/live</tr2:Uri></tr2:GetStreamUriResponse>");
    other.setBody("GetSnapshotUri", "<tr2:GetSnapshotUriResponse><tr2:Uri>http://203.0.113.9/still</"
                                    "tr2:Uri></tr2:GetSnapshotUriResponse>");
    const CameraAbilities abilities = ask(locked(other));
    QCOMPARE(abilities.error, OnvifError::None);
    QVERIFY(abilities.streams.front().address.isEmpty());
    QVERIFY(abilities.snapshot.isEmpty());
    QCOMPARE(abilities.speaks, Ability::Unknown);
    QCOMPARE(abilities.remarks.size(), 2);
    QVERIFY2(abilities.remarks.constFirst().contains("\"Main\""), qPrintable(abilities.remarks.constFirst()));
}

void TestOnvifDevice::noLoudspeaker_data()
{
    QTest::addColumn<bool>("media2");
    QTest::addColumn<bool>("fault"); // or an empty list
    QTest::newRow("media2") << true << false;
    QTest::newRow("media") << false << false;
    QTest::newRow("media2, a fault") << true << true;
    QTest::newRow("media, a fault") << false << true;
}

void TestOnvifDevice::noLoudspeaker()
{
    QFETCH(bool, media2);
    QFETCH(bool, fault);
    ScriptedCamera camera;
    camera.hasMedia2 = media2;
    camera.hasLoudspeaker = false;
    if (fault) {
        camera.setFault(media2 ? "GetAudioOutputConfigurations" : "GetAudioOutputs",
                        "AudioOutputNotSupported");
    }
    const CameraAbilities abilities = ask(locked(camera));
    QCOMPARE(abilities.error, OnvifError::None);
    QCOMPARE(abilities.hears, Ability::No);
    QCOMPARE(abilities.hearsReason, QString("the camera has no loudspeaker"));
    QCOMPARE(abilities.talkCodecs.size(), std::size_t(0));
    QVERIFY(!camera.names().contains("GetAudioDecoderConfigurationOptions"));
    QCOMPARE(abilities.speaks, Ability::Yes);
}

void TestOnvifDevice::noMicrophone()
{
    ScriptedCamera camera;
    camera.hasMicrophone = false;
    const CameraAbilities abilities = ask(locked(camera));
    QCOMPARE(abilities.speaks, Ability::No);
    QCOMPARE(abilities.speaksReason, QString("the camera has no microphone"));
    QCOMPARE(abilities.voiceCodecs.size(), std::size_t(0));
    QCOMPARE(abilities.hears, Ability::Yes);
}

void TestOnvifDevice::noProfileWithSound()
{
    ScriptedCamera camera;
    camera.setBody("GetProfiles",
                   "<tr2:GetProfilesResponse><tr2:Profiles token=\"p\"><tr2:Name>p</tr2:Name></tr2:Profiles>"
                   "</tr2:GetProfilesResponse>");
    const CameraAbilities abilities = ask(locked(camera));
    QCOMPARE(abilities.speaks, Ability::No);
    QVERIFY2(abilities.speaksReason.contains("switched off"), qPrintable(abilities.speaksReason));
    QVERIFY(abilities.snapshot.isEmpty()); // no picture, so it is not asked for
    QVERIFY(!camera.names().contains("GetSnapshotUri"));
}

void TestOnvifDevice::unusedLoudspeaker()
{
    ScriptedCamera camera;
    camera.usesLoudspeaker = false;
    const CameraAbilities abilities = ask(locked(camera));
    QCOMPARE(abilities.hears, Ability::Unknown);
    QVERIFY2(abilities.hearsReason.contains("none of its media profiles"), qPrintable(abilities.hearsReason));
    QVERIFY(abilities.hasUnusedLoudspeaker);
    QCOMPARE(abilities.talkCodecs.size(), std::size_t(2));

    ScriptedCamera silent;
    silent.usesLoudspeaker = false;
    silent.setFault("GetAudioOutputConfigurations", "Busy");
    const CameraAbilities unknown = ask(locked(silent));
    QCOMPARE(unknown.hears, Ability::Unknown);
    QVERIFY2(unknown.hearsReason.contains("does not tell"), qPrintable(unknown.hearsReason));
    QVERIFY(!unknown.hasUnusedLoudspeaker);

    silent.hasMicrophone = false;
    silent.setFault("GetAudioOutputConfigurations", "ActionNotSupported");
    silent.setFault("GetAudioSourceConfigurations", "ActionNotSupported");
    const CameraAbilities unasked = ask(locked(silent));
    QCOMPARE(unasked.hears, Ability::Unknown);
    QCOMPARE(unasked.speaks, Ability::Unknown);
    QVERIFY2(unasked.speaksReason.contains("no media profile"), qPrintable(unasked.speaksReason));
}

void TestOnvifDevice::noMedia()
{
    ScriptedCamera camera;
    camera.hasMedia = false;
    camera.hasMedia2 = false;
    const CameraAbilities abilities = ask(locked(camera));
    QCOMPARE(abilities.error, OnvifError::NotSupported);
    QVERIFY2(errorSentence(abilities).contains("no media service"), qPrintable(errorSentence(abilities)));
}

void TestOnvifDevice::oneAddressForEachOfSomeProfiles()
{
    ScriptedCamera camera;
    QByteArray profiles;
    for (int i = 0; i < 200; ++i) {
        profiles += "<tr2:Profiles token=\"p" + QByteArray::number(i) + "\"/>";
    }
    camera.setBody("GetProfiles", "<tr2:GetProfilesResponse>" + profiles + "</tr2:GetProfilesResponse>");
    const CameraAbilities abilities = ask(locked(camera));
    QCOMPARE(abilities.error, OnvifError::None);
    QCOMPARE(abilities.streams.size(), std::size_t(OnvifAnswers::maxProfiles));
    QCOMPARE(camera.names().count("GetStreamUri"), OnvifDevice::maxStreams);
}

void TestOnvifDevice::presence()
{
    ScriptedCamera camera;
    OnvifDevice device(locked(camera).url(), {});
    QSignalSpy spy(&device, &OnvifDevice::presenceKnown);
    device.askPresence();
    QVERIFY(spy.wait());
    QCOMPARE(spy.constFirst().constFirst().toBool(), true);
    QCOMPARE(camera.names(), QStringList{"GetSystemDateAndTime"});
    // A camera that wants a login even for this is there, too.
    camera.setFault("GetSystemDateAndTime", "NotAuthorized", 400);
    device.askPresence();
    QVERIFY(spy.wait());
    QCOMPARE(spy.constLast().constFirst().toBool(), true);
    // Something else at its address is not.
    camera.setReply("GetSystemDateAndTime", ScriptedCamera::http(200, "<html/>"));
    device.askPresence();
    QVERIFY(spy.wait());
    QCOMPARE(spy.constLast().constFirst().toBool(), false);
    QCOMPARE(spy.constLast().at(1).value<OnvifError>(), OnvifError::NotOnvif);
    QCOMPARE(spy.count(), 3);
}

/** A hundred cameras are asked each 30 s, for less than a hundredth of a processor. */
void TestOnvifDevice::presenceOfMany()
{
    ScriptedCamera camera; // its share is counted, too
    std::vector<std::unique_ptr<OnvifDevice>> devices;
    int online = 0;
    const std::clock_t start = std::clock();
    for (int i = 0; i < 100; ++i) {
        devices.push_back(std::make_unique<OnvifDevice>(camera.url(), login));
        connect(devices.back().get(), &OnvifDevice::presenceKnown, this,
                [&online](bool there) { online += there; });
        devices.back()->askPresence();
    }
    QTRY_COMPARE(online, 100);
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    QVERIFY2(seconds < 0.3, qPrintable(QString::number(seconds)));
}

void TestOnvifDevice::certificates()
{
    const QTemporaryDir folder;
    QString error;
    const auto own = ServerCertificate::loadOrCreate(folder.path(), &error);
    QVERIFY2(own, qPrintable(error));
    ScriptedCamera camera; // reports http addresses, as cameras do
    camera.setCertificate(own->certificate, own->key);
    const CameraAbilities strict = ask(locked(camera));
    QCOMPARE(strict.error, OnvifError::Untrusted);
    QCOMPARE(camera.requests.size(), 0);

    OnvifDevice::Options options;
    options.anyCertificate = true;
    OnvifDevice device(camera.url(), login, options);
    CameraAbilities known;
    connect(&device, &OnvifDevice::abilitiesKnown, &device,
            [&known](const CameraAbilities& a) { known = a; });
    QSignalSpy spy(&device, &OnvifDevice::abilitiesKnown);
    device.askAbilities();
    QVERIFY(spy.wait(15000));
    QVERIFY2(known.error == OnvifError::None, qPrintable(errorSentence(known)));
    QCOMPARE(known.hears, Ability::Yes);
    QCOMPARE(known.snapshot.scheme(), QString("https"));
}

void TestOnvifDevice::nobodyThere()
{
    QUrl url;
    {
        ScriptedCamera gone;
        url = gone.url();
    }
    OnvifDevice device(url, login);
    CameraAbilities known;
    connect(&device, &OnvifDevice::abilitiesKnown, &device,
            [&known](const CameraAbilities& a) { known = a; });
    QSignalSpy spy(&device, &OnvifDevice::abilitiesKnown);
    device.askAbilities();
    QVERIFY(spy.wait());
    QCOMPARE(known.error, OnvifError::NotReachable);
    QSignalSpy presence(&device, &OnvifDevice::presenceKnown);
    device.askPresence();
    QVERIFY(presence.wait());
    QCOMPARE(presence.constFirst().constFirst().toBool(), false);
}

void TestOnvifDevice::deletedInside()
{
    ScriptedCamera camera;
    auto* device = new OnvifDevice(locked(camera).url(), login);
    bool deleted = false;
    connect(device, &OnvifDevice::abilitiesKnown, this, [&] {
        delete device;
        deleted = true;
    });
    device->askAbilities();
    QTRY_VERIFY(deleted);
    auto* other = new OnvifDevice(camera.url(), login);
    other->askAbilities();
    QTRY_VERIFY(camera.names().count("GetSystemDateAndTime") == 2);
    delete other; // while it waits for an answer
    QCoreApplication::processEvents();
}

void TestOnvifDevice::askedAgain()
{
    ScriptedCamera camera;
    OnvifDevice device(locked(camera).url(), login);
    QSignalSpy spy(&device, &OnvifDevice::abilitiesKnown);
    camera.tricks.insert("GetServices", ScriptedCamera::Silence);
    device.askAbilities();
    QTRY_VERIFY(camera.names().contains("GetServices"));
    camera.tricks.clear();
    device.askAbilities(); // in the place of the first
    QVERIFY(spy.wait());
    QCOMPARE(camera.names().count("GetSnapshotUri"), 1);
    QCOMPARE(spy.count(), 1);
    device.askAbilities();
    QVERIFY(spy.wait());
    QCOMPARE(spy.count(), 2);
}

QTEST_GUILESS_MAIN(TestOnvifDevice)
#include "tst_onvifdevice.moc"
