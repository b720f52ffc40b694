#pragma once

#include <QHash>
#include <QString>

/**
 * Who may use the server: names with passwords, and tokens. Kept as hashes of libsodium's password function
 * (Argon2id), in a text file of one "name hash" a line; "token hash" for a token, which comes without a name.
 */
class UserBook
{
public:
    /** An empty book: nobody may do anything. */
    UserBook() = default;

    /** Reads a file; false when that fails, an absent file is an empty book. */
    bool load(const QString& path);

    /** Writes a file; false, and an error, when that fails, an older one is then as it was. */
    bool save(const QString& path, QString* error = nullptr) const;

    /** Adds a user or changes a password; an empty name stands for a token. False for a name with blanks. */
    bool setPassword(const QString& name, const QString& password);

    /** Takes a tenth of a second, on purpose, whether or not there is such a user. */
    bool admits(const QString& name, const QString& password) const;

    bool isEmpty() const { return m_hashes.isEmpty(); }

private:
    QHash<QString, QByteArray> m_hashes; ///< By name.
};
