#pragma once

#include <QByteArray>
#include <QString>

/**
 * The cipher of the passwords of devices, which must be readable again: libsodium's secretbox (XSalsa20,
 * Poly1305). The key is in a file of its own that only its owner can read.
 */
class PasswordCipher
{
public:
    /**
     * @param keyFile    empty for a key that is not stored
     * @param mayMakeKey whether a missing or empty key file is made; false when there are passwords that were
     *                   encrypted with the lost key
     */
    explicit PasswordCipher(const QString& keyFile, bool mayMakeKey = true);

    /** Returns whether there is a key. */
    bool isValid() const { return !m_key.isEmpty(); }
    /** Returns why there is no key; empty when there is one. */
    QString errorString() const { return m_error; }

    /** Returns the bytes that seal adds to a text's UTF-8. */
    static int overhead();

    /** Encrypts a text; the box must be valid. Each call returns other bytes. */
    QByteArray seal(const QString& text) const;

    /** Decrypts a text; empty for bytes that seal did not make with this key. */
    QString unseal(const QByteArray& sealed) const;

private:
    QByteArray readOrMakeKey(const QString& keyFile, bool mayMakeKey);

    QString m_error;
    QByteArray m_key;
};
