#pragma once

#include "onvif/HttpReply.h"
#include "onvif/OnvifError.h"

#include <QList>
#include <QObject>
#include <QPair>
#include <QUrl>

#include <functional>

class QSslSocket;

/**
 * One request over a connection of its own, and its reply. Not by QNetworkAccessManager: that holds headers
 * of any size, logs in by any way that a server asks for, with Basic in the clear, and keeps a thread that
 * looks at the network interfaces each ten seconds.
 *
 * Uses no proxy, follows no redirect. Has no time limit: whoever uses it has one. Used on the thread that
 * made it.
 */
class HttpExchange : public QObject
{
public:
    /** Names and values. */
    using Headers = QList<QPair<QByteArray, QByteArray>>;
    /** Takes the end: None with the whole reply, or why there is none. Must not delete the exchange. */
    using Callback = std::function<void(OnvifError error, const HttpReply& reply)>;

    /** @param maxBodyBytes of a reply */
    explicit HttpExchange(int maxBodyBytes, QObject* parent = nullptr);
    ~HttpExchange() override;

    /** Sets whether https takes any certificate, as cameras sign their own; by default those that this system
     * trusts. */
    void setAnyCertificate(bool any) { m_anyCertificate = any; }

    /** Sends a POST; the callback follows, once, unless another request or cancel comes first. */
    void post(const QUrl& url, const Headers& headers, const QByteArray& body, Callback callback);

    /** Sends a GET; the callback follows as for post. */
    void get(const QUrl& url, const Headers& headers, Callback callback);

    /** Gives up the request that is open. */
    void cancel();

private:
    void send(const QByteArray& method, const QUrl& url, const Headers& headers, const QByteArray& body,
              Callback callback);
    void read();
    void fail();
    void finish(OnvifError error);

    const int m_maxBody;
    bool m_anyCertificate = false;
    QSslSocket* m_socket = nullptr; ///< Null without an open request.
    Callback m_callback;
    HttpReply m_reply;
};
