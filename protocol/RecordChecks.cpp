#include "protocol/RecordChecks.h"

#include "protocol/Limits.h"

#include <QHostAddress>
#include <QRegularExpression>
#include <QSet>
#include <QUrl>

#include <algorithm>

namespace RecordChecks {

namespace {

bool hasControls(const QString& text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar character) { return character.category() == QChar::Other_Control; });
}

/** Whether a text looks like another one, or commands who shows it. */
bool hasHidden(const QString& text)
{
    return hasControls(text) || std::any_of(text.begin(), text.end(), [](QChar character) {
               return character.category() == QChar::Other_Format ||
                      character.category() == QChar::Separator_Line ||
                      character.category() == QChar::Separator_Paragraph;
           });
}

} // namespace

Refusal name(const QString& name)
{
    if (name.trimmed().isEmpty() || name.size() > Limits::maxNameLength || hasControls(name)) {
        return refusal(ReturnCode::badName,
                       QStringLiteral("a name has 1 to %1 characters, and no control characters")
                           .arg(Limits::maxNameLength));
    }
    return std::nullopt;
}

Refusal address(const QString& address)
{
    static const QRegularExpression hostName(
        QStringLiteral("^(?=.{1,253}$)([A-Za-z0-9]([A-Za-z0-9-]{0,61}[A-Za-z0-9])?\\.)*"
                       "[A-Za-z0-9]([A-Za-z0-9-]{0,61}[A-Za-z0-9])?$"));
    static const QRegularExpression onlyNumbers(QStringLiteral("^[0-9.]*$"));
    const bool numeric = onlyNumbers.match(address).hasMatch();
    QHostAddress parsed;
    // An IPv6 address may end in a scope of any length and any characters.
    const bool printable = std::all_of(address.begin(), address.end(), [](QChar character) {
        return character > QLatin1Char(' ') && character <= QLatin1Char('~');
    });
    const bool valid = printable && address.size() <= Limits::maxAddressLength &&
                       (parsed.setAddress(address) || (!numeric && hostName.match(address).hasMatch()));
    // QHostAddress also takes "1" for 0.0.0.1, which nobody means.
    if (!valid || (numeric && address.count(QLatin1Char('.')) != 3)) {
        // The text may hold a password: it is not repeated.
        return refusal(ReturnCode::badAddress,
                       QStringLiteral("an address is an IPv4 or IPv6 address or a host name, without a "
                                      "login, port or path"));
    }
    return std::nullopt;
}

Refusal cameraAddress(const QString& text)
{
    if (!address(text)) {
        return std::nullopt;
    }
    static const QStringList schemes{QStringLiteral("rtsp"), QStringLiteral("rtsps"), QStringLiteral("http"),
                                     QStringLiteral("https")};
    const bool isUrl = text.contains(QStringLiteral("://"));
    const QUrl url(isUrl ? text : QStringLiteral("http://") + text, QUrl::StrictMode);
    // Without a scheme it is a host and a port, and nothing else.
    const bool isWhole = isUrl || (url.port() >= 0 && url.path().isEmpty() && !url.hasQuery() &&
                                   url.authority().size() == text.size() && url.userInfo().isEmpty());
    const bool valid = text.size() <= Limits::maxUrlLength && !hasHidden(text) && url.isValid() &&
                       schemes.contains(url.scheme()) && !url.hasFragment() && url.port(1) >= 1 && isWhole &&
                       !address(url.host());
    // The text may hold a password: it is not repeated.
    return valid ? std::nullopt
                 : std::optional(
                       refusal(ReturnCode::badAddress,
                               QStringLiteral("a camera's address is a host, host:port, or a URL like "
                                              "rtsp://host:port/path or http://host:port/path")));
}

Refusal port(int port)
{
    if (port < 1 || port > Limits::maxPort) {
        return refusal(ReturnCode::badPort,
                       QStringLiteral("a port is a number from 1 to %1").arg(Limits::maxPort));
    }
    return std::nullopt;
}

Refusal credentials(const QString& username, const QString& password)
{
    if (username.size() > Limits::maxCredentialLength || password.size() > Limits::maxCredentialLength ||
        hasControls(username) || hasControls(password)) {
        return refusal(ReturnCode::badCredentials,
                       QStringLiteral("user name and password have at most %1 characters, and no control "
                                      "characters")
                           .arg(Limits::maxCredentialLength));
    }
    return std::nullopt;
}

Refusal cameras(const QStringList& cameras)
{
    const bool tooLong = cameras.size() > Limits::maxListEntries ||
                         std::any_of(cameras.begin(), cameras.end(), [](const QString& camera) {
                             return camera.isEmpty() || camera.size() > Limits::maxNameLength;
                         });
    if (tooLong || QSet<QString>(cameras.begin(), cameras.end()).size() != cameras.size()) {
        return refusal(ReturnCode::badList,
                       QStringLiteral("the list of cameras has an empty entry, or one twice"));
    }
    return std::nullopt;
}

std::optional<QList<int>> ids(const QString& text)
{
    QList<int> list;
    QSet<int> seen;
    const auto pieces = text.splitRef(QLatin1Char(','), Qt::SkipEmptyParts);
    if (pieces.size() > Limits::maxListEntries) {
        return std::nullopt;
    }
    for (const QStringRef& piece : pieces) {
        bool valid = false;
        const int id = piece.toInt(&valid);
        if (!valid || id < 0 || seen.contains(id)) {
            return std::nullopt;
        }
        seen.insert(id);
        list.append(id);
    }
    return list;
}

QString joined(const QList<int>& ids)
{
    QStringList texts;
    texts.reserve(ids.size());
    for (const int id : ids) {
        texts.append(QString::number(id));
    }
    return texts.join(QLatin1Char(','));
}

} // namespace RecordChecks
