// The blocks that travel as user data: whose they are, what they hold, and when they are freed. Reads and
// frees of the wrong memory are seen by the address sanitizer, lost blocks by its leak checker.

#include "src/PendingBlocks.h"
#include "tests/plugin/PluginFixture.h"

#include <QTest>

class TestUserData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QCOMPARE(PendingBlocks::count(), std::size_t{0}); }
    void cleanup() { QCOMPARE(PendingBlocks::count(), std::size_t{0}); }
    void aReplyFreesItsBlock_data();
    void aReplyFreesItsBlock();
    void blockOfAnUploadForATalk_data();
    void blockOfAnUploadForATalk();
    void blockOfATalkForAnUpload_data();
    void blockOfATalkForAnUpload();
    void otherCommandsTouchNoBlock();
    void theHostsOwnNumber_data();
    void theHostsOwnNumber();
    void theHostsOwnText_data();
    void theHostsOwnText();
    void replyAfterTheEndOfTheObject();
    void replyToTheNextObject();
    void refusedRequests();
    void replyInsideTheRequest();

private:
    static void* upload(PluginFixture& f);
    static void* askForTalk(PluginFixture& f, int device);
    static int statusOf(const PluginFixture& f);
};

namespace {

void addCodes()
{
    QTest::addColumn<QString>("code");
    for (const char* code : {"0", "1", "-2", ""}) {
        QTest::addRow("\"%s\"", code) << QString::fromLatin1(code);
    }
}

} // namespace

/** Uploads a file. @return the user data */
void* TestUserData::upload(PluginFixture& f)
{
    f.plugin->uploadFile(QUrl::fromLocalFile(QStringLiteral(ANNOUNCEMENT_WAV)));
    return f.framework.commands.back().userData;
}

void* TestUserData::askForTalk(PluginFixture& f, int device)
{
    f.plugin->startTalkToIPAudio(device);
    return f.framework.commands.back().userData;
}

int TestUserData::statusOf(const PluginFixture& f)
{
    return f.plugin->audioFileList().value(0).toMap().value("audioStatus").toInt();
}

void TestUserData::aReplyFreesItsBlock_data()
{
    addCodes();
}

void TestUserData::aReplyFreesItsBlock()
{
    QFETCH(QString, code);
    PluginFixture f;
    void* number = askForTalk(f, 7);
    void* text = upload(f);
    QCOMPARE(PendingBlocks::count(), std::size_t{2});
    f.reply("StartTalkToIPAudio", code, QVariant(), number);
    QCOMPARE(PendingBlocks::count(), std::size_t{1});
    f.reply("UploadFile", code, QVariant(), text);
    QCOMPARE(PendingBlocks::count(), std::size_t{0});
}

void TestUserData::blockOfAnUploadForATalk_data()
{
    addCodes();
}

