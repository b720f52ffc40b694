#include "audio/NumberedFile.h"
#include "audio/PacketHeader.h"
#include "protocol/CameraSettingsRecord.h"
#include "protocol/WireMessage.h"
#include "protocol/Words.h"
#include "server/RecordingServer.h"
#include "server/core/ServerSession.h"
#include "server/devices/simulated/SimulatedDevices.h"
#include "tests/support/FullDisk.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

class TestRecordingServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void answersLaterAndOnce();
    void unknownCommands();
    void camerasAreListed();
    void talkIsRecorded();
    void lostPacketsAreSilence();
    void absurdPositionsAreIgnored();
    void refusals_data();
    void refusals();
    void badTalkData_data();
    void badTalkData();
    void severalTargets();
    void talksOfOthersAreClosed();
    void sessionThatGoesAway();
    void pendingReplyOfASessionThatGoesAway();
    void unwritableFolder();
    void cameraNamesMakeSafeFiles();
    void recordingIsWrittenInTime();
    void fullDiskIsTold();
    void recordingsAreNotReplaced();
    void numbersCostFewLooks();
    void numbersOfTwoPrograms();

private:
    struct Answer
    {
        QString command;
        quint64 request;
        ServerReply reply;
    };

    ServerReply ask(const QString& command, const QVariant& payload);
    ServerReply askInTexts(const TalkDataPayload& talk);
    QString openTalk(const QString& camera = QStringLiteral("cam"), const QString& relay = QString());
    QVariantMap talk(const QString& targets, const QByteArray& packet);
    QStringList recordings() const { return m_simulated.recordings->talks; }

    std::unique_ptr<QTemporaryDir> m_folder;
    SimulatedConfig m_simulated;
    std::unique_ptr<RecordingServer> m_server;
    std::unique_ptr<ServerSession> m_session;
    std::vector<Answer> m_answers;
    QList<QPair<QString, QVariant>> m_events;
};

namespace {

QByteArray packet(std::uint32_t position, const QByteArray& bitstream)
{
    PacketHeader header;
    header.channels = 1;
    header.streamType = 8192;
    header.sampleRate = 8000;
    header.position = position;
    const auto bytes = header.toBytes();
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())) +
           bitstream;
}

QString dest(const QString& token)
{
    return QStringLiteral("<Dest>") + token + QStringLiteral("</Dest>");
}

const QByteArray silentPacket(640, '\xFF');

} // namespace

void TestRecordingServer::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_simulated = SimulatedConfig();
    m_simulated.cameras = {{"cam", "Gate"}, {"../x y", "Odd id"}, {"off", "Park", false}};
    m_simulated.recordingDirectory = m_folder->filePath("sub/recordings");
    ServerConfig config;
    config.devices = simulatedDevices(m_simulated);
    m_server = std::make_unique<RecordingServer>(config);
    m_session = std::make_unique<ServerSession>(*m_server);
    m_answers.clear();
    m_events.clear();
    connect(m_session.get(), &ServerSession::replied, this,
            [this](const QString& command, quint64 request, const ServerReply& reply) {
                m_answers.push_back({command, request, reply});
            });
    connect(m_session.get(), &ServerSession::eventRaised, this,
            [this](const QString& event, const QVariant& payload) {
                m_events.append({event, payload});
            });
}

void TestRecordingServer::cleanup()
{
    m_session.reset();
    m_server.reset();
}

ServerReply TestRecordingServer::ask(const QString& command, const QVariant& payload)
{
    m_answers.clear();
    m_session->submit(command, payload, 1);
    const bool answered = QTest::qWaitFor([this] { return !m_answers.empty(); });
    QCoreApplication::processEvents();
    return answered && m_answers.size() == 1 ? m_answers[0].reply : ServerReply{"no single answer", {}, {}};
}

ServerReply TestRecordingServer::askInTexts(const TalkDataPayload& talk)
{
    m_answers.clear();
    m_session->submitTalkData(talk, 1);
    const bool answered = QTest::qWaitFor([this] { return !m_answers.empty(); });
    return answered ? m_answers[0].reply : ServerReply{"no answer", {}, {}};
}

QString TestRecordingServer::openTalk(const QString& camera, const QString& relay)
{
    const ServerReply reply = ask("StartTalk", QVariantMap{{"camId", camera}, {"relayPath", relay}});
    return reply.result.toMap()["talkToken"].toString();
}

