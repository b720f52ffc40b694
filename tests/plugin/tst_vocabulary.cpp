#include "src/vocabulary/Vocabulary.h"
#include "tests/plugin/PluginFixture.h"

#include <QTest>

#include <array>

class TestVocabulary : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wordsLetterByLetter();
    void eventNameInAnotherCaseIsIgnored();
    void successIsExactlyZero_data();
    void successIsExactlyZero();
    void replyToAnUnusedCommandIsDropped();
};

namespace {

using Word = std::pair<const QString*, const char*>;

// The names are the protocol: a changed letter here is a broken client.
const std::array<Word, 69> words{{
    {&Vocabulary::alarmName, "alarmName"},
    {&Vocabulary::audioFileId, "audioFileId"},
    {&Vocabulary::audioID, "audioID"},
    {&Vocabulary::audioLength, "audioLength"},
    {&Vocabulary::audioName, "audioName"},
    {&Vocabulary::audioStatus, "audioStatus"},
    {&Vocabulary::guid, "guid"},
    {&Vocabulary::bindingCameraList, "bindingCameraList"},
    {&Vocabulary::camId, "camId"},
    {&Vocabulary::deviceID, "deviceID"},
    {&Vocabulary::deviceName, "deviceName"},
    {&Vocabulary::enableSchedule, "enableSchedule"},
    {&Vocabulary::enableScheduleEndTime, "enableScheduleEndTime"},
    {&Vocabulary::groupID, "groupID"},
    {&Vocabulary::groupIDList, "groupIDList"},
    {&Vocabulary::groupName, "groupName"},
    {&Vocabulary::ip, "ip"},
    {&Vocabulary::ipAudioId, "ipAudioId"},
    {&Vocabulary::ipAudioStatus, "ipAudioStatus"},
    {&Vocabulary::networkAudioIDList, "networkAudioIDList"},
    {&Vocabulary::networkAudioNameList, "networkAudioNameList"},
    {&Vocabulary::password, "password"},
    {&Vocabulary::port, "port"},
    {&Vocabulary::relayPath, "relayPath"},
    {&Vocabulary::scheduleEndTime, "scheduleEndTime"},
    {&Vocabulary::scheduleID, "scheduleID"},
    {&Vocabulary::scheduleName, "scheduleName"},
    {&Vocabulary::scheduleSettings, "scheduleSettings"},
    {&Vocabulary::scheduleStartTime, "scheduleStartTime"},
    {&Vocabulary::scheduleType, "scheduleType"},
    {&Vocabulary::sequence, "sequence"},
    {&Vocabulary::talkData, "talkData"},
    {&Vocabulary::error, "error"},
    {&Vocabulary::targets, "targets"},
    {&Vocabulary::talkToken, "talkToken"},
    {&Vocabulary::username, "username"},
    {&Vocabulary::AudioReceived, "AudioReceived"},
    {&Vocabulary::PlayAudioFailed, "PlayAudioFailed"},
    {&Vocabulary::TalkDisconnected, "TalkDisconnected"},
    {&Vocabulary::FrameworkInternalError, "{2C85B19D-AE6F-45D9-B8FE-DC436FCBEABE}FrameworkInternalError"},
    {&Vocabulary::returnCodeFileRefused, "-2"},
    {&Vocabulary::param, "param"},
    {&Vocabulary::addSystemLog, "addSystemLog"},
    {&Vocabulary::AddIPAudio, "AddIPAudio"},
    {&Vocabulary::AddNetworkAudioGroup, "AddNetworkAudioGroup"},
    {&Vocabulary::AddNetworkAudioSchedule, "AddNetworkAudioSchedule"},
    {&Vocabulary::AlarmPlayIPAudio, "AlarmPlayIPAudio"},
    {&Vocabulary::DeleteFile, "DeleteFile"},
    {&Vocabulary::DeleteNetworkAudioGroup, "DeleteNetworkAudioGroup"},
    {&Vocabulary::DeleteNetworkAudioSchedule, "DeleteNetworkAudioSchedule"},
    {&Vocabulary::DeleteIPAudio, "DeleteIPAudio"},
    {&Vocabulary::GetAudioFile, "GetAudioFile"},
    {&Vocabulary::RetrieveIPAudioModel, "RetrieveIPAudioModel"},
    {&Vocabulary::GetNetworkAudioGroup, "GetNetworkAudioGroup"},
    {&Vocabulary::GetNetworkAudioSchedule, "GetNetworkAudioSchedule"},
    {&Vocabulary::PlayAudio, "PlayAudio"},
    {&Vocabulary::PlayGroupAudio, "PlayGroupAudio"},
    {&Vocabulary::TalkData, "TalkData"},
    {&Vocabulary::StartTalk, "StartTalk"},
    {&Vocabulary::StartTalkToIPAudio, "StartTalkToIPAudio"},
    {&Vocabulary::StopCurrentAudio, "StopCurrentAudio"},
    {&Vocabulary::StopCurrentGroupAudio, "StopCurrentGroupAudio"},
    {&Vocabulary::StopTalk, "StopTalk"},
    {&Vocabulary::StopTalkToIPAudio, "StopTalkToIPAudio"},
    {&Vocabulary::UpdateNetworkAudioGroup, "UpdateNetworkAudioGroup"},
    {&Vocabulary::UpdateNetworkAudioSchedule, "UpdateNetworkAudioSchedule"},
    {&Vocabulary::UpdateIPAudio, "UpdateIPAudio"},
    {&Vocabulary::UploadFile, "UploadFile"},
    {&Vocabulary::otherPluginId, "D8C607070A81469B8CA4FF2E107DB6AB"},
}};

} // namespace

