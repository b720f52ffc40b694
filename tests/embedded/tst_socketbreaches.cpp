// Messages that break the protocol, from a client and from a server: the other side learns what was wrong,
// and reads no further.

#include "client/SocketLink.h"
#include "tests/embedded/LyingServer.h"
#include "tests/embedded/RawClient.h"

#include <QCborMap>

class TestSocketBreaches : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void clientThatBreaksTheProtocol_data();
    void clientThatBreaksTheProtocol();
    void serverThatBreaksTheProtocol_data();
    void serverThatBreaksTheProtocol();
    void beforeTheWelcome_data();
    void beforeTheWelcome();
    void refusedClientReadsNoFurther();
    void nothingIsReadAfterABreach();

private:
    static void addBreaches()
    {
        const auto bytes = [](const QCborMap& map) { return QCborValue(map).toCbor(); };
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no CBOR") << QByteArray("hello") << "not a message";
        QTest::newRow("version") << bytes({{0, 2}, {1, 4}, {2, 1}}) << "unknown version 2";
        QTest::newRow("no version") << bytes({{1, 4}}) << "unknown version (not a number)";
        QTest::newRow("kind") << bytes({{0, 1}, {1, 7}, {2, 1}}) << "unknown kind 7";
        QTest::newRow("kind as a text") << bytes({{0, 1}, {1, "Fly"}}) << "unknown kind \"Fly\"";
        QTest::newRow("key") << bytes({{0, 1}, {1, 4}, {8, 1}}) << "unknown key 8";
        QTest::newRow("key of text") << bytes({{0, 1}, {1, 4}, {"name\x1B", 1}}) << "unknown key \"name?\"";
        // In UTF-8 three bytes a character: whole it would not fit into a close frame.
        QTest::newRow("long key") << bytes({{0, 1}, {1, 4}, {QString(500, QChar(0x9580)), 1}})
                                  << "unknown key \"" + QString(30, QChar(0x9580)) + "...\"";
        QTest::newRow("key of another type")
            << bytes({{0, 1}, {1, 4}, {QCborValue(1.5), 1}}) << "unknown key (not a number)";
        QTest::newRow("name") << bytes({{0, 1}, {1, 4}, {2, 1}, {3, 7}}) << "key 3 is not a text";
        QTest::newRow("number") << bytes({{0, 1}, {1, 4}, {2, "1"}}) << "key 2 is not a number of a command";
        QTest::newRow("payload") << bytes({{0, 1}, {1, 4}, {2, 1}, {5, nullptr}})
                                 << "unknown type in the payload";
    }

    static QByteArray message(WireMessage::Kind kind, quint32 number = 0)
    {
        WireMessage made;
        made.kind = kind;
        made.id = number;
        made.name = "GetAudioFile";
        return made.toBytes();
    }
};

void TestSocketBreaches::clientThatBreaksTheProtocol_data()
{
    addBreaches();
    QTest::newRow("reply") << message(WireMessage::Reply, 1) << "kind 5 is not a command";
    QTest::newRow("second login") << message(WireMessage::Login) << "kind 1 is not a command";
    QTest::newRow("no number") << message(WireMessage::Command)
                               << "the command \"GetAudioFile\" has no number";
}

void TestSocketBreaches::clientThatBreaksTheProtocol()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    ServerHarness harness;
    SocketConfig config;
    QVERIFY(config.users.setPassword(QString(), "right"));
    SocketServer server(*harness.server, config, nullptr);
    QVERIFY(server.listen());
    RawClient client(server);
    QVERIFY(client.connected);
    client.socket.sendBinaryMessage(loginOf(QString(), "right"));
    QTRY_COMPARE(client.received.size(), 1); // the welcome
    client.socket.sendBinaryMessage(bytes);
    client.socket.sendBinaryMessage(message(WireMessage::Command, 1));
    QVERIFY(client.closed());
    QCOMPARE(client.socket.closeReason(), reason);
    QCOMPARE(client.received.size(), 1);
    QTRY_COMPARE(server.clients(), 0);
}

