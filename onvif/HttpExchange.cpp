#include "onvif/HttpExchange.h"

#include <QNetworkProxy>
#include <QSslSocket>

#include <utility>

namespace {

constexpr int readBuffer = 64 << 10; // bytes that Qt reads ahead
constexpr int httpPort = 80;
constexpr int httpsPort = 443;

OnvifError errorOf(QAbstractSocket::SocketError error)
{
    switch (error) {
    case QAbstractSocket::SslHandshakeFailedError:
    case QAbstractSocket::SslInternalError:
    case QAbstractSocket::SslInvalidUserDataError:
        return OnvifError::Untrusted;
    default:
        return OnvifError::NotReachable;
    }
}

} // namespace

HttpExchange::HttpExchange(int maxBodyBytes, QObject* parent)
    : QObject(parent), m_maxBody(maxBodyBytes), m_reply(maxBodyBytes)
{
}

HttpExchange::~HttpExchange()
{
    cancel();
}

void HttpExchange::post(const QUrl& url, const Headers& headers, const QByteArray& body, Callback callback)
{
    const Headers length{{"Content-Length", QByteArray::number(body.size())}};
    send("POST", url, length + headers, body, std::move(callback));
}

void HttpExchange::get(const QUrl& url, const Headers& headers, Callback callback)
{
    send("GET", url, headers, QByteArray(), std::move(callback));
}

void HttpExchange::send(const QByteArray& method, const QUrl& url, const Headers& headers,
                        const QByteArray& body, Callback callback)
{
    cancel();
    m_callback = std::move(callback);
    m_reply = HttpReply(m_maxBody);
    QByteArray target = url.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::RemoveFragment);
    target = target.startsWith('/') ? target : '/' + target; // RFC 9112, clause 3.2.1
    QByteArray request = method + ' ' + target +
                         " HTTP/1.1\r\nHost: " + url.authority(QUrl::FullyEncoded).toLatin1() +
                         "\r\nUser-Agent: VoiceDesk\r\nConnection: close\r\n";
    for (const auto& [name, value] : headers) {
        request += name + ": " + value + "\r\n";
    }
    request += "\r\n" + body;

    const bool isSecure = url.scheme() == QLatin1String("https");
    m_socket = new QSslSocket(this);
    m_socket->setProxy(QNetworkProxy::NoProxy); // cameras are in the local network
    m_socket->setReadBufferSize(readBuffer);
    m_socket->setPeerVerifyMode(m_anyCertificate ? QSslSocket::VerifyNone : QSslSocket::VerifyPeer);
    connect(m_socket, isSecure ? &QSslSocket::encrypted : &QAbstractSocket::connected, this,
            [this, request] { m_socket->write(request); });
    connect(m_socket, &QIODevice::readyRead, this, &HttpExchange::read);
    connect(m_socket, &QAbstractSocket::errorOccurred, this, &HttpExchange::fail);
    const QString host = url.host();
    if (isSecure) {
        m_socket->connectToHostEncrypted(host, static_cast<quint16>(url.port(httpsPort)));
    } else {
        m_socket->connectToHost(host, static_cast<quint16>(url.port(httpPort)));
    }
}

void HttpExchange::cancel()
{
    m_callback = nullptr;
    if (m_socket != nullptr) {
        m_socket->disconnect(this);
        m_socket->abort();
        m_socket->deleteLater(); // Qt may be inside a signal of it
        m_socket = nullptr;
    }
}

void HttpExchange::read()
{
    switch (m_reply.take(m_socket->readAll())) {
    case HttpReply::Reading:
        break;
    case HttpReply::Done:
        finish(OnvifError::None);
        break;
    case HttpReply::Broken:
        finish(OnvifError::NotOnvif);
        break;
    case HttpReply::TooLarge:
        finish(OnvifError::TooLarge);
        break;
    }
}

/** The connection has ended, or never began. */
void HttpExchange::fail()
{
    if (m_socket->error() != QAbstractSocket::RemoteHostClosedError) {
        finish(errorOf(m_socket->error()));
        return;
    }
    m_reply.take(m_socket->readAll());
    m_reply.end();
    finish(m_reply.state() == HttpReply::Done       ? OnvifError::None
           : m_reply.state() == HttpReply::TooLarge ? OnvifError::TooLarge
                                                    : OnvifError::NotOnvif);
}

void HttpExchange::finish(OnvifError error)
{
    const Callback callback = std::exchange(m_callback, nullptr);
    cancel();
    if (callback) {
        callback(error, m_reply);
    }
}
