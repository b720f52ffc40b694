#include "desk/PictureDecoder.h"
#include "protocol/Limits.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QImageWriter>
#include <QTest>

class TestPictureDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picture();
    void fits();
    void noJpeg_data();
    void noJpeg();
    void brokenJpeg();
    void sizes_data();
    void sizes();
    void scans();
    void bytes();
};

namespace {

constexpr QSize fitting{320, 180};

QByteArray encoded(const QImage& image, const char* format = "jpeg")
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.write(image);
    return bytes;
}

QByteArray jpeg(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    return encoded(image);
}

/** A JPEG whose header says that it is of this size. */
QByteArray claiming(int width, int height)
{
    QByteArray bytes = jpeg({16, 16});
    const int start = bytes.indexOf("\xff\xc0"); // SOF0: length, precision, height, width
    const auto put = [&](int at, int value) {
        bytes[at] = static_cast<char>(value >> 8);
        bytes[at + 1] = static_cast<char>(value & 255);
    };
    put(start + 5, height);
    put(start + 7, width);
    return bytes;
}

} // namespace

void TestPictureDecoder::picture()
{
    const QImage image = PictureDecoder::decode(jpeg({160, 90}), fitting);
    QCOMPARE(image.size(), QSize(160, 90)); // never scaled up
    QVERIFY(qRed(image.pixel(80, 45)) > 240);
    QVERIFY(qBlue(image.pixel(80, 45)) < 20);
}

void TestPictureDecoder::fits()
{
    QCOMPARE(PictureDecoder::decode(jpeg({640, 360}), fitting).size(), QSize(320, 180));
    QCOMPARE(PictureDecoder::decode(jpeg({640, 640}), fitting).size(), QSize(180, 180));
    QCOMPARE(PictureDecoder::decode(jpeg({4000, 2}), fitting).size(), QSize(320, 1));
}

void TestPictureDecoder::noJpeg_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(Qt::red);
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("text") << QByteArray("hello");
    QTest::newRow("start alone") << QByteArray("\xff\xd8\xff");
    for (const char* format : {"png", "bmp", "xpm"}) {
        QTest::newRow(format) << encoded(image, format);
    }
    QTest::newRow("svg") << QByteArray(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\"/>");
}

void TestPictureDecoder::noJpeg()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(PictureDecoder::decode(bytes, fitting).isNull());
}

/** Any one of its bytes changed, or its end cut off: no crash, and nothing that is too large. */
void TestPictureDecoder::brokenJpeg()
{
    const QByteArray whole = jpeg({64, 36});
    for (int at = 0; at < whole.size(); ++at) {
        QByteArray broken = whole;
        broken[at] = static_cast<char>(~broken[at]);
        const QImage image = PictureDecoder::decode(broken, fitting);
        QVERIFY(image.width() <= fitting.width() && image.height() <= fitting.height());
        PictureDecoder::decode(whole.left(at), fitting);
    }
}

void TestPictureDecoder::sizes_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::newRow("as large as can be said") << 65500 << 65500;
    QTest::newRow("wide") << 8193 << 1;
    QTest::newRow("high") << 1 << 8193;
    QTest::newRow("too many pixels") << 8192 << 2049;
    QTest::newRow("no width") << 0 << 16;
}

void TestPictureDecoder::sizes()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(PictureDecoder::decode(claiming(width, height), fitting).isNull());
    QVERIFY(clock.elapsed() < 200); // nothing of it is decoded
}

/** Scans that refine nothing cost time, each as much as the picture is large. */
void TestPictureDecoder::scans()
{
    const QByteArray whole = jpeg({64, 36});
    const int scan = whole.indexOf("\xff\xda");
    QByteArray many = whole;
    many.insert(scan, QByteArray("\xff\xda").repeated(PictureDecoder::maxScans));
    QVERIFY(PictureDecoder::decode(many, fitting).isNull());
    // In a comment they are none, but are counted: they would not be there.
    const int comments = PictureDecoder::maxScans;
    const QByteArray text = QByteArray("\xff\xda").repeated(comments);
    QByteArray remarked = whole;
    remarked.insert(2, QByteArray("\xff\xfe\x00", 3) + static_cast<char>(text.size() + 2) + text);
    QVERIFY(PictureDecoder::decode(remarked, fitting).isNull());
    remarked = whole;
    remarked.insert(2, QByteArray("\xff\xfe\x00", 3) + static_cast<char>(text.size()) + text.mid(2));
    QVERIFY(!PictureDecoder::decode(remarked, fitting).isNull());
}

void TestPictureDecoder::bytes()
{
    const QByteArray whole = jpeg({64, 36});
    QVERIFY(!PictureDecoder::decode(whole + QByteArray(Limits::maxPictureBytes - whole.size(), 'x'), fitting)
                 .isNull());
    QVERIFY(PictureDecoder::decode(whole + QByteArray(Limits::maxPictureBytes, 'x'), fitting).isNull());
}

QTEST_GUILESS_MAIN(TestPictureDecoder)
#include "tst_picturedecoder.moc"
