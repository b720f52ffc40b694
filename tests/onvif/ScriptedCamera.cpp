#include "tests/onvif/ScriptedCamera.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QRegularExpression>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>
#include <QXmlStreamReader>

namespace {

/** The text of an element by its local name; the first one. */
QByteArray textOf(const QByteArray& xml, const char* name)
{
    const QRegularExpression pattern(
        QStringLiteral("<(?:\\w+:)?%1(?: [^>]*)?>([^<]*)<").arg(QLatin1String(name)));
    return pattern.match(QString::fromUtf8(xml)).captured(1).toUtf8();
}

QByteArray md5OrSha(const QByteArray& algorithm, const QByteArray& text)
{
    return QCryptographicHash::hash(text,
                                    algorithm == "MD5" ? QCryptographicHash::Md5 : QCryptographicHash::Sha256)
        .toHex();
}

/** A parameter of the header Authorization. */
QByteArray parameter(const QByteArray& head, const char* name)
{
    const QRegularExpression pattern(
        QStringLiteral("Authorization: Digest .*[ ,]%1=\"?([^\",\r]*)").arg(QLatin1String(name)));
    return pattern.match(QString::fromUtf8(head)).captured(1).toUtf8();
}

constexpr qint64 clockTolerance = 5000; // ms, of a login's time
constexpr int piece = 65536;            // bytes of an endless answer

} // namespace

ScriptedCamera::ScriptedCamera()
{
    m_server.listen(QHostAddress::LocalHost);
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = m_server.nextPendingConnection()) {
            ++connections;
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { take(socket); });
            connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
                m_received.remove(socket);
                socket->deleteLater();
            });
        }
    });
}

ScriptedCamera::~ScriptedCamera()
{
    const auto sockets = m_server.findChildren<QTcpSocket*>();
    for (QTcpSocket* socket : sockets) {
        socket->disconnect(this);
    }
}

void ScriptedCamera::Server::incomingConnection(qintptr descriptor)
{
    if (key.isNull()) {
        QTcpServer::incomingConnection(descriptor);
        return;
    }
    auto* socket = new QSslSocket(this);
    socket->setSocketDescriptor(descriptor);
    socket->setLocalCertificate(certificate);
    socket->setPrivateKey(key);
    socket->startServerEncryption();
    addPendingConnection(socket);
}

void ScriptedCamera::setCertificate(const QSslCertificate& certificate, const QSslKey& key)
{
    m_server.certificate = certificate;
    m_server.key = key;
}

QUrl ScriptedCamera::url() const
{
    const auto scheme = m_server.key.isNull() ? QStringLiteral("http") : QStringLiteral("https");
    return QUrl(
        QStringLiteral("%1://127.0.0.1:%2/onvif/device_service").arg(scheme).arg(m_server.serverPort()));
}

QStringList ScriptedCamera::names() const
{
    QStringList all;
    for (const Request& request : requests) {
        all.append(request.name);
    }
    return all;
}

