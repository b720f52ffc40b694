#include "server/records/RecordStore.h"

#include <QHostAddress>
#include <QUrl>

namespace {

/** The host of an address, "host:port" or a URL. */
QString hostOf(const QString& text)
{
    if (!QHostAddress(text).isNull()) {
        return text;
    }
    const QString scheme = text.contains(QStringLiteral("://")) ? QString() : QStringLiteral("http://");
    return QUrl(scheme + text, QUrl::StrictMode).host();
}

} // namespace

ServerReply RecordStore::failed() const
{
    return refusal(ReturnCode::storageFailed, m_database.errorString());
}

std::optional<ServerReply> RecordStore::checkFree(const Names& names, const QString& name, int id)
{
    bool taken = false;
    if (!m_database.read(QStringLiteral("SELECT 1 FROM %1 WHERE name = ? AND id <> ?").arg(names.table),
                         {name, id}, [&](const QSqlQuery&) { taken = true; })) {
        return failed();
    }
    return taken ? std::optional(
                       refusal(ReturnCode::nameTaken,
                               QStringLiteral("there is a %1 named \"%2\" already").arg(names.kind, name)))
                 : std::nullopt;
}

QVariantMap RecordStore::changed(const QVariantMap& before, const QVariantMap& change)
{
    QVariantMap after = before;
    for (auto field = change.begin(); field != change.end(); ++field) {
        if (field.value().isValid()) {
            after.insert(field.key(), field.value());
        }
    }
    return after;
}

bool RecordStore::sameHost(const QString& one, const QString& other)
{
    const QHostAddress first(hostOf(one));
    const QHostAddress second(hostOf(other));
    return first.isNull() ? hostOf(one).compare(hostOf(other), Qt::CaseInsensitive) == 0 : first == second;
}
