#include "tests/desk/TalkTest.h"

#include "audio/PacketHeader.h"
#include "audio/SoundLevel.h"
#include "audio/TalkPacketDecoder.h"
#include "tests/support/BuiltLibraries.h"

void TalkTest::initTestCase()
{
    qputenv("FRAMESMITH_CAPTURE_FILE", ANNOUNCEMENT_WAV);
}

void TalkTest::init()
{
    m_link = std::make_unique<TestLink>();
    m_host = std::make_unique<PluginHost>(*m_link);
    QVERIFY2(m_host->load(BuiltLibraries::path("VoiceDesk")), qPrintable(m_host->errorString()));
    m_plugin = std::make_unique<PluginClient>();
    QVERIFY(m_plugin->attach(m_host->plugin()));
    Q_EMIT m_link->connected();
    m_watch = std::make_unique<RequestTimeouts>(300);
    m_watch->setTalkOpeningTime(0);
    m_targets = std::make_unique<TargetModel>();
    connect(m_host.get(), &PluginHost::commandSent, m_watch.get(), &RequestTimeouts::commandSent);
    connect(m_host.get(), &PluginHost::replyArrived, m_watch.get(), &RequestTimeouts::replyArrived);
    m_tail = std::make_unique<QTimer>();
    m_talk = std::make_unique<TalkControl>(*m_plugin, *m_targets, *m_watch, m_tail.get());
    connect(m_host.get(), &PluginHost::commandSent, m_talk.get(),
            [this](const QString& command, const QVariant& payload) {
                if (command == QLatin1String("TalkData")) {
                    m_talk->packetSent();
                    const QByteArray packet =
                        QByteArray::fromBase64(payload.toMap()["talkData"].toString().toLatin1());
                    const auto header =
                        PacketHeader::fromBytes(reinterpret_cast<const std::uint8_t*>(packet.constData()),
                                                static_cast<std::size_t>(packet.size()));
                    QVERIFY(header);
                    m_packets.append(header->position);
                    const auto sound = TalkPacketDecoder::decode(packet);
                    QVERIFY(sound);
                    m_loudest = std::max(m_loudest, SoundLevel::rmsDbfs(sound->samples));
                }
            });
    m_packets.clear();
    m_talk->setOnline(true);
    m_targets->setCameras({QVariantMap{{"camId", "gate"}, {"camName", "Gate"}, {"online", true}},
                           QVariantMap{{"camId", "dock"}, {"camName", "Dock"}, {"online", true}}});
    m_targets->setSpeakers(m_plugin->getIPAudioModel(m_host.get()));
    QVariantList records;
    for (const int id : {1, 2, 3}) {
        records.append(
            QVariantMap{{"deviceID", id}, {"deviceName", QString("Speaker %1").arg(id)}, {"ip", "10.0.0.1"}});
    }
    m_link->answer("RetrieveIPAudioModel", records);
    QTRY_COMPARE(m_targets->total(), 5);
}

void TalkTest::cleanup()
{
    m_talk.reset();
    m_targets.reset();
    m_watch.reset();
    m_plugin.reset();
    m_host.reset();
    m_link.reset();
}

void TalkTest::openCamera()
{
    m_targets->choose("camera:gate", true);
    m_talk->start();
    QCOMPARE(m_talk->phase(), TalkControl::Asking);
    QCOMPARE(state("camera:gate"), TargetModel::Asked);
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "token"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
}

void TalkTest::openCameraByKey()
{
    m_targets->choose("camera:gate", true);
    m_talk->press();
    QCOMPARE(m_talk->phase(), TalkControl::Asking);
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "token"}});
    QCOMPARE(m_talk->phase(), TalkControl::Talking);
}

void TalkTest::answerSpeaker(int id, const QString& error, const QString& code)
{
    for (int at = m_link->sent.size() - 1; at >= 0; --at) {
        if (m_link->sent[at] == "StartTalkToIPAudio" && m_link->payloads[at].toInt() == id) {
            m_link->answerAt(
                at, QVariantMap{{"deviceID", id}, {"talkToken", QString("t%1").arg(id)}, {"error", error}},
                code);
            return;
        }
    }
    QFAIL("it was not asked for");
}
