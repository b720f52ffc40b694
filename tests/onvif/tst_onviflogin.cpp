// The two logins, against the examples of their standards.

#include "onvif/HttpDigest.h"
#include "onvif/UsernameToken.h"
#include "onvif/XmlElement.h"

#include <QSet>
#include <QTest>

namespace {

const QByteArray realm = "http-auth@example.org";
const QByteArray nonce = "7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v";
const QByteArray opaque = "FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS";
const QByteArray cnonce = "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ";

QByteArray challenge(const QByteArray& more)
{
    return "Digest realm=\"" + realm + "\", nonce=\"" + nonce + "\", opaque=\"" + opaque + "\"" + more;
}

QByteArray answer(HttpDigest& digest)
{
    return digest.authorization("GET", "/dir/index.html", "Mufasa", "Circle of Life", cnonce);
}

} // namespace

class TestOnvifLogin : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tokenDigest();
    void tokenHeader();
    void nonces();
    void httpDigest_data();
    void httpDigest();
    void countsUp();
    void refusedChallenges_data();
    void refusedChallenges();
    void oddUsers();
};

void TestOnvifLogin::tokenDigest()
{
    // The example of the ONVIF Application Programmer's Guide.
    QCOMPARE(UsernameToken::digest(QByteArray::fromBase64("LKqI6G/AikKCQrN0zqZFlg=="), "2010-09-16T07:50:45Z",
                                   "userpassword"),
             QByteArray("tuOSpGlFlIXsozq4HFNeeGeFLEI="));
}

void TestOnvifLogin::tokenHeader()
{
    const QDateTime created(QDate(2026, 3, 1), QTime(8, 30, 5, 70), Qt::UTC);
    const QString header = UsernameToken::header("an<na>", "g%2heim", "0123456789abcdef", created);
    QVERIFY(!header.contains("heim"));
    const auto root = XmlElement::read("<r xmlns:s='urn:s'>" + header.toUtf8() + "</r>", 10000);
    QVERIFY(root);
    const XmlElement* token = root->find("UsernameToken");
    QVERIFY(token != nullptr);
    QCOMPARE(token->space,
             QString("http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-secext-1.0.xsd"));
    QCOMPARE(token->textOf("Username"), QString("an<na>"));
    QCOMPARE(token->textOf("Nonce"), QString::fromLatin1(QByteArray("0123456789abcdef").toBase64()));
    QCOMPARE(token->textOf("Created"), QString("2026-03-01T08:30:05.070Z"));
    QCOMPARE(token->find("Created")->space,
             QString("http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd"));
    QCOMPARE(token->textOf("Password").toLatin1(),
             UsernameToken::digest("0123456789abcdef", "2026-03-01T08:30:05.070Z", "g%2heim"));
    QVERIFY(header.contains("#PasswordDigest\""));
}

void TestOnvifLogin::nonces()
{
    QSet<QByteArray> seen;
    for (int i = 0; i < 100; ++i) {
        seen.insert(UsernameToken::makeNonce());
    }
    QCOMPARE(seen.size(), 100);
    QCOMPARE(seen.begin()->size(), 16);
}

