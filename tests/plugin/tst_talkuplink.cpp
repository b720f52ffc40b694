#include "tests/plugin/PluginFixture.h"

#include <QTest>
#include <QThread>

class TestTalkUplink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void messageOfOnePacket();
    void packetsWithoutATargetAreDropped();
    void otherStreamTypesAreDropped();
    void refusedPacketUsesUpItsNumber();
    void withoutAFramework();
    void targetsOfAllKindsInOrder();
    void placeMarkersAreNotProtected();
    void emptyTokenFillsTheMarker();
    void lengths_data();
    void lengths();
    void numbersStartAgainWithARequest();
    void numbersGoOnWithoutARequest();
    void numbersGoOnForLateTargets();
    void deliveryOnThePluginsThread();
    void queuedPacketsAfterTheStopAreDropped();
    void replyIsDropped();
};

namespace {

/** Delivers one captured packet as the library does, and lets the plug-in's thread take it. */
void capture(const QByteArray& packet, std::uint32_t streamType = 8192)
{
    FakeFrameSmith::deliver(packet, 0, streamType, 0);
    QCoreApplication::processEvents();
}

} // namespace

void TestTalkUplink::messageOfOnePacket()
{
    PluginFixture f;
    f.openCameraTalk("token", "relay");
    f.framework.commands.clear();
    QByteArray packet(660, 0);
    for (int i = 0; i < packet.size(); ++i) {
        packet[i] = static_cast<char>(i * 7);
    }
    FakeFrameSmith::deliver(packet, 20, 8192, 0);
    QVERIFY(f.framework.commands.empty()); // not on the library's thread
    QCoreApplication::processEvents();
    QCOMPARE(f.framework.names(), QStringList{"TalkData"});
    const auto& command = f.framework.commands[0];
    COMPARE_VARIANTS(command.map(), (QVariantMap{{"targets", "<Dest>relay/token</Dest>"},
                                                 {"sequence", 1U},
                                                 {"talkData", QString::fromLatin1(packet.toBase64())}}));
    QCOMPARE(command.userData, nullptr);
    QCOMPARE(command.flag, false);
    QVERIFY(command.extra.isEmpty());
}

void TestTalkUplink::packetsWithoutATargetAreDropped()
{
    PluginFixture f;
    f.plugin->startTalk("cam", "");
    f.framework.commands.clear();
    for (int i = 0; i < 3; ++i) {
        capture(QByteArray(660, 'x'));
    }
    QVERIFY(f.framework.commands.empty());
    f.reply("StartTalk", "0", QVariantMap{{"talkToken", "t"}});
    capture(QByteArray(660, 'x'));
    COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], 1U);
}

void TestTalkUplink::otherStreamTypesAreDropped()
{
    PluginFixture f;
    f.openCameraTalk("t");
    f.framework.commands.clear();
    for (const std::uint32_t type : {0U, 16384U, 8193U, 32768U, 0xFFFFFFFFU}) {
        capture(QByteArray(660, 'x'), type);
    }
    QVERIFY(f.framework.commands.empty());
    capture(QByteArray(660, 'x'));
    COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], 1U); // none used a number
}

void TestTalkUplink::refusedPacketUsesUpItsNumber()
{
    PluginFixture f;
    f.openCameraTalk("t");
    f.framework.accepts = false;
    capture(QByteArray(660, 'x'));
    f.framework.accepts = true;
    capture(QByteArray(660, 'x'));
    COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], 2U);
    QVERIFY(f.log.errors().isEmpty());
}

void TestTalkUplink::withoutAFramework()
{
    FakeFrameSmith::reset();
    RecordingFramework framework; // comes late
    PluginVoiceDesk plugin;
    QVERIFY(plugin.InitialPluginBase(nullptr, nullptr, nullptr));
    plugin.startTalk("cam", "");
    QList<QVariant> targets{QVariantMap{{"talkToken", "t"}}};
    plugin.setTalkTargetList(targets);
    capture(QByteArray(660, 'x')); // lost without a word, but not without a number
    struct Access : PluginVoiceDesk
    {
        static FrameworkWrapperBase*& framework(PluginVoiceDesk& plugin)
        {
            return plugin.*(&Access::m_framework);
        }
    };
    Access::framework(plugin) = &framework;
    capture(QByteArray(660, 'x'));
    QCOMPARE(framework.names(), QStringList{"TalkData"});
    COMPARE_VARIANTS(framework.commands[0].map()["sequence"], 2U);
}

