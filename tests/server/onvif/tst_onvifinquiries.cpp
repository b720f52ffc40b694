// A server that looks for ONVIF cameras, and asks a scripted one.

#include "onvif/CameraAbilities.h"
#include "server/devices/onvif/OnvifDevices.h"
#include "server/devices/onvif/OnvifInquiries.h"
#include "tests/onvif/ScriptedCamera.h"
#include "tests/server/ServerHarness.h"

#include <QRegularExpression>
#include <QUdpSocket>

namespace {

std::unique_ptr<ServerHarness> serverWith(const OnvifSearch& search = OnvifSearch())
{
    OnvifConfig onvif;
    onvif.search = search;
    onvif.servicePort = 1; // nobody listens there
    ServerConfig config;
    config.devices = onvifDevices(onvif);
    return std::make_unique<ServerHarness>(config);
}

QVariantMap camera(const QString& address)
{
    return {{"camKind", "onvif"}, {"camAddress", address}};
}

QList<QNetworkInterface> loopback()
{
    QList<QNetworkInterface> found = QNetworkInterface::allInterfaces();
    found.erase(std::remove_if(found.begin(), found.end(),
                               [](const QNetworkInterface& each) {
                                   return !(each.flags() & QNetworkInterface::IsLoopBack);
                               }),
                found.end());
    return found;
}

} // namespace

class TestOnvifInquiries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void finds();
    void findsWithoutANetwork();
    void asks();
    void codecsThatTheServerLacks();
    void saysWhatWentWrong_data();
    void saysWhatWentWrong();
    void camerasWithoutOnvif();
    void asksAtTheUsualAddress_data();
    void asksAtTheUsualAddress();
    void asksManyAtOnce();
    void goesWhileItAsks();
};

void TestOnvifInquiries::finds()
{
    QUdpSocket responder;
    QVERIFY(responder.bind(QHostAddress(QHostAddress::LocalHost), 0));
    connect(&responder, &QUdpSocket::readyRead, this, [&responder] {
        while (responder.hasPendingDatagrams()) {
            QByteArray probe(65536, '\0');
            QHostAddress to;
            quint16 port = 0;
            probe.resize(int(responder.readDatagram(probe.data(), probe.size(), &to, &port)));
            const QByteArray id =
                QRegularExpression("MessageID[^>]*>([^<]*)<").match(probe).captured(1).toLatin1();
            const auto match = [](const QByteArray& endpoint, const QByteArray& addresses) {
                return "<d:ProbeMatch><a:EndpointReference><a:Address>" + endpoint +
                       "</a:Address></a:EndpointReference><d:Types>dn:NetworkVideoTransmitter</d:Types>"
                       "<d:Scopes>onvif://www.onvif.org/name/Gate onvif://www.onvif.org/hardware/X-1 "
                       "onvif://www.onvif.org/location/Yard</d:Scopes><d:XAddrs>" +
                       addresses + "</d:XAddrs></d:ProbeMatch>";
            };
            responder.writeDatagram(
                "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\" "
                "xmlns:a=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\" "
                "xmlns:d=\"http://schemas.xmlsoap.org/ws/2005/04/discovery\"><s:Header><a:RelatesTo>" +
                    id + "</a:RelatesTo></s:Header><s:Body><d:ProbeMatches>" +
                    match("urn:uuid:1", "http://127.0.0.1:81/onvif/device_service") +
                    match("urn:uuid:2", "http://8.8.8.8/onvif/device_service") +
                    match("urn:uuid:3", "http://127.0.0.1:82/" + QByteArray(1500, 'x')) +
                    match("urn:uuid:4", "http://127.0.0.1:83/") +
                    match("urn:uuid:4", "http://127.0.0.1:84/") + "</d:ProbeMatches></s:Body></s:Envelope>",
                to, port);
        }
    });
    OnvifSearch search;
    search.options.time = 300;
    search.options.group = QHostAddress(QHostAddress::LocalHost);
    search.options.port = responder.localPort();
    search.interfaces = loopback;
    const auto server = serverWith(search);
    const ServerReply reply = server->ask("FindCameras");
    QCOMPARE(reply.returnCode, ReturnCode::success);
    const QVariantList found = reply.result.toList();
    QCOMPARE(found.size(), 4);
    QCOMPARE(found[0].toMap(), (QVariantMap{{"camName", "Gate"},
                                            {"hardware", "X-1"},
                                            {"location", "Yard"},
                                            {"camAddress", "http://127.0.0.1:81/onvif/device_service"},
                                            {"remark", ""}}));
    QCOMPARE(found[1].toMap()["camAddress"], QVariant(""));
    QCOMPARE(found[1].toMap()["remark"], QVariant("names only addresses of other hosts"));
    QCOMPARE(found[2].toMap()["camAddress"], QVariant("")); // too long for a record
    QCOMPARE(found[2].toMap()["remark"], QVariant("names no address that can be used"));
    QCOMPARE(found[3].toMap()["camAddress"], QVariant("http://127.0.0.1:83/"));
    QCOMPARE(found[3].toMap()["remark"], QVariant("also at http://127.0.0.1:84/"));
}