QVariantMap TestRecordingServer::talk(const QString& targets, const QByteArray& bytes)
{
    return {{"targets", targets}, {"sequence", 1U}, {"talkData", QString::fromLatin1(bytes.toBase64())}};
}

void TestRecordingServer::answersLaterAndOnce()
{
    m_session->submit("StartTalk", QVariantMap{{"camId", "cam"}}, 7);
    m_session->submit("StartTalk", QVariantMap{{"camId", "nobody"}}, 8);
    QVERIFY(m_answers.empty());
    QTRY_COMPARE(m_answers.size(), std::size_t{2});
    // A camera takes its time to open, a refusal does not.
    QCOMPARE(m_answers[0].request, quint64{8});
    QCOMPARE(m_answers[0].reply.returnCode, ReturnCode::noSuchCamera);
    QCOMPARE(m_answers[1].command, Vocabulary::StartTalk);
    QCOMPARE(m_answers[1].request, quint64{7});
    QCOMPARE(m_answers[1].reply.returnCode, QStringLiteral("0"));
    QCoreApplication::processEvents();
    QCOMPARE(m_answers.size(), std::size_t{2});
}

void TestRecordingServer::unknownCommands()
{
    for (const char* command : {"GetNothing", "starttalk", "", "addSystemLog"}) {
        const ServerReply reply = ask(command, QVariant());
        QCOMPARE(reply.returnCode, ReturnCode::unknownCommand);
        QVERIFY(reply.errorText.contains(command));
    }
}

void TestRecordingServer::camerasAreListed()
{
    const ServerReply reply = ask(QStringLiteral("GetCamera"), QVariant());
    QCOMPARE(reply.returnCode, QStringLiteral("0"));
    const QVariantList cameras = reply.result.toList();
    QCOMPARE(cameras.size(), static_cast<int>(m_simulated.cameras.size()));
    for (int i = 0; i < cameras.size(); ++i) {
        const SimulatedCamera& config = m_simulated.cameras[static_cast<std::size_t>(i)];
        const QVariantMap expected{{"camId", config.id},
                                   {"camName", config.name},
                                   {"online", config.online},
                                   {"camKind", "simulated"},
                                   {"camAddress", ""},
                                   {"username", ""},
                                   {"camSettings", CameraSettingsRecord::toMap(CameraSettings())}};
        QCOMPARE(cameras[i].toMap(), expected);
    }
}

void TestRecordingServer::talkIsRecorded()
{
    const ServerReply reply = ask("StartTalk", QVariantMap{{"camId", "cam"}, {"relayPath", "relay/2"}});
    QCOMPARE(reply.returnCode, ReturnCode::success);
    const QVariantMap result = reply.result.toMap();
    QCOMPARE(result["camId"].toString(), QStringLiteral("cam"));
    QCOMPARE(result["relayPath"].toString(), QStringLiteral("relay/2"));
    const QString token = result["talkToken"].toString();
    QVERIFY(QRegularExpression("^[0-9a-f]{32}$").match(token).hasMatch());

    const auto samples = WavFiles::sine(300, 0.6, 0.4, 8000);
    const QByteArray encoded = WavFiles::toMuLaw(samples);
    for (int i = 0; i < 5; ++i) {
        const QByteArray bytes =
            packet(static_cast<std::uint32_t>(1000 + i * 640), encoded.mid(i * 640, 640));
        QCOMPARE(ask("TalkData", talk("<Dest>relay/2/" + token + "</Dest>", bytes)).returnCode,
                 ReturnCode::success);
    }
    QCOMPARE(ask("StopTalk", QVariantMap{{"talkToken", token}, {"relayPath", "relay/2"}}).returnCode,
             ReturnCode::success);
    QCOMPARE(ask("StopTalk", QVariantMap{{"talkToken", token}}).returnCode, ReturnCode::noSuchTalk);
    QCOMPARE(recordings().size(), 1);
    QCOMPARE(QFileInfo(recordings()[0]).fileName(), QStringLiteral("cam-1.wav"));
    int rate = 0;
    QCOMPARE(WavFiles::read(recordings()[0], &rate), WavFiles::throughMuLaw(samples));
    QCOMPARE(rate, 8000);
}

