// Lines to cameras that do what gst-rtsp-server never does.

#include "protocol/ServerReply.h"
#include "tests/server/onvif/ScriptedRtsp.h"
#include "tests/server/onvif/TalkProbe.h"

class TestOnvifScripts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void talks();
    void recordsWhatItDoesNotPlay_data();
    void recordsWhatItDoesNotPlay();
    void refusesToRecord_data();
    void refusesToRecord();
};

/** The script itself is that of a camera that can be talked to. */
void TestOnvifScripts::talks()
{
    ScriptedRtsp camera;
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(probe.say(2));
    QVERIFY(probe.waitFor([&] { return camera.packets == 8; }));
    QVERIFY(probe.close());
    QVERIFY(camera.hasRequest("PLAY", "Require: www.onvif.org/ver20/backchannel"));
    QVERIFY(!camera.hasRequest("RECORD"));
    QVERIFY(probe.waitFor([&] { return camera.hasRequest("TEARDOWN"); }));
}

void TestOnvifScripts::recordsWhatItDoesNotPlay_data()
{
    QTest::addColumn<QByteArray>("refusal");
    for (const char* refusal :
         {"400 Bad Request", "455 Method Not Valid in This State", "459 Aggregate Operation Not Allowed"}) {
        QTest::newRow(refusal) << QByteArray(refusal);
    }
}

void TestOnvifScripts::recordsWhatItDoesNotPlay()
{
    QFETCH(QByteArray, refusal);
    ScriptedRtsp camera;
    camera.answers["PLAY"] = refusal + "\r\n\r\n";
    TalkProbe probe(camera.address());
    QVERIFY2(probe.open(), qPrintable(probe.reason));
    QVERIFY(camera.hasRequest("RECORD", "Require: www.onvif.org/ver20/backchannel"));
    QVERIFY(probe.say(2));
    QVERIFY(probe.waitFor([&] { return camera.packets == 8; }));
    QVERIFY(probe.close());
    QVERIFY(probe.waitFor([&] { return camera.hasRequest("TEARDOWN"); }));
}

void TestOnvifScripts::refusesToRecord_data()
{
    QTest::addColumn<QByteArray>("refusal");
    for (const char* refusal : {"400 Bad Request", "405 Method Not Allowed",
                                "455 Method Not Valid in This State", "501 Not Implemented"}) {
        QTest::newRow(refusal) << QByteArray(refusal);
    }
}

void TestOnvifScripts::refusesToRecord()
{
    QFETCH(QByteArray, refusal);
    ScriptedRtsp camera;
    camera.answers["PLAY"] = "455 Method Not Valid in This State\r\n\r\n";
    camera.answers["RECORD"] = refusal + "\r\n\r\n"; // two of which rtspsrc takes for consent
    TalkProbe probe(camera.address());
    QVERIFY(probe.refuse());
    QCOMPARE(probe.returnCode, ReturnCode::talkRefused);
    qInfo("%s", qPrintable(probe.reason));
    QCOMPARE(camera.connections, 2); // it is not tried for ever
}

QTEST_GUILESS_MAIN(TestOnvifScripts)
#include "tst_onvifscripts.moc"
