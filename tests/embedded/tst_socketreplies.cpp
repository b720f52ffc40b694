// What a server may answer over a real socket: the reply is that to the command of its number, whatever it
// says.

#include "client/PluginHost.h"
#include "client/SocketLink.h"
#include "protocol/Limits.h"
#include "tests/embedded/LyingServer.h"
#include "tests/support/BuiltLibraries.h"

#include <QSignalSpy>
#include <QTest>

class TestSocketReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void repliesCarryTheirRequest();
    void numbersNeverSent();
    void commandsThatAreNotSent();
    void afterALossNothingIsAnswered();
    void refusedUploadInPlaceOfATalk();
    void answeredTalkInPlaceOfAnUpload();
};

namespace {

/** A link to such a server. */
struct Line
{
    Line() : link(server.config()), replies(&link, &ServerLink::replied)
    {
        QSignalSpy connected(&link, &ServerLink::connected);
        link.open();
        up = connected.wait();
    }

    QVariant request(int reply) const { return replies[reply][2]; }

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

void TestSocketReplies::repliesCarryTheirRequest()
{
    Line line;
    QVERIFY(line.up);
    const QList<quint64> requests{7, 0xFFFFFFFF, 0x100000001, 0x100000005};
    for (const quint64 request : requests) {
        QVERIFY(line.link.send("PlayAudio", QVariant(), request));
    }
    QTRY_COMPARE(line.server.commands.size(), requests.size());
    const QList<quint32> numbers{7, 0xFFFFFFFF, 1, 5};
    for (int i = 0; i < numbers.size(); ++i) {
        QCOMPARE(line.server.commands[i].id, numbers[i]);
    }
    for (const quint32 number : {5U, 0xFFFFFFFFU, 1U, 5U, 0U}) {
        line.server.reply(number, "UploadFile", "-2", 5);
    }
    QTRY_COMPARE(line.replies.size(), 5);
    QCOMPARE(line.request(0), QVariant(quint64{0x100000005}));
    QCOMPARE(line.request(1), QVariant(quint64{0xFFFFFFFF}));
    QCOMPARE(line.request(2), QVariant(quint64{0x100000001}));
    QCOMPARE(line.request(3), QVariant(quint64{0x100000005})); // each reply of several
    QCOMPARE(line.request(4), QVariant(quint64{0}));           // to nothing that was asked
    QCOMPARE(line.replies[0][0].toString(), QStringLiteral("UploadFile"));
    QCOMPARE(line.replies[0][1].toInt(), 5);
    QCOMPARE(line.replies[0][3].toString(), QStringLiteral("-2"));
}

void TestSocketReplies::numbersNeverSent()
{
    Line line;
    QVERIFY(line.up);
    QVERIFY(line.link.send("PlayAudio", QVariant(), 7));
    QTRY_COMPARE(line.server.commands.size(), 1);
    for (const quint32 number : {8U, 6U, 0xFFFFFFFFU}) {
        line.server.reply(number, "PlayAudio", "0");
    }
    QTRY_COMPARE(line.replies.size(), 3);
    for (int i = 0; i < 3; ++i) {
        QVERIFY(line.request(i) != QVariant(quint64{7}));
    }
}

/** A link refuses what a server would end the connection for, and what would fill the memory. */
void TestSocketReplies::commandsThatAreNotSent()
{
    Line line;
    QVERIFY(line.up);
    const auto upload = [&](int size, quint64 request) {
        return line.link.send("UploadFile", QByteArray(size, 'A'), request);
    };
    QVERIFY(!upload(Limits::maxMessageToServerBytes, 7)); // with its name it is larger
    QVERIFY(line.link.send("GetAudioFile", QVariant(), 8));
    line.server.reply(8, "GetAudioFile", "0");
    QTRY_COMPARE(line.replies.size(), 1);
    QCOMPARE(line.request(0), QVariant(quint64{8}));
    const int large = Limits::maxMessageToServerBytes - 10000; // with room for the frames of a web socket
    QVERIFY(upload(large, 9) &&
            upload(large, 10)); // both wait: nothing is written before the event loop runs
    QVERIFY(!upload(large, 11));
    QVERIFY(line.link.send("GetAudioFile", QVariant(), 12)); // in the little room that is left
}

void TestSocketReplies::afterALossNothingIsAnswered()
{
    Desk desk;
    QVERIFY2(desk.up, qPrintable(desk.host.errorString()));
    QSignalSpy answers(desk.host.plugin(), SIGNAL(startTalkToIPAudioResponse(bool, QString, int)));
    QSignalSpy stopped(desk.host.plugin(), SIGNAL(stopCurrentAudioResponse()));
    QVERIFY(QMetaObject::invokeMethod(desk.host.plugin(), "startTalkToIPAudio", Q_ARG(int, 42)));
    QTRY_VERIFY(desk.server.numberOf("StartTalkToIPAudio") != 0);
    QSignalSpy connected(&desk.link, &ServerLink::connected);
    desk.server.client->close();
    QVERIFY(connected.wait());
    desk.server.reply(desk.server.numberOf("StartTalkToIPAudio"), "StopCurrentAudio", "0");
    QTRY_COMPARE(stopped.size(), 1);
    QCOMPARE(answers.size(), 0);
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
