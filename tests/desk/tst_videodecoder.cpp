// Pictures of a video, whole and broken.

#include "desk/VideoDecoder.h"
#include "protocol/Limits.h"
#include "tests/desk/VideoUnits.h"

#include <QRandomGenerator>
#include <QTest>

namespace {

constexpr QSize large{1280, 720};

bool isLike(QColor colour, QColor wanted)
{
    constexpr int tolerance = 12;
    return std::abs(colour.red() - wanted.red()) < tolerance &&
           std::abs(colour.green() - wanted.green()) < tolerance &&
           std::abs(colour.blue() - wanted.blue()) < tolerance;
}

/** Whether a picture is that of the file: red and green above blue and white. */
bool isPattern(const QImage& image)
{
    const auto at = [&](double x, double y) {
        return image.pixelColor(static_cast<int>(image.width() * x), static_cast<int>(image.height() * y));
    };
    return !image.isNull() && isLike(at(0.2, 0.2), {220, 30, 30}) && isLike(at(0.8, 0.2), {30, 180, 30}) &&
           isLike(at(0.2, 0.8), {30, 30, 220}) && isLike(at(0.8, 0.8), {230, 230, 230});
}

} // namespace

class TestVideoDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void pictures();
    void fits();
    void startsAtAKeyFrame();
    void tooWide();
    void noUnits_data();
    void noUnits();
    void brokenUnits();
    void brokenPicture();
    void coloursOfHdtv();

private:
    QList<QByteArray> m_units;
};

void TestVideoDecoder::initTestCase()
{
    m_units = VideoUnits::of("quadrants.h264");
    QCOMPARE(m_units.size(), 20);
    QVERIFY(VideoDecoder::isAvailable());
}

void TestVideoDecoder::pictures()
{
    VideoDecoder decoder;
    for (int i = 0; i < m_units.size(); ++i) {
        const QImage image = decoder.decode(m_units[i], large);
        QCOMPARE(image.size(), QSize(160, 96));
        QVERIFY2(isPattern(image), qPrintable(QString::number(i)));
        QVERIFY(isLike(image.pixelColor(40 + 4 * i, 48), {128, 128, 128})); // its square has moved
        QCOMPARE(image.format(), QImage::Format_RGB32);
    }
}

void TestVideoDecoder::fits()
{
    VideoDecoder decoder;
    const QImage half = decoder.decode(m_units[0], {80, 1000});
    QCOMPARE(half.size(), QSize(80, 48));
    QVERIFY(isPattern(half));
    QCOMPARE(decoder.decode(m_units[1], {1000, 20}).size(), QSize(33, 20));
    QCOMPARE(decoder.decode(m_units[2], {1, 1}).size(), QSize(1, 1));
    QVERIFY(isPattern(decoder.decode(m_units[3], large)));
}

void TestVideoDecoder::startsAtAKeyFrame()
{
    VideoDecoder decoder;
    QVERIFY(decoder.decode(m_units[5], large).isNull());
    QVERIFY(isPattern(decoder.decode(m_units[10], large)));
}

void TestVideoDecoder::tooWide()
{
    VideoDecoder decoder;
    for (const QByteArray& unit : VideoUnits::of("wide.h264")) {
        QVERIFY(decoder.decode(unit, large).isNull());
    }
    QVERIFY(isPattern(decoder.decode(m_units[0], large))); // another size
}

void TestVideoDecoder::noUnits_data()
{
    QTest::addColumn<QByteArray>("unit");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("start code") << QByteArray("\0\0\0\1", 4);
    QTest::newRow("text") << QByteArray("no video at all");
    QTest::newRow("zeros") << QByteArray(1000, '\0');
    QTest::newRow("too large") << QByteArray(Limits::maxVideoUnitBytes + 1, 'x');
}

void TestVideoDecoder::noUnits()
{
    QFETCH(QByteArray, unit);
    VideoDecoder decoder;
    QVERIFY(decoder.decode(unit, large).isNull());
    QVERIFY(isPattern(decoder.decode(m_units[0], large)));
}

/** What is broken costs pictures up to the next key frame, and nothing else. */
void TestVideoDecoder::brokenUnits()
{
    QRandomGenerator random(7);
    VideoDecoder decoder;
    for (int i = 0; i < 2000; ++i) {
        QByteArray unit = m_units[i % m_units.size()];
        if (i % 3 == 0) {
            unit.truncate(random.bounded(unit.size()));
        }
        for (int flips = random.bounded(4); flips > 0 && !unit.isEmpty(); --flips) {
            const int at = random.bounded(unit.size());
            unit[at] = static_cast<char>(unit[at] ^ (1 << random.bounded(8)));
        }
        const QImage image = decoder.decode(unit, large);
        QVERIFY(image.width() <= large.width() && image.height() <= large.height());
    }
    for (const QByteArray& unit : m_units) {
        decoder.decode(unit, large);
    }
    QVERIFY(isPattern(decoder.decode(m_units[0], large)));
}

/** A picture of which a part is missing is not shown. */
void TestVideoDecoder::brokenPicture()
{
    for (const int at : {10, 11}) {
        VideoDecoder decoder;
        for (int i = 0; i < at; ++i) {
            QVERIFY(isPattern(decoder.decode(m_units[i], large)));
        }
        QVERIFY(decoder.decode(m_units[at].left(m_units[at].size() - 10), large).isNull());
        QVERIFY(isPattern(decoder.decode(m_units[0], large)));
    }
}

/** From 720 lines on, red has other samples, unless the video says more. */
void TestVideoDecoder::coloursOfHdtv()
{
    VideoDecoder decoder;
    const QList<QByteArray> units = VideoUnits::of("tall.h264");
    QCOMPARE(units.size(), 1);
    const QImage image = decoder.decode(units[0], large);
    QCOMPARE(image.size(), QSize(16, 720));
    QVERIFY2(isLike(image.pixelColor(8, 360), {255, 0, 0}), qPrintable(image.pixelColor(8, 360).name()));
}

QTEST_APPLESS_MAIN(TestVideoDecoder)
#include "tst_videodecoder.moc"
