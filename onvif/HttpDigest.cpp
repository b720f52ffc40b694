#include "onvif/HttpDigest.h"

#include "onvif/HttpChallenge.h"

#include <algorithm>

namespace {

QByteArray quotedText(QByteArray text)
{
    return '"' + text.replace('\\', "\\\\").replace('"', "\\\"") + '"';
}

} // namespace

std::optional<HttpDigest> HttpDigest::fromChallenges(const QByteArray& header)
{
    if (header.size() > maxChallengeBytes) {
        return std::nullopt;
    }
    std::optional<HttpDigest> chosen;
    const QList<HttpChallenge> challenges = HttpChallenge::of(header);
    for (const HttpChallenge& challenge : challenges) {
        const QByteArray algorithm = challenge.parameters.value("algorithm");
        const bool sha = algorithm.toUpper() == "SHA-256";
        const bool known = sha || algorithm.isEmpty() || algorithm.toUpper() == "MD5";
        const bool hasQop = challenge.parameters.contains("qop");
        QList<QByteArray> qops = challenge.parameters.value("qop").split(',');
        std::transform(qops.begin(), qops.end(), qops.begin(),
                       [](const QByteArray& qop) { return qop.trimmed().toLower(); });
        if (challenge.scheme != "digest" || !known || (hasQop && !qops.contains("auth")) ||
            challenge.parameters.value("nonce").isEmpty() || (chosen && !sha)) {
            continue;
        }
        chosen.emplace();
        chosen->m_realm = challenge.parameters.value("realm");
        chosen->m_nonce = challenge.parameters.value("nonce");
        chosen->m_opaque = challenge.parameters.value("opaque");
        chosen->m_algorithm = algorithm;
        chosen->m_hasQop = hasQop;
        chosen->m_hash = sha ? QCryptographicHash::Sha256 : QCryptographicHash::Md5;
    }
    return chosen;
}

bool HttpDigest::isBasicOnly(const QByteArray& header)
{
    const QList<HttpChallenge> challenges = HttpChallenge::of(header.left(maxChallengeBytes));
    return !challenges.isEmpty() && header.size() <= maxChallengeBytes &&
           std::all_of(challenges.begin(), challenges.end(),
                       [](const HttpChallenge& challenge) { return challenge.scheme == "basic"; });
}

QByteArray HttpDigest::authorization(const QByteArray& method, const QByteArray& uri, const QString& user,
                                     const QString& password, const QByteArray& cnonce)
{
    const QByteArray name = user.toUtf8();
    if (std::any_of(name.begin(), name.end(),
                    [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; })) {
        return QByteArray();
    }
    const auto hash = [this](const QByteArray& text) {
        return QCryptographicHash::hash(text, m_hash).toHex();
    };
    const QByteArray count = QByteArray::number(++m_count, 16).rightJustified(8, '0');
    const QByteArray middle = m_hasQop ? m_nonce + ':' + count + ':' + cnonce + ":auth" : m_nonce;
    const QByteArray response = hash(hash(name + ':' + m_realm + ':' + password.toUtf8()) + ':' + middle +
                                     ':' + hash(method + ':' + uri));
    QByteArray header = "Digest username=" + quotedText(name) + ", realm=\"" + m_realm + "\", uri=\"" + uri +
                        "\", nonce=\"" + m_nonce + "\", response=\"" + response + '"';
    if (!m_algorithm.isEmpty()) {
        header += ", algorithm=" + m_algorithm;
    }
    if (m_hasQop) {
        header += ", qop=auth, nc=" + count + ", cnonce=\"" + cnonce + '"';
    }
    if (!m_opaque.isEmpty()) {
        header += ", opaque=\"" + m_opaque + '"';
    }
    return header;
}
