#pragma once

#include "onvif/HttpDigest.h"
#include "onvif/HttpExchange.h"
#include "onvif/OnvifError.h"
#include "onvif/SoapMessage.h"

#include <QObject>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <optional>

/** The login at a camera. An empty user means none. */
struct OnvifLogin
{
    QString user;     ///< Empty: none.
    QString password; ///< Never sent as it is, but by SnapshotClient to a camera that takes nothing else.
};

/** How a question to a camera ended. */
struct SoapAnswer
{
    OnvifError error = OnvifError::None; ///< None for a result.
    QString detail;                      ///< Further words for people; may be empty.
    XmlElement body;                     ///< What is in the body; only without an error.
};

/**
 * Asks one camera, one question at a time, by SOAP over HTTP.
 *
 *   ask ─▶ POST with UsernameToken ─▶ 200 and a message ─▶ answer
 *            ▲                    └─▶ 401 and a Digest challenge ─┐
 *            └───── once more, with Authorization ◀───────────────┘
 *
 * Takes replies up to SoapMessage::maxBytes. Used on the thread that made it.
 */
class SoapClient : public QObject
{
public:
    /** Takes the answer; may delete the client. */
    using Callback = std::function<void(const SoapAnswer& answer)>;

    /** @param timeout of each question from its start to its whole answer, in ms */
    SoapClient(OnvifLogin login, int timeout, QObject* parent = nullptr);
    ~SoapClient() override;

    /** Sets whether https takes any certificate; by default those that this system trusts. */
    void setAnyCertificate(bool any) { m_exchange.setAnyCertificate(any); }

    /** Sets how far the camera's clock is ahead of this machine's, in ms; logins are in the camera's time. */
    void setClockOffset(qint64 offset) { m_clockOffset = offset; }

    /**
     * Asks. The callback follows once, later; not after cancel.
     *
     * @param url       http or https, without a login
     * @param action    the request's action, a URI
     * @param body      XML with the namespaces of its own
     * @param withLogin false for questions that a camera answers to anyone
     */
    void ask(const QUrl& url, const QString& action, const QString& body, bool withLogin, Callback callback);

    /** Gives up the question that is open. */
    void cancel();

private:
    void send();
    void evaluate(OnvifError error, const HttpReply& reply);
    bool answerChallenge(const HttpReply& reply);
    void finish(OnvifError error, const QString& detail = QString(), XmlElement body = XmlElement());
    HttpExchange::Headers headers();

    HttpExchange m_exchange{SoapMessage::maxBytes};
    OnvifLogin m_login;
    qint64 m_clockOffset = 0;
    std::optional<HttpDigest> m_digest; ///< Of the last challenge; serves the next questions, too.
    QTimer m_timer;

    // The open question.
    quint64 m_question = 0; ///< Its number.
    Callback m_callback;
    QUrl m_url;
    QString m_action;
    QString m_body;
    bool m_withLogin = false;
    bool m_isRetry = false; ///< Whether it was sent again after a challenge.
};