QByteArray ScriptedCamera::http(int status, const QByteArray& body, const QByteArray& header)
{
    return "HTTP/1.1 " + QByteArray::number(status) +
           " Whatever\r\nContent-Type: application/soap+xml; charset=utf-8\r\n" + header +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

QByteArray ScriptedCamera::envelope(const QByteArray& body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<env:Envelope "
           "xmlns:env=\"http://www.w3.org/2003/05/soap-envelope\""
           " xmlns:tds=\"http://www.onvif.org/ver10/device/wsdl\" "
           "xmlns:trt=\"http://www.onvif.org/ver10/media/wsdl\""
           " xmlns:tr2=\"http://www.onvif.org/ver20/media/wsdl\" "
           "xmlns:tt=\"http://www.onvif.org/ver10/schema\""
           " xmlns:ter=\"http://www.onvif.org/ver10/error\"><env:Header/><env:Body>" +
           body + "</env:Body></env:Envelope>\n";
}

void ScriptedCamera::setBody(const QString& request, const QByteArray& body)
{
    setReply(request, http(200, envelope(body)));
}

void ScriptedCamera::setFault(const QString& request, const QByteArray& subcode, int status)
{
    setReply(
        request,
        http(status,
             envelope("<env:Fault><env:Code><env:Value>env:Sender</env:Value><env:Subcode><env:Value>ter:" +
                      subcode +
                      "</env:Value></env:Subcode></env:Code><env:Reason><env:Text xml:lang=\"en\">" +
                      subcode + " it is</env:Text></env:Reason></env:Fault>")));
}

void ScriptedCamera::take(QTcpSocket* socket)
{
    m_received[socket] += socket->readAll();
    while (m_received.contains(socket)) { // not after an answer that closed it
        QByteArray& received = m_received[socket];
        const int end = received.indexOf("\r\n\r\n");
        const QByteArray head = received.left(end + 2);
        const int length = QRegularExpression(QStringLiteral("Content-Length: (\\d+)"))
                               .match(QString::fromLatin1(head))
                               .captured(1)
                               .toInt();
        if (end < 0 || received.size() < end + 4 + length) {
            return;
        }
        const QByteArray body = received.mid(end + 4, length);
        received.remove(0, end + 4 + length);
        answer(socket, head, body);
    }
}

void ScriptedCamera::answer(QTcpSocket* socket, const QByteArray& head, const QByteArray& body)
{
    Request request;
    QXmlStreamReader xml(body);
    bool inBody = false;
    while (!xml.atEnd() && request.name.isEmpty()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && inBody) {
            request.name = xml.name().toString();
            request.space = xml.namespaceUri().toString();
        }
        inBody = inBody || (xml.isStartElement() && xml.name() == QLatin1String("Body"));
    }
    if (head.startsWith("GET ")) {
        request.name = still();
    }
    request.path = QString::fromLatin1(head.split(' ').value(1));
    request.hasToken = body.contains("UsernameToken");
    request.hasDigest = head.contains("Authorization: Digest");
    request.text = head + body;
    requests.append(request);

    const Trick trick = tricks.value(request.name);
    if (trick != Answer) {
        play(socket, trick);
        return;
    }
    const bool isFree = request.name == QLatin1String("GetSystemDateAndTime") || user.isEmpty();
    if (!isFree && !digestAlgorithm.isEmpty() && !hasRightDigest(head)) {
        m_nonce = "nonce" + QByteArray::number(++m_nonces);
        socket->write(
            http(401, "<html/>",
                 "WWW-Authenticate: Basic realm=\"camera\"\r\nWWW-Authenticate: Digest realm=\"camera\", "
                 "qop=\"auth\", algorithm=" +
                     digestAlgorithm + ", nonce=\"" + m_nonce + "\"\r\n"));
        return;
    }
    if (staleNonces) {
        m_nonce = "used";
    }
    if (request.name == still()) {
        answerStill(socket, head);
        return;
    }
    if (!isFree && wantsToken && !hasRightToken(body)) {
        setFault(QStringLiteral("?"), "NotAuthorized", 400);
        socket->write(m_replies.value(QStringLiteral("?")));
        return;
    }
    const QString ofProfile = request.name + ' ' + QString::fromUtf8(textOf(body, "ProfileToken"));
    for (const QString& name : {ofProfile, request.name}) {
        if (m_replies.contains(name)) {
            socket->write(m_replies.value(name));
            return;
        }
    }
    const QByteArray made = bodyOf(request.name, request.space.contains(QLatin1String("ver20")));
    if (made.isNull()) {
        setFault(QStringLiteral("?"), "ActionNotSupported");
        socket->write(m_replies.value(QStringLiteral("?")));
        return;
    }
    const QByteArray name = request.name.toLatin1() + "Response";
    const QByteArray prefix = request.space.contains(QLatin1String("ver20"))   ? "tr2:"
                              : request.space.contains(QLatin1String("media")) ? "trt:"
                                                                               : "tds:";
    socket->write(http(200, envelope("<" + prefix + name + ">" + made + "</" + prefix + name + ">")));
}

