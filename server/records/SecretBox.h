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
    /**
     * @param keyFile empty for a key that ends with the object
     * @param mayMakeKey whether a key file that is missing, or has no bytes, is made: not when something is
     *        sealed with the key that is lost
     */
    explicit SecretBox(const QString& keyFile, bool mayMakeKey = true);

    /** Whether there is a key; errorString says why not. */
    bool isValid() const { return !m_key.isEmpty(); }
    QString errorString() const { return m_error; }

    /** Bytes that seal adds to a text's UTF-8. */
    static int overhead();

    QByteArray seal(const QString& text) const;

    /** Empty for anything that seal with this key did not make. */
    QString unseal(const QByteArray& sealed) const;

private:
    QByteArray readOrMakeKey(const QString& keyFile, bool mayMakeKey);

    QString m_error;
    QByteArray m_key;
};
