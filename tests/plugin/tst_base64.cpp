#include "Base64.h"

#include <QTest>

class TestBase64 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void matchesQtForAllLengths();
    void allByteValues();
    void stopsAtCapacity();
    void tailIsNotCheckedAgainstCapacity();
    void writesNoTerminator();
    void rfc4648Examples_data();
    void rfc4648Examples();
};

namespace {

QByteArray encode(const QByteArray& bytes)
{
    const auto size = static_cast<unsigned>(bytes.size());
    QByteArray text(static_cast<int>(Base64EncodeCapacity(size)), '\0');
    const int written = Base64Encode(reinterpret_cast<const unsigned char*>(bytes.constData()), size,
                                     text.data(), Base64EncodeCapacity(size));
    return text.left(written);
}

} // namespace

void TestBase64::matchesQtForAllLengths()
{
    QByteArray bytes;
    for (int length = 0; length < 1600; ++length) {
        QCOMPARE(encode(bytes), bytes.toBase64());
        bytes.append(static_cast<char>(length * 37 + 11));
    }
}

void TestBase64::allByteValues()
{
    QByteArray bytes;
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; second += 5) {
            bytes.append(static_cast<char>(first)).append(static_cast<char>(second)).append('\x7F');
        }
    }
    QCOMPARE(encode(bytes), bytes.toBase64());
}

void TestBase64::stopsAtCapacity()
{
    const QByteArray bytes(30, 'x');
    QByteArray text(64, '?');
    const int written =
        Base64Encode(reinterpret_cast<const unsigned char*>(bytes.constData()), 30, text.data(), 8);
    QCOMPARE(written, 8);
    QCOMPARE(text.mid(8), QByteArray(56, '?'));
}

void TestBase64::tailIsNotCheckedAgainstCapacity()
{
    const QByteArray bytes(4, 'x');
    QByteArray text(16, '?');
    const int written =
        Base64Encode(reinterpret_cast<const unsigned char*>(bytes.constData()), 4, text.data(), 4);
    QCOMPARE(written, 8);
    QCOMPARE(text.left(8), QByteArray("eHh4eA=="));
}

void TestBase64::writesNoTerminator()
{
    QByteArray text(5, '?');
    QCOMPARE(Base64Encode(reinterpret_cast<const unsigned char*>("abc"), 3, text.data(), 4), 4);
    QCOMPARE(text, QByteArray("YWJj?"));
}

void TestBase64::rfc4648Examples_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("text");
    // RFC 4648, clause 10.
    QTest::newRow("empty") << QByteArray("") << QByteArray("");
    QTest::newRow("one byte ends in two =") << QByteArray("f") << QByteArray("Zg==");
    QTest::newRow("two bytes end in one =") << QByteArray("fo") << QByteArray("Zm8=");
    QTest::newRow("three bytes") << QByteArray("foo") << QByteArray("Zm9v");
    QTest::newRow("six bytes") << QByteArray("foobar") << QByteArray("Zm9vYmFy");
}

void TestBase64::rfc4648Examples()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, text);
    QCOMPARE(encode(bytes), text);
}

QTEST_APPLESS_MAIN(TestBase64)
#include "tst_base64.moc"