void TestTalkUplink::targetsOfAllKindsInOrder()
{
    PluginFixture f;
    f.plugin->startAudioCapture();
    QList<QVariant> targets{
        QVariantMap{{"camId", "c"}, {"talkToken", "A"}, {"relayPath", "relay"}},
        QVariantMap{{"deviceID", 4}, {"talkToken", "B"}},
        QVariantMap{{"camId", "c"}, {"talkToken", "<&>"}, {"relayPath", "a/b"}},
        QVariant("no map at all"),
    };
    f.plugin->setTalkTargetList(targets);
    capture(QByteArray(660, 'x'));
    QCOMPARE(f.framework.commands.size(), std::size_t{1});
    COMPARE_VARIANTS(f.framework.commands[0].map()["targets"],
                     QStringLiteral("<Dest>relay/A</Dest><Dest>B</Dest><Dest>a/b/<&></Dest><Dest></Dest>"));
}

void TestTalkUplink::placeMarkersAreNotProtected()
{
    PluginFixture f;
    f.plugin->startAudioCapture();
    for (const char* relay : {"%1", "x%2y", "%1/%2", "%5"}) {
        for (const char* token : {"t", "%1", "%2"}) {
            QList<QVariant> targets{QVariantMap{{"talkToken", token}, {"relayPath", relay}}};
            f.plugin->setTalkTargetList(targets);
            capture(QByteArray(3, 'x'));
            COMPARE_VARIANTS(f.framework.commands.back().map()["targets"],
                             QString("<Dest>%1/%2</Dest>").arg(relay).arg(token));
        }
    }
    QList<QVariant> targets{QVariantMap{{"talkToken", "t"}, {"relayPath", "%1"}}};
    f.plugin->setTalkTargetList(targets);
    capture(QByteArray(3, 'x'));
    COMPARE_VARIANTS(f.framework.commands.back().map()["targets"], QStringLiteral("<Dest>t/%2</Dest>"));
}

void TestTalkUplink::emptyTokenFillsTheMarker()
{
    PluginFixture f;
    f.plugin->startAudioCapture();
    f.reply("StartTalk", "0", QVariantMap());
    capture(QByteArray(3, 'x'));
    COMPARE_VARIANTS(f.framework.commands.back().map()["targets"], QStringLiteral("<Dest></Dest>"));
}

void TestTalkUplink::lengths_data()
{
    QTest::addColumn<int>("length");
    for (const int length : {0, 1, 2, 3, 4, 659, 660, 661, 1535, 1536, 1537, 1538, 4000, 100000}) {
        QTest::addRow("%d bytes", length) << length;
    }
}

void TestTalkUplink::lengths()
{
    QFETCH(int, length);
    PluginFixture f;
    f.openCameraTalk("t");
    const QByteArray packet(length, '\xE7');
    capture(packet);
    QCOMPARE(f.framework.commands.back().command, QStringLiteral("TalkData"));
    COMPARE_VARIANTS(f.framework.commands.back().map()["talkData"], QString::fromLatin1(packet.toBase64()));
    COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], 1U);
}

void TestTalkUplink::numbersStartAgainWithARequest()
{
    PluginFixture f;
    f.openCameraTalk("t");
    capture(QByteArray(3, 'x'));
    capture(QByteArray(3, 'x'));
    COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], 2U);
    f.plugin->startTalkToIPAudio(7);
    void* block = f.framework.commands.back().userData;
    capture(QByteArray(3, 'x')); // even before the reply
    COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], 1U);
    f.reply("StartTalkToIPAudio", "0", QVariantMap{{"talkToken", "device"}}, block);
    capture(QByteArray(3, 'x'));
    COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], 2U);
    COMPARE_VARIANTS(f.framework.commands.back().map()["targets"],
                     QStringLiteral("<Dest>t</Dest><Dest>device</Dest>"));
    f.plugin->stopTalk();
    f.openCameraTalk("u");
    capture(QByteArray(3, 'x'));
    COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], 1U);
}

