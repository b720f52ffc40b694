// Several clients and one camera: who may talk to it, and what the others are told.

#include "protocol/Words.h"
#include "tests/server/AwkwardServer.h"

namespace {

/** A client beside that of the harness, with a name. */
struct Client
{
    Client(Awkward& server, const QString& name) : session(*server.harness->server, name)
    {
        QObject::connect(
            &session, &ServerSession::replied,
            [this](const QString&, quint64, const ServerReply& reply) { replies.append(reply); });
    }
    void start() { session.submit(Vocabulary::StartTalk, gate, ++number); }
    bool waitForReply()
    {
        return ServerHarness::waitFor([this] { return !replies.isEmpty(); });
    }

    ServerSession session;
    QList<ServerReply> replies;
    quint64 number = 0;
};

} // namespace

class TestSharedCameras : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_server.emplace(); }
    void cleanup() { m_server.reset(); }
    void othersAreToldWhoTalks();
    void alsoWhileTheTalkOpens();
    void severalTalks();
    void ownTalks();
    void another();
    void afterTheTalk_data();
    void afterTheTalk();
    void afterItWasForgotten();

private:
    void setExclusive() { m_server->devices->cameras[0].isExclusive = true; }
    ServerReply startTalk()
    {
        m_server->harness->replies.clear();
        return m_server->harness->ask(Vocabulary::StartTalk, gate);
    }

    std::optional<Awkward> m_server;
};

void TestSharedCameras::othersAreToldWhoTalks()
{
    setExclusive();
    Client anna(*m_server, "anna");
    anna.start();
    m_server->talk(0).open();
    QVERIFY(anna.waitForReply());
    QCOMPARE(anna.replies[0].returnCode, ReturnCode::success);
    const ServerReply reply = startTalk();
    QCOMPARE(reply.returnCode, ReturnCode::cameraBusy);
    QCOMPARE(reply.errorText, QString("camera \"Gate\" is in a talk with anna"));
    QVERIFY(!reply.result.isValid());
    QCOMPARE(m_server->devices->talks.size(), std::size_t{1});
}

void TestSharedCameras::alsoWhileTheTalkOpens()
{
    setExclusive();
    Client anna(*m_server, "anna");
    anna.start();
    QCOMPARE(startTalk().returnCode, ReturnCode::cameraBusy);
    m_server->talk(0).refuse(ReturnCode::cameraOffline, "it is off");
    QVERIFY(anna.waitForReply());
    QVERIFY(!m_server->open().isEmpty());
}

void TestSharedCameras::severalTalks()
{
    Client anna(*m_server, "anna");
    anna.start();
    m_server->talk(0).open();
    QVERIFY(anna.waitForReply());
    QVERIFY(!m_server->open().isEmpty());
}

void TestSharedCameras::ownTalks()
{
    setExclusive();
    QVERIFY(!m_server->open().isEmpty());
    QVERIFY(!m_server->open().isEmpty()); // the camera says whether it takes two
}

void TestSharedCameras::another()
{
    setExclusive();
    m_server->devices->cameras[1].isExclusive = true;
    Client anna(*m_server, "anna");
    anna.start();
    QVERIFY(!m_server
                 ->open(Vocabulary::StartTalk,
                        QVariantMap{{Vocabulary::camId, "dock"}, {Vocabulary::relayPath, "r"}})
                 .isEmpty());
}

void TestSharedCameras::afterTheTalk_data()
{
    QTest::addColumn<QString>("end");
    for (const char* end : {"stopped", "lost", "gone"}) {
        QTest::newRow(end) << end;
    }
}

void TestSharedCameras::afterTheTalk()
{
    QFETCH(QString, end);
    setExclusive();
    std::optional<Client> anna(std::in_place, *m_server, "anna");
    anna->start();
    m_server->talk(0).open();
    QVERIFY(anna->waitForReply());
    if (end == "stopped") {
        const QVariant token = anna->replies[0].result.toMap()[Vocabulary::talkToken];
        anna->session.submit(Vocabulary::StopTalk, QVariantMap{{Vocabulary::talkToken, token}}, 2);
    } else if (end == "lost") {
        m_server->talk(0).lose();
        QCoreApplication::processEvents();
    } else {
        anna.reset();
    }
    QVERIFY(!m_server->open().isEmpty());
}

/** A client forgets its targets when it stops talking to a speaker; it may never close the camera's talk. */
void TestSharedCameras::afterItWasForgotten()
{
    setExclusive();
    const int speaker = m_server->addSpeaker("Yard");
    QVERIFY(!m_server->open().isEmpty());
    QVERIFY(!m_server->openSpeaker(speaker).isEmpty());
    QCOMPARE(m_server->harness->ask(Vocabulary::StopTalkToIPAudio, speaker).returnCode, ReturnCode::success);
    Client anna(*m_server, "anna");
    anna.start();
    m_server->devices->talks.back()->open();
    QVERIFY(anna.waitForReply());
    QCOMPARE(anna.replies[0].returnCode, ReturnCode::success);
}

QTEST_GUILESS_MAIN(TestSharedCameras)
#include "tst_sharedcameras.moc"
