#include "client/PluginHost.h"
#include "protocol/EventTable.h"
#include "tests/support/BuiltLibraries.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestPluginHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loadsAndConnects();
    void carriesRepliesAndEvents();
    void talkWithoutToken();
    void eventsThatAreNotForThePlugin();
    void linkThatRefuses();
    void requestsEndWithTheConnection();
    void lateReplyHasItsNumber();
    void commandsOfTheHost();
    void lateRepliesAfterUnload();
    void badPlugins();
};

namespace {

const QString pluginPath = BuiltLibraries::path("VoiceDesk");

/** A link whose other end is the test. */
class TestLink : public ServerLink
{
public:
    void open() override { opened = true; }
    bool send(const QString& command, const QVariant& payload, quint64 request) override
    {
        sent.append(command);
        payloads.append(payload);
        lastRequest = request;
        return accepts;
    }

    bool opened = false;
    bool accepts = true;
    QStringList sent;
    QVariantList payloads;
    quint64 lastRequest = 0;
};

} // namespace

void TestPluginHost::loadsAndConnects()
{
    TestLink link;
    PluginHost host(link);
    QCOMPARE(host.plugin(), nullptr);
    QVERIFY2(host.load(pluginPath), qPrintable(host.errorString()));
    QVERIFY(link.opened);
    QVERIFY(link.sent.isEmpty()); // nothing before the server is up
    Q_EMIT link.connected();
    QCOMPARE(link.sent, (QStringList{"RetrieveIPAudioModel", "GetAudioFile"}));
    Q_EMIT link.connected();
    QCOMPARE(link.sent.size(), 4);
    QCOMPARE(host.plugin()->property("talking"), QVariant(false));
}

void TestPluginHost::carriesRepliesAndEvents()
{
    TestLink link;
    PluginHost host(link);
    QVERIFY(host.load(pluginPath));
    QSignalSpy talking(host.plugin(), SIGNAL(talkingChanged()));
    QSignalSpy response(host.plugin(), SIGNAL(startTalkResponse(bool)));
    QSignalSpy disconnected(host.plugin(), SIGNAL(talkDisconnected()));
    QSignalSpy replies(&host, &PluginHost::replyArrived);
    Q_EMIT link.replied("StartTalk", QVariantMap{{"talkToken", "t"}}, 0, "0", "");
    QCOMPARE(response.count(), 1);
    QVERIFY(response[0][0].toBool());
    QCOMPARE(host.plugin()->property("talking"), QVariant(true));
    Q_EMIT link.eventRaised("TalkDisconnected",
                            QVariantMap{{"TalkDisconnected", QVariantMap{{"Token", "t"}}}});
    QCOMPARE(disconnected.count(), 1);
    QCOMPARE(talking.count(), 2);
    QCOMPARE(link.sent.last(), QStringLiteral("StopTalk"));
    QCOMPARE(replies.count(), 1);
}

/** The plug-in takes any success for an open talk. */
void TestPluginHost::talkWithoutToken()
{
    TestLink link;
    PluginHost host(link);
    QVERIFY(host.load(pluginPath));
    QSignalSpy camera(host.plugin(), SIGNAL(startTalkResponse(bool)));
    QSignalSpy speaker(host.plugin(), SIGNAL(startTalkToIPAudioResponse(bool, QString, int)));
    QSignalSpy replies(&host, &PluginHost::replyArrived);
    Q_EMIT link.replied("StartTalk", QVariantMap{{"camId", "gate"}}, 0, "0", "");
    QCOMPARE(camera.count(), 1);
    QCOMPARE(camera[0][0], QVariant(false));
    QCOMPARE(replies[0][1], QVariant("212"));
    const auto ask = [&] {
        QVERIFY(QMetaObject::invokeMethod(host.plugin(), "startTalkToIPAudio", Q_ARG(int, 42)));
    };
    ask();
    Q_EMIT link.replied("StartTalkToIPAudio", QVariant(), link.lastRequest, "0", "");
    QCOMPARE(speaker.takeFirst(), (QVariantList{false, "the server's answer has no talk token", 42}));
    QCOMPARE(replies[1][1], QVariant("0"));
    ask(); // what a server says itself stays
    Q_EMIT link.replied("StartTalkToIPAudio", QVariantMap{{"error", "asleep"}}, link.lastRequest, "0", "");
    QCOMPARE(speaker.takeFirst(), (QVariantList{false, "asleep", 42}));
    QCOMPARE(host.plugin()->property("talking"), QVariant(false));
    ask();
    Q_EMIT link.replied("StartTalkToIPAudio", QVariantMap{{"talkToken", "t"}}, link.lastRequest, "0", "");
    QCOMPARE(speaker.takeFirst(), (QVariantList{true, QString(), 42}));
    QCOMPARE(host.plugin()->property("talking"), QVariant(true));
}