void TestUserData::blockOfAnUploadForATalk()
{
    QFETCH(QString, code);
    PluginFixture f;
    QSignalSpy answers(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
    void* text = upload(f);
    f.reply("StartTalkToIPAudio", code, QVariantMap{{"talkToken", "t"}}, text);
    QCOMPARE(answers.count(), 0); // as without a block
    QCOMPARE(f.plugin->getTalkTargetList(), QList<QVariant>());
    QCOMPARE(PendingBlocks::count(), std::size_t{1});
    f.reply("UploadFile", "-2", QVariant(), text); // its own reply still finds it
    QCOMPARE(statusOf(f), 5);
}

void TestUserData::blockOfATalkForAnUpload_data()
{
    addCodes();
}

void TestUserData::blockOfATalkForAnUpload()
{
    QFETCH(QString, code);
    for (const char* command : {"UploadFile", "GetAudioFile", "DeleteFile"}) {
        PluginFixture f;
        upload(f); // an entry that a guid might be looked for in
        void* text = f.framework.commands.back().userData;
        QSignalSpy answers(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
        void* number = askForTalk(f, 42);
        f.reply(command, code, QVariantList{QVariantMap{{"audioID", 1}, {"audioStatus", 2}}}, number);
        QCOMPARE(statusOf(f), code == "0" ? 2 : 1); // the list is taken all the same
        QCOMPARE(PendingBlocks::count(), std::size_t{2});
        f.reply("StartTalkToIPAudio", "0", QVariantMap{{"talkToken", "t"}}, number);
        QCOMPARE(answers.count(), 1);
        QCOMPARE(answers[0], (QVariantList{true, "", 42}));
        f.reply("UploadFile", "0", QVariantList(), text);
    }
}

void TestUserData::otherCommandsTouchNoBlock()
{
    PluginFixture f;
    void* number = askForTalk(f, 42);
    void* text = upload(f);
    for (const char* command : {"StartTalk",
                                "StopTalk",
                                "StopTalkToIPAudio",
                                "TalkData",
                                "AddIPAudio",
                                "UpdateIPAudio",
                                "DeleteIPAudio",
                                "RetrieveIPAudioModel",
                                "PlayAudio",
                                "PlayGroupAudio",
                                "StopCurrentAudio",
                                "StopCurrentGroupAudio",
                                "AddNetworkAudioGroup",
                                "UpdateNetworkAudioGroup",
                                "DeleteNetworkAudioGroup",
                                "GetNetworkAudioGroup",
                                "AddNetworkAudioSchedule",
                                "UpdateNetworkAudioSchedule",
                                "DeleteNetworkAudioSchedule",
                                "GetNetworkAudioSchedule",
                                "NoSuchCommand",
                                ""}) {
        for (const char* code : {"0", "-2", "1"}) {
            f.reply(command, code, QVariant(), number);
            f.reply(command, code, QVariant(), text);
        }
    }
    QCOMPARE(PendingBlocks::count(), std::size_t{2});
    QCOMPARE(*static_cast<int*>(number), 42);
    f.reply("StartTalkToIPAudio", "1", QVariant(), number);
    f.reply("UploadFile", "-2", QVariant(), text);
    QCOMPARE(statusOf(f), 5);
}

void TestUserData::theHostsOwnNumber_data()
{
    addCodes();
}

void TestUserData::theHostsOwnNumber()
{
    QFETCH(QString, code);
    PluginFixture f;
    QSignalSpy answers(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
    f.reply("StartTalkToIPAudio", code, QVariantMap{{"talkToken", "t"}}, new int(9)); // read and freed
    QCOMPARE(answers.count(), 1);
    QCOMPARE(answers[0], (QVariantList{code == "0", "", 9}));
}

void TestUserData::theHostsOwnText_data()
{
    addCodes();
}

void TestUserData::theHostsOwnText()
{
    QFETCH(QString, code);
    PluginFixture f;
    void* text = upload(f);
    const QString guid = f.plugin->audioFileList().value(0).toMap().value("guid").toString();
    auto* own = new QString(guid + "!"); // with memory of its own
    own->chop(1);
    f.reply("UploadFile", code, QVariantList{QVariantMap{{"audioStatus", 2}}}, own);
    if (code == "-2") {
        QCOMPARE(statusOf(f), 5); // read and freed
    } else {
        QCOMPARE(*own, guid); // not touched
        delete own;
    }
    f.reply("UploadFile", "1", QVariant(), text);
}

void TestUserData::replyAfterTheEndOfTheObject()
{
    PluginFixture f;
    void* number = askForTalk(f, 42);
    void* text = upload(f);
    f.plugin.reset();
    QCOMPARE(PendingBlocks::count(), std::size_t{2}); // a host may still hold them
    QCOMPARE(*static_cast<int*>(number), 42);
    PendingBlocks::discard(static_cast<int*>(number));
    PendingBlocks::discard(static_cast<QString*>(text));
}

void TestUserData::replyToTheNextObject()
{
    PluginFixture f;
    void* number = askForTalk(f, 42);
    void* text = upload(f);
    f.plugin.reset();
    PluginFixture next;
    QSignalSpy answers(next.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
    next.reply("StartTalkToIPAudio", "0", QVariantMap{{"talkToken", "t"}}, number);
    QCOMPARE(answers.count(), 1);
    QCOMPARE(answers[0], (QVariantList{true, "", 42}));
    next.reply("UploadFile", "-2", QVariant(), text);
    QCOMPARE(next.plugin->audioFileList(), QVariantList());
}

void TestUserData::refusedRequests()
{
    PluginFixture f;
    f.framework.accepts = false;
    QVERIFY(!f.plugin->startTalkToIPAudio(1));
    upload(f);
    QCOMPARE(PendingBlocks::count(), std::size_t{0});
}

void TestUserData::replyInsideTheRequest()
{
    PluginFixture f;
    QSignalSpy answers(f.plugin.get(), &PluginVoiceDesk::startTalkToIPAudioResponse);
    f.framework.onCommand = [&](const RecordingFramework::Command& command) {
        f.reply(command.command, "1", QVariant(), command.userData);
    };
    for (const bool accepts : {true, false}) {
        f.framework.accepts = accepts;
        QCOMPARE(f.plugin->startTalkToIPAudio(3), accepts);
        QCOMPARE(PendingBlocks::count(), std::size_t{0});
    }
    QCOMPARE(answers.count(), 2);
}

QTEST_GUILESS_MAIN(TestUserData)
#include "tst_userdata.moc"
