#include "PluginFixture.h"

#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlExpression>
#include <QTest>

class TestSurface : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void methodsInOrder();
    void propertiesInOrder();
    void namesOfArguments();
    void invisibleOperations();
    void qmlHearsArgumentsByName();
    void qmlCannotSetTalking();
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

} // namespace

void TestSurface::methodsInOrder()
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

void TestSurface::propertiesInOrder()
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

void TestSurface::namesOfArguments()
{
    const QMetaObject& meta = PluginVoiceDesk::staticMetaObject;
    const auto names = [](const char* signature) {
        QByteArrayList list = meta.method(meta.indexOfMethod(signature)).parameterNames();
        return list.join(' ');
    };
    QCOMPARE(names("startTalkResponse(bool)"), QByteArray("success"));
    for (const char* signal :
         {"startTalkToIPAudioResponse(bool,QString,int)", "addIPAudioResponse(bool,QString,int)",
          "updateIPAudioResponse(bool,QString,int)", "deleteIPAudioResponse(bool,QString,int)"}) {
        QCOMPARE(names(signal), QByteArray("success returnCode ipAudioId"));
    }
    QCOMPARE(names("playAudioResponse(bool,int,QString,int)"),
             QByteArray("success progress errorCode ipAudioId"));
    QCOMPARE(names("playAudioError(QString,QString,QString,QString)"),
             QByteArray("ipAudioName audioFileName errorCode alarmName"));
    for (const char* verb : {"add", "update", "delete"}) {
        QCOMPARE(names((verb + QByteArray("NetworkAudioGroupResponse(bool,QString,int)")).constData()),
                 QByteArray("success returnCode groupId"));
        QCOMPARE(names((verb + QByteArray("NetworkAudioScheduleResponse(bool,QString,int)")).constData()),
                 QByteArray("success returnCode scheduleId"));
    }
    QCOMPARE(names("handleAudioCapture(DWORD,QByteArray)"), QByteArray("type dataBuffer"));
    QCOMPARE(names("addIPAudio(QString,QString,int,QString,QString,QStringList)"),
             QByteArray("deviceName ip port username password bindingCameraList"));
    QCOMPARE(names("updateIPAudio(int,QString,QString,int,QString,QString,QStringList)"),
             QByteArray("ipAudioId deviceName ip port username password bindingCameraList"));
    QCOMPARE(names("startTalk(QString,QString)"), QByteArray("camId relayPath"));
    QCOMPARE(names("playGroupAudio(int,int)"), QByteArray("networkAudioGroupId audioFileId"));
    QCOMPARE(names("updateNetworkAudioGroup(int,QString,QVariant)"),
             QByteArray("id groupName networkAudioIDList"));
}

void TestSurface::invisibleOperations()
{
    QQmlEngine engine;
    PluginFixture f;
    QQmlEngine::setObjectOwnership(f.plugin.get(), QQmlEngine::CppOwnership);
    engine.rootContext()->setContextProperty("plugin", f.plugin.get());
    for (const char* name : {"getTalkTargetList", "setTalkTargetList", "setFrameSmithWrapper",
                             "getMediaDuration", "tst_setTalking"}) {
        QQmlExpression expression(engine.rootContext(), nullptr,
                                  QStringLiteral("typeof plugin.%1").arg(QLatin1String(name)));
        QCOMPARE(expression.evaluate().toString(), QStringLiteral("undefined"));
    }
    QQmlExpression visible(engine.rootContext(), nullptr, QStringLiteral("typeof plugin.startTalk"));
    QCOMPARE(visible.evaluate().toString(), QStringLiteral("function"));
}

void TestSurface::qmlHearsArgumentsByName()
{
    QQmlEngine engine;
    PluginFixture f;
    engine.rootContext()->setContextProperty("plugin", f.plugin.get());
    QQmlComponent component(&engine);
    component.setData(
        "import QtQml 2.15\n"
        "QtObject {\n"
        "  property string heard: ''\n"
        "  property var link: Connections {\n"
        "    target: plugin\n"
        "    onStartTalkToIPAudioResponse: heard = success + '|' + returnCode + '|' + ipAudioId\n"
        "  }\n"
        "}\n",
        QUrl());
    const std::unique_ptr<QObject> object(component.create());
    QVERIFY2(object, qPrintable(component.errorString()));
    Q_EMIT f.plugin->startTalkToIPAudioResponse(false, "busy", 12);
    QCOMPARE(object->property("heard").toString(), QStringLiteral("false|busy|12"));
}

void TestSurface::qmlCannotSetTalking()
{
    QQmlEngine engine;
    PluginFixture f;
    engine.rootContext()->setContextProperty("plugin", f.plugin.get());
    QQmlExpression expression(engine.rootContext(), nullptr, QStringLiteral("plugin.talking = true"));
    expression.evaluate();
    QVERIFY(expression.hasError());
    QVERIFY(!f.plugin->talking());
    QVERIFY(!f.plugin->setProperty("talking", true));
}

void TestSurface::tst_setTalkingIsSilent()
{
    PluginFixture f;
    QSignalSpy changed(f.plugin.get(), &PluginVoiceDesk::talkingChanged);
    f.plugin->tst_setTalking(true);
    QVERIFY(f.plugin->talking());
    QCOMPARE(changed.count(), 0);
}

void TestSurface::interfaceCast()
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

void TestSurface::captureWrapperSurface()
{
    const QMetaObject& meta = FrameSmithWrapper::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    const QMetaMethod method = meta.method(meta.methodOffset());
    QCOMPARE(method.methodType(), QMetaMethod::Signal);
    QCOMPARE(method.methodSignature(), QByteArray("audioCaptured(DWORD,QByteArray)"));
    QCOMPARE(method.parameterNames().join(' '), QByteArray("type dataBuffer"));
}

QTEST_GUILESS_MAIN(TestSurface)
#include "tst_surface.moc"
