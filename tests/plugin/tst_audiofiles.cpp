// The audio files on the server and their remote playback.

#include "tests/plugin/PluginFixture.h"
#include "tests/support/SoundFiles.h"
#include "tests/support/WavFiles.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUuid>

#include <cmath>

class TestAudioFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void durations_data();
    void durations();
    void durationOfNothing();
    void unreadableFileHasNoDuration();
    void eventsAreServedMeanwhile();
    void pluginMayEndMeanwhile();
    void uploadSendsTheFile();
    void uploadAppendsAProvisionalEntry();
    void uploadsFollowEachOther();
    void uploadOfAMissingFile();
    void refusedSend();
    void uploadWithoutAHost();
    void replyInsideOfTheSending();
    void listReplies_data();
    void listReplies();
    void equalListIsSilent();
    void replyWithoutAListEmpties();
    void refusedUpload_data();
    void refusedUpload();
    void refusalsWithoutAnEntry();
    void otherCodesDoNothing();
    void deleteAsksTheServer();
    void deleteOfAProvisionalEntry();
    void playRequests();
    void playRequestsWithoutAHost();
    void playReplies_data();
    void playReplies();
    void stopReplies();
    void failedPlayback();

private:
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }
    QUrl shortFile() const { return QUrl::fromLocalFile(path("short.wav")); }
    static QVariantList entries(const PluginFixture& fixture)
    {
        return fixture.plugin->property("audioFileList").toList();
    }

    QTemporaryDir m_folder;
};

void TestAudioFiles::initTestCase()
{
    QVERIFY(WavFiles::write(path("short.wav"), WavFiles::sine(440, 0.3, 0.5, 8000), 8000));
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(440, 0.3, 2.0, 16000), 16000));
    const auto tone = WavFiles::sine(440, 0.3, 3.0, 44100);
    QVERIFY(SoundFiles::write(path("tone.mp3"), tone, 44100));
    QVERIFY(SoundFiles::write(path("tone.m4a"), tone, 44100));
    QFile junk(path("junk.wav"));
    QVERIFY(junk.open(QIODevice::WriteOnly));
    QByteArray noise(5000, 0);
    for (int i = 0; i < noise.size(); ++i) {
        noise[i] = static_cast<char>(i * i * 7 + i / 3);
    }
    junk.write(noise);
}

void TestAudioFiles::durations_data()
{
    QTest::addColumn<int>("milliseconds");
    QTest::addColumn<int>("tolerance"); // of a coded file, whose first and last frames are filled up
    QTest::newRow("tone.wav") << 2000 << 1;
    QTest::newRow("tone.mp3") << 3000 << 100;
    QTest::newRow("tone.m4a") << 3000 << 100;
}

void TestAudioFiles::durations()
{
    QFETCH(int, milliseconds);
    QFETCH(int, tolerance);
    PluginVoiceDesk plugin;
    QElapsedTimer waiting;
    QTimer::singleShot(0, [&waiting] { waiting.start(); });
    const int duration = plugin.getMediaDuration(path(QTest::currentDataTag()));
    QVERIFY(waiting.isValid());
    QVERIFY2(waiting.elapsed() < 4500, "the end of the wait is the duration's change, not the time-out");
    QVERIFY2(std::abs(duration - milliseconds) <= tolerance, qPrintable(QString::number(duration)));
}

void TestAudioFiles::durationOfNothing()
{
    PluginVoiceDesk plugin;
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(plugin.getMediaDuration(path("missing.wav")), 0);
    QCOMPARE(plugin.getMediaDuration(QString()), 0);
    QVERIFY(clock.elapsed() < 2000);
}

void TestAudioFiles::unreadableFileHasNoDuration()
{
    PluginFixture fixture;
    QElapsedTimer waiting;
    QTimer::singleShot(0, [&waiting] { waiting.start(); });
    QVERIFY(fixture.plugin->uploadFile(QUrl::fromLocalFile(path("junk.wav"))));
    const qint64 waited =
        waiting.elapsed(); // from the first event served: the player's own start is not in it
    QVERIFY2(waited > 4500 && waited < 9000, qPrintable(QString::number(waited)));
    COMPARE_VARIANTS(fixture.framework.commands[0].map()["length"], QVariant(0));
    COMPARE_VARIANTS(entries(fixture)[0].toMap()["audioLength"], QVariant(0));
}

