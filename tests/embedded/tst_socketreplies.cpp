// What a server may answer over a real socket: the reply is that to the command of its number, whatever it
// says.

#include "client/PluginHost.h"
#include "client/SentCommands.h"
#include "client/SocketLink.h"
#include "protocol/WireMessage.h"
#include "tests/support/BuiltLibraries.h"

#include <QSignalSpy>
#include <QTest>
#include <QWebSocketServer>

class TestSocketReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandKeepsItsName_data();
    void commandKeepsItsName();
    void userDataIsGivenOnce();
    void repliesThatNobodyAskedFor();
    void moreCommandsThanAreRemembered();
    void numbersBeginAgain();
    void afterALossNothingIsAnswered();
    void refusedUploadInPlaceOfATalk();
    void answeredTalkInPlaceOfAnUpload();
};

namespace {

/** A server that lets everybody in, keeps what it is asked, and answers what it is told to. */
class LyingServer : public QObject
{
public:
    LyingServer() : m_server(QStringLiteral("lying"), QWebSocketServer::NonSecureMode)
    {
        listening = m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QWebSocketServer::newConnection, this, [this] {
            client = m_server.nextPendingConnection();
            client->setParent(this);
            connect(client, &QWebSocket::binaryMessageReceived, this, [this](const QByteArray& bytes) {
                const WireMessage message = WireMessage::fromBytes(bytes).value_or(WireMessage());
                if (message.kind == WireMessage::Login) {
                    WireMessage welcome;
                    welcome.kind = WireMessage::Welcome;
                    client->sendBinaryMessage(welcome.toBytes());
                } else {
                    commands.append(message);
                }
            });
        });
    }

    void reply(quint32 number, const QString& name, const QString& code, const QVariant& payload = QVariant())
    {
        WireMessage message;
        message.kind = WireMessage::Reply;
        message.id = number;
        message.name = name;
        message.code = code;
        message.payload = payload;
        client->sendBinaryMessage(message.toBytes());
    }

    /** The last command of a name. */
    quint32 numberOf(const QString& name) const
    {
        quint32 number = 0;
        for (const WireMessage& command : commands) {
            number = command.name == name ? command.id : number;
        }
        return number;
    }

    SocketLinkConfig config() const
    {
        SocketLinkConfig made;
        made.url = m_server.serverUrl();
        made.user = QStringLiteral("anna");
        return made;
    }

    bool listening = false;
    QWebSocket* client = nullptr;
    QList<WireMessage> commands;

private:
    QWebSocketServer m_server;
};

/** A link to such a server. */
struct Line
{
    Line() : link(server.config()), replies(&link, &ServerLink::replied)
    {
        QSignalSpy connected(&link, &ServerLink::connected);
        link.open();
        up = connected.wait();
    }

    QString name(int reply) const { return replies[reply][0].toString(); }
    void* userData(int reply) const { return replies[reply][2].value<void*>(); }

    LyingServer server;
    SocketLink link;
    QSignalSpy replies;
    bool up = false;
};

/** The plug-in behind such a link. */
struct Desk
{
    Desk() : link(server.config()), host(link)
    {
        QSignalSpy connected(&link, &ServerLink::connected);
        up = host.load(BuiltLibraries::path("VoiceDesk")) && connected.wait();
    }

    LyingServer server;
    SocketLink link;
    PluginHost host;
    bool up = false;
};

} // namespace

void TestSocketReplies::commandKeepsItsName_data()
{
    QTest::addColumn<QString>("sent");
    QTest::addColumn<QString>("answered");
    QTest::newRow("an upload for a talk") << "StartTalkToIPAudio"
                                          << "UploadFile";
    QTest::newRow("a talk for an upload") << "UploadFile"
                                          << "StartTalkToIPAudio";
    QTest::newRow("no name") << "UploadFile"
                             << "";
    QTest::newRow("the right one") << "UploadFile"
                                   << "UploadFile";
}

void TestSocketReplies::commandKeepsItsName()
{
    QFETCH(QString, sent);
    QFETCH(QString, answered);
    Line line;
    QVERIFY(line.up);
    int block = 0;
    QVERIFY(line.link.send(sent, QVariant(), &block));
    QTRY_COMPARE(line.server.commands.size(), 1);
    line.server.reply(line.server.commands[0].id, answered, "-2", 5);
    QTRY_COMPARE(line.replies.size(), 1);
    QCOMPARE(line.name(0), sent);
    QCOMPARE(line.userData(0), static_cast<void*>(&block));
    QCOMPARE(line.replies[0][1].toInt(), 5);
    QCOMPARE(line.replies[0][3].toString(), QStringLiteral("-2"));
}

void TestSocketReplies::userDataIsGivenOnce()
{
    Line line;
    QVERIFY(line.up);
    int first = 0;
    int second = 0;
    line.link.send("StartTalkToIPAudio", QVariant(), &first);
    line.link.send("PlayAudio", QVariant(), &second);
    QTRY_COMPARE(line.server.commands.size(), 2);
    for (int i = 0; i < 3; ++i) {
        line.server.reply(line.server.commands[1].id, "UploadFile", "0");
        line.server.reply(line.server.commands[0].id, "UploadFile", "0");
    }
    QTRY_COMPARE(line.replies.size(), 6);
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(line.name(i),
                 i % 2 == 0 ? QStringLiteral("PlayAudio") : QStringLiteral("StartTalkToIPAudio"));
        void* expected = i % 2 == 0 ? &second : &first;
        QCOMPARE(line.userData(i), i < 2 ? expected : nullptr);
    }
}

