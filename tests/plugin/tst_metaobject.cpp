// What the front end can reach by the meta-object, in its order.

#include "tests/plugin/PluginFixture.h"

#include <QTest>

#include <array>
#include <vector>

class TestMetaObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void methodsInOrder();
    void propertiesInOrder();
    void namesOfArguments();
    void tst_setTalkingIsSilent();
    void interfaceCast();
    void captureWrapperSurface();
};

namespace {

// Signature, result; signals, slot and invokables in the order of the meta-object.
const std::vector<std::pair<const char*, const char*>> methods{
    {"audioInDevAvailableChanged()", "void"},
    {"talkingChanged()", "void"},
    {"audioFileListChanged()", "void"},
    {"startTalkResponse(bool)", "void"},
    {"startTalkToIPAudioResponse(bool,QString,int)", "void"},
    {"ipAudioModelChanged()", "void"},
    {"addIPAudioResponse(bool,QString,int)", "void"},
    {"updateIPAudioResponse(bool,QString,int)", "void"},
    {"deleteIPAudioResponse(bool,QString,int)", "void"},
    {"talkDisconnected()", "void"},
    {"playAudioResponse(bool,int,QString,int)", "void"},
    {"stopCurrentAudioResponse()", "void"},
    {"playAudioError(QString,QString,QString,QString)", "void"},
    {"addNetworkAudioGroupResponse(bool,QString,int)", "void"},
    {"updateNetworkAudioGroupResponse(bool,QString,int)", "void"},
    {"deleteNetworkAudioGroupResponse(bool,QString,int)", "void"},
    {"addNetworkAudioScheduleResponse(bool,QString,int)", "void"},
    {"updateNetworkAudioScheduleResponse(bool,QString,int)", "void"},
    {"deleteNetworkAudioScheduleResponse(bool,QString,int)", "void"},
    {"handleAudioCapture(DWORD,QByteArray)", "void"},
    {"setMicVolume(int)", "void"},
    {"setMicMute(bool)", "void"},
    {"startTalk(QString,QString)", "bool"},
    {"startTalkToIPAudio(int)", "bool"},
    {"stopTalk()", "bool"},
    {"stopTalkToIPAudio(int)", "bool"},
    {"addIPAudio(QString,QString,int,QString,QString,QStringList)", "bool"},
    {"updateIPAudio(int,QString,QString,int,QString,QString,QStringList)", "bool"},
    {"startAudioCapture()", "bool"},
    {"stopAudioCapture()", "void"},
    {"deleteIPAudio(int)", "bool"},
    {"retrieveIPAudioModel()", "void"},
    {"getIPAudioModel(QObject*)", "QObject*"},
    {"getNetworkAudioGroupModel(QObject*)", "QObject*"},
    {"getNetworkAudioScheduleModel(QObject*)", "QObject*"},
    {"playAudio(int,int)", "void"},
    {"playGroupAudio(int,int)", "void"},
    {"stopCurrentAudio(int)", "void"},
    {"stopCurrentGroupAudio(int)", "void"},
    {"uploadFile(QUrl)", "bool"},
    {"deleteAudioFile(int)", "void"},
    {"queryBindingIPAudio(QString)", "QVariantMap"},
    {"getNetworkAudioGroup()", "void"},
    {"addNetworkAudioGroup(QString,QVariant)", "bool"},
    {"updateNetworkAudioGroup(int,QString,QVariant)", "bool"},
    {"deleteNetworkAudioGroup(int)", "bool"},
    {"addNetworkAudioSchedule(QVariantMap)", "bool"},
    {"updateNetworkAudioSchedule(int,QVariantMap)", "bool"},
    {"deleteNetworkAudioSchedule(int)", "bool"},
    {"getNetworkAudioSchedule()", "void"},
};

constexpr int signalCount = 19;

// Of the same methods; QML handlers and callers of a host go by them.
const std::vector<QByteArray> argumentNames{
    "",
    "",
    "",
    "success",
    "success returnCode ipAudioId",
    "",
    "success returnCode ipAudioId",
    "success returnCode ipAudioId",
    "success returnCode ipAudioId",
    "",
    "success progress errorCode ipAudioId",
    "",
    "ipAudioName audioFileName errorCode alarmName",
    "success returnCode groupId",
    "success returnCode groupId",
    "success returnCode groupId",
    "success returnCode scheduleId",
    "success returnCode scheduleId",
    "success returnCode scheduleId",
    "type dataBuffer",
    "volume",
    "mute",
    "camId relayPath",
    "ipAudioId",
    "",
    "ipAudioId",
    "deviceName ip port username password bindingCameraList",
    "ipAudioId deviceName ip port username password bindingCameraList",
    "",
    "",
    "ipAudioId",
    "",
    "parent",
    "parent",
    "parent",
    "ipAudioId audioFileId",
    "networkAudioGroupId audioFileId",
    "ipAudioId",
    "networkAudioGroupId",
    "fileUrl",
    "audioID",
    "nodeId",
    "",
    "groupName networkAudioIDList",
    "id groupName networkAudioIDList",
    "id",
    "schedule",
    "id schedule",
    "id",
    "",
};

} // namespace

