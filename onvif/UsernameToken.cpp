#include "onvif/UsernameToken.h"

#include <QCryptographicHash>
#include <QRandomGenerator>

#include <array>

QByteArray UsernameToken::digest(const QByteArray& nonce, const QByteArray& created, const QString& password)
{
    return QCryptographicHash::hash(nonce + created + password.toUtf8(), QCryptographicHash::Sha1).toBase64();
}

QString UsernameToken::header(const QString& user, const QString& password, const QByteArray& nonce,
                              const QDateTime& created)
{
    const QByteArray time = created.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzzZ")).toLatin1();
    const auto wss = QStringLiteral("http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-");
    return QStringLiteral(
               "<Security s:mustUnderstand=\"1\" xmlns=\"%1wssecurity-secext-1.0.xsd\"><UsernameToken>"
               "<Username>%2</Username>"
               "<Password Type=\"%1username-token-profile-1.0#PasswordDigest\">%3</Password>"
               "<Nonce EncodingType=\"%1soap-message-security-1.0#Base64Binary\">%4</Nonce>"
               "<Created xmlns=\"%1wssecurity-utility-1.0.xsd\">%5</Created></UsernameToken></Security>")
        .arg(wss, user.toHtmlEscaped(), QString::fromLatin1(digest(nonce, time, password)),
             QString::fromLatin1(nonce.toBase64()), QString::fromLatin1(time));
}

QByteArray UsernameToken::makeNonce()
{
    std::array<quint32, 4> numbers{};
    QRandomGenerator::system()->fillRange(numbers.data(), static_cast<qsizetype>(numbers.size()));
    return QByteArray(reinterpret_cast<const char*>(numbers.data()), sizeof numbers);
}
