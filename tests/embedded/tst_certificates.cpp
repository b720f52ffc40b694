// The server's certificate and key, and the clients that check it.

#include "server/access/ServerCertificate.h"
#include "tests/embedded/SocketHarness.h"
#include "tests/embedded/TrustedCertificate.h"
#include "tests/support/FileReaders.h"
#include "tests/support/FullDisk.h"

using namespace SocketHarness;

class TestCertificates : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void certificateIsMadeOnce();
    void certificateOnAFullDisk();
    void keyAloneGetsACertificate();
    void tlsWithAFingerprint();
    void tlsWithAnotherFingerprint();
    void trustedCertificateIsComparedToo();
    void noCertificateToCompare();

private:
    QTemporaryDir m_folder;
};

namespace {

/** Breaks the key of a folder; whether it is refused then, by its name. */
bool refusesABrokenKey(const QString& folder)
{
    QFile key(folder + "/server.key");
    if (!key.open(QIODevice::WriteOnly) || key.write("x") != 1) {
        return false;
    }
    key.close();
    QString error;
    return !ServerCertificate::loadOrCreate(folder, &error) && error.contains("server.key");
}

} // namespace

void TestCertificates::certificateIsMadeOnce()
{
    QString error;
    const QString folder = m_folder.filePath("tls");
    const auto first = ServerCertificate::loadOrCreate(folder, &error);
    QVERIFY2(first, qPrintable(error));
    const auto second = ServerCertificate::loadOrCreate(folder, &error);
    QVERIFY(second);
    QCOMPARE(first->certificate, second->certificate);
    QVERIFY(first->certificate.expiryDate() > QDateTime::currentDateTime().addYears(5));
    QVERIFY(FileReaders::isPrivate(folder + "/server.key"));
    QVERIFY(refusesABrokenKey(folder));
}

void TestCertificates::certificateOnAFullDisk()
{
    if (!FullDisk::possible) {
        QSKIP("Needs a limit of a file's size.");
    }
    const QString folder = m_folder.filePath("full");
    for (const unsigned long room : {0UL, 300UL}) { // none; for the key, which is shorter, alone
        const FullDisk disk(room);
        QString error;
        QVERIFY(!ServerCertificate::loadOrCreate(folder, &error));
        QVERIFY2(error.contains(folder + (room == 0 ? "/server.key cannot" : "/server.crt cannot")),
                 qPrintable(error));
        QCOMPARE(QDir(folder).entryList(QDir::Files), room == 0 ? QStringList() : QStringList("server.key"));
    }
    QString error;
    QVERIFY2(ServerCertificate::loadOrCreate(folder, &error), qPrintable(error));
}

void TestCertificates::keyAloneGetsACertificate()
{
    const QString folder = m_folder.filePath("key alone");
    QString error;
    const auto first = ServerCertificate::loadOrCreate(folder, &error);
    QVERIFY2(first, qPrintable(error));
    QVERIFY(QFile::remove(folder + "/server.crt"));
    const auto second = ServerCertificate::loadOrCreate(folder, &error);
    QVERIFY2(second, qPrintable(error));
    QVERIFY(second->key == first->key);
    QVERIFY(second->certificate.publicKey() == first->certificate.publicKey());
    QVERIFY(second->certificate.serialNumber() != first->certificate.serialNumber());
    QVERIFY(QFile::remove(folder + "/server.crt"));
    QVERIFY(refusesABrokenKey(folder));
    QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList("server.key")); // whatever it is, it stays
}

void TestCertificates::tlsWithAFingerprint()
{
    ServerHarness harness;
    QString error;
    const auto certificate = ServerCertificate::loadOrCreate(m_folder.filePath("tls2"), &error);
    QVERIFY2(certificate, qPrintable(error));
    SocketServer server(*harness.server, config(), &*certificate);
    QVERIFY(server.listen());
    QCOMPARE(server.url().scheme(), QString("wss"));
    SocketLinkConfig pinned = to(server);
    pinned.fingerprint = ServerCertificate::fingerprint(certificate->certificate);
    OpenedLink link(pinned);
    QVERIFY(link.isUp());
}

void TestCertificates::tlsWithAnotherFingerprint()
{
    ServerHarness harness;
    QString error;
    const auto certificate = ServerCertificate::loadOrCreate(m_folder.filePath("tls3"), &error);
    SocketServer server(*harness.server, config(), &*certificate);
    QVERIFY(server.listen());
    for (const QString& fingerprint : {QString(), QString(64, '0')}) {
        SocketLinkConfig pinned = to(server);
        pinned.fingerprint = fingerprint;
        OpenedLink link(pinned);
        QVERIFY(waitFor([&] { return !link.lost.isEmpty(); }));
        QVERIFY(link.connected.isEmpty());
    }
}

/** Whoever has a certificate of some authority is not the server that the fingerprint is of. */
void TestCertificates::trustedCertificateIsComparedToo()
{
    ServerHarness harness;
    const TrustedCertificate trusted;
    QVERIFY(!trusted.made.certificate.isNull() && !trusted.made.key.isNull());
    SocketServer server(*harness.server, config(), &trusted.made);
    QVERIFY(server.listen());
    const QString right = ServerCertificate::fingerprint(trusted.made.certificate);
    for (const QString& fingerprint : {QString(), right}) {
        SocketLinkConfig pinned = to(server);
        pinned.fingerprint = fingerprint;
        OpenedLink link(pinned);
        QVERIFY2(link.isUp(), qPrintable(fingerprint));
    }
    SocketLinkConfig pinned = to(server);
    pinned.fingerprint = QString(64, '0');
    OpenedLink link(pinned);
    QVERIFY(waitFor([&] { return !link.lost.isEmpty(); }));
    QCOMPARE(
        link.lost[0][0].toString(),
        QString("its certificate has the fingerprint %1, expected was %2").arg(right, pinned.fingerprint));
    QVERIFY(waitFor([&] { return link.lost.size() > 1; })); // another attempt, with the same end
    QCOMPARE(link.lost[1], link.lost[0]);
    QVERIFY(link.connected.isEmpty());
}

void TestCertificates::noCertificateToCompare()
{
    ServerHarness harness;
    SocketServer server(*harness.server, config(), nullptr);
    QVERIFY(server.listen());
    SocketLinkConfig pinned = to(server);
    pinned.fingerprint = QString(64, '0');
    OpenedLink link(pinned);
    QVERIFY(waitFor([&] { return !link.lost.isEmpty(); }));
    QVERIFY(link.lost[0][0].toString().startsWith("it shows no certificate"));
    QVERIFY(link.connected.isEmpty());
}

QTEST_GUILESS_MAIN(TestCertificates)
#include "tst_certificates.moc"
