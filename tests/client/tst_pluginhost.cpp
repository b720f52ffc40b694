#include "client/PluginHost.h"
#include "protocol/Words.h"
#include "system/EnvironmentVariable.h"
#include "tests/support/BuiltLibraries.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestPluginHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void loadsAndConnects();
    void carriesRepliesAndEvents();
    void keepsItsOwnEvents();
    void linkThatRefuses();
    void lateRepliesAfterUnload();
    void badPlugins();

private:
    QTemporaryDir m_folder;
    QString m_log = m_folder.filePath("log");
};

namespace {

const QString pluginPath = BuiltLibraries::path("VoiceDesk");

/** A link whose other end is the test. */
class TestLink : public ServerLink
{
public:
    void open() override { opened = true; }
    bool send(const QString& command, const QVariant& payload, void* userData) override
    {
        sent.append(command);
        payloads.append(payload);
        lastUserData = userData;
        return accepts;
    }

    bool opened = false;
    bool accepts = true;
    QStringList sent;
    QVariantList payloads;
    void* lastUserData = nullptr;
};

} // namespace

void TestPluginHost::initTestCase()
{
    setEnvironmentVariable("TRELLOG_FILE", m_log); // before the log library is loaded
    qputenv("TRELLOG_LEVEL", "5");
}

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
    Q_EMIT link.replied("StartTalk", QVariantMap{{"talkToken", "t"}}, nullptr, "0", "");
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

void TestPluginHost::keepsItsOwnEvents()
{
    // The plug-in's log has a line for each event that reaches it.
    const auto eventsLogged = [this] {
        QFile log(m_log);
        return log.open(QIODevice::ReadOnly) ? log.readAll().count("PluginVoiceDesk::EventProcessor, Enter")
                                             : -1;
    };
    TestLink link;
    PluginHost host(link);
    QSignalSpy events(&host, &PluginHost::eventArrived);
    QVERIFY(host.load(pluginPath));
    const int before = eventsLogged();
    Q_EMIT link.eventRaised("PlayAudioFailed", QVariantMap());
    QCOMPARE(eventsLogged(), before + 1);
    Q_EMIT link.eventRaised(Words::TalkTargetLost, QVariantMap{{"Token", "t"}});
    QCOMPARE(events.count(), 2);
    QCOMPARE(eventsLogged(), before + 1);
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
    QCOMPARE(sent[0], (QVariantList{"StopTalkToIPAudio", QVariant::fromValue(QVariant(4)), false}));
}

void TestPluginHost::lateRepliesAfterUnload()
{
    TestLink link;
    PluginHost host(link);
    QVERIFY(host.load(pluginPath));
    Q_EMIT link.replied("StartTalk", QVariantMap{{"talkToken", "t"}}, nullptr, "0", "");
    host.unload();
    QCOMPARE(link.sent, QStringList{"StopTalk"}); // the talk's end
    QCOMPARE(host.plugin(), nullptr);
    Q_EMIT link.replied("StopTalk", QVariant(), nullptr, "0", "");
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