void TestOnvifLogin::httpDigest_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("response");
    // RFC 7616, clause 3.9.1.
    const QByteArray md5 = "8ca523f5e9506fed4657c9700eebdbec";
    const QByteArray sha = "753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1";
    QTest::newRow("MD5") << challenge(", qop=\"auth, auth-int\", algorithm=MD5") << md5;
    QTest::newRow("no algorithm") << challenge(", qop=\"auth\"") << md5;
    QTest::newRow("SHA-256") << challenge(", qop=\"auth, auth-int\", algorithm=SHA-256") << sha;
    QTest::newRow("SHA-256, then MD5")
        << challenge(", qop=\"auth\", algorithm=SHA-256") + ", " + challenge(", qop=\"auth\", algorithm=MD5")
        << sha;
    QTest::newRow("MD5, then SHA-256")
        << challenge(", qop=\"auth\", algorithm=MD5") + ", " + challenge(", qop=\"auth\", algorithm=SHA-256")
        << sha;
    QTest::newRow("beside Basic") << "Basic realm=\"a, Digest b=\\\"c\", " + challenge(", qop=auth") +
                                         ", Negotiate"
                                  << md5;
    QTest::newRow("blanks") << QByteArray(challenge("\t, QOP = \"auth\" ,algorithm = md5 ")) << md5;
    // Hashes of RFC 2069, by its clause 2.1.2.
    const auto hash = [](const QByteArray& text) {
        return QCryptographicHash::hash(text, QCryptographicHash::Md5).toHex();
    };
    QTest::newRow("no qop") << challenge("")
                            << hash(hash("Mufasa:" + realm + ":Circle of Life") + ":" + nonce + ":" +
                                    hash("GET:/dir/index.html"));
}

void TestOnvifLogin::httpDigest()
{
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, response);
    auto digest = HttpDigest::fromChallenges(header);
    QVERIFY(digest);
    const QByteArray authorization = answer(*digest);
    QVERIFY2(authorization.startsWith("Digest username=\"Mufasa\", realm=\"" + realm + "\", "),
             authorization.constData());
    QVERIFY2(authorization.contains(", response=\"" + response + "\""), authorization.constData());
    QVERIFY2(authorization.contains(", opaque=\"" + opaque + "\""), authorization.constData());
    QCOMPARE(authorization.contains("qop=auth, nc=00000001, cnonce=\"" + cnonce + "\""),
             header.toLower().contains("qop"));
    QVERIFY(!authorization.contains("Circle"));
}

void TestOnvifLogin::countsUp()
{
    auto digest = HttpDigest::fromChallenges(challenge(", qop=auth"));
    QVERIFY(digest);
    QVERIFY(answer(*digest).contains("nc=00000001"));
    QVERIFY(answer(*digest).contains("nc=00000002"));
}

void TestOnvifLogin::refusedChallenges_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("the password in the clear") << QByteArray("Basic realm=\"camera\"");
    QTest::newRow("the login of the desktop") << QByteArray("Negotiate, NTLM");
    QTest::newRow("no nonce") << QByteArray("Digest realm=\"a\"");
    QTest::newRow("another hash") << challenge(", algorithm=SHA-512-256");
    QTest::newRow("another session") << challenge(", algorithm=MD5-sess");
    QTest::newRow("the body, too") << challenge(", qop=\"auth-int\"");
    QTest::newRow("not ended") << QByteArray("Digest realm=\"a\", nonce=\"");
    QTest::newRow("ends in a backslash") << QByteArray("Digest realm=\"a\\");
    QTest::newRow("signs") << QByteArray("=,=\"\",=\\\"");
    QTest::newRow("too long") << challenge(", x=\"" + QByteArray(HttpDigest::maxChallengeBytes, 'x') + "\"");
}

void TestOnvifLogin::refusedChallenges()
{
    QFETCH(QByteArray, header);
    QVERIFY(!HttpDigest::fromChallenges(header));
}

void TestOnvifLogin::oddUsers()
{
    auto digest = HttpDigest::fromChallenges(challenge(", qop=auth"));
    QVERIFY(digest);
    const auto of = [&digest](const QString& user) {
        return digest->authorization("POST", "/", user, "x", cnonce);
    };
    QVERIFY(of("a\"b\\c").contains("username=\"a\\\"b\\\\c\","));
    QVERIFY(of(QString::fromUtf8("J\xc3\xb6rg")).contains("username=\"J\xc3\xb6rg\","));
    QCOMPARE(of("a\r\nX: y"), QByteArray());
}

QTEST_GUILESS_MAIN(TestOnvifLogin)
#include "tst_onviflogin.moc"