void TestRecordingServer::lostPacketsAreSilence()
{
    const QString token = openTalk();
    const QByteArray loud(640, '\x80');
    ask("TalkData", talk(dest(token), packet(0, loud)));
    ask("TalkData", talk(dest(token), packet(1280, loud))); // one packet was lost
    ask("StopTalk", QVariantMap{{"talkToken", token}});
    const auto heard = WavFiles::read(recordings()[0]);
    QCOMPARE(heard.size(), std::size_t{1920});
    QVERIFY(heard[639] > 30000 && heard[1280] > 30000);
    QCOMPARE(heard[640], std::int16_t{0});
    QCOMPARE(heard[1279], std::int16_t{0});
}

void TestRecordingServer::absurdPositionsAreIgnored()
{
    const QString token = openTalk();
    ask("TalkData", talk(dest(token), packet(4294967000U, silentPacket)));
    ask("TalkData", talk(dest(token), packet(4294967000U + 640U, silentPacket))); // wraps: no gap
    ask("TalkData", talk(dest(token), packet(0x80000000U, silentPacket)));        // days ahead
    ask("TalkData", talk(dest(token), packet(0, silentPacket)));                  // and back
    ask("StopTalk", QVariantMap{{"talkToken", token}});
    QCOMPARE(WavFiles::read(recordings()[0]).size(), std::size_t{4 * 640});
}

void TestRecordingServer::refusals_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QVariant>("payload");
    QTest::addColumn<QString>("code");
    QTest::newRow("no such camera") << "StartTalk" << QVariant(QVariantMap{{"camId", "x"}})
                                    << ReturnCode::noSuchCamera;
    QTest::newRow("no camera") << "StartTalk" << QVariant() << ReturnCode::malformedRequest;
    QTest::newRow("offline") << "StartTalk" << QVariant(QVariantMap{{"camId", "off"}})
                             << ReturnCode::cameraOffline;
    QTest::newRow("stop without token") << "StopTalk" << QVariant() << ReturnCode::malformedRequest;
    QTest::newRow("stop of nothing") << "StopTalk" << QVariant(QVariantMap{{"talkToken", "x"}})
                                     << ReturnCode::noSuchTalk;
}

void TestRecordingServer::refusals()
{
    QFETCH(QString, command);
    QFETCH(QVariant, payload);
    QFETCH(QString, code);
    const ServerReply reply = ask(command, payload);
    QCOMPARE(reply.returnCode, code);
    QVERIFY(!reply.errorText.isEmpty());
    QVERIFY(!reply.result.isValid());
    QVERIFY(recordings().isEmpty());
}

void TestRecordingServer::badTalkData_data()
{
    QTest::addColumn<QString>("targets"); // TOKEN stands for the open talk's
    QTest::addColumn<QString>("data");
    QTest::addColumn<QString>("code");
    const auto text = [](const QByteArray& bytes) { return QString::fromLatin1(bytes.toBase64()); };
    const QString good = text(packet(0, silentPacket));
    const QString target = dest("TOKEN");
    QTest::newRow("good") << target << good << ReturnCode::success;
    QTest::newRow("no bitstream") << target << text(packet(0, "")) << ReturnCode::success;
    QTest::newRow("no target") << "" << good << ReturnCode::malformedRequest;
    QTest::newRow("broken target") << "<Dest>TOKEN" << good << ReturnCode::malformedRequest;
    QTest::newRow("unknown target") << dest("0123") << good << ReturnCode::noSuchTalk;
    QTest::newRow("empty token") << dest("") << good << ReturnCode::noSuchTalk;
    QTest::newRow("no Base64") << target << "!!!!" << ReturnCode::malformedRequest;
    QTest::newRow("not Latin") << target << QString::fromUtf8("\xE2\x82\xAC") << ReturnCode::malformedRequest;
    QTest::newRow("no packet") << target << "" << ReturnCode::badTalkPacket;
    QTest::newRow("no header") << target << text(QByteArray(640, 'x')) << ReturnCode::badTalkPacket;
    QTest::newRow("cut header") << target << text(packet(0, "").left(19)) << ReturnCode::badTalkPacket;
    QTest::newRow("another codec") << target << text(packet(0, silentPacket).replace(8, 4, "\0\x40\0\0", 4))
                                   << ReturnCode::badTalkPacket;
    QTest::newRow("another rate") << target << text(packet(0, silentPacket).replace(12, 1, "x"))
                                  << ReturnCode::badTalkPacket;
    QTest::newRow("two channels") << target << text(packet(0, silentPacket).replace(6, 1, "\2"))
                                  << ReturnCode::badTalkPacket;
    QTest::newRow("huge packet") << target << text(packet(0, QByteArray(17000, 'x')))
                                 << ReturnCode::badTalkPacket;
    QTest::newRow("huge text") << target << QString(70000, 'A') << ReturnCode::malformedRequest;
    QTest::newRow("huge targets") << QString(2000000, '<') << good << ReturnCode::malformedRequest;
}

