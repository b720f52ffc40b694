// Who may speak with the server: users and tokens, and what becomes of everybody else.

#include "protocol/WireMessage.h"
#include "tests/embedded/RawClient.h"
#include "tests/embedded/SocketHarness.h"
#include "tests/support/FileReaders.h"

using namespace SocketHarness;

class TestLogins : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void userStore();
    void token();
    void wrongPasswordIsFinal();
    void refusedClientThatStays();
    void withoutALoginNoAnswer_data();
    void withoutALoginNoAnswer();
    void silentClientLosesItsPlace();
    void loginsOfThoseWhoLeftAreWithdrawn();
    void loginsWaitForEachOther();

private:
    QTemporaryDir m_folder;
};

void TestLogins::userStore()
{
    const QString path = m_folder.filePath("users");
    QVERIFY(users().save(path));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QVERIFY(!text.contains("right") && !text.contains("the-token"));
    QVERIFY(FileReaders::isPrivate(path));
    UserStore read;
    QVERIFY(read.load(path));
    QVERIFY(read.admits("anna", "right"));
    QVERIFY(read.admits("", "the-token"));
    QVERIFY(!read.admits("anna", "wrong"));
    QVERIFY(!read.admits("anna", ""));
    QVERIFY(!read.admits("anna", "the-token"));
    QVERIFY(!read.admits("", "right"));
    QVERIFY(!read.admits("nobody", "right"));
    QVERIFY(!read.setPassword("a b", "x"));
    QVERIFY(!read.setPassword("c", ""));
    // The token has this name in the file; no user has it.
    QVERIFY(!read.admits("token", "the-token"));
    QVERIFY(!read.setPassword("token", "x"));
    QVERIFY(read.admits("", "the-token"));
    QVERIFY(read.setPassword("Token", "x"));
    QVERIFY(read.admits("Token", "x") && !read.admits("", "x"));
    UserStore nameless;
    QVERIFY(nameless.setPassword(QString(QChar(0xFEFF)), "x")); // read back as a name of no characters
    QVERIFY(nameless.save(m_folder.filePath("nameless")));
    UserStore none;
    QVERIFY(none.load(m_folder.filePath("nameless")));
    QVERIFY(none.isEmpty() && !none.admits("", "x"));
    UserStore empty;
    QVERIFY(empty.load(m_folder.filePath("absent")));
    QVERIFY(!empty.admits("", ""));
}

void TestLogins::token()
{
    ServerHarness harness;
    SocketServer server(*harness.server, config(), nullptr);
    QVERIFY(server.listen());
    SocketLinkConfig withToken = to(server);
    withToken.user.clear();
    withToken.secret = "the-token";
    OpenedLink link(withToken);
    QVERIFY(link.isUp());
}

void TestLogins::wrongPasswordIsFinal()
{
    ServerHarness harness;
    SocketServer server(*harness.server, config(), nullptr);
    QVERIFY(server.listen());
    SocketLinkConfig wrong = to(server);
    wrong.secret = "wrong";
    OpenedLink link(wrong);
    QVERIFY(waitFor([&] { return !link.lost.isEmpty(); }));
    QVERIFY2(link.lost[0][0].toString().contains("password"), qPrintable(link.lost[0][0].toString()));
    QCOMPARE(link.lost[0][1].toBool(), true);
    QVERIFY(link.connected.isEmpty());
    QVERIFY(waitFor([&] { return server.clients() == 0; }));
}

void TestLogins::refusedClientThatStays()
{
    ServerHarness harness;
    SocketServer server(*harness.server, config(), nullptr);
    QVERIFY(server.listen());
    RawClient client(server);
    QVERIFY(client.connected);
    client.socket.sendBinaryMessage(loginOf("anna", "wrong"));
    QVERIFY(waitFor([&] { return !client.received.isEmpty(); }));
    const auto refusal = WireMessage::fromBytes(client.received[0]);
    QVERIFY(refusal);
    QCOMPARE(int{refusal->kind}, int{WireMessage::Refused});
    QVERIFY(refusal->text.contains("password"));
    client.socket.sendBinaryMessage(loginOf("anna", "right")); // too late
    QVERIFY(client.closed());
    QCOMPARE(client.received.size(), 1);
    QVERIFY(waitFor([&] { return server.clients() == 0; }));
}

