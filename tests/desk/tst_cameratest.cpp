// The test of a camera: what is sent, and what is said about what comes back.

#include "client/PluginHost.h"
#include "client/measure/ToneProbe.h"
#include "desk/CameraTest.h"
#include "desk/RequestTimeouts.h"

#include <QSignalSpy>
#include <QTest>

class TestCameraTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void toneThatComesBack();
    void cameraWithoutSound();
    void otherSound();
    void halfDuplex_data();
    void halfDuplex();
    void soundOfOthers();
    void refused();
    void lost();
    void noAnswer();
    void lateAnswer();
    void cancelled();
    void cancelledWhileItOpens();
    void oneAtATime();
    void connectionIsGone();

private:
    class Link;
    /** Starts a test and lets the talk open. */
    void open();
    void reply(const QString& code, const QVariant& result, quint64 request);

    std::unique_ptr<Link> m_link;
    std::unique_ptr<RequestTimeouts> m_watch;
    std::unique_ptr<PluginHost> m_host;
    std::unique_ptr<CameraTest> m_test;
    std::unique_ptr<QSignalSpy> m_tested;
};

/** A camera at the other end of a link: it echoes, or does what the test wants. */
class TestCameraTest::Link : public ServerLink
{
public:
    void open() override {}
    bool send(const QString& command, const QVariant& payload, quint64 request) override
    {
        if (!accepts) {
            return false;
        }
        const QVariantMap fields = payload.toMap();
        commands.append(command);
        if (command == "StartTalk") {
            start = request;
            camera = fields["camId"].toString();
        } else if (command == "StopTalk") {
            stopped.append(fields["talkToken"].toString());
        } else if (command == "TalkData") {
            sequences.append(fields["sequence"].toUInt());
            targets = fields["targets"].toString();
            const QByteArray packet = QByteArray::fromBase64(fields["talkData"].toString().toLatin1());
            if (echoes) {
                say(echoToken, packet);
            }
        }
        return true;
    }
    void say(const QString& token, const QByteArray& packet)
    {
        constexpr int header = 32;
        Q_EMIT eventRaised(
            "AudioReceived",
            QVariantMap{{"AudioReceived", QVariantMap{{"Token", token},
                                                      {"AudioData", QString::fromLatin1(packet.toBase64())},
                                                      {"Offset", header},
                                                      {"BitstreamSize", packet.size() - header},
                                                      {"StreamType", 8192},
                                                      {"AudioSamplingFreq", 8000},
                                                      {"AudioChannelNum", 1},
                                                      {"FrameNumber", 1}}}});
    }

    bool accepts = true;
    bool echoes = false;
    QString echoToken = "t";
    QStringList commands;
    quint64 start = 0;
    QString camera;
    QStringList stopped;
    QList<uint> sequences;
    QString targets;
};

void TestCameraTest::init()
{
    m_link = std::make_unique<Link>();
    m_watch = std::make_unique<RequestTimeouts>(60000);
    m_host = std::make_unique<PluginHost>(*m_link);
    m_test = std::make_unique<CameraTest>(*m_host, *m_watch, 100);
    connect(m_host.get(), &PluginHost::replyArrived, m_watch.get(), &RequestTimeouts::replyArrived);
    connect(m_host.get(), &PluginHost::replyArrived, m_test.get(), &CameraTest::replyArrived);
    connect(m_host.get(), &PluginHost::eventArrived, m_test.get(), &CameraTest::eventArrived);
    m_tested = std::make_unique<QSignalSpy>(m_test.get(), &CameraTest::tested);
}

void TestCameraTest::cleanup()
{
    m_tested.reset();
    m_test.reset();
    m_host.reset();
}

void TestCameraTest::reply(const QString& code, const QVariant& result, quint64 request)
{
    Q_EMIT m_link->replied("StartTalk", result, request, code, code == "0" ? QString() : "the camera is shy");
}

void TestCameraTest::open()
{
    QVERIFY(m_test->start("gate"));
    QCOMPARE(m_test->camera(), QString("gate"));
    QCOMPARE(m_link->camera, QString("gate"));
    QCOMPARE(m_watch->lastSent(), m_link->start);
    reply("0", QVariantMap{{"camId", "gate"}, {"talkToken", "t"}}, m_link->start);
}

void TestCameraTest::toneThatComesBack()
{
    m_link->echoes = true;
    open();
    QTRY_COMPARE_WITH_TIMEOUT(m_tested->size(), 1, 20000);
    QCOMPARE(m_tested->at(0)[0].toString(), QString("gate"));
    QVERIFY(m_tested->at(0)[1].toBool());
    QVERIFY2(m_tested->at(0)[2].toString().contains("comes back"), qPrintable(m_tested->at(0)[2].toString()));
    QCOMPARE(m_link->sequences.size(), ToneProbe::packets);
    QCOMPARE(m_link->sequences.first(), 1U);
    QCOMPARE(m_link->sequences.last(), static_cast<uint>(ToneProbe::packets));
    QCOMPARE(m_link->targets, QString("<Dest>t</Dest>"));
    QCOMPARE(m_link->stopped, QStringList{"t"});
    QCOMPARE(m_test->camera(), QString());
}

void TestCameraTest::cameraWithoutSound()
{
    open();
    QTRY_COMPARE_WITH_TIMEOUT(m_tested->size(), 1, 20000);
    QVERIFY(m_tested->at(0)[1].toBool());
    QVERIFY(m_tested->at(0)[2].toString().contains("sends no sound"));
}