void TestAudioFiles::eventsAreServedMeanwhile()
{
    PluginFixture fixture;
    bool served = false;
    QTimer::singleShot(0, [&] {
        fixture.reply("GetAudioFile", "0", QVariantList{QVariantMap{{"audioID", 5}}});
        served = true;
    });
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    QVERIFY(served);
    QCOMPARE(entries(fixture).size(), 2); // the list that came, and the upload behind it
}

void TestAudioFiles::pluginMayEndMeanwhile()
{
    PluginFixture fixture;
    QTimer::singleShot(0, [&] { fixture.plugin.reset(); });
    QVERIFY(!fixture.plugin->uploadFile(shortFile()));
    QVERIFY(!fixture.plugin);
    QVERIFY(fixture.framework.commands.empty());
}

void TestAudioFiles::uploadSendsTheFile()
{
    PluginFixture fixture;
    const QString odd = m_folder.filePath(QString::fromUtf8("Größe %41 #1.wav"));
    QVERIFY(QFile::copy(path("short.wav"), odd));
    QVERIFY(fixture.plugin->uploadFile(QUrl::fromLocalFile(odd)));
    const auto& command = fixture.framework.commands[0];
    QCOMPARE(command.command, QString("UploadFile"));
    QCOMPARE(command.map().keys(), (QStringList{"content", "filename", "length"}));
    QFile file(odd);
    QVERIFY(file.open(QIODevice::ReadOnly));
    COMPARE_VARIANTS(command.map()["content"], QVariant(file.readAll().toBase64()));
    COMPARE_VARIANTS(command.map()["filename"], QVariant(QString::fromUtf8("Größe %41 #1.wav")));
    COMPARE_VARIANTS(command.map()["length"], QVariant(500));
    COMPARE_VARIANTS(entries(fixture)[0].toMap()["audioName"], QString::fromUtf8("Größe %41 #1.wav"));
    QCOMPARE(command.flag, false);
    QCOMPARE(command.extra, QString());
    QVERIFY(command.userData != nullptr);
}

void TestAudioFiles::uploadAppendsAProvisionalEntry()
{
    PluginFixture fixture;
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::audioFileListChanged);
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    QCOMPARE(changed.size(), 1);
    const QVariantMap entry = entries(fixture)[0].toMap();
    const QString guid = entry["guid"].toString();
    COMPARE_VARIANTS(entry, (QVariantMap{{"audioID", -1},
                                         {"audioLength", 500},
                                         {"audioName", "short.wav"},
                                         {"audioStatus", 1},
                                         {"guid", guid}}));
    QVERIFY(!QUuid(guid).isNull());
    QVERIFY(guid.startsWith('{') && guid.endsWith('}'));
    QCOMPARE(*static_cast<QString*>(fixture.framework.commands[0].userData), guid);
}

void TestAudioFiles::uploadsFollowEachOther()
{
    PluginFixture fixture;
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    const QVariantMap first = entries(fixture)[0].toMap();
    const QVariantMap second = entries(fixture)[1].toMap();
    COMPARE_VARIANTS(first["audioID"], QVariant(-1));
    COMPARE_VARIANTS(second["audioID"], QVariant(-2));
    QVERIFY(first["guid"] != second["guid"]);
    fixture.reply("UploadFile", "0", QVariantList(), fixture.framework.commands[0].userData);
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    COMPARE_VARIANTS(entries(fixture)[0].toMap()["audioID"], QVariant(-3)); // never used again
}

void TestAudioFiles::uploadOfAMissingFile()
{
    PluginFixture fixture;
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::audioFileListChanged);
    QVERIFY(!fixture.plugin->uploadFile(QUrl::fromLocalFile(path("missing.wav"))));
    QVERIFY(!fixture.plugin->uploadFile(QUrl("https://example.com/a.wav")));
    QVERIFY(!fixture.plugin->uploadFile(QUrl::fromLocalFile(m_folder.path())));
    QVERIFY(!fixture.plugin->uploadFile(QUrl()));
    QVERIFY(fixture.framework.commands.empty());
    QCOMPARE(changed.size(), 0);
    QVERIFY(fixture.log.errors().isEmpty());
}