void TestVocabulary::wordsLetterByLetter()
{
    for (const Word& word : words) {
        QCOMPARE(*word.first, QLatin1String(word.second));
    }
}

void TestVocabulary::eventNameInAnotherCaseIsIgnored()
{
    PluginFixture f;
    f.openCameraTalk("token");
    f.event("talkdisconnected", QVariantMap{{"talkdisconnected", QVariantMap{{"Token", "token"}}}});
    f.event("TALKDISCONNECTED", PluginFixture::disconnected("token"));
    QVERIFY(f.plugin->talking());
    f.event("TalkDisconnected", PluginFixture::disconnected("token"));
    QVERIFY(!f.plugin->talking());
}

void TestVocabulary::successIsExactlyZero_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<bool>("success");
    QTest::newRow("0") << "0" << true;
    QTest::newRow("00") << "00" << false;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("space") << " 0" << false;
    QTest::newRow("-2") << "-2" << false;
    QTest::newRow("1") << "1" << false;
}

void TestVocabulary::successIsExactlyZero()
{
    QFETCH(QString, code);
    QFETCH(bool, success);
    PluginFixture f;
    QSignalSpy response(f.plugin.get(), &PluginVoiceDesk::startTalkResponse);
    f.reply("StartTalk", code, QVariantMap{{"talkToken", "t"}});
    QCOMPARE(response.count(), 1);
    QCOMPARE(response[0][0].toBool(), success);
    QCOMPARE(f.plugin->talking(), success);
}

void TestVocabulary::replyToAnUnusedCommandIsDropped()
{
    PluginFixture f;
    f.openCameraTalk("token");
    const auto targets = f.plugin->getTalkTargetList();
    f.framework.commands.clear();
    f.reply("AlarmPlayIPAudio", "0", QVariantMap{{"talkToken", "x"}});
    f.reply("addSystemLog", "1");
    f.reply("starttalk", "0", QVariantMap{{"talkToken", "x"}});
    f.reply("StartTalk ", "0", QVariantMap{{"talkToken", "x"}});
    COMPARE_VARIANTS(f.plugin->getTalkTargetList(), targets);
    QVERIFY(f.framework.commands.empty());
    QVERIFY(f.log.errors().isEmpty());
}

QTEST_GUILESS_MAIN(TestVocabulary)
#include "tst_vocabulary.moc"
