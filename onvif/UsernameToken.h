#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

/** The login in the header of a SOAP message (OASIS WSS UsernameToken Profile 1.1). */
namespace UsernameToken {

/** Returns the password's digest as Base64: of nonce, time and password (clause 3.1). */
QByteArray digest(const QByteArray& nonce, const QByteArray& created, const QString& password);

/**
 * Makes the header.
 *
 * @param nonce   bytes that were never used before
 * @param created now, by the clock of the device, which refuses other times
 * @return XML with its own namespaces
 */
QString header(const QString& user, const QString& password, const QByteArray& nonce,
               const QDateTime& created);

/** Returns 16 random bytes for a nonce. */
QByteArray makeNonce();

} // namespace UsernameToken