void TestTalkUplink::numbersGoOnWithoutARequest()
{
    PluginFixture f;
    quint32 expected = 0;
    const auto next = [&] {
        capture(QByteArray(3, 'x'));
        const QString sent = Variants::describe(f.framework.commands.back().map()["sequence"]);
        return sent == Variants::describe(++expected);
    };
    f.plugin->startTalkToIPAudio(7);
    f.reply("StartTalkToIPAudio", "0", QVariantMap{{"talkToken", "device"}},
            f.framework.commands.back().userData);
    f.plugin->startAudioCapture();
    QVERIFY(next());
    QVERIFY(f.plugin->startTalk("cam", "")); // talks already: no request
    QVERIFY(next());
    QVERIFY(f.plugin->startTalkToIPAudio(7)); // in the list already: no request
    QVERIFY(next());
    f.plugin->stopTalkToIPAudio(7);
    QVERIFY(next());
    // A camera's talk that fails before its request leaves the numbers alone, too.
    f.plugin->tst_setTalking(false);
    f.plugin->stopAudioCapture();
    FakeFrameSmith::fail("FrameSmith_StartAudioCapture", -5);
    QVERIFY(!f.plugin->startTalk("cam", ""));
    FakeFrameSmith::fail("FrameSmith_StartAudioCapture", 0);
    f.plugin->startAudioCapture();
    QVERIFY(next());
    // So does the end of a talk.
    f.plugin->tst_setTalking(true);
    QList<QVariant> targets{QVariantMap{{"talkToken", "t"}}};
    f.plugin->stopTalk();
    f.plugin->setTalkTargetList(targets);
    f.plugin->startAudioCapture();
    QVERIFY(next());
}

void TestTalkUplink::numbersGoOnForLateTargets()
{
    PluginFixture f;
    f.openCameraTalk("a");
    f.reply("StartTalk", "0", QVariantMap{{"talkToken", "b"}}); // a late second reply keeps the numbers
    for (quint32 i = 1; i <= 300; ++i) {
        capture(QByteArray(3, 'x'));
        COMPARE_VARIANTS(f.framework.commands.back().map()["sequence"], i);
    }
}

void TestTalkUplink::deliveryOnThePluginsThread()
{
    PluginFixture f;
    f.openCameraTalk("t");
    QThread* sender = nullptr;
    f.framework.onCommand = [&sender](const RecordingFramework::Command&) {
        sender = QThread::currentThread();
    };
    capture(QByteArray(660, 'x'));
    QCOMPARE(sender, QThread::currentThread());
}

void TestTalkUplink::queuedPacketsAfterTheStopAreDropped()
{
    PluginFixture f;
    f.openCameraTalk("t");
    FakeFrameSmith::deliver(QByteArray(660, 'x'), 20, 8192, 0);
    f.plugin->stopTalk();
    f.framework.commands.clear();
    QCoreApplication::processEvents();
    QVERIFY(f.framework.commands.empty());
}

void TestTalkUplink::replyIsDropped()
{
    PluginFixture f;
    f.openCameraTalk("t");
    const auto before = f.framework.commands.size();
    for (const char* code : {"0", "203", "-2", ""}) {
        f.reply("TalkData", code, QVariantMap{{"talkToken", "x"}});
    }
    QCOMPARE(f.framework.commands.size(), before);
    QVERIFY(f.plugin->talking());
    QCOMPARE(f.plugin->getTalkTargetList().size(), 1);
}

QTEST_GUILESS_MAIN(TestTalkUplink)
#include "tst_talkuplink.moc"
