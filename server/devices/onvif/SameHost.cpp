#include "server/devices/onvif/SameHost.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QUrl>

#include <algorithm>

namespace {

/** Without what only this machine knows it by. */
QHostAddress withoutScope(QHostAddress address)
{
    address.setScopeId(QString());
    return address;
}

} // namespace

bool isSameHost(const QString& host, const QString& address)
{
    const QString own = QUrl(address).host();
    if (host.compare(own, Qt::CaseInsensitive) == 0) {
        return true;
    }
    const QHostAddress wanted(host);
    if (wanted.isNull()) {
        return false; // another name
    }
    const QList<QHostAddress> addresses =
        QHostAddress(own).isNull() ? QHostInfo::fromName(own).addresses() : QList{QHostAddress(own)};
    return std::any_of(addresses.begin(), addresses.end(), [&](const QHostAddress& each) {
        return withoutScope(each).isEqual(withoutScope(wanted), QHostAddress::TolerantConversion);
    });
}