void TestOnvifInquiries::findsWithoutANetwork()
{
    OnvifSearch search;
    search.interfaces = [] { return QList<QNetworkInterface>(); };
    const auto server = serverWith(search);
    for (int i = 0; i < 2; ++i) { // the first leaves nothing that is in the way of the second
        const ServerReply reply = server->ask("FindCameras");
        QCOMPARE(reply.returnCode, ReturnCode::cameraOffline);
        QVERIFY(reply.errorText.contains("network"));
    }
}

void TestOnvifInquiries::asks()
{
    ScriptedCamera scripted;
    scripted.user = "anna";
    scripted.password = "secret";
    const auto server = serverWith();
    QVariantMap record = camera(scripted.url().toString().replace("http://", "http://anna:secret@"));
    record["camName"] = "Gate";
    const QString id = server->ask("AddCamera", record).result.toMap()["camId"].toString();
    const ServerReply reply = server->ask("AskCamera", QVariantMap{{"camId", id}});
    QCOMPARE(reply.returnCode, ReturnCode::success);
    const QVariantMap answer = reply.result.toMap();
    QCOMPARE(answer["error"], QVariant(""));
    QCOMPARE(answer["camAddress"], QVariant(scripted.url().toString()));
    QCOMPARE(answer["speaks"], QVariant("yes"));
    QCOMPARE(answer["hears"], QVariant("yes"));
    QVERIFY(answer["talkCodecs"].toList().contains("PCMU/8000"));
    QVERIFY(!answer["model"].toString().isEmpty());
    const QVariantMap stream = answer["streams"].toList().first().toMap();
    QCOMPARE(stream["camAddress"], QVariant("rtsp://127.0.0.1:8554/live?profile=1"));
    QCOMPARE(stream["hears"], QVariant("yes"));
}

void TestOnvifInquiries::codecsThatTheServerLacks()
{
    CameraAbilities abilities;
    abilities.speaks = Ability::Yes;
    abilities.hears = Ability::Yes;
    const auto report = [&](const std::vector<CameraCodec>& codecs) {
        abilities.voiceCodecs = codecs;
        abilities.talkCodecs = codecs;
        return OnvifInquiries::reportOf(CameraRecord(), abilities);
    };
    const CameraReport none = report({{"OPUS", {48000}}, {"AMR", {}}});
    QCOMPARE(none.speaks, CameraAbility::No);
    QCOMPARE(none.hears, CameraAbility::No);
    QVERIFY2(none.speaksReason.contains("in OPUS/48000, AMR, which"), qPrintable(none.speaksReason));
    QVERIFY2(none.hearsReason.contains("takes OPUS/48000, AMR, which"), qPrintable(none.hearsReason));
    for (const char* name : {"PCMU", "PCMA", "G711", "G726", "G726-32", "L16", "MPEG4-GENERIC", ""}) {
        const CameraReport one = report({{"OPUS", {48000}}, {name, {}}});
        QCOMPARE(one.speaks, CameraAbility::Yes);
        QCOMPARE(one.hears, CameraAbility::Yes);
        QVERIFY(one.speaksReason.isEmpty());
    }
    QCOMPARE(report({}).hears, CameraAbility::Yes); // it does not say
}

void TestOnvifInquiries::saysWhatWentWrong_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("words");
    QTest::newRow("a wrong password") << "anna"
                                      << "login";
    QTest::newRow("no login") << ""
                              << "login";
}