void TestCameraTest::otherSound()
{
    open();
    const QByteArray silence(672, '\xff'); // mu-law
    for (int i = 0; i < 2 * ToneProbe::packets; ++i) {
        m_link->say("t", silence);
    }
    QTRY_COMPARE_WITH_TIMEOUT(m_tested->size(), 1, 20000);
    QVERIFY(!m_tested->at(0)[1].toBool());
    QVERIFY(m_tested->at(0)[2].toString().contains("but not the tone"));
}

void TestCameraTest::halfDuplex_data()
{
    QTest::addColumn<bool>("echoes");
    QTest::addColumn<QString>("words");
    QTest::newRow("other sound") << false << "not heard while somebody talks";
    QTest::newRow("the tone") << true << "comes back"; // after the server listened again
}

/** What is dropped while somebody talks proves nothing. */
void TestCameraTest::halfDuplex()
{
    QFETCH(bool, echoes);
    QFETCH(QString, words);
    m_link->echoes = echoes;
    QVERIFY(m_test->start("gate", true));
    reply("0", QVariantMap{{"camId", "gate"}, {"talkToken", "t"}}, m_link->start);
    m_link->say("t", QByteArray(672, '\xff'));
    QTRY_COMPARE_WITH_TIMEOUT(m_tested->size(), 1, 20000);
    QVERIFY(m_tested->at(0)[1].toBool());
    QVERIFY2(m_tested->at(0)[2].toString().contains(words), qPrintable(m_tested->at(0)[2].toString()));
}

void TestCameraTest::soundOfOthers()
{
    m_link->echoes = true;
    m_link->echoToken = "another talk";
    open();
    Q_EMIT m_link->eventRaised("TalkDisconnected",
                               QVariantMap{{"TalkDisconnected", QVariantMap{{"Token", "another talk"}}}});
    QTRY_COMPARE_WITH_TIMEOUT(m_tested->size(), 1, 20000);
    QVERIFY(m_tested->at(0)[2].toString().contains("sends no sound"));
}

void TestCameraTest::refused()
{
    QVERIFY(m_test->start("gate"));
    reply("208", QVariant(), m_link->start);
    QCOMPARE(m_tested->size(), 1);
    QVERIFY(!m_tested->at(0)[1].toBool());
    QCOMPARE(
        m_tested->at(0)[2].toString(),
        QString("The line does not open: the camera has no loudspeaker (the server: the camera is shy)"));
    QVERIFY(m_link->stopped.isEmpty());
}

void TestCameraTest::lost()
{
    open();
    Q_EMIT m_link->eventRaised("TalkTargetLost",
                               QVariantMap{{"Token", "t"}, {"error", "gone"}, {"camId", "gate"}});
    QCOMPARE(m_tested->size(), 1);
    QVERIFY(!m_tested->at(0)[1].toBool());
    QCOMPARE(m_link->stopped, QStringList{"t"});
    const int sent = m_link->sequences.size();
    QSignalSpy more(m_test.get(), &CameraTest::tested);
    QVERIFY(!more.wait(200)); // no more packets of the tone
    QCOMPARE(m_link->sequences.size(), sent);
}

void TestCameraTest::noAnswer()
{
    QVERIFY(m_test->start("gate"));
    m_watch->forget();
    QCOMPARE(m_tested->size(), 1);
    QVERIFY(m_tested->at(0)[2].toString().contains("no answer"));
}

/** A talk that opens when nobody waits for it any more is closed: the camera would go on listening. */
void TestCameraTest::lateAnswer()
{
    QVERIFY(m_test->start("gate"));
    const quint64 first = m_link->start;
    m_watch->forget();
    QVERIFY(m_test->start("hall"));
    reply("0", QVariantMap{{"camId", "gate"}, {"talkToken", "late"}}, first);
    QCOMPARE(m_link->stopped, QStringList{"late"});
    QCOMPARE(m_test->camera(), QString("hall"));
    QVERIFY(m_link->sequences.isEmpty());
    reply("0", QVariantMap{{"camId", "gate"}, {"talkToken", "late"}}, first); // twice
    QCOMPARE(m_link->stopped.size(), 1);
}

void TestCameraTest::cancelled()
{
    open();
    m_test->cancel();
    QCOMPARE(m_link->stopped, QStringList{"t"});
    QCOMPARE(m_test->camera(), QString());
    QCOMPARE(m_tested->size(), 0);
}

void TestCameraTest::cancelledWhileItOpens()
{
    QVERIFY(m_test->start("gate"));
    m_test->cancel();
    QVERIFY(m_link->stopped.isEmpty());
    reply("0", QVariantMap{{"camId", "gate"}, {"talkToken", "t"}}, m_link->start);
    QCOMPARE(m_link->stopped, QStringList{"t"});
    QCOMPARE(m_tested->size(), 0);
}

void TestCameraTest::oneAtATime()
{
    m_link->accepts = false;
    QVERIFY(!m_test->start("gate"));
    m_link->accepts = true;
    QVERIFY(m_test->start("gate"));
    QVERIFY(!m_test->start("hall"));
    QCOMPARE(m_link->camera, QString("gate"));
}

void TestCameraTest::connectionIsGone()
{
    open();
    m_test->forgetConnection();
    QVERIFY(m_link->stopped.isEmpty()); // the talk ended with it
    QCOMPARE(m_test->camera(), QString());
    QVERIFY(m_test->start("gate"));
}

QTEST_GUILESS_MAIN(TestCameraTest)
#include "tst_cameratest.moc"