void TestSocketBreaches::serverThatBreaksTheProtocol_data()
{
    addBreaches();
    QTest::newRow("command") << message(WireMessage::Command, 1) << "kind 4 is a client's";
    QTest::newRow("login") << message(WireMessage::Login) << "kind 1 is a client's";
    QTest::newRow("second welcome") << message(WireMessage::Welcome) << "a second welcome";
}

void TestSocketBreaches::serverThatBreaksTheProtocol()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    LyingServer server;
    SocketLink link(server.config());
    QSignalSpy connected(&link, &ServerLink::connected);
    QSignalSpy disconnected(&link, &ServerLink::disconnected);
    QSignalSpy lost(&link, &SocketLink::lost);
    link.open();
    QTRY_COMPARE(connected.size(), 1);
    server.client->sendBinaryMessage(bytes);
    QTRY_VERIFY(!lost.isEmpty());
    QCOMPARE(lost[0], (QVariantList{reason, false}));
    QCOMPARE(disconnected.size(), 1);
    QVERIFY(!link.send("GetAudioFile", QVariant(), 1));
    QTRY_COMPARE(connected.size(), 2); // it is tried again
}

void TestSocketBreaches::beforeTheWelcome_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    QTest::newRow("reply") << message(WireMessage::Reply, 1) << "kind 5 came before the welcome";
    QTest::newRow("event") << message(WireMessage::Event) << "kind 6 came before the welcome";
}

void TestSocketBreaches::beforeTheWelcome()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    LyingServer server;
    server.welcomes = false;
    server.inPlaceOfAWelcome = bytes;
    SocketLink link(server.config());
    QSignalSpy lost(&link, &SocketLink::lost);
    const QSignalSpy replied(&link, &ServerLink::replied);
    const QSignalSpy events(&link, &ServerLink::eventRaised);
    const QSignalSpy connected(&link, &ServerLink::connected);
    const QSignalSpy disconnected(&link, &ServerLink::disconnected);
    link.open();
    QTRY_VERIFY(!lost.isEmpty());
    QCOMPARE(lost[0], (QVariantList{reason, false}));
    QCOMPARE(replied.size() + events.size() + connected.size() + disconnected.size(), 0);
}

void TestSocketBreaches::refusedClientReadsNoFurther()
{
    LyingServer server;
    server.welcomes = false;
    WireMessage refused;
    refused.kind = WireMessage::Refused;
    refused.text = "no";
    server.inPlaceOfAWelcome = refused.toBytes();
    SocketLink link(server.config());
    QSignalSpy lost(&link, &SocketLink::lost);
    const QSignalSpy connected(&link, &ServerLink::connected);
    link.open();
    QTRY_VERIFY(server.client != nullptr);
    connect(server.client, &WebSocketPeer::binaryMessageReceived, &server,
            [&server] { server.client->sendBinaryMessage(message(WireMessage::Welcome)); });
    QTRY_VERIFY(!lost.isEmpty());
    QCOMPARE(lost[0], (QVariantList{"no", true}));
    QCOMPARE(connected.size(), 0);
}

/** Messages that came with the one that breaks the protocol. */
void TestSocketBreaches::nothingIsReadAfterABreach()
{
    LyingServer server;
    SocketLink link(server.config());
    QSignalSpy connected(&link, &ServerLink::connected);
    QSignalSpy lost(&link, &SocketLink::lost);
    const QSignalSpy replied(&link, &ServerLink::replied);
    link.open();
    QTRY_COMPARE(connected.size(), 1);
    server.client->sendBinaryMessage("hello");
    server.client->sendBinaryMessage(message(WireMessage::Welcome));
    server.client->sendBinaryMessage(message(WireMessage::Reply, 1));
    QTRY_VERIFY(!lost.isEmpty());
    QCOMPARE(lost[0][0].toString(), QString("not a message"));
    QCOMPARE(connected.size(), 1);
    QCOMPARE(replied.size(), 0);
}

QTEST_GUILESS_MAIN(TestSocketBreaches)
#include "tst_socketbreaches.moc"
