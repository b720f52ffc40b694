// Stills of a scripted camera: logins, and what it sends in place of a picture.

#include "onvif/HttpDigest.h"
#include "onvif/SnapshotClient.h"
#include "tests/onvif/ScriptedCamera.h"

#include <QElapsedTimer>
#include <QTest>

Q_DECLARE_METATYPE(ScriptedCamera::Trick)

namespace {

constexpr int patience = 400;       // ms
constexpr int limit = 512 << 10;    // bytes
constexpr int loadedMachine = 2500; // ms

/** Asks a camera for its still and waits for the answer. */
Snapshot ask(const ScriptedCamera& camera, const OnvifLogin& login = {"anna", "secret"})
{
    QUrl url = camera.url();
    url.setPath("/still.jpg");
    SnapshotClient client(login, patience, limit);
    int answers = 0;
    Snapshot answer;
    client.get(url, [&](const Snapshot& snapshot) {
        ++answers;
        answer = snapshot;
    });
    if (!QTest::qWaitFor([&] { return answers > 0; })) {
        QTest::qFail("no answer", __FILE__, __LINE__);
    }
    return answer;
}

} // namespace

class TestSnapshotClient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picture();
    void digest_data();
    void digest();
    void basicAlone();
    void basicIsNotPreferred();
    void wrongPassword();
    void noLogin();
    void tricks_data();
    void tricks();
    void replies_data();
    void replies();
    void largest();
    void redirectsAreNotFollowed();
};

void TestSnapshotClient::picture()
{
    ScriptedCamera camera;
    const Snapshot answer = ask(camera, {});
    QCOMPARE(answer.error, OnvifError::None);
    QCOMPARE(answer.jpeg, camera.picture);
    QCOMPARE(camera.requests.size(), 1);
    QCOMPARE(camera.requests[0].path, QString("/still.jpg"));
    QVERIFY(!camera.requests[0].text.contains("Authorization"));
    QVERIFY(!camera.requests[0].text.contains("Content-Length"));
}

void TestSnapshotClient::digest_data()
{
    QTest::addColumn<QByteArray>("algorithm");
    QTest::newRow("MD5") << QByteArray("MD5");
    QTest::newRow("SHA-256") << QByteArray("SHA-256");
}

void TestSnapshotClient::digest()
{
    QFETCH(QByteArray, algorithm);
    ScriptedCamera camera;
    camera.user = "anna";
    camera.password = "secret";
    camera.digestAlgorithm = algorithm;
    camera.wantsToken = false;
    const Snapshot answer = ask(camera);
    QCOMPARE(answer.error, OnvifError::None);
    QCOMPARE(answer.jpeg, camera.picture);
    QCOMPARE(camera.requests.size(), 2);
}

void TestSnapshotClient::basicAlone()
{
    ScriptedCamera camera;
    camera.user = "anna";
    camera.password = "secret";
    camera.wantsToken = false;
    camera.wantsBasic = true;
    QCOMPARE(ask(camera).jpeg, camera.picture);
    QVERIFY(!camera.requests[0].text.contains("Authorization")); // nothing before it is asked for
}

/** With Digest on offer, one that is not known too, no password goes out in the clear. */
void TestSnapshotClient::basicIsNotPreferred()
{
    QVERIFY(HttpDigest::isBasicOnly("Basic realm=\"camera\""));
    QVERIFY(!HttpDigest::isBasicOnly(""));
    QVERIFY(!HttpDigest::isBasicOnly("Basic realm=\"camera\", Digest realm=\"camera\", nonce=\"1\""));
    ScriptedCamera camera;
    camera.user = "anna";
    camera.password = "secret";
    camera.digestAlgorithm = "SHA-512-256";
    camera.wantsToken = false;
    QCOMPARE(ask(camera).error, OnvifError::LoginRefused);
    for (const auto& request : camera.requests) {
        QVERIFY(!request.text.contains("Basic"));
    }
}

void TestSnapshotClient::wrongPassword()
{
    ScriptedCamera camera;
    camera.user = "anna";
    camera.password = "another";
    camera.digestAlgorithm = "MD5";
    camera.wantsToken = false;
    QCOMPARE(ask(camera).error, OnvifError::LoginRefused);
    QCOMPARE(camera.requests.size(), 2); // once, not again and again: cameras lock users out
}