void TestAudioFiles::refusedSend()
{
    PluginFixture fixture;
    fixture.framework.accepts = false;
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::audioFileListChanged);
    QVERIFY(!fixture.plugin->uploadFile(shortFile()));
    QCOMPARE(changed.size(), 0);
    QVERIFY(entries(fixture).isEmpty());
    QCOMPARE(fixture.log.errors(),
             QStringList{"PluginVoiceDesk::uploadFile, Send UploadFile command failed, (" +
                         path("short.wav") + ")"});
    fixture.framework.accepts = true;
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    COMPARE_VARIANTS(entries(fixture)[0].toMap()["audioID"], QVariant(-1)); // the refused one took no number
}

void TestAudioFiles::uploadWithoutAHost()
{
    LogCapture log;
    PluginVoiceDesk plugin;
    QVERIFY(!plugin.uploadFile(shortFile()));
    QCOMPARE(log.errors(), QStringList{"PluginVoiceDesk::uploadFile, Send UploadFile command failed, (" +
                                       path("short.wav") + ")"});
    QVERIFY(plugin.audioFileList().isEmpty());
    log.clear();
    plugin.deleteAudioFile(3);
    QVERIFY(log.errors().isEmpty());
}

void TestAudioFiles::replyInsideOfTheSending()
{
    PluginFixture fixture;
    fixture.framework.onCommand = [&](const RecordingFramework::Command& command) {
        fixture.reply("UploadFile", "0", QVariantList(), command.userData);
    };
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    QCOMPARE(entries(fixture).size(), 1); // the list came first, then the entry
}

void TestAudioFiles::listReplies_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("get") << "GetAudioFile";
    QTest::newRow("upload") << "UploadFile";
    QTest::newRow("delete") << "DeleteFile";
}

void TestAudioFiles::listReplies()
{
    QFETCH(QString, command);
    PluginFixture fixture;
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::audioFileListChanged);
    const QVariantList list{QVariantMap{{"audioID", 4}, {"audioStatus", 77}, {"more", "x"}}, "no map"};
    fixture.reply(command, "0", list);
    COMPARE_VARIANTS(entries(fixture), list); // as the server gave it; the provisional entry is gone
    QCOMPARE(changed.size(), 1);
}

void TestAudioFiles::equalListIsSilent()
{
    PluginFixture fixture;
    const auto list = [] { return QVariantList{QVariantMap{{"audioID", 4}}, QVariantMap{{"audioID", 5}}}; };
    fixture.reply("GetAudioFile", "0", list());
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::audioFileListChanged);
    fixture.reply("GetAudioFile", "0", list());
    fixture.reply("GetAudioFile", "0", fixture.plugin->property("audioFileList"));
    QCOMPARE(changed.size(), 0);
    fixture.reply("GetAudioFile", "0",
                  QVariantList{QVariantMap{{"audioID", 5}}, QVariantMap{{"audioID", 4}}});
    QCOMPARE(changed.size(), 1);
}

void TestAudioFiles::replyWithoutAListEmpties()
{
    PluginFixture fixture;
    fixture.reply("GetAudioFile", "0", QVariantList{1});
    fixture.reply("GetAudioFile", "0", 17);
    QVERIFY(entries(fixture).isEmpty());
}

void TestAudioFiles::refusedUpload_data()
{
    QTest::addColumn<int>("outputs");
    QTest::addColumn<int>("status");
    QTest::newRow("with an output device") << 1 << 4;
    QTest::newRow("without one") << 0 << 5;
}

void TestAudioFiles::refusedUpload()
{
    QFETCH(int, outputs);
    QFETCH(int, status);
    PluginFixture fixture;
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::audioFileListChanged);
    SystemOverrides::setOutputDevices(outputs);
    QVariantList expected = entries(fixture);
    QCOMPARE(expected.size(), 2);
    QVariantMap refused = expected[0].toMap();
    refused["audioStatus"] = status;
    expected[0] = refused; // in its place, and nothing else of it changes
    fixture.reply("UploadFile", "-2", QVariant(), fixture.framework.commands[0].userData);
    COMPARE_VARIANTS(entries(fixture), expected);
    QCOMPARE(changed.size(), 1);
    fixture.reply("UploadFile", "1", QVariant(), fixture.framework.commands[1].userData);
}