void TestLogins::withoutALoginNoAnswer_data()
{
    QTest::addColumn<QByteArray>("bytes");
    WireMessage command;
    command.kind = WireMessage::Command;
    command.id = 1;
    command.name = "GetAudioFile";
    WireMessage reply = command;
    reply.kind = WireMessage::Reply;
    QTest::newRow("command") << command.toBytes();
    QTest::newRow("reply") << reply.toBytes();
    QTest::newRow("no message") << QByteArray("hello");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("too large") << loginOf("anna", QString(100000, 'x'));
}

void TestLogins::withoutALoginNoAnswer()
{
    QFETCH(QByteArray, bytes);
    ServerHarness harness;
    SocketServer server(*harness.server, config(), nullptr);
    QVERIFY(server.listen());
    RawClient client(server);
    QVERIFY(client.connected);
    client.socket.sendBinaryMessage(bytes);
    QVERIFY(client.closed());
    QVERIFY(client.received.isEmpty());
    QVERIFY(waitFor([&] { return server.clients() == 0; }));
}

void TestLogins::silentClientLosesItsPlace()
{
    SocketConfig quick = config();
    quick.loginTimeout = 200;
    const OpenedServer server(quick);
    QVERIFY(server.listens);
    RawClient client(server.sockets);
    QVERIFY(client.connected);
    QVERIFY(client.closed());
    QVERIFY(waitFor([&] { return server.sockets.clients() == 0; }));
}

void TestLogins::loginsOfThoseWhoLeftAreWithdrawn()
{
    ServerHarness harness;
    SocketServer server(*harness.server, config(), nullptr);
    QVERIFY(server.listen());
    QElapsedTimer clock;
    const auto timeOfAnHonestLogin = [&] {
        clock.start();
        return OpenedLink(to(server)).isUp(60000) ? clock.elapsed() : 60000;
    };
    const qint64 alone = timeOfAnHonestLogin();
    constexpr int count = 40; // two are looked at at a time
    std::vector<std::unique_ptr<RawClient>> leaving;
    for (int i = 0; i < count; ++i) {
        leaving.push_back(std::make_unique<RawClient>(server));
        QVERIFY(leaving.back()->connected);
    }
    for (const auto& client : leaving) {
        client->socket.sendBinaryMessage(loginOf("anna", "wrong"));
        client->socket.close();
    }
    QVERIFY(waitFor([&] { return server.clients() == 0; }));
    leaving.clear();
    const qint64 after = timeOfAnHonestLogin();
    QVERIFY2(after < alone * count / 5, qPrintable(QString("%1 ms, alone %2 ms").arg(after).arg(alone)));
}

void TestLogins::loginsWaitForEachOther()
{
    SocketConfig quick = config();
    quick.loginTimeout = 300;
    const OpenedServer server(quick);
    QVERIFY(server.listens);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 24; ++i) {
        clients.push_back(std::make_unique<RawClient>(server.sockets));
        QVERIFY(clients.back()->connected);
        clients.back()->socket.sendBinaryMessage(loginOf("anna", "right"));
    }
    for (const auto& client : clients) {
        QVERIFY(waitFor([&] { return !client->received.isEmpty(); }, 60000));
        const auto answer = WireMessage::fromBytes(client->received[0]);
        QVERIFY(answer);
        QCOMPARE(int{answer->kind}, int{WireMessage::Welcome});
    }
}

QTEST_GUILESS_MAIN(TestLogins)
#include "tst_logins.moc"
