#include "server/devices/onvif/RtspQuestion.h"

#include "server/devices/onvif/OnvifConfig.h"

#include <QNetworkProxy>
#include <QSslSocket>
#include <QUrl>

namespace {

constexpr int maxAnswer = 4096; // bytes of an answer that are read

const QByteArray rtsp = QByteArrayLiteral("RTSP/");

} // namespace

QByteArray RtspQuestion::text(const QString& address, int number)
{
    return QStringLiteral("OPTIONS %1 RTSP/1.0\r\nCSeq: %2\r\n\r\n")
        .arg(QUrl(address).toString(QUrl::RemoveUserInfo | QUrl::FullyEncoded))
        .arg(number)
        .toLatin1();
}

RtspQuestion::RtspQuestion(const QString& address, int time, QObject* parent) : QObject(parent)
{
    const QUrl url(address);
    const bool isSecure = url.scheme() == QLatin1String("rtsps");
    auto* const secure = isSecure ? new QSslSocket(this) : nullptr;
    m_socket = isSecure ? secure : new QTcpSocket(this);
    m_socket->setProxy(QNetworkProxy::NoProxy); // cameras are in the local network
    m_socket->setReadBufferSize(maxAnswer);
    const auto write = [this, address] { m_socket->write(text(address, 1)); };
    connect(m_socket, &QIODevice::readyRead, this, &RtspQuestion::read);
    connect(m_socket, &QAbstractSocket::errorOccurred, this, [this] { finish(false); });
    connect(&m_timer, &QTimer::timeout, this, [this] { finish(false); });
    m_timer.setSingleShot(true);
    m_timer.start(time);
    const auto port = static_cast<quint16>(url.port(defaultRtspPort(url.scheme())));
    if (isSecure) {
        secure->setPeerVerifyMode(QSslSocket::VerifyNone); // nothing secret is said or believed
        connect(secure, &QSslSocket::encrypted, this, write);
        secure->connectToHostEncrypted(url.host(), port);
    } else {
        connect(m_socket, &QAbstractSocket::connected, this, write);
        m_socket->connectToHost(url.host(), port);
    }
}

RtspQuestion::~RtspQuestion()
{
    m_socket->disconnect(this);
}

void RtspQuestion::read()
{
    const QByteArray start = m_socket->peek(rtsp.size());
    if (start == rtsp || !rtsp.startsWith(start)) {
        finish(start == rtsp);
    }
}

/** Reports from the event loop, as Qt may be inside a signal of the socket. */
void RtspQuestion::finish(bool isThere)
{
    m_timer.stop();
    m_socket->disconnect(this);
    m_socket->abort();
    QMetaObject::invokeMethod(
        this, [this, isThere] { Q_EMIT answered(isThere); }, Qt::QueuedConnection);
}
