// The live video of a camera in the window: when it is asked for, what is shown, and what follows its end.

#include "client/PluginHost.h"
#include "desk/CameraView.h"
#include "tests/desk/VideoUnits.h"

#include <QBuffer>
#include <QSignalSpy>
#include <QTest>

class TestLiveVideo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void isShown();
    void onlyWhileSomebodyLooks();
    void stillsUntilItComes();
    void stillThatComesLate();
    void refused();
    void olderServer();
    void isAskedForAgain();
    void noAnswer();
    void ended();
    void stopsComing();
    void comesBackAfterAConnection();
    void anotherCamera();
    void badEvents_data();
    void badEvents();
    void cannotBeDecoded();
    void tooMuchAtOnce();
    void isScaledDown();
    void endsWhileItDecodes();

private:
    class Link;
    void look(const QString& camera = "gate");
    void accept();
    void show(int unit, const QString& camera = "gate");
    void answerStill(Qt::GlobalColor colour);
    /** Whether the picture is one of the video, not the still. */
    bool isVideo() const { return m_view->hasPicture() && m_view->image().size() == QSize(160, 96); }

    std::unique_ptr<Link> m_link;
    std::unique_ptr<PluginHost> m_host;
    std::unique_ptr<CameraView> m_view;
    QList<QByteArray> m_units = VideoUnits::of("quadrants.h264");
};

/** A link whose other end is the test. */
class TestLiveVideo::Link : public ServerLink
{
public:
    void open() override {}
    bool send(const QString& command, const QVariant& payload, quint64 request) override
    {
        sent.append(command + " " + payload.toString());
        requests[command] = request;
        return accepts;
    }
    int count(const QString& what) const { return sent.count(what); }

    bool accepts = true;
    QStringList sent;
    QHash<QString, quint64> requests; // the last of each command
};

namespace {

constexpr CameraView::Times slow{60000, 60000, 60000, 60000, 60000, 60000};

} // namespace

void TestLiveVideo::init()
{
    m_link = std::make_unique<Link>();
    m_host = std::make_unique<PluginHost>(*m_link);
    m_view = std::make_unique<CameraView>(*m_host, slow);
}

void TestLiveVideo::cleanup()
{
    m_view.reset();
    m_host.reset();
}

void TestLiveVideo::look(const QString& camera)
{
    m_view->setOnline(true);
    m_view->setCamera(camera);
    m_view->setActive(true);
}

void TestLiveVideo::accept()
{
    m_view->replyArrived("WatchCamera", "0", QString(), m_link->requests["WatchCamera"],
                         QVariantMap{{"camId", m_view->camera()}});
}

void TestLiveVideo::show(int unit, const QString& camera)
{
    m_view->eventArrived("CameraVideo", QVariantMap{{"camId", camera},
                                                    {"accessUnit", m_units[unit]},
                                                    {"keyFrame", unit % 10 == 0},
                                                    {"position", 40 * unit}});
}

void TestLiveVideo::answerStill(Qt::GlobalColor colour)
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "jpeg");
    m_view->replyArrived("GetCameraPicture", "0", QString(), m_link->requests["GetCameraPicture"],
                         QVariantMap{{"camId", m_view->camera()}, {"picture", bytes}});
}

void TestLiveVideo::isShown()
{
    look();
    QCOMPARE(m_link->sent, (QStringList{"GetCameraPicture gate", "WatchCamera gate"}));
    show(0); // before the server has answered
    accept();
    QSignalSpy changed(m_view.get(), &CameraView::changed);
    QSignalSpy images(m_view.get(), &CameraView::imageChanged);
    for (int i = 0; i < 20; ++i) {
        show(i);
        QTRY_COMPARE(images.size(), i + 1);
        QVERIFY(isVideo());
        QVERIFY(m_view->image().pixelColor(20, 20).red() > 180);
        QVERIFY(m_view->image().pixelColor(20, 80).blue() > 180);
        QVERIFY(m_view->isLive());
        QVERIFY(!m_view->isStale());
    }
    QCOMPARE(changed.size(), 1); // the properties, once
}

void TestLiveVideo::onlyWhileSomebodyLooks()
{
    m_view->setOnline(true);
    m_view->setCamera("gate");
    QVERIFY(m_link->sent.isEmpty());
    m_view->setActive(true);
    accept();
    show(0);
    QTRY_VERIFY(isVideo());
    m_view->setActive(false);
    QCOMPARE(m_link->sent.last(), QString("UnwatchCamera gate"));
    QVERIFY(!m_view->isLive());
    QVERIFY(m_view->hasPicture());
    const int sent = m_link->sent.size();
    show(1); // still on its way
    m_view->setCamera("hall");
    QCOMPARE(m_link->sent.size(), sent);
    m_view->setActive(true);
    QCOMPARE(m_link->count("WatchCamera hall"), 1);
    m_view->setActive(false); // before there is an answer
    QCOMPARE(m_link->count("UnwatchCamera hall"), 1);
}