void TestAudioFiles::refusalsWithoutAnEntry()
{
    PluginFixture fixture;
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    fixture.plugin->deleteAudioFile(-1);
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::audioFileListChanged);
    fixture.reply("UploadFile", "-2", QVariant(), fixture.framework.commands[0].userData);
    fixture.reply("GetAudioFile", "-2");
    fixture.reply("DeleteFile", "-2");
    fixture.reply("UploadFile", "-2", QVariant(), new QString("{never sent}"));
    QCOMPARE(changed.size(), 0);
    QVERIFY(entries(fixture).isEmpty());
}

void TestAudioFiles::otherCodesDoNothing()
{
    PluginFixture fixture;
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    const QVariantList before = entries(fixture);
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::audioFileListChanged);
    fixture.reply("UploadFile", "1", QVariantList{1}, fixture.framework.commands[0].userData);
    fixture.reply("GetAudioFile", "", QVariantList{1});
    fixture.reply("DeleteFile", "-20", QVariantList{1});
    COMPARE_VARIANTS(entries(fixture), before);
    QCOMPARE(changed.size(), 0);
}

void TestAudioFiles::deleteAsksTheServer()
{
    PluginFixture fixture;
    fixture.reply("GetAudioFile", "0", QVariantList{QVariantMap{{"audioID", 4}}});
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::audioFileListChanged);
    fixture.plugin->deleteAudioFile(4);
    fixture.plugin->deleteAudioFile(0);
    QCOMPARE(fixture.framework.names(), (QStringList{"DeleteFile", "DeleteFile"}));
    COMPARE_VARIANTS(fixture.framework.commands[0].param, QVariant(4));
    COMPARE_VARIANTS(fixture.framework.commands[1].param, QVariant(0));
    QCOMPARE(fixture.framework.commands[0].userData, nullptr);
    QCOMPARE(entries(fixture).size(), 1);
    QCOMPARE(changed.size(), 0);
}

void TestAudioFiles::deleteOfAProvisionalEntry()
{
    PluginFixture fixture;
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    QVERIFY(fixture.plugin->uploadFile(shortFile()));
    fixture.framework.commands.clear();
    const QSignalSpy changed(fixture.plugin.get(), &PluginVoiceDesk::audioFileListChanged);
    fixture.plugin->deleteAudioFile(-1);
    QCOMPARE(entries(fixture).size(), 1);
    COMPARE_VARIANTS(entries(fixture)[0].toMap()["audioID"], QVariant(-2));
    QCOMPARE(changed.size(), 1);
    fixture.plugin->deleteAudioFile(-1); // gone: the signal, and nothing else
    QCOMPARE(changed.size(), 2);
    QCOMPARE(entries(fixture).size(), 1);
    QVERIFY(fixture.framework.commands.empty());
}

void TestAudioFiles::playRequests()
{
    PluginFixture fixture;
    fixture.plugin->playAudio(3, 9);
    fixture.plugin->playGroupAudio(4, 9);
    fixture.plugin->stopCurrentAudio(3);
    fixture.plugin->stopCurrentGroupAudio(4);
    const auto& commands = fixture.framework.commands;
    QCOMPARE(fixture.framework.names(),
             (QStringList{"PlayAudio", "PlayGroupAudio", "StopCurrentAudio", "StopCurrentGroupAudio"}));
    COMPARE_VARIANTS(commands[0].map(),
                     (QVariantMap{{"ipAudioId", 3}, {"audioFileId", 9}, {"ipAudioStatus", 1}}));
    COMPARE_VARIANTS(commands[1].map(), (QVariantMap{{"groupID", 4}, {"audioFileId", 9}}));
    COMPARE_VARIANTS(commands[2].param, QVariant(3));
    COMPARE_VARIANTS(commands[3].param, QVariant(4));
    for (const auto& command : commands) {
        QCOMPARE(command.userData, nullptr);
    }
}