void ScriptedCamera::answerStill(QTcpSocket* socket, const QByteArray& head)
{
    const QByteArray login = "Authorization: Basic " + (user + ':' + password).toUtf8().toBase64() + "\r\n";
    if (wantsBasic && !head.contains(login)) {
        socket->write(http(401, "<html/>", "WWW-Authenticate: Basic realm=\"camera\"\r\n"));
    } else {
        socket->write(m_replies.value(still(), http(200, picture)));
    }
}

void ScriptedCamera::play(QTcpSocket* socket, Trick trick)
{
    const QByteArray start = "HTTP/1.1 200 OK\r\nContent-Type: application/soap+xml\r\n";
    const auto pour = [socket](const QByteArray& bytes) {
        connect(socket, &QTcpSocket::bytesWritten, socket, [socket, bytes] {
            if (socket->bytesToWrite() < piece) {
                socket->write(bytes);
            }
        });
        socket->write(bytes);
    };
    switch (trick) {
    case Answer:
    case Silence:
        break;
    case Close:
        socket->close();
        break;
    case CloseInside:
        socket->write(start + "Content-Length: 10000\r\n\r\n" + envelope("<a/>"));
        socket->close();
        break;
    case Drip: {
        socket->write(start + "Content-Length: 100000\r\n\r\n");
        auto* timer = new QTimer(socket);
        connect(timer, &QTimer::timeout, socket, [socket] { socket->write(" "); });
        timer->start(50);
        break;
    }
    case EndlessBody:
        socket->write(start + "\r\n");
        pour(QByteArray(piece, ' '));
        break;
    case EndlessHeader:
        socket->write(start);
        pour(("X-Header: " + QByteArray(100, 'x') + "\r\n").repeated(piece / 112));
        break;
    }
}

bool ScriptedCamera::hasRightToken(const QByteArray& body) const
{
    const QByteArray created = textOf(body, "Created");
    const QByteArray nonce = QByteArray::fromBase64(textOf(body, "Nonce"));
    const QDateTime time = QDateTime::fromString(QString::fromLatin1(created), Qt::ISODateWithMs);
    const QDateTime now = QDateTime::currentDateTimeUtc().addMSecs(clockOffset);
    const QByteArray digest =
        QCryptographicHash::hash(nonce + created + password.toUtf8(), QCryptographicHash::Sha1).toBase64();
    return time.isValid() && qAbs(time.msecsTo(now)) < clockTolerance && nonce.size() >= 16 &&
           QString::fromUtf8(textOf(body, "Username")) == user && textOf(body, "Password") == digest;
}

bool ScriptedCamera::hasRightDigest(const QByteArray& head) const
{
    const auto hash = [this](const QByteArray& text) { return md5OrSha(digestAlgorithm, text); };
    const QByteArray uri = parameter(head, "uri");
    const QByteArray wanted = hash(hash(user.toUtf8() + ":camera:" + password.toUtf8()) + ":" + m_nonce +
                                   ":" + parameter(head, "nc") + ":" + parameter(head, "cnonce") +
                                   ":auth:" + hash(head.split(' ').value(0) + ":" + uri));
    return parameter(head, "response") == wanted && parameter(head, "nonce") == m_nonce &&
           head.split(' ').value(1) == uri;
}

