#pragma once

#include <QByteArray>
#include <QString>

#include <openssl/ssl.h>

/** Decides whether the server of a TLS connection is the one that is meant. */
class ServerTrust
{
public:
    /** @param fingerprint SHA-256 of its certificate, hexadecimal; empty for any that the system trusts */
    explicit ServerTrust(const QString& fingerprint);

    /** Sets how connections check; the object outlives them. */
    void applyTo(SSL_CTX* tls);

    /** Sets who is meant. @param host name or numeric address */
    static void setHost(SSL* tls, const QByteArray& host);

    /** Returns why a server was not accepted, in words; empty for another reason than its certificate. */
    QString refusal(const SSL* tls) const;

private:
    static int check(X509_STORE_CTX* chain, void* trust);

    const QByteArray m_expected; ///< SHA-256, or empty.
    QByteArray m_shown;          ///< SHA-256 of the certificate that was shown.
};
