#pragma once

#include <QSslCertificate>
#include <QSslKey>
#include <QString>

#include <optional>

/** The server's own certificate, signed by itself (X.509), and its key. */
struct ServerCertificate
{
    QSslCertificate certificate;
    QSslKey key;

    /** Reads "server.crt" and "server.key" of a folder, or makes them there; empty, and an error, on failure.
     */
    static std::optional<ServerCertificate> loadOrCreate(const QString& folder, QString* error);

    /** SHA-256 of a certificate, hexadecimal, by which a client knows it again. */
    static QString fingerprint(const QSslCertificate& certificate);
};