void TestSnapshotClient::noLogin()
{
    ScriptedCamera camera;
    camera.user = "anna";
    camera.wantsToken = false;
    camera.wantsBasic = true;
    QCOMPARE(ask(camera, {}).error, OnvifError::LoginNeeded);
    QCOMPARE(camera.requests.size(), 1);
}

void TestSnapshotClient::tricks_data()
{
    QTest::addColumn<ScriptedCamera::Trick>("trick");
    QTest::addColumn<OnvifError>("error");
    QTest::newRow("silence") << ScriptedCamera::Silence << OnvifError::TimedOut;
    QTest::newRow("close") << ScriptedCamera::Close << OnvifError::NotPicture;
    QTest::newRow("close inside") << ScriptedCamera::CloseInside << OnvifError::NotPicture;
    QTest::newRow("drip") << ScriptedCamera::Drip << OnvifError::TimedOut;
    QTest::newRow("gigabytes") << ScriptedCamera::EndlessBody << OnvifError::TooLarge;
    QTest::newRow("endless header") << ScriptedCamera::EndlessHeader << OnvifError::TooLarge;
}

void TestSnapshotClient::tricks()
{
    QFETCH(ScriptedCamera::Trick, trick);
    QFETCH(OnvifError, error);
    ScriptedCamera camera;
    camera.tricks.insert(ScriptedCamera::still(), trick);
    QElapsedTimer clock;
    clock.start();
    const Snapshot answer = ask(camera, {});
    QCOMPARE(answer.error, error);
    QCOMPARE(answer.jpeg, QByteArray());
    QVERIFY(clock.elapsed() < loadedMachine);
}

void TestSnapshotClient::replies_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<OnvifError>("error");
    const auto row = [](const char* title, const QByteArray& reply, OnvifError error) {
        QTest::newRow(title) << reply << error;
    };
    row("no HTTP", "220 mail.example ESMTP\r\n", OnvifError::NotPicture);
    row("a page", ScriptedCamera::http(200, "<html><body>Login</body></html>"), OnvifError::NotPicture);
    row("nothing", ScriptedCamera::http(200, ""), OnvifError::NotPicture);
    row("another picture", ScriptedCamera::http(200, "\x89PNG\r\n\x1a\n"), OnvifError::NotPicture);
    row("half a marker", ScriptedCamera::http(200, "\xff\xd8"), OnvifError::NotPicture);
    row("not there", ScriptedCamera::http(404, "\xff\xd8\xff\xe0"), OnvifError::Refused);
    row("no content", "HTTP/1.1 204 None\r\n\r\n", OnvifError::Refused);
    row("forbidden", ScriptedCamera::http(403, ""), OnvifError::LoginNeeded);
}

void TestSnapshotClient::replies()
{
    QFETCH(QByteArray, reply);
    QFETCH(OnvifError, error);
    ScriptedCamera camera;
    camera.setReply(ScriptedCamera::still(), reply);
    const Snapshot answer = ask(camera, {});
    QCOMPARE(answer.error, error);
    QCOMPARE(answer.jpeg, QByteArray());
}

void TestSnapshotClient::largest()
{
    ScriptedCamera camera;
    camera.picture = QByteArray("\xff\xd8\xff").leftJustified(limit, 'x');
    QCOMPARE(ask(camera, {}).jpeg.size(), limit);
    camera.picture += 'x';
    QCOMPARE(ask(camera, {}).error, OnvifError::TooLarge);
}

void TestSnapshotClient::redirectsAreNotFollowed()
{
    ScriptedCamera other;
    ScriptedCamera camera;
    camera.setReply(ScriptedCamera::still(),
                    ScriptedCamera::http(302, "", "Location: " + other.url().toEncoded() + "\r\n"));
    const Snapshot answer = ask(camera);
    QCOMPARE(answer.error, OnvifError::Refused);
    QCOMPARE(answer.detail, QString("HTTP 302"));
    QCOMPARE(other.connections, 0);
}

QTEST_GUILESS_MAIN(TestSnapshotClient)
#include "tst_snapshotclient.moc"
