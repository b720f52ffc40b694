#include "tests/plugin/PluginFixture.h"

#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlExpression>
#include <QTest>

class TestSurface : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void invisibleOperations();
    void qmlHearsArgumentsByName();
    void qmlCannotSetTalking();
};

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

QTEST_GUILESS_MAIN(TestSurface)
#include "tst_surface.moc"