void TestSocketReplies::repliesThatNobodyAskedFor()
{
    Line line;
    QVERIFY(line.up);
    int block = 0;
    line.link.send("StartTalkToIPAudio", QVariant(), &block);
    QTRY_COMPARE(line.server.commands.size(), 1);
    const quint32 number = line.server.commands[0].id;
    const QList<quint32> others{0, number + 1, number + 4096, number + 8192, 0xFFFFFFFF, number - 1};
    for (const quint32 other : others) {
        line.server.reply(other, "PlayAudio", "0");
    }
    QTRY_COMPARE(line.replies.size(), others.size());
    for (int i = 0; i < others.size(); ++i) {
        QCOMPARE(line.name(i), QStringLiteral("PlayAudio")); // such as the progress of what plays
        QCOMPARE(line.userData(i), nullptr);
    }
}

void TestSocketReplies::moreCommandsThanAreRemembered()
{
    Line line;
    QVERIFY(line.up);
    int block = 0;
    line.link.send("StartTalkToIPAudio", QVariant(), &block);
    line.link.send("PlayAudio", QVariant(), nullptr);
    for (int i = 0; i < 5000; ++i) {
        line.link.send("TalkData", QVariant(), nullptr);
    }
    QTRY_COMPARE_WITH_TIMEOUT(line.server.commands.size(), 5002, 20000);
    line.server.reply(line.server.commands[0].id, "UploadFile", "0"); // a block is never forgotten
    line.server.reply(line.server.commands[1].id, "PlayAudio", "0");
    line.server.reply(line.server.commands.last().id, "PlayAudio", "0");
    QTRY_COMPARE(line.replies.size(), 3);
    QCOMPARE(line.name(0), QStringLiteral("StartTalkToIPAudio"));
    QCOMPARE(line.userData(0), static_cast<void*>(&block));
    QCOMPARE(line.name(1), QStringLiteral("PlayAudio"));
    QCOMPARE(line.name(2), QStringLiteral("TalkData"));
}

void TestSocketReplies::numbersBeginAgain()
{
    SentCommands sent;
    int first = 0;
    int second = 0;
    QCOMPARE(sent.add("UploadFile", &first), 1U);
    QCOMPARE(sent.add("StartTalkToIPAudio", &second), 2U);
    sent.continueAfter(0xFFFFFFFE);
    QCOMPARE(sent.add("TalkData", nullptr), 0xFFFFFFFFU);
    QCOMPARE(sent.add("TalkData", nullptr), 3U); // not 0, and neither of those that wait
    QCOMPARE(sent.match(1, QString()).userData, static_cast<void*>(&first));
    QCOMPARE(sent.match(2, QString()).userData, static_cast<void*>(&second));
    sent.continueAfter(0xFFFFFFFF);
    QCOMPARE(sent.add("PlayAudio", nullptr), 1U);
    QCOMPARE(sent.match(1, QString()).command, QString("PlayAudio"));
}

void TestSocketReplies::afterALossNothingIsAnswered()
{
    Line line;
    QVERIFY(line.up);
    int block = 0;
    line.link.send("StartTalkToIPAudio", QVariant(), &block);
    QTRY_COMPARE(line.server.commands.size(), 1);
    QSignalSpy connected(&line.link, &ServerLink::connected);
    line.server.client->close();
    QVERIFY(connected.wait());
    line.server.reply(line.server.commands[0].id, "PlayAudio", "0");
    QTRY_COMPARE(line.replies.size(), 1);
    QCOMPARE(line.name(0), QStringLiteral("PlayAudio"));
    QCOMPARE(line.userData(0), nullptr);
}

void TestSocketReplies::refusedUploadInPlaceOfATalk()
{
    Desk desk;
    QVERIFY2(desk.up, qPrintable(desk.host.errorString()));
    QSignalSpy answers(desk.host.plugin(), SIGNAL(startTalkToIPAudioResponse(bool, QString, int)));
    QVERIFY(QMetaObject::invokeMethod(desk.host.plugin(), "startTalkToIPAudio", Q_ARG(int, 42)));
    QTRY_VERIFY(desk.server.numberOf("StartTalkToIPAudio") != 0);
    for (int i = 0; i < 2; ++i) {
        desk.server.reply(desk.server.numberOf("StartTalkToIPAudio"), "UploadFile", "-2");
    }
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers[0], (QVariantList{false, "", 42}));
    desk.server.reply(0, "StopCurrentAudio", "0"); // comes after the second one
    QSignalSpy stopped(desk.host.plugin(), SIGNAL(stopCurrentAudioResponse()));
    QTRY_COMPARE(stopped.size(), 1);
    QCOMPARE(answers.size(), 1);
}

void TestSocketReplies::answeredTalkInPlaceOfAnUpload()
{
    Desk desk;
    QVERIFY2(desk.up, qPrintable(desk.host.errorString()));
    QSignalSpy answers(desk.host.plugin(), SIGNAL(startTalkToIPAudioResponse(bool, QString, int)));
    bool sent = false;
    QVERIFY(QMetaObject::invokeMethod(desk.host.plugin(), "uploadFile", Q_RETURN_ARG(bool, sent),
                                      Q_ARG(QUrl, QUrl::fromLocalFile(QStringLiteral(ANNOUNCEMENT_WAV)))));
    QVERIFY(sent);
    QTRY_VERIFY(desk.server.numberOf("UploadFile") != 0);
    for (int i = 0; i < 2; ++i) {
        desk.server.reply(desk.server.numberOf("UploadFile"), "StartTalkToIPAudio", "0",
                          QVariantList{QVariantMap{{"audioID", 1}}});
    }
    const auto files = [&] { return desk.host.plugin()->property("audioFileList").toList(); };
    QTRY_COMPARE(files(), (QVariantList{QVariantMap{{"audioID", 1}}}));
    QCOMPARE(answers.size(), 0);
}

QTEST_GUILESS_MAIN(TestSocketReplies)
#include "tst_socketreplies.moc"
