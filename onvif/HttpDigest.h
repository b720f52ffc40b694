#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QString>

#include <optional>

/** A login by HTTP Digest (RFC 7616), with MD5 or SHA-256. */
class HttpDigest
{
public:
    static constexpr int maxChallengeBytes = 4096; ///< Of the header that is read at all.

    /**
     * Chooses among the challenges of a reply.
     *
     * @param header the WWW-Authenticate headers, joined with commas
     * @return empty when none of them can be answered
     */
    static std::optional<HttpDigest> fromChallenges(const QByteArray& header);

    /** Returns whether a reply offers a login by Basic (RFC 7617), and none but that. @param header as of
     * fromChallenges */
    static bool isBasicOnly(const QByteArray& header);

    /** Returns the server's nonce. */
    const QByteArray& nonce() const { return m_nonce; }

    /**
     * Returns the header Authorization of the next request.
     *
     * @param method as "POST"
     * @param uri    path and query of the request
     * @param cnonce the client's own nonce, of letters and digits
     * @return empty when the user's name cannot stand in a header
     */
    QByteArray authorization(const QByteArray& method, const QByteArray& uri, const QString& user,
                             const QString& password, const QByteArray& cnonce);

private:
    QByteArray m_realm;
    QByteArray m_nonce;
    QByteArray m_opaque;
    QByteArray m_algorithm; ///< As the server wrote it; empty for none.
    bool m_hasQop = false;  ///< Without one the login is that of RFC 2069.
    QCryptographicHash::Algorithm m_hash = QCryptographicHash::Md5;
    quint32 m_count = 0; ///< Requests with this nonce.
};
