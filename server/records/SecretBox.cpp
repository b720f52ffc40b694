#include "SecretBox.h"

#include <PrivateFile.h>

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

SecretBox::SecretBox(const QString& keyFile)
{
    if (sodium_init() < 0) {
        return;
    }
    QFile existing(keyFile);
    if (!keyFile.isEmpty() && existing.exists()) {
        if (existing.open(QIODevice::ReadOnly)) {
            const QByteArray key = existing.readAll();
            m_key = key.size() == static_cast<int>(crypto_secretbox_KEYBYTES) ? key : QByteArray();
        }
        return;
    }
    QByteArray key(crypto_secretbox_KEYBYTES, '\0');
    randombytes_buf(key.data(), static_cast<std::size_t>(key.size()));
    if (!keyFile.isEmpty() && !writePrivateFile(keyFile, key)) {
        return;
    }
    m_key = key;
}

QByteArray SecretBox::seal(const QString& text) const
{
    const QByteArray clear = text.toUtf8();
    QByteArray nonce(crypto_secretbox_NONCEBYTES, '\0');
    randombytes_buf(nonce.data(), static_cast<std::size_t>(nonce.size()));
    QByteArray sealed(clear.size() + static_cast<int>(crypto_secretbox_MACBYTES), '\0');
    crypto_secretbox_easy(bytesOf(sealed), bytesOf(clear), static_cast<unsigned long long>(clear.size()),
                          bytesOf(nonce), bytesOf(m_key));
    return nonce + sealed;
}

QString SecretBox::unseal(const QByteArray& sealed) const
{
    constexpr int nonceSize = crypto_secretbox_NONCEBYTES;
    constexpr int macSize = crypto_secretbox_MACBYTES;
    if (sealed.size() < nonceSize + macSize) {
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
