#pragma once

#include "client/ServerLink.h"
#include "client/SocketLine.h"

#include <QTimer>
#include <QUrl>

#include <optional>

/** Address and login of a server in another process. */
struct SocketLinkConfig
{
    QUrl url;            ///< ws://host:port or wss://host:port
    QString user;        ///< Empty for a token.
    QString secret;      ///< Password or token.
    QString fingerprint; ///< SHA-256 of the certificate, hexadecimal, always compared; empty for one that the
                         ///< system trusts.
};

/**
 * A server in another process, by WebSocket. After a loss the connection is made again by itself, and
 * connected is emitted each time it comes up. What was asked before a loss is not answered any more.
 */
class SocketLink : public ServerLink
{
    Q_OBJECT

public:
    /** Makes a link without a connection; open connects. */
    explicit SocketLink(SocketLinkConfig config);
    /**
     * Converts a fingerprint of a certificate as people write it to the digits of the config.
     *
     * @param text in either case, also with blanks or colons between the digits
     * @return empty for anything but the 64 hexadecimal digits of a SHA-256
     */
    static std::optional<QString> fingerprintDigits(QString text);

    void open() override;
    bool send(const QString& command, const QVariant& payload, quint64 request) override;

Q_SIGNALS:
    /**
     * Emitted when the connection failed or was lost.
     *
     * @param reason says why
     * @param final  true when the server refused the login: the link does not connect again
     */
    void lost(const QString& reason, bool final);

private:
    quint64 requestOf(quint32 id) const;
    void receive(const QByteArray& bytes);
    void closeForBreach(const QString& reason);
    void goDown();
    void end(const QString& reason);

    SocketLinkConfig m_config;
    SocketLine m_line;
    QTimer m_retryTimer;
    int m_retryDelay;          ///< ms
    bool m_ready = false;      ///< Logged in.
    bool m_final = false;      ///< Not to be tried again.
    QString m_refusal;         ///< Why, in the words of the server.
    quint64 m_lastRequest = 0; ///< The number of the last command that was sent.
    qint64 m_queued = 0;       ///< Bytes given to the line since it had nothing to send.
};