void TestOnvifInquiries::saysWhatWentWrong()
{
    QFETCH(QString, user);
    QFETCH(QString, words);
    ScriptedCamera scripted;
    scripted.user = "anna";
    scripted.password = "secret";
    const auto server = serverWith();
    QVariantMap question = camera(scripted.url().toString());
    question["username"] = user;
    question["password"] = "wrong";
    const ServerReply reply = server->ask("AskCamera", question);
    QCOMPARE(reply.returnCode, ReturnCode::success);
    QVERIFY2(reply.result.toMap()["error"].toString().contains(words),
             qPrintable(reply.result.toMap()["error"].toString()));
    QCOMPARE(reply.result.toMap()["hears"], QVariant("unknown"));
}

/** Such a camera may be online all the same, and its stream may take talks. */
void TestOnvifInquiries::camerasWithoutOnvif()
{
    const auto server = serverWith();
    const auto errorAt = [&](const QString& address) {
        return server->ask("AskCamera", camera(address)).result.toMap()["error"].toString();
    };
    const QString silent = "the camera does not answer ONVIF questions at http://127.0.0.1:1";
    QString error = errorAt("rtsp://127.0.0.1:9/live?user=anna&password=geheim");
    QVERIFY2(error.startsWith(silent + "/onvif/device_service"), qPrintable(error));
    QVERIFY2(error.endsWith("; talks may still work") && !error.contains("geheim"), qPrintable(error));
    error = errorAt("http://127.0.0.1:1/own/path?password=geheim");
    QVERIFY2(error.startsWith(silent + "/own/path"), qPrintable(error));
    QVERIFY2(!error.contains("talks") && !error.contains("geheim"), qPrintable(error));
    ScriptedCamera other;
    other.setReply("GetSystemDateAndTime", ScriptedCamera::http(404, ""));
    error = errorAt(other.url().toString());
    QVERIFY2(error.startsWith("what answers at " + other.url().toString() + " is no ONVIF camera"),
             qPrintable(error));
    // Where nobody could be asked there is no address; a certificate has a setting.
    CameraAbilities abilities;
    abilities.error = OnvifError::NotReachable;
    QCOMPARE(OnvifInquiries::errorOf(CameraRecord(), abilities), errorSentence(abilities));
    abilities.error = OnvifError::Untrusted;
    QVERIFY(OnvifInquiries::errorOf(CameraRecord(), abilities).contains("\"anyCertificate\""));
}

void TestOnvifInquiries::asksAtTheUsualAddress_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("service");
    const auto row = [](const char* address, const char* service) {
        QTest::newRow(address) << address << service;
    };
    row("10.0.0.9", "http://10.0.0.9/onvif/device_service");
    row("gate:8080", "http://gate:8080/onvif/device_service");
    row("rtsp://10.0.0.9:8554/talk", "http://10.0.0.9/onvif/device_service");
    row("rtsps://[fe80::1]/talk", "http://[fe80::1]/onvif/device_service");
    row("rtsp://[fe80::1%25lo]/talk", "http://[fe80::1%25lo]/onvif/device_service");
    row("fe80::1%lo", "http://[fe80::1%25lo]/onvif/device_service");
    row("https://gate/service", "https://gate/service");
    row("fe80::1", "http://[fe80::1]/onvif/device_service");
}

void TestOnvifInquiries::asksAtTheUsualAddress()
{
    QFETCH(QString, address);
    QFETCH(QString, service);
    QString error;
    QCOMPARE(OnvifInquiries::deviceService(address, 80, &error)->toString(), service);
}

void TestOnvifInquiries::asksManyAtOnce()
{
    ScriptedCamera scripted;
    const auto server = serverWith();
    QList<quint64> requests;
    for (int i = 0; i < 8; ++i) {
        requests.append(server->submit("AskCamera", camera(scripted.url().toString())));
    }
    for (const quint64 request : requests) {
        QCOMPARE(server->waitForReply(request).result.toMap()["error"], QVariant(""));
    }
}

void TestOnvifInquiries::goesWhileItAsks()
{
    ScriptedCamera scripted;
    scripted.tricks["GetSystemDateAndTime"] = ScriptedCamera::Silence;
    auto server = serverWith();
    server->submit("AskCamera", camera(scripted.url().toString()));
    QTRY_COMPARE(scripted.connections, 1);
    server.reset();
}

QTEST_GUILESS_MAIN(TestOnvifInquiries)
#include "tst_onvifinquiries.moc"