void TestPluginHost::eventsThatAreNotForThePlugin()
{
    TestLink link;
    PluginHost host(link);
    QVERIFY2(host.load(EVENT_PLUGIN), qPrintable(host.errorString()));
    QSignalSpy arrived(&host, &PluginHost::eventArrived);
    QStringList expected;
    for (const EventTable::Row& row : EventTable::rows()) {
        Q_EMIT link.eventRaised(row.name, QVariantMap());
        if (row.receiver == EventTable::Receiver::Plugin) {
            expected.append(row.name);
        }
    }
    Q_EMIT link.eventRaised("Nothing", QVariantMap());
    QCOMPARE(host.plugin()->property("events").toStringList(), expected);
    QCOMPARE(arrived.count(), static_cast<int>(EventTable::rows().size()) + 1); // the host sees all of them
}

void TestPluginHost::linkThatRefuses()
{
    TestLink link;
    link.accepts = false;
    PluginHost host(link);
    QVERIFY(host.load(pluginPath));
    QSignalSpy sent(&host, &PluginHost::commandSent);
    bool accepted = true;
    QMetaObject::invokeMethod(host.plugin(), "stopTalkToIPAudio", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(int, 4));
    QVERIFY(!accepted);
    QCOMPARE(sent.count(), 1);
    QCOMPARE(sent[0],
             (QVariantList{"StopTalkToIPAudio", QVariant::fromValue(QVariant(4)), false, link.lastRequest}));
    // The plug-in reports nothing of a refused playback: its number is all that a caller has.
    const quint64 before = link.lastRequest;
    QVERIFY(QMetaObject::invokeMethod(host.plugin(), "playAudio", Q_ARG(int, 1), Q_ARG(int, 2)));
    QCOMPARE(sent.count(), 2);
    QCOMPARE(sent[1][0].toString(), QStringLiteral("PlayAudio"));
    QCOMPARE(sent[1][2], QVariant(false));
    QVERIFY(link.lastRequest != before);
    QCOMPARE(sent[1][3], QVariant(link.lastRequest));
}

/** A reply that comes between a loss and the next connection answers nothing, whatever its number is. */
void TestPluginHost::requestsEndWithTheConnection()
{
    TestLink link;
    PluginHost host(link);
    QVERIFY(host.load(pluginPath));
    Q_EMIT link.connected();
    QSignalSpy answers(host.plugin(), SIGNAL(startTalkToIPAudioResponse(bool, QString, int)));
    QSignalSpy stopped(host.plugin(), SIGNAL(stopCurrentAudioResponse()));
    QVERIFY(QMetaObject::invokeMethod(host.plugin(), "startTalkToIPAudio", Q_ARG(int, 42)));
    Q_EMIT link.disconnected();
    QCOMPARE(answers.size(), 0); // the plug-in has no time-outs: a lost reply is none
    Q_EMIT link.replied("StopCurrentAudio", QVariant(), link.lastRequest, "0", "");
    QCOMPARE(stopped.size(), 1);
    QVERIFY(QMetaObject::invokeMethod(host.plugin(), "startTalkToIPAudio", Q_ARG(int, 43)));
    const quint64 before = link.lastRequest;
    Q_EMIT link.connected(); // to another server
    Q_EMIT link.replied("StopCurrentAudio", QVariant(), before, "0", "");
    QCOMPARE(stopped.size(), 2);
    QCOMPARE(answers.size(), 0);
}

