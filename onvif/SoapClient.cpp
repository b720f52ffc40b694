#include "onvif/SoapClient.h"

#include "onvif/UsernameToken.h"

#include <algorithm>
#include <utility>

namespace {

/** Whether a fault has one of these codes. */
bool hasCode(const SoapMessage::Fault& fault, const QStringList& codes)
{
    return std::any_of(codes.begin(), codes.end(),
                       [&fault](const QString& code) { return fault.codes.contains(code); });
}

OnvifError errorOf(const SoapMessage::Fault& fault)
{
    static const QStringList login{QStringLiteral("NotAuthorized"), QStringLiteral("FailedAuthentication"),
                                   QStringLiteral("InvalidSecurity"), QStringLiteral("InvalidSecurityToken"),
                                   QStringLiteral("OperationProhibited")};
    static const QStringList unknown{QStringLiteral("ActionNotSupported"),
                                     QStringLiteral("OptionalActionNotImplemented"),
                                     QStringLiteral("NoSuchService")};
    static const QStringList absent{QStringLiteral("AudioNotSupported"),
                                    QStringLiteral("AudioOutputNotSupported")};
    if (hasCode(fault, login)) {
        return OnvifError::LoginRefused;
    }
    if (hasCode(fault, absent)) {
        return OnvifError::Absent;
    }
    return hasCode(fault, unknown) ? OnvifError::NotSupported : OnvifError::Refused;
}

} // namespace

SoapClient::SoapClient(OnvifLogin login, int timeout, QObject* parent)
    : QObject(parent), m_login(std::move(login))
{
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
    m_exchange.cancel();
}

HttpExchange::Headers SoapClient::headers()
{
    HttpExchange::Headers made{
        {"Content-Type", "application/soap+xml; charset=utf-8; action=\"" + m_action.toUtf8() + '"'}};
    if (m_withLogin && m_digest) {
        const QByteArray uri = m_url.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority);
        const QByteArray authorization = m_digest->authorization("POST", uri, m_login.user, m_login.password,
                                                                 UsernameToken::makeNonce().toHex());
        if (!authorization.isEmpty()) {
            made.append({"Authorization", authorization});
        }
    }
    return made;
}

void SoapClient::send()
{
    QString header;
    if (m_withLogin) {
        header = UsernameToken::header(m_login.user, m_login.password, UsernameToken::makeNonce(),
                                       QDateTime::currentDateTimeUtc().addMSecs(m_clockOffset));
    }
    m_exchange.post(m_url, headers(), SoapMessage::write(header, m_body),
                    [this](OnvifError error, const HttpReply& reply) { evaluate(error, reply); });
}

/** Sends the question again when the camera asks for a login that can be given. */
bool SoapClient::answerChallenge(const HttpReply& reply)
{
    if (!m_withLogin || m_isRetry) {
        return false;
    }
    m_digest = HttpDigest::fromChallenges(reply.header("www-authenticate"));
    if (!m_digest) {
        return false;
    }
    m_isRetry = true;
    send();
    return true;
}

void SoapClient::evaluate(OnvifError error, const HttpReply& reply)
{
    constexpr int unauthorized = 401;
    constexpr int forbidden = 403;
    if (error != OnvifError::None) {
        finish(error);
        return;
    }
    const int status = reply.status();
    const OnvifError loginError = m_withLogin ? OnvifError::LoginRefused : OnvifError::LoginNeeded;
    auto message = SoapMessage::read(reply.body(), SoapMessage::maxBytes);
    if (status == unauthorized && answerChallenge(reply)) {
        return;
    }
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

/** Reports from the event loop: the callback may delete this object, and Qt may be inside a signal of the
 * socket.
 */
void SoapClient::finish(OnvifError error, const QString& detail, XmlElement body)
{
    m_timer.stop();
    m_exchange.cancel();
    const auto report = [this, question = m_question, answer = SoapAnswer{error, detail, std::move(body)}] {
        if (question == m_question) {
            std::exchange(m_callback, nullptr)(answer);
        }
    };
    QMetaObject::invokeMethod(this, report, Qt::QueuedConnection);
}
