#pragma once

#include <QSslCertificate>
#include <QSslKey>
#include <QString>

#include <openssl/types.h>

#include <optional>

/** The server's own certificate, signed by itself (X.509), and its key. */
struct ServerCertificate
{
    QSslCertificate certificate; ///< Valid for ten years from its creation.
    QSslKey key;                 ///< P-256, or the RSA key that the user put there.

    /**
     * Reads "server.crt" and "server.key" of a folder, or makes what is missing there.
     *
     * @param folder made when missing
     * @param error  receives the reason of a failure
     * @return empty on failure
     */
    static std::optional<ServerCertificate> loadOrCreate(const QString& folder, QString* error);

    /** Shows it in connections of @p tls. @return false when certificate and key do not fit each other */
    bool applyTo(SSL_CTX* tls) const;

    /** Returns the SHA-256 of a certificate, in lower-case hexadecimal, by which a client recognises it. */
    static QString fingerprint(const QSslCertificate& certificate);
};
