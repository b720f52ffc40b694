// When a server is asked for a camera's picture, and which picture is shown.

#include "client/PluginHost.h"
#include "desk/CameraView.h"

#include <QBuffer>
#include <QSignalSpy>
#include <QTest>

class TestCameraView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void asksOnlyWhileSomebodyLooks();
    void asksAgain();
    void oneQuestionAtATime();
    void pictureOfAnotherCamera();
    void answerForAnotherCamera();
    void pictureThatIsBeingDecoded();
    void refusal();
    void staleness();
    void noAnswer();
    void badAnswers_data();
    void badAnswers();
    void connection();
    void anotherServer();

private:
    class Link;
    void answer(quint64 request, const QString& camera, Qt::GlobalColor colour);
    QColor shown() const { return m_view->image().pixelColor(4, 4); }
    void look(const QString& camera);

    std::unique_ptr<Link> m_link;
    std::unique_ptr<PluginHost> m_host;
    std::unique_ptr<CameraView> m_view;
};

/** A link whose other end is the test. */
class TestCameraView::Link : public ServerLink
{
public:
    void open() override {}
    bool send(const QString& command, const QVariant& payload, quint64 request) override
    {
        if (command == "WatchCamera" || command == "UnwatchCamera") {
            videos.append({command, payload.toString()});
            videoRequests.append(request);
            return accepts;
        }
        commands.append(command);
        cameras.append(payload.toString());
        requests.append(request);
        return accepts;
    }

    bool accepts = true;
    QStringList commands;
    QStringList cameras;
    QList<quint64> requests;
    QList<QPair<QString, QString>> videos; // what is asked of them, and the camera
    QList<quint64> videoRequests;
};

namespace {

constexpr CameraView::Times quick{50, 60000, 60000, 60000};
constexpr CameraView::Times slow{60000, 60000, 60000, 60000};

QByteArray jpeg(Qt::GlobalColor colour)
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "jpeg");
    return bytes;
}

} // namespace

void TestCameraView::init()
{
    m_link = std::make_unique<Link>();
    m_host = std::make_unique<PluginHost>(*m_link);
}

void TestCameraView::cleanup()
{
    m_view.reset();
    m_host.reset();
}

void TestCameraView::look(const QString& camera)
{
    m_view->setOnline(true);
    m_view->setCamera(camera);
    m_view->setActive(true);
}

void TestCameraView::answer(quint64 request, const QString& camera, Qt::GlobalColor colour)
{
    m_view->replyArrived("GetCameraPicture", "0", QString(), request,
                         QVariantMap{{"camId", camera}, {"picture", jpeg(colour)}});
}

void TestCameraView::asksOnlyWhileSomebodyLooks()
{
    m_view = std::make_unique<CameraView>(*m_host, quick);
    m_view->setOnline(true);
    m_view->setCamera("gate");
    QCOMPARE(m_link->requests.size(), 0);
    m_view->setActive(true);
    QCOMPARE(m_link->commands, QStringList{"GetCameraPicture"});
    QCOMPARE(m_link->cameras, QStringList{"gate"});
    answer(m_link->requests.last(), "gate", Qt::red);
    QTRY_VERIFY(m_view->hasPicture());
    m_view->setActive(false);
    const int asked = m_link->requests.size();
    m_view->setCamera("hall");
    QSignalSpy next(m_view.get(), &CameraView::changed);
    QVERIFY(!next.wait(3 * quick.interval));
    QCOMPARE(m_link->requests.size(), asked);
    m_view->setActive(true);
    QCOMPARE(m_link->cameras.last(), QString("hall"));
    m_view->setCamera(QString());
    QVERIFY(!m_view->hasPicture());
    QCOMPARE(m_link->requests.size(), asked + 1);
}

void TestCameraView::asksAgain()
{
    m_view = std::make_unique<CameraView>(*m_host, quick);
    QElapsedTimer clock;
    clock.start();
    look("gate");
    for (int i = 1; i <= 4; ++i) {
        QTRY_COMPARE(m_link->requests.size(), i);
        answer(m_link->requests.last(), "gate", i % 2 == 0 ? Qt::blue : Qt::red);
        QTRY_VERIFY(m_view->hasPicture() && (shown().blue() > 200) == (i % 2 == 0));
    }
    QVERIFY(clock.elapsed() >= 3 * quick.interval - 10);
}

void TestCameraView::oneQuestionAtATime()
{
    m_view = std::make_unique<CameraView>(*m_host, quick);
    look("gate");
    QSignalSpy changed(m_view.get(), &CameraView::changed);
    QVERIFY(!changed.wait(5 * quick.interval)); // the server takes its time
    QCOMPARE(m_link->requests.size(), 1);
}

/** The picture of the camera before is gone at once, and its late answer is none. */
void TestCameraView::pictureOfAnotherCamera()
{
    m_view = std::make_unique<CameraView>(*m_host, quick);
    look("gate");
    answer(m_link->requests.last(), "gate", Qt::red);
    QTRY_VERIFY(m_view->hasPicture());
    QTRY_COMPARE(m_link->requests.size(), 2);
    const quint64 late = m_link->requests.last();
    m_view->setCamera("hall");
    QVERIFY(!m_view->hasPicture());
    QCOMPARE(m_link->cameras.last(), QString("hall"));
    answer(late, "gate", Qt::red);
    answer(late, "hall", Qt::red);
    answer(m_link->requests.last(), "hall", Qt::blue);
    QTRY_VERIFY(m_view->hasPicture());
    QVERIFY(shown().blue() > 200);
}

