#include "onvif/CameraAddress.h"

#include <QHostAddress>
#include <QList>

#include <algorithm>
#include <utility>

namespace CameraAddress {

namespace {

const QString devicePath = QStringLiteral("/onvif/device_service");

bool isHttp(const QUrl& url)
{
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

/** Whether nobody else can be meant by it than a device of the same private network. */
bool isPrivate(const QString& host)
{
    const QHostAddress address(host);
    if (address.isNull()) {
        return false;
    }
    static const QList<QPair<QHostAddress, int>> networks{
        QHostAddress::parseSubnet(QStringLiteral("0.0.0.0/32")),
        QHostAddress::parseSubnet(QStringLiteral("10.0.0.0/8")),     // RFC 1918
        QHostAddress::parseSubnet(QStringLiteral("172.16.0.0/12")),  // RFC 1918
        QHostAddress::parseSubnet(QStringLiteral("192.168.0.0/16")), // RFC 1918
        QHostAddress::parseSubnet(QStringLiteral("100.64.0.0/10")),  // RFC 6598
        QHostAddress::parseSubnet(QStringLiteral("169.254.0.0/16")), // RFC 3927
        QHostAddress::parseSubnet(QStringLiteral("fe80::/10")),      // RFC 4291
        QHostAddress::parseSubnet(QStringLiteral("fc00::/7")),       // RFC 4193
        QHostAddress::parseSubnet(QStringLiteral("::/128")),
    };
    return address.isLoopback() ||
           std::any_of(networks.begin(), networks.end(), [&address](const QPair<QHostAddress, int>& network) {
               return address.isInSubnet(network);
           });
}

} // namespace

bool isSameHost(const QString& one, const QString& other)
{
    const QHostAddress first(one);
    const QHostAddress second(other);
    if (!first.isNull() && !second.isNull()) {
        return first.isEqual(second, QHostAddress::TolerantConversion);
    }
    return !one.isEmpty() && one.compare(other, Qt::CaseInsensitive) == 0;
}

std::optional<QUrl> deviceService(const QString& typed, QString* error)
{
    const QString text = typed.trimmed();
    if (text.contains(QLatin1Char('@'))) {
        *error =
            QStringLiteral("an address must not contain a user name or a password; they are given apart");
        return std::nullopt;
    }
    *error = QStringLiteral("the address of a camera is a host, host:port, or http://host:port/path");
    if (text.size() > maxLength) {
        return std::nullopt;
    }
    const bool bareIpv6 = QHostAddress(text).protocol() == QAbstractSocket::IPv6Protocol;
    QUrl url(
        text.contains(QLatin1String("://")) ? text
        : bareIpv6
            ? QStringLiteral("http://[%1]").arg(QString(text).replace(QLatin1Char('%'), QLatin1String("%25")))
            : QStringLiteral("http://") + text,
        QUrl::StrictMode);
    if (!url.isValid() || !isHttp(url) || url.host().isEmpty() || url.port(1) == 0 || url.hasFragment()) {
        return std::nullopt;
    }
    if (url.path().isEmpty() || url.path() == QLatin1String("/")) {
        url.setPath(devicePath);
    }
    error->clear();
    return url;
}

std::optional<QUrl> reported(const QString& address, const QUrl& device, Purpose purpose)
{
    if (address.size() > maxLength) {
        return std::nullopt;
    }
    QUrl url(address.trimmed());
    const bool rightScheme =
        purpose == Stream ? url.scheme() == QLatin1String("rtsp") || url.scheme() == QLatin1String("rtsps")
                          : isHttp(url);
    if (!url.isValid() || !rightScheme || url.host().isEmpty() || url.port(1) == 0) {
        return std::nullopt;
    }
    url.setUserInfo(QString());
    url.setFragment(QString());
    const bool own = isSameHost(url.host(), device.host());
    if (!own && !isPrivate(url.host())) {
        return std::nullopt;
    }
    const bool weaker = device.scheme() == QLatin1String("https") && url.scheme() == QLatin1String("http");
    if (purpose != Stream && (!own || weaker)) {
        url.setScheme(device.scheme());
        url.setPort(device.port());
    }
    if (!own) {
        url.setHost(device.host());
    }
    return url;
}

} // namespace CameraAddress