void TestMetaObject::methodsInOrder()
{
    const QMetaObject& meta = PluginVoiceDesk::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 50);
    QCOMPARE(static_cast<int>(methods.size()), 50);
    for (int i = 0; i < 50; ++i) {
        const QMetaMethod method = meta.method(meta.methodOffset() + i);
        const auto& expected = methods[static_cast<std::size_t>(i)];
        QCOMPARE(method.methodSignature(), QByteArray(expected.first));
        QCOMPARE(QByteArray(method.typeName()), QByteArray(expected.second));
        const auto type = i < signalCount    ? QMetaMethod::Signal
                          : i == signalCount ? QMetaMethod::Slot
                                             : QMetaMethod::Method;
        QCOMPARE(method.methodType(), type);
        QCOMPARE(method.access(), i == signalCount ? QMetaMethod::Protected : QMetaMethod::Public);
    }
    QCOMPARE(meta.superClass(), &QObject::staticMetaObject); // the host's class has no meta-object
}

void TestMetaObject::propertiesInOrder()
{
    const QMetaObject& meta = PluginVoiceDesk::staticMetaObject;
    const std::vector<std::array<const char*, 3>> expected{
        {"audioInDevAvailable", "bool", "audioInDevAvailableChanged()"},
        {"talking", "bool", "talkingChanged()"},
        {"audioFileList", "QVariantList", "audioFileListChanged()"},
    };
    QCOMPARE(meta.propertyCount() - meta.propertyOffset(), 3);
    for (int i = 0; i < 3; ++i) {
        const QMetaProperty property = meta.property(meta.propertyOffset() + i);
        const auto& row = expected[static_cast<std::size_t>(i)];
        QCOMPARE(property.name(), row[0]);
        QCOMPARE(property.typeName(), row[1]);
        QCOMPARE(property.notifySignal().methodSignature(), QByteArray(row[2]));
        QVERIFY(property.isReadable() && !property.isWritable() && !property.isResettable());
        QVERIFY(property.isStored() && property.isScriptable() && property.isDesignable());
        QVERIFY(!property.isConstant());
    }
}

void TestMetaObject::namesOfArguments()
{
    const QMetaObject& meta = PluginVoiceDesk::staticMetaObject;
    QCOMPARE(argumentNames.size(), methods.size());
    for (std::size_t i = 0; i < methods.size(); ++i) {
        const QMetaMethod method = meta.method(meta.methodOffset() + static_cast<int>(i));
        QVERIFY2(method.parameterNames().join(' ') == argumentNames[i], method.methodSignature().constData());
    }
}

void TestMetaObject::tst_setTalkingIsSilent()
{
    PluginFixture f;
    QSignalSpy changed(f.plugin.get(), &PluginVoiceDesk::talkingChanged);
    f.plugin->tst_setTalking(true);
    QVERIFY(f.plugin->talking());
    QCOMPARE(changed.count(), 0);
}

void TestMetaObject::interfaceCast()
{
    PluginFixture f;
    QObject* object = f.plugin.get();
    QCOMPARE(object->qt_metacast(nullptr), nullptr);
    QCOMPARE(object->qt_metacast("PluginVoiceDesk"), static_cast<void*>(f.plugin.get()));
    QCOMPARE(object->qt_metacast("com.QUARNEL.UIFramework.PluginInterface"),
             static_cast<void*>(static_cast<PluginBase*>(f.plugin.get())));
    QCOMPARE(object->qt_metacast("PluginBase"), nullptr);
    QCOMPARE(object->qt_metacast("QObject"), static_cast<void*>(object));
    QCOMPARE(qobject_cast<PluginBase*>(object), static_cast<PluginBase*>(f.plugin.get()));
}

void TestMetaObject::captureWrapperSurface()
{
    const QMetaObject& meta = FrameSmithWrapper::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    const QMetaMethod method = meta.method(meta.methodOffset());
    QCOMPARE(method.methodType(), QMetaMethod::Signal);
    QCOMPARE(method.methodSignature(), QByteArray("audioCaptured(DWORD,QByteArray)"));
    QCOMPARE(method.parameterNames().join(' '), QByteArray("type dataBuffer"));
}

QTEST_GUILESS_MAIN(TestMetaObject)
#include "tst_metaobject.moc"
