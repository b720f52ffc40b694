#pragma once

#include "desk/LinkSwitch.h"
#include "embedded/ClientOptions.h"

#include <QObject>

/** Which server the desk is connected with, and the state of that connection. Used on the window's thread. */
class DeskConnection : public QObject
{
    Q_OBJECT
    /** How the connection is. */
    Q_PROPERTY(State state READ state NOTIFY changed)
    /** Whether commands can be sent. */
    Q_PROPERTY(bool online READ isOnline NOTIFY changed)
    /** Whether the server is the one inside this program. */
    Q_PROPERTY(bool local READ isLocal NOTIFY changed)
    /** The server in words. */
    Q_PROPERTY(QString server READ server NOTIFY changed)
    /** The state in words. */
    Q_PROPERTY(QString stateText READ stateText NOTIFY changed)
    /** Why there is no connection, as the other side or the system reports it. */
    Q_PROPERTY(QString reason READ reason NOTIFY changed)
    /** How much of a large message is on its way, 0 to 1; negative when nothing is known of it. */
    Q_PROPERTY(qreal sendProgress READ sendProgress NOTIFY sendProgressChanged)
    /** The address of the server; empty for the one inside this program. */
    Q_PROPERTY(QString url READ url NOTIFY changed)
    /** The user name of the last sign-in; empty for a token. */
    Q_PROPERTY(QString user READ user NOTIFY changed)
    /** The fingerprint of the server's certificate, hexadecimal digits; empty when none was given. */
    Q_PROPERTY(QString fingerprint READ fingerprint NOTIFY changed)

public:
    /** How the connection is. */
    enum State
    {
        Connecting,   ///< For the first time with this server.
        Online,       ///< Signed in.
        Reconnecting, ///< Lost, or never made; tried again and again.
        Refused,      ///< For good: the sign-in is wrong.
        Failed,       ///< For good: the server inside this program cannot start.
    };
    Q_ENUM(State)

    /** @param options of the program: the first server, and how servers are reached */
    explicit DeskConnection(ClientOptions options);

    /** Returns the link, which stays the same when the server changes. */
    LinkSwitch& link() { return m_link; }

    /** Returns the property state. */
    State state() const { return m_state; }
    /** Returns the property online. */
    bool isOnline() const { return m_state == Online; }
    /** Returns the property local. */
    bool isLocal() const { return m_options.serverUrl.isEmpty(); }
    /** Returns the property server. */
    QString server() const;
    /** Returns the property stateText. */
    QString stateText() const;
    /** Returns the property reason. */
    QString reason() const { return m_reason; }
    /** Returns the property sendProgress. */
    qreal sendProgress() const { return m_sendProgress; }
    /** Returns the property url. */
    QString url() const { return m_options.serverUrl; }
    /** Returns the property user. */
    QString user() const { return m_options.user; }
    /** Returns the property fingerprint. */
    QString fingerprint() const { return m_options.fingerprint; }

    /** Connects with the server of the options. */
    void start();

    /** Uses the server inside this program. */
    Q_INVOKABLE void useLocal();

    /**
     * Uses a server elsewhere.
     *
     * @param user        empty: the secret is a token
     * @param fingerprint empty: the certificate must be one that the system trusts
     * @return false, and nothing is changed, when checkUrl or checkFingerprint finds something wrong
     */
    Q_INVOKABLE bool useRemote(const QString& url, const QString& user, const QString& secret,
                               const QString& fingerprint);

    /** Returns what is wrong with the address of a server, for people; empty when nothing is. */
    Q_INVOKABLE QString checkUrl(const QString& url) const;

    /** Returns what is wrong with a fingerprint, for people; empty when nothing is, and for an empty one. */
    Q_INVOKABLE QString checkFingerprint(const QString& fingerprint) const;

    /** Tries again, with the same server. */
    Q_INVOKABLE void retry() { start(); }

Q_SIGNALS:
    /** Emitted when a property but sendProgress has changed. */
    void changed();
    /** Emitted when sendProgress has changed. */
    void sendProgressChanged();
    /** Emitted before the connection is made anew: talks are to be ended now. */
    void aboutToChange();
    /** Emitted after aboutToChange, when another server follows: ids mean other things there. */
    void serverChanged();

private:
    void change();
    void open();
    void setState(State state, const QString& reason = QString());

    ClientOptions m_options;
    LinkSwitch m_link;
    State m_state = Connecting;
    QString m_reason;
    bool m_wasOnline = false; ///< Since the connection was asked for.
    qreal m_sendProgress = -1;
};
