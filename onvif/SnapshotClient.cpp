#include "onvif/SnapshotClient.h"

#include "onvif/HttpDigest.h"
#include "onvif/UsernameToken.h"

#include <utility>

namespace {

const QByteArray jpegStart = QByteArrayLiteral("\xff\xd8\xff"); // ISO/IEC 10918-1, annex B: SOI and a marker

} // namespace

SnapshotClient::SnapshotClient(OnvifLogin login, int timeout, int maxBytes, QObject* parent)
    : QObject(parent), m_exchange(maxBytes), m_login(std::move(login))
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(timeout);
    connect(&m_timer, &QTimer::timeout, this, [this] { finish({OnvifError::TimedOut, {}, {}}); });
}

SnapshotClient::~SnapshotClient()
{
    m_exchange.cancel();
}

void SnapshotClient::get(const QUrl& url, Callback callback)
{
    m_callback = std::move(callback);
    m_url = url;
    m_isRetry = false;
    m_timer.start();
    m_exchange.get(url, {}, [this](OnvifError error, const HttpReply& reply) { evaluate(error, reply); });
}

/** Asks again when the camera wants a login that can be given. */
bool SnapshotClient::answerChallenge(const HttpReply& reply)
{
    if (m_isRetry || m_login.user.isEmpty()) {
        return false;
    }
    const QByteArray challenges = reply.header("www-authenticate");
    QByteArray authorization;
    if (auto digest = HttpDigest::fromChallenges(challenges)) {
        authorization =
            digest->authorization("GET", m_url.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority),
                                  m_login.user, m_login.password, UsernameToken::makeNonce().toHex());
    } else if (HttpDigest::isBasicOnly(challenges)) {
        authorization =
            "Basic " + QStringLiteral("%1:%2").arg(m_login.user, m_login.password).toUtf8().toBase64();
    }
    if (authorization.isEmpty()) {
        return false;
    }
    m_isRetry = true;
    m_exchange.get(m_url, {{"Authorization", authorization}},
                   [this](OnvifError error, const HttpReply& answer) { evaluate(error, answer); });
    return true;
}

void SnapshotClient::evaluate(OnvifError error, const HttpReply& reply)
{
    constexpr int ok = 200;
    constexpr int unauthorized = 401;
    constexpr int forbidden = 403;
    const int status = reply.status();
    if (error != OnvifError::None) {
        finish({error == OnvifError::NotOnvif ? OnvifError::NotPicture : error, {}, {}});
    } else if (status == unauthorized && answerChallenge(reply)) {
        return;
    } else if (status == unauthorized || status == forbidden) {
        finish({m_login.user.isEmpty() ? OnvifError::LoginNeeded : OnvifError::LoginRefused, {}, {}});
    } else if (status != ok) {
        finish({OnvifError::Refused, QStringLiteral("HTTP %1").arg(status), {}});
    } else if (!reply.body().startsWith(jpegStart)) {
        finish({OnvifError::NotPicture, {}, {}});
    } else {
        finish({OnvifError::None, {}, reply.body()});
    }
}

/** Reports from the event loop: the callback may delete this object, and Qt may be inside a signal of the
 * socket. */
void SnapshotClient::finish(const Snapshot& snapshot)
{
    m_timer.stop();
    m_exchange.cancel();
    QMetaObject::invokeMethod(
        this, [callback = std::exchange(m_callback, nullptr), snapshot] { callback(snapshot); },
        Qt::QueuedConnection);
}