void TestAudioFiles::playRequestsWithoutAHost()
{
    const auto request = [](PluginVoiceDesk& plugin) {
        plugin.playAudio(1, 2);
        plugin.playGroupAudio(1, 2);
        plugin.stopCurrentAudio(1);
        plugin.stopCurrentGroupAudio(1);
    };
    PluginFixture refusing;
    refusing.framework.accepts = false;
    const QSignalSpy response(refusing.plugin.get(), &PluginVoiceDesk::playAudioResponse);
    const QSignalSpy error(refusing.plugin.get(), &PluginVoiceDesk::playAudioError);
    const QSignalSpy stopped(refusing.plugin.get(), &PluginVoiceDesk::stopCurrentAudioResponse);
    request(*refusing.plugin);
    QCOMPARE(refusing.framework.commands.size(), std::size_t{4});
    QCOMPARE(response.size() + error.size() + stopped.size(), 0);
    PluginVoiceDesk orphan;
    request(orphan);
    QVERIFY(refusing.log.errors().isEmpty()); // not even a line in the log
}

void TestAudioFiles::playReplies_data()
{
    QTest::addColumn<QString>("returnCode");
    QTest::addColumn<QVariant>("result");
    QTest::addColumn<QVariantList>("arguments");
    QTest::newRow("progress") << "0" << QVariant(QVariantMap{{"progress", 40}})
                              << QVariantList{true, 40, "e", 0};
    QTest::newRow("no progress") << "0" << QVariant(QVariantMap()) << QVariantList{true, 0, "e", 0};
    QTest::newRow("success without a map") << "0" << QVariant(7) << QVariantList{true, 0, "e", 0};
    QTest::newRow("failure") << "5" << QVariant(7) << QVariantList{false, 0, "e", 7};
    QTest::newRow("failure without an id") << "5" << QVariant("x") << QVariantList{false, 0, "e", 0};
    QTest::newRow("failure with a map")
        << "5" << QVariant(QVariantMap{{"progress", 4}}) << QVariantList{false, 4, "e", 0};
}

void TestAudioFiles::playReplies()
{
    QFETCH(QString, returnCode);
    QFETCH(QVariant, result);
    QFETCH(QVariantList, arguments);
    PluginFixture fixture;
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::playAudioResponse);
    for (const char* command : {"PlayAudio", "PlayGroupAudio"}) {
        fixture.plugin->CommandProcessor(command, result, nullptr, returnCode, "e", false, QString());
        COMPARE_VARIANTS(response.last(), arguments);
    }
    QCOMPARE(response.size(), 2);
}

void TestAudioFiles::stopReplies()
{
    PluginFixture fixture;
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::stopCurrentAudioResponse);
    fixture.reply("StopCurrentAudio", "0");
    fixture.reply("StopCurrentGroupAudio", "0");
    QCOMPARE(response.size(), 2);
    fixture.reply("StopCurrentAudio", "1");
    fixture.reply("StopCurrentGroupAudio", "1");
    QCOMPARE(response.size(), 2);
    QVERIFY(fixture.log.errors().isEmpty());
}

void TestAudioFiles::failedPlayback()
{
    PluginFixture fixture;
    const QSignalSpy error(fixture.plugin.get(), &PluginVoiceDesk::playAudioError);
    fixture.event("PlayAudioFailed", QVariantMap{{"deviceName", "Gate"},
                                                 {"audioName", "siren.wav"},
                                                 {"error", "offline"},
                                                 {"alarmName", "Fire"}});
    fixture.event("PlayAudioFailed", QVariantMap{{"deviceName", "Gate"}});
    fixture.event("PlayAudioFailed", QVariantMap{{"PlayAudioFailed", QVariantMap{{"deviceName", "inner"}}}});
    fixture.event("PlayAudioFailed", QVariant());
    COMPARE_VARIANTS(error[0], (QVariantList{"Gate", "siren.wav", "offline", "Fire"}));
    COMPARE_VARIANTS(error[1], (QVariantList{"Gate", "", "", ""}));
    COMPARE_VARIANTS(error[2], (QVariantList{"", "", "", ""})); // unlike other events it has no inner map
    COMPARE_VARIANTS(error[3], (QVariantList{"", "", "", ""}));
}

QTEST_GUILESS_MAIN(TestAudioFiles)
#include "tst_audiofiles.moc"
