// The test camera as a program: its options, and its end with whoever started it.

#include <QProcess>
#include <QTest>

class TestTestCamera : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void help();
    void refusals_data();
    void refusals();
    void endsWithItsInput();

private:
    /** Starts it, and waits until clients may come. */
    static void start(QProcess& camera)
    {
        camera.start(QStringLiteral(TEST_CAMERA), {"--jitter", "20"});
        QByteArray out;
        QTRY_VERIFY((out += camera.readAllStandardOutput()).startsWith("ready "));
    }
};

void TestTestCamera::help()
{
    QProcess camera;
    camera.start(QStringLiteral(TEST_CAMERA), {"--help"});
    QVERIFY(camera.waitForFinished());
    QCOMPARE(camera.exitCode(), 0);
    const QByteArray out = camera.readAllStandardOutput();
    QVERIFY2(out.startsWith("usage: test_camera"), out.constData());
    QVERIFY2(out.contains("\n  --back-codec NAME "), out.constData());
}

void TestTestCamera::refusals_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("words");
    QTest::newRow("unknown") << QStringList{"--voices", "tone"} << QByteArray("unknown option: --voices\n");
    QTest::newRow("no option") << QStringList{"tone"} << QByteArray("unknown option: tone\n");
    QTest::newRow("no value") << QStringList{"--jitter"} << QByteArray("no value: --jitter\n");
    QTest::newRow("a codec") << QStringList{"--codec", "mp3"} << QByteArray("unknown codec: mp3\n");
    QTest::newRow("a codec to it") << QStringList{"--back-codec", ""} << QByteArray("unknown codec: \n");
}

void TestTestCamera::refusals()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, words);
    QProcess camera;
    camera.start(QStringLiteral(TEST_CAMERA), options);
    QVERIFY(camera.waitForFinished());
    QCOMPARE(camera.exitStatus(), QProcess::NormalExit);
    QCOMPARE(camera.exitCode(), 1);
    QCOMPARE(camera.readAllStandardError(), words);
    QCOMPARE(camera.readAllStandardOutput(), QByteArray());
}

void TestTestCamera::endsWithItsInput()
{
    QProcess camera;
    start(camera);
    camera.closeWriteChannel();
    QVERIFY(camera.waitForFinished());
    QCOMPARE(camera.exitStatus(), QProcess::NormalExit);
    QCOMPARE(camera.exitCode(), 0);
}

QTEST_GUILESS_MAIN(TestTestCamera)
#include "tst_testcamera.moc"
