#include "desk/LinkSwitch.h"

#include <QSignalSpy>
#include <QTest>

class TestLinkSwitch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hostAsksForItself();
    void namesAreMadePrintable();
    void anotherServer();
};

namespace {

class TestLink : public ServerLink
{
public:
    void open() override { opened = true; }
    bool send(const QString& command, const QVariant&, quint64 request) override
    {
        sent.append(command);
        lastRequest = request;
        return true;
    }
    bool opened = false;
    QStringList sent;
    quint64 lastRequest = 0;
};

} // namespace

void TestLinkSwitch::hostAsksForItself()
{
    LinkSwitch link;
    QVERIFY(!link.send("AddIPAudio", QVariant(), 1)); // there is none yet
    auto made = std::make_unique<TestLink>();
    TestLink* inner = made.get();
    link.use(std::move(made));
    QVERIFY(inner->opened);
    QSignalSpy listed(&link, &LinkSwitch::camerasListed);
    QSignalSpy replied(&link, &ServerLink::replied);
    Q_EMIT inner->connected();
    QCOMPARE(inner->sent, QStringList{"GetCamera"});
    const quint64 request = inner->lastRequest;
    Q_EMIT inner->replied("anything", QVariantList{1, 2}, request, "0", QString());
    QCOMPARE(listed.size(), 1);
    QCOMPARE(replied.size(), 0); // the plug-in did not ask
    Q_EMIT inner->connected();
    const quint64 another = inner->lastRequest;
    QVERIFY(another != request);
    link.askForCameras(); // twice while the first waits: asked once more when it is answered
    link.askForCameras();
    QCOMPARE(inner->sent.size(), 2);
    Q_EMIT inner->replied("GetCamera", QVariant(), 0, "0", QString()); // to nothing that was asked
    QCOMPARE(listed.size(), 1);
    QCOMPARE(replied.size(), 1);
    replied.clear();
    Q_EMIT inner->replied("GetCamera", QVariant(), another, "101", "what?");
    QCOMPARE(inner->sent.size(), 3);
    QCOMPARE(listed.size(), 1); // a server that does not know the command
    Q_EMIT inner->replied("GetAudioFile", QVariantList(), 1000000, "0", QString());
    QCOMPARE(replied.size(), 1);
    Q_EMIT inner->replied("GetCamera", QVariantList(), request + 1, "0", QString()); // not what was asked
    QCOMPARE(listed.size(), 1);
}

void TestLinkSwitch::namesAreMadePrintable()
{
    LinkSwitch link;
    auto made = std::make_unique<TestLink>();
    TestLink* inner = made.get();
    link.use(std::move(made));
    QSignalSpy listed(&link, &LinkSwitch::camerasListed);
    QSignalSpy replied(&link, &ServerLink::replied);
    QSignalSpy raised(&link, &ServerLink::eventRaised);
    const QString hostile = QStringLiteral("Ga\u202Ete");
    Q_EMIT inner->connected();
    Q_EMIT inner->replied("GetCamera", QVariantList{QVariantMap{{"camId", hostile}, {"camName", hostile}}},
                          inner->lastRequest, "0", QString());
    QCOMPARE(listed[0][0].toList(), (QVariantList{QVariantMap{{"camId", hostile}, {"camName", "Ga?te"}}}));
    Q_EMIT inner->replied("RetrieveIPAudioModel",
                          QVariantList{QVariantMap{{"deviceName", hostile}, {"password", hostile}}}, 1000000,
                          "0", hostile);
    QCOMPARE(replied[0][1].value<QVariant>().toList(),
             (QVariantList{QVariantMap{{"deviceName", "Ga?te"}, {"password", hostile}}}));
    QCOMPARE(replied[0][4].toString(), QString("Ga?te"));
    Q_EMIT inner->eventRaised("TalkTargetLost", QVariantMap{{"Token", hostile}, {"error", hostile}});
    QCOMPARE(raised[0][1].value<QVariant>().toMap(), (QVariantMap{{"Token", hostile}, {"error", "Ga?te"}}));
}

void TestLinkSwitch::anotherServer()
{
    LinkSwitch link;
    auto first = std::make_unique<TestLink>();
    TestLink* former = first.get();
    link.use(std::move(first));
    QSignalSpy replied(&link, &ServerLink::replied);
    QSignalSpy gone(former, &QObject::destroyed);
    link.use(std::make_unique<TestLink>());
    Q_EMIT former->replied("GetAudioFile", QVariantList(), 1000000, "0", QString()); // too late
    QCOMPARE(replied.size(), 0);
    QVERIFY(gone.wait());
    QVERIFY(link.send("AddIPAudio", QVariant(), 1));
}

QTEST_GUILESS_MAIN(TestLinkSwitch)
#include "tst_linkswitch.moc"