void TestLiveVideo::stillsUntilItComes()
{
    constexpr int interval = 250;
    m_view =
        std::make_unique<CameraView>(*m_host, CameraView::Times{interval, 60000, 60000, 60000, 60000, 60000});
    look();
    answerStill(Qt::red);
    QTRY_VERIFY(m_view->hasPicture());
    QVERIFY(!m_view->isLive());
    QTRY_COMPARE(m_link->count("GetCameraPicture gate"), 2);
    answerStill(Qt::red);
    accept();
    QTRY_COMPARE(m_link->count("GetCameraPicture gate"), 3); // no picture has come yet
    QSignalSpy images(m_view.get(), &CameraView::imageChanged);
    answerStill(Qt::red);
    QTRY_COMPARE(images.size(), 1); // the next question is due
    show(0);
    QTRY_VERIFY(isVideo());
    const int asked = m_link->count("GetCameraPicture gate");
    QVERIFY(!images.wait(2 * interval));
    QCOMPARE(m_link->count("GetCameraPicture gate"), asked);
}

void TestLiveVideo::stillThatComesLate()
{
    look();
    accept();
    show(0);
    QTRY_VERIFY(isVideo());
    QSignalSpy images(m_view.get(), &CameraView::imageChanged);
    answerStill(Qt::red);
    QVERIFY(!images.wait(100));
    QVERIFY(isVideo());
}

void TestLiveVideo::refused()
{
    look();
    m_view->replyArrived("WatchCamera", "213", "the camera's video is H265, not H264",
                         m_link->requests["WatchCamera"], QVariant());
    QVERIFY2(m_view->videoProblem().contains("H265"), qPrintable(m_view->videoProblem()));
    QCOMPARE(m_view->problem(), QString());
    answerStill(Qt::red);
    QTRY_VERIFY(m_view->hasPicture()); // stills go on
    QVERIFY(!m_view->isLive());
    QCOMPARE(m_link->count("UnwatchCamera gate"), 0); // there is nothing to leave
    m_view->setCamera("hall");
    QCOMPARE(m_view->videoProblem(), QString());
}

void TestLiveVideo::olderServer()
{
    look();
    m_view->replyArrived("WatchCamera", "101", "this server does not know the command WatchCamera",
                         m_link->requests["WatchCamera"], QVariant());
    QVERIFY(!m_view->videoProblem().isEmpty());
    answerStill(Qt::red);
    QTRY_VERIFY(m_view->hasPicture());
}

void TestLiveVideo::isAskedForAgain()
{
    m_view = std::make_unique<CameraView>(*m_host, CameraView::Times{60000, 60000, 60000, 60000, 60000, 50});
    look();
    m_view->replyArrived("WatchCamera", "202", "the camera cannot be reached",
                         m_link->requests["WatchCamera"], QVariant());
    QTRY_COMPARE(m_link->count("WatchCamera gate"), 2);
    accept();
    show(0);
    QTRY_VERIFY(isVideo());
    QCOMPARE(m_view->videoProblem(), QString());
}

void TestLiveVideo::noAnswer()
{
    m_view = std::make_unique<CameraView>(*m_host, CameraView::Times{60000, 60000, 60000, 60000, 50, 60000});
    look();
    QTRY_VERIFY(m_view->videoProblem().contains("does not answer"));
    QCOMPARE(m_link->count("UnwatchCamera gate"), 1);
    accept(); // too late
    show(0);
    QSignalSpy images(m_view.get(), &CameraView::imageChanged);
    QVERIFY(!images.wait(100));
}

void TestLiveVideo::ended()
{
    look();
    accept();
    show(0);
    QTRY_VERIFY(isVideo());
    m_view->eventArrived("CameraVideoEnded", QVariantMap{{"camId", "hall"}, {"error", "x"}});
    QVERIFY(m_view->isLive());
    m_view->eventArrived("CameraVideoEnded",
                         QVariantMap{{"camId", "gate"}, {"error", "the camera sends nothing any more"}});
    QVERIFY(!m_view->isLive());
    QVERIFY(m_view->videoProblem().contains("offline"));
    QCOMPARE(m_link->sent.last(), QString("GetCameraPicture gate")); // stills, at once
    answerStill(Qt::red);
    QTRY_VERIFY(!isVideo());
}

void TestLiveVideo::stopsComing()
{
    m_view = std::make_unique<CameraView>(*m_host, CameraView::Times{60000, 60000, 150, 60000, 60000, 60000});
    look();
    accept();
    show(0);
    QTRY_VERIFY(isVideo());
    QTRY_VERIFY(m_view->isStale());
    QVERIFY(!m_view->isLive());
    QCOMPARE(m_link->count("GetCameraPicture gate"), 2);
    show(1);
    QTRY_VERIFY(m_view->isLive());
    QVERIFY(!m_view->isStale());
}

