#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>

/** A challenge of a server that wants a login: its scheme, and its parameters (RFC 7235, clause 2.1). */
struct HttpChallenge
{
    QByteArray scheme;                       ///< In small letters.
    QMap<QByteArray, QByteArray> parameters; ///< By names in small letters; of quoted texts what is between
                                             ///< the quotes.

    /** Reads the challenges of a reply. @param header the WWW-Authenticate headers, joined with commas */
    static QList<HttpChallenge> of(const QByteArray& header);
};