void TestRecordingServer::badTalkData()
{
    QFETCH(QString, targets);
    QFETCH(QString, data);
    QFETCH(QString, code);
    const QString token = openTalk();
    targets.replace("TOKEN", token);
    const QVariantMap payload{{"targets", targets}, {"talkData", data}};
    const ServerReply reply = ask("TalkData", payload);
    QCOMPARE(reply.returnCode, code);
    // The same for a client with a socket, whose packets are no QVariants if they are regular.
    WireMessage message;
    message.kind = WireMessage::Command;
    message.name = Vocabulary::TalkData;
    message.payload = payload;
    const auto read = WireMessage::fromBytes(message.toBytes(), nullptr, WireMessage::Texts);
    QVERIFY(read);
    const ServerReply same = read->talkData ? askInTexts(*read->talkData) : ask("TalkData", read->payload);
    QCOMPARE(same.returnCode, code);
    QCOMPARE(same.errorText, reply.errorText);
    QCOMPARE(same.result, reply.result);
    // The talk is still good.
    QCOMPARE(ask("TalkData", talk(dest(token), packet(0, silentPacket))).returnCode, ReturnCode::success);
}

void TestRecordingServer::severalTargets()
{
    const QString first = openTalk();
    const QString second = openTalk();
    QVERIFY(first != second);
    QCOMPARE(
        ask("TalkData", talk(dest(first) + dest("x") + dest(second), packet(0, silentPacket))).returnCode,
        ReturnCode::noSuchTalk); // one is unknown; the others hear it all the same
    m_session.reset();
    QCOMPARE(recordings().size(), 2);
    for (const QString& recording : recordings()) {
        QCOMPARE(WavFiles::read(recording).size(), std::size_t{640});
    }
}

void TestRecordingServer::talksOfOthersAreClosed()
{
    const QString token = openTalk();
    ServerSession other(*m_server);
    QStringList codes;
    connect(&other, &ServerSession::replied, this,
            [&codes](const QString&, quint64, const ServerReply& reply) { codes << reply.returnCode; });
    other.submit("TalkData", talk(dest(token), packet(0, silentPacket)), 1);
    other.submit("StopTalk", QVariantMap{{"talkToken", token}}, 1);
    QCoreApplication::processEvents();
    QCOMPARE(codes, (QStringList{ReturnCode::noSuchTalk, ReturnCode::noSuchTalk}));
    QCOMPARE(ask("StopTalk", QVariantMap{{"talkToken", token}}).returnCode, ReturnCode::success);
}

void TestRecordingServer::sessionThatGoesAway()
{
    const QString token = openTalk();
    m_session = std::make_unique<ServerSession>(*m_server);
    m_answers.clear();
    connect(m_session.get(), &ServerSession::replied, this,
            [this](const QString& command, quint64 request, const ServerReply& reply) {
                m_answers.push_back({command, request, reply});
            });
    QCOMPARE(ask("StopTalk", QVariantMap{{"talkToken", token}}).returnCode, ReturnCode::noSuchTalk);
}

void TestRecordingServer::pendingReplyOfASessionThatGoesAway()
{
    m_session->submit("StartTalk", QVariantMap{{"camId", "cam"}}, 1);
    m_session.reset();
    QCoreApplication::processEvents();
    QVERIFY(m_answers.empty());
}

void TestRecordingServer::unwritableFolder()
{
    QFile file(m_folder->filePath("sub"));
    QVERIFY(file.open(QIODevice::WriteOnly)); // a file where the folder should be
    QCOMPARE(ask("StartTalk", QVariantMap{{"camId", "cam"}}).returnCode, ReturnCode::storageFailed);
    QVERIFY(recordings().isEmpty());
}

void TestRecordingServer::cameraNamesMakeSafeFiles()
{
    openTalk("../x y");
    QCOMPARE(QFileInfo(recordings()[0]).fileName(), QStringLiteral("___x_y-1.wav"));
}

