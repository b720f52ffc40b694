#include "server/access/UserStore.h"

#include "protocol/Limits.h"
#include "system/PrivateFile.h"

#include <QFile>

#include <sodium.h>

namespace {

QByteArray hashOf(const QByteArray& password)
{
    QByteArray hash(crypto_pwhash_STRBYTES, '\0');
    const int failed =
        crypto_pwhash_str(hash.data(), password.constData(), static_cast<unsigned long long>(password.size()),
                          crypto_pwhash_OPSLIMIT_INTERACTIVE, crypto_pwhash_MEMLIMIT_INTERACTIVE);
    return failed != 0 ? QByteArray() : QByteArray(hash.constData());
}

} // namespace

bool UserStore::load(const QString& path)
{
    QFile file(path);
    if (!file.exists()) {
        return true;
    }
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return false;
    }
    while (!file.atEnd()) {
        const QList<QByteArray> words = file.readLine().simplified().split(' ');
        if (words.size() == 2) {
            const QString name = QString::fromUtf8(words[0]);
            if (!name.isEmpty()) { // as that of a byte order mark alone
                m_hashes.insert(name == tokenName() ? QString() : name, words[1]);
            }
        }
    }
    return true;
}

bool UserStore::save(const QString& path, QString* error) const
{
    QByteArray lines;
    for (auto entry = m_hashes.begin(); entry != m_hashes.end(); ++entry) {
        const QString name = entry.key().isEmpty() ? tokenName() : entry.key();
        lines += name.toUtf8() + ' ' + entry.value() + '\n';
    }
    return writePrivateFile(path, lines, error);
}

QString UserStore::tokenName()
{
    return QStringLiteral("token");
}

bool UserStore::isName(const QString& name)
{
    return name.simplified() == name && !name.contains(QLatin1Char(' ')) && name != tokenName();
}

bool UserStore::setPassword(const QString& name, const QString& password)
{
    if (!isName(name) || password.isEmpty() || sodium_init() < 0) {
        return false;
    }
    const QByteArray hash = hashOf(password.toUtf8());
    if (hash.isEmpty()) {
        return false;
    }
    m_hashes.insert(name, hash);
    return true;
}

bool UserStore::admits(const QString& name, const QString& password) const
{
    const QByteArray secret = password.toUtf8();
    if (sodium_init() < 0 || secret.size() > Limits::maxPasswordBytes) {
        return false;
    }
    const QByteArray hash = m_hashes.value(name);
    if (hash.isEmpty()) {
        hashOf(secret); // as slow as for a user that there is
        return false;
    }
    return crypto_pwhash_str_verify(hash.constData(), secret.constData(),
                                    static_cast<unsigned long long>(secret.size())) == 0;
}
