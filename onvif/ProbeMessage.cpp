#include "onvif/ProbeMessage.h"

#include "onvif/CameraAddress.h"
#include "onvif/SoapMessage.h"

namespace ProbeMessage {

namespace {

const QString discovery = QStringLiteral("http://schemas.xmlsoap.org/ws/2005/04/discovery");
constexpr int maxScopes = 64;

/** The value of the first scope of a kind, as onvif://www.onvif.org/name/Front%20door. */
QString scope(const QStringList& scopes, const QString& kind)
{
    const QString start = QStringLiteral("onvif://www.onvif.org/%1/").arg(kind);
    for (const QString& entry : scopes) {
        if (entry.startsWith(start, Qt::CaseInsensitive)) {
            return plainText(QUrl::fromPercentEncoding(entry.mid(start.size()).toUtf8()));
        }
    }
    return QString();
}

/** Takes the first of a device's addresses that is one of the sender. */
void takeAddress(Match& match, const QStringList& addresses, const QHostAddress& sender)
{
    for (const QString& address : addresses) {
        const QUrl url(address);
        const bool isHttp = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
        if (address.size() > CameraAddress::maxLength || !url.isValid() || !isHttp || url.port(1) == 0 ||
            !url.userInfo().isEmpty() || !CameraAddress::isSameHost(url.host(), sender.toString())) {
            continue;
        }
        match.address = url.adjusted(QUrl::RemoveFragment);
        return;
    }
    match.isElsewhere = !addresses.isEmpty();
}

bool namesCamera(const QStringList& types)
{
    for (const QString& type : types) {
        if (type.section(QLatin1Char(':'), -1) == QLatin1String("NetworkVideoTransmitter")) {
            return true;
        }
    }
    return false;
}

QStringList wordsOf(const QString& text, int most)
{
    return text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts).mid(0, most);
}

} // namespace

QByteArray probe(const QString& id, const QString& type)
{
    const QString header =
        QStringLiteral(
            "<a:MessageID xmlns:a=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\">%1</a:MessageID>"
            "<a:To xmlns:a=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\">"
            "urn:schemas-xmlsoap-org:ws:2005:04:discovery</a:To>"
            "<a:Action xmlns:a=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\">%2/Probe</a:Action>")
            .arg(id, discovery);
    const QString wanted =
        type.isEmpty()
            ? QString()
            : QStringLiteral("<d:Types xmlns:dn=\"http://www.onvif.org/ver10/network/wsdl\" "
                             "xmlns:tds=\"http://www.onvif.org/ver10/device/wsdl\" "
                             "xmlns:wsdp=\"http://schemas.xmlsoap.org/ws/2006/02/devprof\">%1</d:Types>")
                  .arg(type);
    return SoapMessage::write(header,
                              QStringLiteral("<d:Probe xmlns:d=\"%1\">%2</d:Probe>").arg(discovery, wanted));
}

std::vector<Match> matches(const QByteArray& datagram, const QStringList& ids, const QHostAddress& sender)
{
    std::vector<Match> found;
    const auto message = SoapMessage::read(datagram, maxAnswerBytes);
    if (!message || message->body.name != QLatin1String("ProbeMatches") || message->body.space != discovery ||
        !ids.contains(message->header.textOf("RelatesTo"))) {
        return found;
    }
    for (const XmlElement& element : message->body.children) {
        if (element.name != QLatin1String("ProbeMatch") || found.size() >= maxMatches) {
            continue;
        }
        Match match;
        match.endpoint = plainText(element.textOf("Address"), maxEndpointLength);
        if (match.endpoint.isEmpty()) {
            continue;
        }
        takeAddress(match, wordsOf(element.textOf("XAddrs"), maxScopes), sender);
        const QStringList scopes = wordsOf(element.textOf("Scopes"), maxScopes);
        match.isCamera = namesCamera(wordsOf(element.textOf("Types"), maxScopes));
        match.name = scope(scopes, QStringLiteral("name"));
        match.hardware = scope(scopes, QStringLiteral("hardware"));
        match.location = scope(scopes, QStringLiteral("location"));
        found.push_back(match);
    }
    return found;
}

} // namespace ProbeMessage
