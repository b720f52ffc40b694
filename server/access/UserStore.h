#pragma once

#include <QHash>
#include <QString>

/**
 * The users of the server: names with passwords, and one token. They are stored as hashes of libsodium's
 * password function (Argon2id), in a text file with one "name hash" on a line. In the file the token has the
 * name "token", which therefore no user has.
 */
class UserStore
{
public:
    /** Makes a store without users: every login is refused. */
    UserStore() = default;

    /** Adds the users of a file; a missing file has none. Returns false when it cannot be read. */
    bool load(const QString& path);

    /**
     * Writes a file that only its owner can read.
     *
     * @param path  the file
     * @param error receives the reason of a failure, unless null
     * @return false on failure; an older file is then unchanged
     */
    bool save(const QString& path, QString* error = nullptr) const;

    /** Returns the name that the token has in the file. */
    static QString tokenName();

    /**
     * Returns whether a user can have a name: one without blanks and line ends, and not tokenName; empty is
     * the token's.
     */
    static bool isName(const QString& name);

    /**
     * Adds a user or changes a password.
     *
     * @param name     empty for the token
     * @param password not empty
     * @return false for what isName refuses, and for an empty password
     */
    bool setPassword(const QString& name, const QString& password);

    /**
     * Returns whether a login is right; false for a password of more than 1024 bytes. Takes a tenth of a
     * second, deliberately also for an unknown user. May be called on several threads at a time.
     */
    bool admits(const QString& name, const QString& password) const;

    /** Returns whether there are no users. */
    bool isEmpty() const { return m_hashes.isEmpty(); }

private:
    QHash<QString, QByteArray> m_hashes; ///< By name; that of the token is empty.
};