void TestLiveVideo::comesBackAfterAConnection()
{
    look();
    accept();
    show(0);
    QTRY_VERIFY(isVideo());
    m_view->setOnline(false);
    QVERIFY(!m_view->isLive());
    m_view->setOnline(true);
    QCOMPARE(m_link->count("WatchCamera gate"), 2);
    show(1); // of the connection before
    accept();
    QSignalSpy images(m_view.get(), &CameraView::imageChanged);
    show(2); // not without a key frame
    QVERIFY(!images.wait(100));
    show(10);
    QTRY_VERIFY(m_view->isLive());
}

void TestLiveVideo::anotherCamera()
{
    look();
    accept();
    show(0);
    m_view->setCamera("hall"); // while it decodes
    QVERIFY(!m_view->hasPicture());
    QCOMPARE(m_link->sent.mid(2),
             (QStringList{"UnwatchCamera gate", "GetCameraPicture hall", "WatchCamera hall"}));
    accept();
    QSignalSpy images(m_view.get(), &CameraView::imageChanged);
    show(10, "gate");
    QVERIFY(!images.wait(200));
    show(10, "hall");
    QTRY_VERIFY(isVideo());
}

void TestLiveVideo::badEvents_data()
{
    QTest::addColumn<QVariant>("payload");
    const QByteArray key = m_units[10];
    QTest::newRow("nothing") << QVariant();
    QTest::newRow("text") << QVariant("gate");
    QTest::newRow("no unit") << QVariant(QVariantMap{{"camId", "gate"}, {"keyFrame", true}});
    QTest::newRow("text for a unit") << QVariant(
        QVariantMap{{"camId", "gate"}, {"accessUnit", QString("x")}, {"keyFrame", true}});
    QTest::newRow("too large") << QVariant(
        QVariantMap{{"camId", "gate"}, {"accessUnit", key + QByteArray(1 << 20, '\0')}, {"keyFrame", true}});
    QTest::newRow("no key frame") << QVariant(
        QVariantMap{{"camId", "gate"}, {"accessUnit", key}, {"keyFrame", false}});
    QTest::newRow("number for a camera")
        << QVariant(QVariantMap{{"camId", 7}, {"accessUnit", key}, {"keyFrame", true}});
    QTest::newRow("no video") << QVariant(
        QVariantMap{{"camId", "gate"}, {"accessUnit", QByteArray("abc")}, {"keyFrame", true}});
}

void TestLiveVideo::badEvents()
{
    QFETCH(QVariant, payload);
    look();
    accept();
    QSignalSpy images(m_view.get(), &CameraView::imageChanged);
    m_view->eventArrived("CameraVideo", payload);
    QVERIFY(!images.wait(100));
    show(0);
    QTRY_VERIFY(isVideo());
}

void TestLiveVideo::cannotBeDecoded()
{
    look();
    accept();
    const QVariantMap broken{
        {"camId", "gate"}, {"accessUnit", QByteArray("\0\0\0\1\x65 x", 7)}, {"keyFrame", true}};
    int sent = 0;
    QTRY_VERIFY_WITH_TIMEOUT(
        (++sent, m_view->eventArrived("CameraVideo", broken), !m_view->videoProblem().isEmpty()), 60000);
    QVERIFY(sent >= LiveVideo::maxUndecoded);
    QVERIFY(m_view->videoProblem().contains("cannot be decoded"));
    QCOMPARE(m_link->sent.last(), QString("UnwatchCamera gate"));
}

/** A window that is slow drops pictures up to a key frame; it does not collect them. */
void TestLiveVideo::tooMuchAtOnce()
{
    look();
    accept();
    QSignalSpy images(m_view.get(), &CameraView::imageChanged);
    for (int i = 0; i < 20; ++i) {
        show(i); // without a moment for the thread's reports
    }
    QTRY_COMPARE(images.size(), LiveVideo::maxWaiting);
    show(19);
    QVERIFY(!images.wait(100));
    show(0);
    QTRY_COMPARE(images.size(), LiveVideo::maxWaiting + 1);
}

void TestLiveVideo::isScaledDown()
{
    m_view->setShownSize({80, 60});
    look();
    accept();
    show(0);
    QTRY_COMPARE(m_view->image().size(), QSize(80, 48));
    m_view->setShownSize({100000, 100000}); // never up
    show(1);
    QTRY_VERIFY(isVideo());
}

void TestLiveVideo::endsWhileItDecodes()
{
    look();
    accept();
    show(0);
    show(1);
    m_view.reset();
}

QTEST_GUILESS_MAIN(TestLiveVideo)
#include "tst_livevideo.moc"
