#include "server/records/PasswordCipher.h"

#include "system/PrivateFile.h"

#include <QFile>

#include <sodium.h>

namespace {

const unsigned char* bytesOf(const QByteArray& bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

unsigned char* bytesOf(QByteArray& bytes)
{
    return reinterpret_cast<unsigned char*>(bytes.data());
}

} // namespace

PasswordCipher::PasswordCipher(const QString& keyFile, bool mayMakeKey)
    : m_key(readOrMakeKey(keyFile, mayMakeKey))
{
}

int PasswordCipher::overhead()
{
    return crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES;
}

/** Empty, and the error set, on failure. */
QByteArray PasswordCipher::readOrMakeKey(const QString& keyFile, bool mayMakeKey)
{
    constexpr int keySize = crypto_secretbox_KEYBYTES;
    if (sodium_init() < 0) {
        m_error = QStringLiteral("the cipher of the passwords does not start");
        return QByteArray();
    }
    QFile existing(keyFile);
    if (!keyFile.isEmpty() && existing.exists() && existing.size() > 0) {
        const bool opened = existing.open(QIODevice::ReadOnly);
        const QByteArray key = opened ? existing.readAll() : QByteArray();
        if (key.size() == keySize) {
            return key;
        }
        m_error = opened ? QStringLiteral("%1 is not a key of %2 bytes").arg(keyFile).arg(keySize)
                         : QStringLiteral("%1 cannot be read: %2").arg(keyFile, existing.errorString());
        return QByteArray();
    }
    if (!mayMakeKey) {
        m_error = QStringLiteral("%1 is missing or empty, and passwords of devices are sealed with it; "
                                 "put it back from a copy")
                      .arg(keyFile);
        return QByteArray();
    }
    QByteArray key(keySize, '\0');
    randombytes_buf(key.data(), static_cast<std::size_t>(key.size()));
    QString reason;
    if (!keyFile.isEmpty() && !writePrivateFile(keyFile, key, &reason)) {
        m_error = QStringLiteral("%1 cannot be written: %2").arg(keyFile, reason);
        return QByteArray();
    }
    return key;
}

QByteArray PasswordCipher::seal(const QString& text) const
{
    const QByteArray clear = text.toUtf8();
    QByteArray nonce(crypto_secretbox_NONCEBYTES, '\0');
    randombytes_buf(nonce.data(), static_cast<std::size_t>(nonce.size()));
    QByteArray sealed(clear.size() + static_cast<int>(crypto_secretbox_MACBYTES), '\0');
    crypto_secretbox_easy(bytesOf(sealed), bytesOf(clear), static_cast<unsigned long long>(clear.size()),
                          bytesOf(nonce), bytesOf(m_key));
    return nonce + sealed;
}

QString PasswordCipher::unseal(const QByteArray& sealed) const
{
    constexpr int nonceSize = crypto_secretbox_NONCEBYTES;
    constexpr int macSize = crypto_secretbox_MACBYTES;
    if (!isValid() || sealed.size() < nonceSize + macSize) {
        return QString();
    }
    const QByteArray body = sealed.mid(nonceSize);
    QByteArray clear(body.size() - macSize, '\0');
    if (crypto_secretbox_open_easy(bytesOf(clear), bytesOf(body),
                                   static_cast<unsigned long long>(body.size()), bytesOf(sealed),
                                   bytesOf(m_key)) != 0) {
        return QString();
    }
    return QString::fromUtf8(clear);
}