/** However late it is, and whatever was asked since. */
void TestPluginHost::lateReplyHasItsNumber()
{
    TestLink link;
    PluginHost host(link);
    QVERIFY(host.load(pluginPath));
    QSignalSpy replies(&host, &PluginHost::replyArrived);
    QSignalSpy answers(host.plugin(), SIGNAL(startTalkToIPAudioResponse(bool, QString, int)));
    QVERIFY(QMetaObject::invokeMethod(host.plugin(), "startTalkToIPAudio", Q_ARG(int, 42)));
    const quint64 first = link.lastRequest;
    QVERIFY(QMetaObject::invokeMethod(host.plugin(), "startTalkToIPAudio", Q_ARG(int, 43)));
    const quint64 second = link.lastRequest;
    const QVariantMap refusal{{"error", "busy"}};
    Q_EMIT link.replied("StartTalkToIPAudio", refusal, second, "0", "");
    Q_EMIT link.replied("StartTalkToIPAudio", refusal, first, "0", "");
    QCOMPARE(answers.size(), 2);
    QCOMPARE(answers[0][2], QVariant(43));
    QCOMPARE(answers[1][2], QVariant(42));
    QCOMPARE(replies[1][3], QVariant(first));
}

/** The plug-in sees none of their replies; what is never answered does not pile up. */
void TestPluginHost::commandsOfTheHost()
{
    TestLink link;
    PluginHost host(link);
    QVERIFY(host.load(pluginPath));
    QSignalSpy replies(&host, &PluginHost::replyArrived);
    QSignalSpy response(host.plugin(), SIGNAL(startTalkResponse(bool)));
    const QVariantMap camera{{"camName", "Gate"}};
    const quint64 first = host.sendOwn("AddCamera", camera);
    QCOMPARE(first, link.lastRequest);
    QCOMPARE(link.sent.last(), QString("AddCamera"));
    QCOMPARE(link.payloads.last(), QVariant(camera));
    for (int reply = 1; reply <= 2; ++reply) { // some are answered more than once
        Q_EMIT link.replied("StartTalk", QVariantMap{{"talkToken", "t"}}, first, "0", "");
        QCOMPARE(replies.size(), reply);
        QCOMPARE(replies.last()[0].toString(), QString("AddCamera"));
        QCOMPARE(response.size(), 0);
    }
    quint64 last = 0;
    for (int i = 0; i < 1000; ++i) {
        last = host.sendOwn("GetCamera");
    }
    Q_EMIT link.replied("StartTalk", QVariant(), last, "0", "");
    QCOMPARE(replies.last()[0].toString(), QString("GetCamera"));
    QCOMPARE(response.size(), 0);
    Q_EMIT link.replied("StartTalk", QVariantMap{{"talkToken", "t"}}, first, "0", ""); // forgotten
    QCOMPARE(replies.last()[0].toString(), QString("StartTalk"));
    link.accepts = false;
    QCOMPARE(host.sendOwn("GetCamera"), quint64(0));
}

void TestPluginHost::lateRepliesAfterUnload()
{
    TestLink link;
    PluginHost host(link);
    QVERIFY(host.load(pluginPath));
    Q_EMIT link.replied("StartTalk", QVariantMap{{"talkToken", "t"}}, 0, "0", "");
    host.unload();
    QCOMPARE(link.sent, QStringList{"StopTalk"}); // the talk's end
    QCOMPARE(host.plugin(), nullptr);
    Q_EMIT link.replied("StopTalk", QVariant(), 0, "0", "");
    Q_EMIT link.eventRaised("TalkDisconnected", QVariant());
    Q_EMIT link.connected();
}

void TestPluginHost::badPlugins()
{
    TestLink link;
    {
        PluginHost host(link);
        QVERIFY(!host.load("/nonexistent/libVoiceDesk.so"));
        QVERIFY(!host.errorString().isEmpty());
    }
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(BuiltLibraries::fileName("VoiceDesk")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("no library");
        file.close();
        PluginHost host(link);
        QVERIFY(!host.load(file.fileName()));
        QVERIFY(!host.errorString().isEmpty());
    }
    {
        PluginHost host(link);
        QVERIFY(!host.load(BuiltLibraries::path("SoundTap"))); // a library, but no plug-in
    }
    QVERIFY(!link.opened);
}

QTEST_GUILESS_MAIN(TestPluginHost)
#include "tst_pluginhost.moc"
