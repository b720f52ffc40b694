#include "server/access/ServerCertificate.h"

#include "system/PrivateFile.h"
#include "system/WholeFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <memory>

namespace {

constexpr long lifetime = 10L * 365 * 24 * 60 * 60; // s
constexpr int serialSize = 16;                      // bytes

template<auto Free>
struct Deleter
{
    template<class T>
    void operator()(T* pointer) const
    {
        Free(pointer);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Deleter<X509_free>>;
using Memory = std::unique_ptr<BIO, Deleter<BIO_free>>;

QByteArray contents(BIO* memory)
{
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    return QByteArray(data, static_cast<int>(size));
}

/** A key that wants a password is refused; nobody could type one. */
int noPassword(char* /*buffer*/, int /*size*/, int /*write*/, void* /*data*/)
{
    return -1;
}

/** A new key in PEM; empty on failure. */
QByteArray createKey()
{
    const Key key(EVP_EC_gen("P-256"));
    const Memory text(BIO_new(BIO_s_mem()));
    const bool written =
        key && PEM_write_bio_PrivateKey(text.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1;
    return written ? contents(text.get()) : QByteArray();
}

/** A certificate of this server's name in PEM, signed by its own key; empty on failure. */
QByteArray createCertificate(const QByteArray& keyPem)
{
    const Memory keyText(BIO_new_mem_buf(keyPem.constData(), keyPem.size()));
    const Key key(PEM_read_bio_PrivateKey(keyText.get(), nullptr, noPassword, nullptr));
    const Certificate certificate(X509_new());
    if (!key || !certificate) {
        return QByteArray();
    }
    unsigned char serial[serialSize];
    RAND_bytes(serial, serialSize);
    serial[0] &= 0x7F; // positive
    const std::unique_ptr<BIGNUM, Deleter<BN_free>> number(BN_bin2bn(serial, serialSize, nullptr));
    BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate.get()));
    X509_set_version(certificate.get(), 2); // version 3
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), lifetime);
    X509_set_pubkey(certificate.get(), key.get());
    X509_NAME* name = X509_get_subject_name(certificate.get());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char*>("VoiceDesk server"), -1, -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    const Memory text(BIO_new(BIO_s_mem()));
    const bool written = X509_sign(certificate.get(), key.get(), EVP_sha256()) != 0 &&
                         PEM_write_bio_X509(text.get(), certificate.get()) == 1;
    return written ? contents(text.get()) : QByteArray();
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

std::optional<ServerCertificate> ServerCertificate::loadOrCreate(const QString& folder, QString* error)
{
    QDir().mkpath(folder);
    const QString certificatePath = QDir(folder).filePath(QStringLiteral("server.crt"));
    const QString keyPath = QDir(folder).filePath(QStringLiteral("server.key"));
    if (!QFile::exists(certificatePath)) {
        // A key alone is the user's, or what a start that was cut off has left: it gets a certificate.
        QString reason;
        if (!QFile::exists(keyPath) && !writePrivateFile(keyPath, createKey(), &reason)) {
            *error = QStringLiteral("%1 cannot be written: %2").arg(keyPath, reason);
            return std::nullopt;
        }
        const QByteArray certificatePem = createCertificate(readFile(keyPath));
        if (certificatePem.isEmpty()) {
            *error = QStringLiteral("%1 cannot be read, or holds no key without a password").arg(keyPath);
            return std::nullopt;
        }
        if (!writeWholeFile(certificatePath, certificatePem, &reason)) {
            *error = QStringLiteral("%1 cannot be written: %2").arg(certificatePath, reason);
            return std::nullopt;
        }
    }
    ServerCertificate made;
    const QList<QSslCertificate> certificates = QSslCertificate::fromData(readFile(certificatePath));
    made.key = QSslKey(readFile(keyPath), QSsl::Ec);
    if (made.key.isNull()) {
        made.key = QSslKey(readFile(keyPath), QSsl::Rsa);
    }
    if (certificates.isEmpty() || made.key.isNull()) {
        *error = QStringLiteral("%1 or %2 cannot be read").arg(certificatePath, keyPath);
        return std::nullopt;
    }
    made.certificate = certificates.first();
    return made;
}

bool ServerCertificate::applyTo(SSL_CTX* tls) const
{
    const QByteArray certificatePem = certificate.toPem();
    const QByteArray keyPem = key.toPem();
    const Memory certificateText(BIO_new_mem_buf(certificatePem.constData(), certificatePem.size()));
    const Memory keyText(BIO_new_mem_buf(keyPem.constData(), keyPem.size()));
    const Certificate shown(PEM_read_bio_X509(certificateText.get(), nullptr, noPassword, nullptr));
    const Key own(PEM_read_bio_PrivateKey(keyText.get(), nullptr, noPassword, nullptr));
    return shown && own && SSL_CTX_use_certificate(tls, shown.get()) == 1 &&
           SSL_CTX_use_PrivateKey(tls, own.get()) == 1 && SSL_CTX_check_private_key(tls) == 1;
}

QString ServerCertificate::fingerprint(const QSslCertificate& certificate)
{
    return QString::fromLatin1(certificate.digest(QCryptographicHash::Sha256).toHex());
}
