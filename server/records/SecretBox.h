#pragma once

#include <QByteArray>
#include <QString>

/**
 * Encrypts what must not stand in a file in clear text but has to come out again: the passwords of devices.
 * By libsodium's secretbox (XSalsa20, Poly1305), with a key in a file of its own that only its owner can
 * read.
 */
class SecretBox
{
public:
    /** @param keyFile made when missing; empty for a key that ends with the object */
    explicit SecretBox(const QString& keyFile);

    bool isValid() const { return !m_key.isEmpty(); }

    QByteArray seal(const QString& text) const;

    /** Empty for anything that seal with this key did not make. */
    QString unseal(const QByteArray& sealed) const;

private:
    QByteArray m_key;
};
