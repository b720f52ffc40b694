#include "client/ServerTrust.h"

#include <QSslCertificate>
#include <QSslConfiguration>

#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

namespace {

/** Trusts whom Qt trusts: OpenSSL by itself finds no authorities on Windows. */
void trustAuthorities(X509_STORE* store)
{
    QList<QSslCertificate> authorities = QSslConfiguration::defaultConfiguration().caCertificates();
    if (authorities.isEmpty()) {
        authorities = QSslConfiguration::systemCaCertificates();
    }
    for (const QSslCertificate& authority : authorities) {
        const QByteArray der = authority.toDer();
        const auto* data = reinterpret_cast<const unsigned char*>(der.constData());
        const std::unique_ptr<X509, void (*)(X509*)> made(d2i_X509(nullptr, &data, der.size()), &X509_free);
        X509_STORE_add_cert(store, made.get());
    }
}

} // namespace

ServerTrust::ServerTrust(const QString& fingerprint) : m_expected(QByteArray::fromHex(fingerprint.toLatin1()))
{
}

void ServerTrust::applyTo(SSL_CTX* tls)
{
    SSL_CTX_set_verify(tls, SSL_VERIFY_PEER, nullptr);
    if (m_expected.isEmpty()) {
        trustAuthorities(SSL_CTX_get_cert_store(tls));
    } else {
        SSL_CTX_set_cert_verify_callback(tls, &ServerTrust::check, this);
    }
}

/** In place of the chain, the dates and the name; OpenSSL calls it once for all of them. */
int ServerTrust::check(X509_STORE_CTX* chain, void* trust)
{
    auto* own = static_cast<ServerTrust*>(trust);
    X509* leaf = X509_STORE_CTX_get0_cert(chain);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (leaf != nullptr && X509_digest(leaf, EVP_sha256(), digest, &size) == 1) {
        own->m_shown = QByteArray(reinterpret_cast<const char*>(digest), static_cast<int>(size));
    }
    const bool same = own->m_shown == own->m_expected;
    X509_STORE_CTX_set_error(chain, same ? X509_V_OK : X509_V_ERR_APPLICATION_VERIFICATION);
    return same ? 1 : 0;
}

void ServerTrust::setHost(SSL* tls, const QByteArray& host)
{
    X509_VERIFY_PARAM* wanted = SSL_get0_param(tls);
    if (X509_VERIFY_PARAM_set1_ip_asc(wanted, host.constData()) != 1) {
        X509_VERIFY_PARAM_set1_host(wanted, host.constData(), 0);
        SSL_set_tlsext_host_name(tls, host.constData()); // for names alone (RFC 6066, 3)
    }
}

QString ServerTrust::refusal(const SSL* tls) const
{
    if (!m_shown.isEmpty() && m_shown != m_expected) {
        return QStringLiteral("its certificate has the fingerprint %1, expected was %2")
            .arg(QString::fromLatin1(m_shown.toHex()), QString::fromLatin1(m_expected.toHex()));
    }
    const long doubt = SSL_get_verify_result(tls);
    return doubt == X509_V_OK ? QString()
                              : QStringLiteral("its certificate is not trusted: %1")
                                    .arg(QString::fromLatin1(X509_verify_cert_error_string(doubt)));
}
