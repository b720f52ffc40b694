#pragma once

#include "onvif/HttpExchange.h"
#include "onvif/OnvifError.h"
#include "onvif/SoapClient.h"

#include <QObject>
#include <QTimer>
#include <QUrl>

#include <functional>

/** How a question for a still ended. */
struct Snapshot
{
    OnvifError error = OnvifError::None; ///< None for a picture.
    QString detail;                      ///< Further words for people; may be empty.
    QByteArray jpeg;                     ///< Only without an error; no more of it is known than its start.
};

/**
 * Fetches a still from the address that a camera names for it (ONVIF Media Service, GetSnapshotUri), one at a
 * time. Logs in by HTTP Digest (RFC 7616), or by Basic (RFC 7617) where the camera offers nothing else, as
 * talks do; follows no redirect. Used on the thread that made it.
 */
class SnapshotClient : public QObject
{
public:
    /** Takes the answer; may delete the client. */
    using Callback = std::function<void(const Snapshot& snapshot)>;

    /** @param timeout of a question from its start to its whole answer, ms @param maxBytes of a picture */
    SnapshotClient(OnvifLogin login, int timeout, int maxBytes, QObject* parent = nullptr);
    ~SnapshotClient() override;

    /** Sets whether https takes any certificate; by default those that this system trusts. */
    void setAnyCertificate(bool any) { m_exchange.setAnyCertificate(any); }

    /** Asks. The callback follows once, later. @param url of the camera's own host, see CameraAddress */
    void get(const QUrl& url, Callback callback);

private:
    void evaluate(OnvifError error, const HttpReply& reply);
    bool answerChallenge(const HttpReply& reply);
    void finish(const Snapshot& snapshot);

    HttpExchange m_exchange;
    OnvifLogin m_login;
    QTimer m_timer;
    Callback m_callback;
    QUrl m_url;
    bool m_isRetry = false; ///< Whether it was sent again after a challenge.
};
