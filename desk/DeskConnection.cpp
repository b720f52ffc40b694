#include "desk/DeskConnection.h"

#include "client/SocketLink.h"
#include "embedded/EmbeddedLink.h"
#include "protocol/PrintableName.h"

#include <QUrl>

namespace {

constexpr qint64 largeMessage = 100000; // bytes; smaller ones are gone before anybody could look

} // namespace

DeskConnection::DeskConnection(ClientOptions options) : m_options(std::move(options))
{
    connect(&m_link, &ServerLink::connected, this, [this] {
        m_wasOnline = true;
        setState(Online);
    });
    connect(&m_link, &ServerLink::sending, this, [this](qint64 sent, qint64 total) {
        const bool large = total >= largeMessage && sent < total;
        m_sendProgress = large ? static_cast<qreal>(sent) / static_cast<qreal>(total) : -1;
        Q_EMIT sendProgressChanged();
    });
}

QString DeskConnection::server() const
{
    return isLocal() ? tr("the server on this computer") : m_options.serverUrl;
}

QString DeskConnection::stateText() const
{
    switch (m_state) {
    case Online:
        return tr("Connected");
    case Connecting:
        return tr("Connecting…");
    case Reconnecting:
        return m_wasOnline ? tr("Connection lost; trying again…") : tr("No connection; trying again…");
    case Refused:
        return tr("Sign-in refused");
    case Failed:
        return tr("The server cannot start");
    }
    return QString();
}

void DeskConnection::setState(State state, const QString& reason)
{
    if (m_state == state && m_reason == reason) {
        return;
    }
    m_state = state;
    m_reason = reason;
    Q_EMIT changed();
}

void DeskConnection::start()
{
    Q_EMIT aboutToChange();
    open();
}

void DeskConnection::change()
{
    Q_EMIT aboutToChange();
    Q_EMIT serverChanged();
    open();
}

void DeskConnection::open()
{
    m_wasOnline = false;
    setState(Connecting);
    std::unique_ptr<ServerLink> link = m_options.makeLink();
    if (const auto* embedded = qobject_cast<EmbeddedLink*>(link.get());
        embedded != nullptr && !embedded->server().isOpen()) {
        setState(Failed, embedded->server().errorString());
        return;
    }
    if (auto* socket = qobject_cast<SocketLink*>(link.get())) {
        connect(socket, &SocketLink::lost, this, [this](const QString& reason, bool final) {
            setState(final ? Refused : Reconnecting, printableText(reason));
        });
    }
    Q_EMIT changed(); // the server, perhaps
    m_link.use(std::move(link));
}

void DeskConnection::useLocal()
{
    m_options.serverUrl.clear();
    change();
}

bool DeskConnection::useRemote(const QString& url, const QString& user, const QString& secret,
                               const QString& fingerprint)
{
    if (!checkUrl(url).isEmpty() || !checkFingerprint(fingerprint).isEmpty()) {
        return false;
    }
    m_options.serverUrl = url;
    m_options.user = user;
    m_options.secret = secret;
    m_options.fingerprint = SocketLink::fingerprintDigits(fingerprint).value_or(QString());
    change();
    return true;
}

QString DeskConnection::checkFingerprint(const QString& fingerprint) const
{
    return fingerprint.isEmpty() || SocketLink::fingerprintDigits(fingerprint)
               ? QString()
               : tr("64 hexadecimal digits, as the server shows them when it starts.");
}

QString DeskConnection::checkUrl(const QString& url) const
{
    const QUrl parsed(url, QUrl::StrictMode);
    if (url.isEmpty()) {
        return tr("Enter an address like wss://host:8440.");
    }
    if (!parsed.isValid() || parsed.host().isEmpty() ||
        (parsed.scheme() != QLatin1String("ws") && parsed.scheme() != QLatin1String("wss"))) {
        return tr("An address looks like wss://host:8440, or ws:// without encryption.");
    }
    return QString();
}
