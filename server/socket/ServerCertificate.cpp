#include "ServerCertificate.h"

#include <PrivateFile.h>
#include <WholeFile.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
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

/** A certificate of this name for its own key, in PEM. */
bool create(QByteArray* certificatePem, QByteArray* keyPem)
{
    const Key key(EVP_EC_gen("P-256"));
    const Certificate certificate(X509_new());
    if (!key || !certificate) {
        return false;
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
    if (X509_sign(certificate.get(), key.get(), EVP_sha256()) == 0) {
        return false;
    }
    const Memory certificateText(BIO_new(BIO_s_mem()));
    const Memory keyText(BIO_new(BIO_s_mem()));
    if (PEM_write_bio_X509(certificateText.get(), certificate.get()) != 1 ||
        PEM_write_bio_PrivateKey(keyText.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) != 1) {
        return false;
    }
    *certificatePem = contents(certificateText.get());
    *keyPem = contents(keyText.get());
    return true;
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
    if (!QFile::exists(certificatePath) && !QFile::exists(keyPath)) {
        QByteArray certificatePem;
        QByteArray keyPem;
        if (!create(&certificatePem, &keyPem)) {
            *error = QStringLiteral("the certificate cannot be made");
            return std::nullopt;
        }
        QString reason;
        if (!writePrivateFile(keyPath, keyPem, &reason)) {
            *error = QStringLiteral("%1 cannot be written: %2").arg(keyPath, reason);
            return std::nullopt;
        }
        if (!writeWholeFile(certificatePath, certificatePem, &reason)) {
            QFile::remove(keyPath); // made just now; alone it would keep the next start from making both
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

QString ServerCertificate::fingerprint(const QSslCertificate& certificate)
{
    return QString::fromLatin1(certificate.digest(QCryptographicHash::Sha256).toHex());
}
