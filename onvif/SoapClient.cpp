#include "onvif/SoapClient.h"

#include "onvif/UsernameToken.h"

#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr int readBuffer = 64 << 10; // bytes that Qt reads ahead

/** Whether a fault has one of these codes. */
template<std::size_t N>
bool hasCode(const SoapMessage::Fault& fault, const std::array<QLatin1String, N>& codes)
{
    return std::any_of(codes.begin(), codes.end(),
                       [&fault](QLatin1String code) { return fault.codes.contains(code); });
}

OnvifError errorOf(const SoapMessage::Fault& fault)
{
    static constexpr std::array<QLatin1String, 5> login{
        QLatin1String("NotAuthorized"), QLatin1String("FailedAuthentication"),
        QLatin1String("InvalidSecurity"), QLatin1String("InvalidSecurityToken"),
        QLatin1String("OperationProhibited")};
    static constexpr std::array<QLatin1String, 3> unknown{QLatin1String("ActionNotSupported"),
                                                          QLatin1String("OptionalActionNotImplemented"),
                                                          QLatin1String("NoSuchService")};
    if (hasCode(fault, login)) {
        return OnvifError::LoginRefused;
    }
    return hasCode(fault, unknown) ? OnvifError::NotSupported : OnvifError::Refused;
}

/** The error of a reply without an HTTP status, or one that broke off. */
OnvifError errorOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::HostNotFoundError:
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::UnknownNetworkError:
        return OnvifError::NotReachable;
    case QNetworkReply::TimeoutError:
        return OnvifError::TimedOut;
    case QNetworkReply::SslHandshakeFailedError:
        return OnvifError::Untrusted;
    default:
        return OnvifError::NotOnvif;
    }
}

} // namespace

SoapClient::SoapClient(OnvifLogin login, int timeout, QObject* parent)
    : QObject(parent), m_login(std::move(login))
{
    m_network.setProxy(QNetworkProxy::NoProxy); // cameras are in the local network
    m_timer.setSingleShot(true);
    m_timer.setInterval(timeout);
    connect(&m_timer, &QTimer::timeout, this, [this] { finish(OnvifError::TimedOut); });
}

SoapClient::~SoapClient()
{
    cancel();
}

void SoapClient::ask(const QUrl& url, const QString& action, const QString& body, bool withLogin,
                     Callback callback)
{
    cancel();
    m_callback = std::move(callback);
    m_url = url;
    m_action = action;
    m_body = body;
    m_withLogin = withLogin && !m_login.user.isEmpty();
    m_isRetry = false;
    m_timer.start();
    send();
}

void SoapClient::cancel()
{
    ++m_question;
    m_timer.stop();
    m_callback = nullptr;
    dropReply();
}

void SoapClient::dropReply()
{
    if (m_reply != nullptr) {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
        m_reply = nullptr;
    }
    m_received.clear();
}

QNetworkRequest SoapClient::request()
{
    QNetworkRequest request(m_url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    // Keeps Qt from logging in by any way that a camera asks for.
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/soap+xml; charset=utf-8; action=\"%1\"").arg(m_action));
    request.setRawHeader("Accept-Encoding", "identity"); // a few bytes cannot become gigabytes
    request.setRawHeader("User-Agent", "VoiceDesk");
    if (m_withLogin && m_digest) {
        const QByteArray uri = m_url.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority);
        const QByteArray authorization = m_digest->authorization("POST", uri, m_login.user, m_login.password,
                                                                 UsernameToken::makeNonce().toHex());
        if (!authorization.isEmpty()) {
            request.setRawHeader("Authorization", authorization);
        }
    }
    return request;
}

void SoapClient::send()
{
    QString header;
    if (m_withLogin) {
        header = UsernameToken::header(m_login.user, m_login.password, UsernameToken::makeNonce(),
                                       QDateTime::currentDateTimeUtc().addMSecs(m_clockOffset));
    }
    m_reply = m_network.post(request(), SoapMessage::write(header, m_body));
    m_reply->setReadBufferSize(readBuffer);
    connect(m_reply, &QNetworkReply::readyRead, this, &SoapClient::read);
    connect(m_reply, &QNetworkReply::finished, this, [this] {
        read();
        if (m_reply != nullptr) {
            evaluate();
        }
    });
}

void SoapClient::read()
{
    m_received += m_reply->readAll();
    if (m_received.size() > SoapMessage::maxBytes) {
        finish(OnvifError::TooLarge);
    }
}

/** Sends the question again when the camera asks for a login that can be given. */
bool SoapClient::answerChallenge()
{
    if (!m_withLogin || m_isRetry) {
        return false;
    }
    m_digest = HttpDigest::fromChallenges(m_reply->rawHeader("WWW-Authenticate"));
    if (!m_digest) {
        return false;
    }
    m_isRetry = true;
    dropReply();
    send();
    return true;
}

void SoapClient::evaluate()
{
    constexpr int unauthorized = 401;
    constexpr int forbidden = 403;
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QNetworkReply::NetworkError error = m_reply->error();
    const OnvifError loginError = m_withLogin ? OnvifError::LoginRefused : OnvifError::LoginNeeded;
    if (status == 0 || (status / 100 == 2 && error != QNetworkReply::NoError)) {
        const bool brokeOff = error == QNetworkReply::RemoteHostClosedError;
        finish(errorOf(error), brokeOff ? QStringLiteral("it closed the connection") : QString());
        return;
    }
    if (status == unauthorized && answerChallenge()) {
        return;
    }
    auto message = SoapMessage::read(m_received, SoapMessage::maxBytes);
    if (message && message->fault) {
        const OnvifError fault = errorOf(*message->fault);
        finish(fault == OnvifError::LoginRefused ? loginError : fault, message->fault->reason);
    } else if (status == unauthorized || status == forbidden) {
        finish(loginError);
    } else if (message && status / 100 == 2) {
        finish(OnvifError::None, QString(), std::move(message->body));
    } else {
        finish(OnvifError::NotOnvif, QStringLiteral("HTTP %1").arg(status));
    }
}

/** Reports from the event loop: the callback may delete this object, and Qt is inside a signal of the reply.
 */
void SoapClient::finish(OnvifError error, const QString& detail, XmlElement body)
{
    m_timer.stop();
    dropReply();
    const auto report = [this, question = m_question, answer = SoapAnswer{error, detail, std::move(body)}] {
        if (question == m_question) {
            std::exchange(m_callback, nullptr)(answer);
        }
    };
    QMetaObject::invokeMethod(this, report, Qt::QueuedConnection);
}
