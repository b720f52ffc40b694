// The camera of these tests, asked by a client that nobody of this project wrote: both of ours could be wrong
// in the same way.

#include "tests/onvif/ScriptedCamera.h"

#include <QFileInfo>
#include <QProcess>
#include <QTest>

class TestScriptedCamera : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void independentClient_data();
    void independentClient();
};

void TestScriptedCamera::init()
{
    if (!QFileInfo::exists(INDEPENDENT_CLIENT)) {
        QSKIP("Needs the library libonvif-dev when it is built.");
    }
}

void TestScriptedCamera::independentClient_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<qint64>("clockOffset");
    QTest::addColumn<bool>("admitted");
    QTest::newRow("right") << "geheim" << qint64(0) << true;
    QTest::newRow("another clock") << "geheim" << qint64(90000000) << true;
    QTest::newRow("wrong password") << "Geheim" << qint64(0) << false;
}

void TestScriptedCamera::independentClient()
{
    QFETCH(QString, password);
    QFETCH(qint64, clockOffset);
    QFETCH(bool, admitted);
    ScriptedCamera camera;
    camera.user = "anna";
    camera.password = "geheim";
    camera.clockOffset = clockOffset;
    QProcess client;
    client.start(INDEPENDENT_CLIENT, {camera.url().toString(), "anna", password});
    QTRY_COMPARE_WITH_TIMEOUT(client.state(), QProcess::NotRunning, 20000);
    const QByteArray out = client.readAllStandardOutput();
    QVERIFY2(out.contains("time 0 "), out.constData());
    QCOMPARE(out.contains("capabilities 0 "), admitted);
    QCOMPARE(out.contains("profile 0 main&1"), admitted);
    QCOMPARE(out.contains("stream 0 rtsp://127.0.0.1:8554/live?profile=1"), admitted);
    QCOMPARE(client.exitCode(), admitted ? 0 : 2);
}

QTEST_GUILESS_MAIN(TestScriptedCamera)
#include "tst_scriptedcamera.moc"