void TestCameraView::answerForAnotherCamera()
{
    m_view = std::make_unique<CameraView>(*m_host, slow);
    look("gate");
    answer(m_link->requests.last(), "hall", Qt::red);
    QVERIFY(!m_view->hasPicture());
    QVERIFY(m_view->problem().contains("no picture of this camera"));
}

void TestCameraView::pictureThatIsBeingDecoded()
{
    m_view = std::make_unique<CameraView>(*m_host, slow);
    look("gate");
    answer(m_link->requests.last(), "gate", Qt::red);
    m_view->setCamera("hall"); // before the decoder has reported
    bool wasRed = false;
    connect(m_view.get(), &CameraView::changed, this,
            [&] { wasRed = wasRed || (m_view->hasPicture() && shown().red() > 200); });
    answer(m_link->requests.last(), "hall", Qt::blue);
    QTRY_VERIFY(m_view->hasPicture() && shown().blue() > 200); // the decoder keeps the order
    QVERIFY(!wasRed);
    m_view->disconnect(this);
    answer(m_link->requests.last(), "hall", Qt::red); // to nothing that was asked
    m_view->setActive(false);
    m_view.reset(); // while it may decode
}

void TestCameraView::refusal()
{
    m_view = std::make_unique<CameraView>(*m_host, quick);
    look("gate");
    m_view->replyArrived("GetCameraPicture", "213", "it is dark", m_link->requests.last(), QVariant());
    QCOMPARE(m_view->problem(), QString("the server says: it is dark"));
    QVERIFY(!m_view->hasPicture());
    QSignalSpy changed(m_view.get(), &CameraView::changed);
    QVERIFY(!changed.wait(3 * quick.interval));
    QCOMPARE(m_link->requests.size(), 1); // asked again later, not each second
    m_view->setCamera("hall");
    QCOMPARE(m_view->problem(), QString());
    QCOMPARE(m_link->requests.size(), 2);
}

void TestCameraView::staleness()
{
    m_view = std::make_unique<CameraView>(*m_host, CameraView::Times{60000, 60000, 80, 60000});
    look("gate");
    answer(m_link->requests.last(), "gate", Qt::red);
    QTRY_VERIFY(m_view->hasPicture());
    QVERIFY(!m_view->isStale());
    QTRY_VERIFY(m_view->isStale());
    QVERIFY(m_view->hasPicture());
    m_view->setActive(false);
    m_view->setActive(true);
    QVERIFY(m_view->isStale()); // still the same one
    answer(m_link->requests.last(), "gate", Qt::blue);
    QTRY_VERIFY(!m_view->isStale());
    m_view->setCamera("hall");
    QVERIFY(!m_view->isStale());
}

void TestCameraView::noAnswer()
{
    m_view = std::make_unique<CameraView>(*m_host, CameraView::Times{10, 50, 60000, 60});
    look("gate");
    QTRY_COMPARE(m_view->problem(), QString("the server does not answer"));
    const quint64 late = m_link->requests.first();
    QTRY_COMPARE(m_link->requests.size(), 2);
    answer(late, "gate", Qt::red);
    QVERIFY(!m_view->hasPicture());
    answer(m_link->requests.last(), "gate", Qt::blue);
    QTRY_VERIFY(m_view->hasPicture());
    QCOMPARE(m_view->problem(), QString());
}

void TestCameraView::badAnswers_data()
{
    QTest::addColumn<QVariant>("result");
    QTest::newRow("nothing") << QVariant();
    QTest::newRow("text") << QVariant("gate");
    QTest::newRow("no picture") << QVariant(QVariantMap{{"camId", "gate"}});
    QTest::newRow("text for a picture") << QVariant(QVariantMap{{"camId", "gate"}, {"picture", "abc"}});
    QTest::newRow("list for a picture")
        << QVariant(QVariantMap{{"camId", "gate"}, {"picture", QVariantList{1}}});
    QTest::newRow("number for an id") << QVariant(QVariantMap{{"camId", 7}, {"picture", jpeg(Qt::red)}});
    QTest::newRow("no JPEG") << QVariant(QVariantMap{{"camId", "gate"}, {"picture", QByteArray("abc")}});
}

void TestCameraView::badAnswers()
{
    QFETCH(QVariant, result);
    m_view = std::make_unique<CameraView>(*m_host, slow);
    look("gate");
    m_view->replyArrived("GetCameraPicture", "0", QString(), m_link->requests.last(), result);
    QTRY_VERIFY(!m_view->problem().isEmpty());
    QVERIFY(!m_view->hasPicture());
}

void TestCameraView::connection()
{
    m_view = std::make_unique<CameraView>(*m_host, quick);
    m_view->setCamera("gate");
    m_view->setActive(true);
    QCOMPARE(m_link->requests.size(), 0);
    m_view->setOnline(true);
    QCOMPARE(m_link->requests.size(), 1);
    m_view->setOnline(false); // the answer is lost
    m_view->setOnline(true);
    QCOMPARE(m_link->requests.size(), 2);
    m_link->accepts = false;
    m_view->setCamera("hall");
    QTRY_VERIFY(m_link->requests.size() > 4); // tried again
}

void TestCameraView::anotherServer()
{
    m_view = std::make_unique<CameraView>(*m_host, slow);
    look("gate");
    answer(m_link->requests.last(), "gate", Qt::red);
    QTRY_VERIFY(m_view->hasPicture());
    m_view->forgetServer();
    QVERIFY(!m_view->hasPicture());
    QCOMPARE(m_view->camera(), QString());
}

QTEST_GUILESS_MAIN(TestCameraView)
#include "tst_cameraview.moc"