void TestRecordingServer::recordingIsWrittenInTime()
{
    const QString token = openTalk();
    const auto say = [&](std::uint32_t number) {
        QCOMPARE(ask("TalkData", talk(dest(token), packet(number * 640, silentPacket))).returnCode,
                 QString("0"));
    };
    QElapsedTimer elapsed;
    elapsed.start();
    say(0);
    say(1);
    QTRY_COMPARE(WavFiles::read(recordings()[0]).size(), std::size_t{1280}); // though nothing follows
    QVERIFY2(elapsed.elapsed() < 1500, qPrintable(QString::number(elapsed.elapsed())));
    say(2);
    std::size_t atItsEnd = 0; // when the client reads that it has ended
    const QObject context;
    connect(m_session.get(), &ServerSession::replied, &context,
            [&] { atItsEnd = WavFiles::read(recordings()[0]).size(); });
    QCOMPARE(ask("StopTalk", QVariantMap{{"talkToken", token}}).returnCode, QString("0"));
    QCOMPARE(atItsEnd, std::size_t{1920});
}

void TestRecordingServer::fullDiskIsTold()
{
    if (!FullDisk::possible) {
        QSKIP("Files cannot be kept small here.");
    }
    const QString token = openTalk();
    const FullDisk disk(10000);
    QString code;
    for (std::uint32_t i = 0; i < 200 && code != ReturnCode::badTalkPacket; ++i) {
        code = ask("TalkData", talk(dest(token), packet(i * 640, silentPacket))).returnCode;
    }
    QCOMPARE(code, ReturnCode::badTalkPacket);
    QCOMPARE(ask("TalkData", talk(dest(token), packet(0, silentPacket))).returnCode, code);
}

void TestRecordingServer::recordingsAreNotReplaced()
{
    const QDir folder(m_simulated.recordingDirectory);
    QVERIFY(folder.mkpath("."));
    QFile own(folder.filePath("cam-2.wav")); // what the user put there is not replaced, either
    QVERIFY(own.open(QIODevice::WriteOnly));
    own.close();
    for (int start = 0; start < 3; ++start) {
        RecordingServer server(m_server->config());
        for (int talk = 0; talk < 2; ++talk) {
            ServerSession session(server);
            session.submit("StartTalk", QVariantMap{{"camId", "cam"}}, 1);
        }
        QCOMPARE(recordings().size(), 2 * (start + 1));
    }
    QStringList names;
    for (const QString& recording : recordings()) {
        names += QFileInfo(recording).fileName();
    }
    QCOMPARE(names,
             (QStringList{"cam-1.wav", "cam-3.wav", "cam-4.wav", "cam-5.wav", "cam-6.wav", "cam-7.wav"}));
    QCOMPARE(own.size(), qint64{0});
}

void TestRecordingServer::numbersCostFewLooks()
{
    const QDir folder(m_folder->filePath("many"));
    for (int number = 1; number <= 3000; ++number) {
        const QString made = NumberedFile::create(folder.path(), "talk", "wav");
        QCOMPARE(QFileInfo(made).fileName(), QStringLiteral("talk-%1.wav").arg(number));
    }
    // Any that is free may be taken, none that is there.
    QVERIFY(QFile::remove(folder.filePath("talk-100.wav")));
    QFile kept(folder.filePath("talk-3000.wav"));
    QVERIFY(kept.open(QIODevice::WriteOnly) && kept.write("sound") == 5);
    kept.close();
    QSet<QString> made;
    for (int i = 0; i < 10; ++i) {
        made.insert(NumberedFile::create(folder.path(), "talk", "wav"));
    }
    QCOMPARE(made.size(), 10);
    QCOMPARE(kept.size(), qint64{5});
    QCOMPARE(NumberedFile::create("/proc/none", "talk", "wav"), QString());
}

void TestRecordingServer::numbersOfTwoPrograms()
{
    // Threads in the place of programs: to the file system it is the same.
    const QString folder = m_folder->filePath("both");
    constexpr int programs = 4;
    std::vector<std::thread> threads;
    std::mutex mutex;
    std::atomic<int> ready = 0;
    QStringList made;
    for (int i = 0; i < programs; ++i) {
        threads.emplace_back([&] {
            QStringList own;
            ++ready;
            while (ready < programs) {
                std::this_thread::yield();
            }
            for (int talk = 0; talk < 500; ++talk) {
                own.append(NumberedFile::create(folder, "talk", "wav"));
            }
            const std::lock_guard<std::mutex> lock(mutex);
            made += own;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QVERIFY(!made.contains(QString()));
    QCOMPARE(made.removeDuplicates(), 0);
}

QTEST_GUILESS_MAIN(TestRecordingServer)
#include "tst_recordingserver.moc"
