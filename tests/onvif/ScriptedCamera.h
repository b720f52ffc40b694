#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QSslCertificate>
#include <QSslKey>
#include <QStringList>
#include <QTcpServer>
#include <QUrl>

#include <functional>

class QTcpSocket;

/**
 * A camera on the loopback that answers ONVIF's requests as its script says. It checks logins with code of
 * its own, and keeps what it was asked.
 */
class ScriptedCamera : public QObject
{
    Q_OBJECT

public:
    /** What it does in place of an answer. */
    enum Trick
    {
        Answer,        ///< Nothing of the kind.
        Silence,       ///< It takes the request and says nothing.
        Close,         ///< It closes the connection.
        CloseInside,   ///< It closes it inside the body.
        Drip,          ///< A byte of the body each 50 ms, without an end.
        EndlessBody,   ///< It sends as much as is taken.
        EndlessHeader, ///< The same, and never gets to the body.
    };

    /** A request as it came. */
    struct Request
    {
        QString name;
        QString space; ///< Its namespace.
        QString path;
        bool hasToken = false;  ///< Whether it had a UsernameToken.
        bool hasDigest = false; ///< Whether it had an HTTP Digest login.
        QByteArray text;        ///< All of it, header and body.
    };

    ScriptedCamera();
    ~ScriptedCamera() override;

    /** Makes it speak TLS with this certificate. */
    void setCertificate(const QSslCertificate& certificate, const QSslKey& key);

    /** Returns the address of its device service. */
    QUrl url() const;

    /** Returns the names of the requests in their order. */
    QStringList names() const;

    /** Makes it answer a request with these bytes, which are all of an HTTP reply. */
    void setReply(const QString& request, const QByteArray& bytes) { m_replies[request] = bytes; }
    /** Makes it answer with this body in an envelope. @param request with "NAME TOKEN", for that profile */
    void setBody(const QString& request, const QByteArray& body);
    /** Makes it answer with a fault. */
    void setFault(const QString& request, const QByteArray& subcode, int status = 500);
    /** The name under which a request for the still is kept and answered. */
    static QString still() { return QStringLiteral("still"); }
    /** Returns an HTTP reply with a body. */
    static QByteArray http(int status, const QByteArray& body, const QByteArray& header = QByteArray());
    /** Returns an envelope with a body in it. */
    static QByteArray envelope(const QByteArray& body);

    // The script.
    QString user; ///< Empty: no login is asked for.
    QString password;
    bool wantsToken = true;     ///< A UsernameToken in its own time.
    QByteArray digestAlgorithm; ///< "MD5", "SHA-256": HTTP Digest; empty for none.
    bool wantsBasic = false;    ///< HTTP Basic for stills, and nothing else.
    bool staleNonces = false;   ///< Whether each nonce serves once.
    qint64 clockOffset = 0;     ///< How far its clock is ahead, ms.
    bool hasServices = true;    ///< Else only GetCapabilities.
    bool hasMedia2 = true;
    bool hasMedia = true;
    bool hasMicrophone = true;
    bool hasLoudspeaker = true;
    bool usesLoudspeaker = true;                ///< In a profile.
    QString host = QStringLiteral("127.0.0.1"); ///< That it reports in addresses.
    QHash<QString, Trick> tricks;               ///< By request.

    QByteArray picture = "\xff\xd8\xff\xe0 a still"; ///< What it sees.

    // What came.
    QList<Request> requests;
    int connections = 0;

private:
    /** Takes connections, with TLS when it has a certificate. */
    class Server : public QTcpServer
    {
    public:
        QSslCertificate certificate;
        QSslKey key;

    protected:
        void incomingConnection(qintptr descriptor) override;
    };

    void take(QTcpSocket* socket);
    void answer(QTcpSocket* socket, const QByteArray& head, const QByteArray& body);
    void play(QTcpSocket* socket, Trick trick);
    bool hasRightToken(const QByteArray& body) const;
    bool hasRightDigest(const QByteArray& head) const;
    void answerStill(QTcpSocket* socket, const QByteArray& head);
    QByteArray bodyOf(const QString& name, bool media2) const;
    QByteArray profiles(bool media2) const;

    Server m_server;
    QHash<QTcpSocket*, QByteArray> m_received;
    QHash<QString, QByteArray> m_replies;
    QByteArray m_nonce = "nonce0";
    int m_nonces = 0;
};