QByteArray ScriptedCamera::profiles(bool media2) const
{
    const QByteArray ns = media2 ? "tr2:" : "trt:";
    const auto part = [media2](const QByteArray& name, const QByteArray& inside) {
        const QByteArray element = media2 ? "tr2:" + name : "tt:" + name + "Configuration";
        return "<" + element + " token=\"" + name + "1\"><tt:Name>" + name + "</tt:Name>" + inside + "</" +
               element + ">";
    };
    const QByteArray voice =
        hasMicrophone ? part("AudioSource", "") +
                            part("AudioEncoder",
                                 media2 ? "<tt:Encoding>PCMU</tt:Encoding><tt:SampleRate>8</tt:SampleRate>"
                                        : "<tt:Encoding>G711</tt:Encoding><tt:SampleRate>8</tt:SampleRate>")
                      : QByteArray();
    QByteArray ear =
        hasLoudspeaker && usesLoudspeaker ? part("AudioOutput", "") + part("AudioDecoder", "") : QByteArray();
    if (!media2 && !ear.isEmpty()) {
        ear = "<tt:Extension>" + ear + "</tt:Extension>";
    }
    const auto profile = [&](const QByteArray& token, const QByteArray& name, const QByteArray& inside) {
        const QByteArray nameElement = media2 ? "tr2:Name" : "tt:Name";
        return "<" + ns + "Profiles token=\"" + token + "\" fixed=\"true\"><" + nameElement + ">" + name +
               "</" + nameElement + ">" +
               (media2 ? "<tr2:Configurations>" + inside + "</tr2:Configurations>" : inside) + "</" + ns +
               "Profiles>";
    };
    return profile("silent", "Picture only",
                   part("VideoSource", "") + part("VideoEncoder", "<tt:Encoding>H264</tt:Encoding>")) +
           profile("main&amp;1", "Main",
                   part("VideoEncoder", "<tt:Encoding>H264</tt:Encoding>") + voice + ear);
}

