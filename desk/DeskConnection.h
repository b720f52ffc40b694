#pragma once

#include "desk/LinkSwitch.h"
#include "embedded/ClientOptions.h"

#include <QObject>

/** Which server the desk is connected with, and how that stands; for the connection page and the banners. */
class DeskConnection : public QObject
{
    Q_OBJECT
    Q_PROPERTY(State state READ state NOTIFY changed)
    /** Whether commands can be sent. */
    Q_PROPERTY(bool online READ isOnline NOTIFY changed)
    Q_PROPERTY(bool local READ isLocal NOTIFY changed)
    /** The server in words. */
    Q_PROPERTY(QString server READ server NOTIFY changed)
    /** The state in words. */
    Q_PROPERTY(QString stateText READ stateText NOTIFY changed)
    /** Why there is no connection, as the other side or the system told it. */
    Q_PROPERTY(QString reason READ reason NOTIFY changed)
    /** How much of a large message is on its way, 0 to 1; negative when nothing is known of it. */
    Q_PROPERTY(qreal sendProgress READ sendProgress NOTIFY sendProgressChanged)
    Q_PROPERTY(QString url READ url NOTIFY changed)
    Q_PROPERTY(QString user READ user NOTIFY changed)
    Q_PROPERTY(QString fingerprint READ fingerprint NOTIFY changed)

public:
    enum State
    {
        Connecting,
        Online,
        Reconnecting,
        Refused, ///< For good: the sign-in is wrong.
        Failed,  ///< For good: the server inside this program cannot start.
    };
    Q_ENUM(State)

    explicit DeskConnection(ClientOptions options);

    LinkSwitch& link() { return m_link; }

    State state() const { return m_state; }
    bool isOnline() const { return m_state == Online; }
    bool isLocal() const { return m_options.serverUrl.isEmpty(); }
    QString server() const;
    QString stateText() const;
    QString reason() const { return m_reason; }
    qreal sendProgress() const { return m_sendProgress; }
    QString url() const { return m_options.serverUrl; }
    QString user() const { return m_options.user; }
    QString fingerprint() const { return m_options.fingerprint; }

    /** Connects with the server of the options. */
    void start();

    /** Uses the server inside this program. */
    Q_INVOKABLE void useLocal();

    /** Uses a server elsewhere. @param user empty: the secret is a token */
    Q_INVOKABLE void useRemote(const QString& url, const QString& user, const QString& secret,
                               const QString& fingerprint);

    /** What is wrong with an address; empty when nothing is. */
    Q_INVOKABLE QString checkUrl(const QString& url) const;

    /** Tries again, with the same server. */
    Q_INVOKABLE void retry() { start(); }

Q_SIGNALS:
    void changed();
    void sendProgressChanged();
    /** Before the connection is made anew: talks are to be ended now. */
    void aboutToChange();
    /** After aboutToChange, when another server follows: what is known by number means other things there. */
    void serverChanged();

private:
    void change();
    void open();
    void setState(State state, const QString& reason = QString());

    ClientOptions m_options;
    LinkSwitch m_link;
    State m_state = Connecting;
    QString m_reason;
    qreal m_sendProgress = -1;
};