QByteArray ScriptedCamera::bodyOf(const QString& name, bool media2) const
{
    const QByteArray base = "http://" + host.toLatin1() + ":" + QByteArray::number(m_server.serverPort());
    const QByteArray stream = "rtsp://" + host.toLatin1() + ":8554/live?profile=1";
    if (name == QLatin1String("GetSystemDateAndTime")) {
        const QDateTime now = QDateTime::currentDateTimeUtc().addMSecs(clockOffset);
        return now
            .toString(QStringLiteral(
                "'<tds:SystemDateAndTime><tt:DateTimeType>NTP</tt:DateTimeType><tt:LocalDateTime>"
                "<tt:Time><tt:Hour>1</tt:Hour></tt:Time></"
                "tt:LocalDateTime><tt:UTCDateTime><tt:Time><tt:Hour>'H"
                "'</tt:Hour><tt:Minute>'m'</tt:Minute><tt:Second>'s'</tt:Second></"
                "tt:Time><tt:Date><tt:Year>'yyyy"
                "'</tt:Year><tt:Month>'M'</tt:Month><tt:Day>'d'</tt:Day></tt:Date></tt:UTCDateTime>"
                "</tds:SystemDateAndTime>'"))
            .toLatin1();
    }
    if (name == QLatin1String("GetServices") && hasServices) {
        const auto service = [](const QByteArray& space, const QByteArray& address) {
            return "<tds:Service><tds:Namespace>http://www.onvif.org/" + space +
                   "/wsdl</tds:Namespace><tds:XAddr>" + address +
                   "</tds:XAddr><tds:Version><tt:Major>2</tt:Major><tt:Minor>60</tt:Minor></tds:Version></"
                   "tds:Service>";
        };
        return service("ver10/device", base + "/onvif/device_service") +
               (hasMedia ? service("ver10/media", base + "/onvif/media") : QByteArray()) +
               (hasMedia2 ? service("ver20/media", base + "/onvif/media2") : QByteArray());
    }
    if (name == QLatin1String("GetCapabilities")) {
        return "<tds:Capabilities><tt:Device><tt:XAddr>" + base +
               "/onvif/device_service</tt:XAddr></tt:Device>" +
               (hasMedia ? "<tt:Media><tt:XAddr>" + base + "/onvif/media</tt:XAddr></tt:Media>"
                         : QByteArray()) +
               "</tds:Capabilities>";
    }
    if (name == QLatin1String("GetDeviceInformation")) {
        return "<tds:Manufacturer>Nobody</tds:Manufacturer><tds:Model>Test &amp; camera</tds:Model>"
               "<tds:FirmwareVersion>1.2</tds:FirmwareVersion>";
    }
    if (name == QLatin1String("GetProfiles")) {
        return profiles(media2);
    }
    if (name == QLatin1String("GetStreamUri")) {
        return media2 ? "<tr2:Uri>" + stream + "</tr2:Uri>"
                      : "<trt:MediaUri><tt:Uri>" + stream +
                            "</tt:Uri><tt:Timeout>PT0S</tt:Timeout></trt:MediaUri>";
    }
    if (name == QLatin1String("GetSnapshotUri")) {
        const QByteArray still = base + "/still.jpg";
        return media2 ? "<tr2:Uri>" + still + "</tr2:Uri>"
                      : "<trt:MediaUri><tt:Uri>" + still + "</tt:Uri></trt:MediaUri>";
    }
    const QByteArray configuration =
        "<tr2:Configurations token=\"x\"><tt:Name>x</tt:Name></tr2:Configurations>";
    if (name == QLatin1String("GetAudioSourceConfigurations") && media2) {
        return hasMicrophone ? configuration : QByteArray("");
    }
    if (name == QLatin1String("GetAudioOutputConfigurations") && media2) {
        return hasLoudspeaker ? configuration : QByteArray("");
    }
    if (name == QLatin1String("GetAudioSources") && !media2) {
        return hasMicrophone
                   ? "<trt:AudioSources token=\"mic\"><tt:Channels>1</tt:Channels></trt:AudioSources>"
                   : "";
    }
    if (name == QLatin1String("GetAudioOutputs") && !media2) {
        return hasLoudspeaker ? "<trt:AudioOutputs token=\"speaker\"/>" : "";
    }
    if (name == QLatin1String("GetAudioEncoderConfigurations")) {
        const QByteArray element = media2 ? "tr2:Configurations" : "trt:Configurations";
        return "<" + element + " token=\"e\"><tt:Encoding>" + (media2 ? "PCMU" : "G711") +
               "</tt:Encoding><tt:SampleRate>8</tt:SampleRate></" + element + "><" + element +
               " token=\"f\"><tt:Encoding>" + (media2 ? "MP4A-LATM" : "AAC") +
               "</tt:Encoding><tt:SampleRate>16</tt:SampleRate></" + element + ">";
    }
    if (name == QLatin1String("GetAudioDecoderConfigurationOptions")) {
        const auto options = [](const QByteArray& encoding, const QByteArray& rates) {
            return "<tr2:Options><tt:Encoding>" + encoding +
                   "</tt:Encoding><tt:BitrateList><tt:Items>64</tt:Items></"
                   "tt:BitrateList><tt:SampleRateList><tt:Items>" +
                   rates + "</tt:Items></tt:SampleRateList></tr2:Options>";
        };
        return media2 ? options("PCMU", "8") + options("MPEG4-GENERIC", "16 8 48000")
                      : QByteArray("<trt:Options><tt:AACDecOptions><tt:Bitrate><tt:Items>64</tt:Items></"
                                   "tt:Bitrate><tt:SampleRateRange>"
                                   "<tt:Items>16</tt:Items><tt:Items>8</tt:Items></tt:SampleRateRange></"
                                   "tt:AACDecOptions><tt:G711DecOptions>"
                                   "<tt:Bitrate><tt:Items>64</tt:Items></"
                                   "tt:Bitrate><tt:SampleRateRange><tt:Items>8</tt:Items>"
                                   "</tt:SampleRateRange></tt:G711DecOptions></trt:Options>");
    }
    return QByteArray();
}
