#include "src/Base64.h"

#include <QRandomGenerator>
#include <QTest>

#include <vector>

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
    void decodesWhatQtEncodes();
    void decodeExamples_data();
    void decodeExamples();
    void decodeRefusesTooSmallCapacity();
    void decodeNeverWritesBeyondTheCapacity();
    void strictDecodingOfAllLengths();
    void strictDecodingOfAllCharacters();
    void strictDecodingRefuses_data();
    void strictDecodingRefuses();
    void strictDecodingOfAnyText();
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

struct Decoded
{
    unsigned count = 0;
    QByteArray room; ///< The whole output; untouched bytes are "?".
};

/** Decodes from a heap block of the text's exact size, so that the address sanitizer sees a read beyond it.
 */
Decoded decode(const QByteArray& text, unsigned capacity)
{
    const std::vector<char> exact(text.begin(), text.end());
    std::vector<unsigned char> out(capacity, '?');
    Decoded decoded;
    decoded.count = Base64Decode(exact.data(), static_cast<unsigned>(exact.size()), out.data(), capacity);
    decoded.room = QByteArray(reinterpret_cast<const char*>(out.data()), static_cast<int>(capacity));
    return decoded;
}

/** Decodes between heap blocks of the exact size. */
std::optional<QByteArray> decodeStrictly(const QByteArray& text)
{
    const std::vector<char> exact(text.begin(), text.end());
    std::vector<unsigned char> out(exact.size() / 4 * 3 + 2);
    const auto size = Base64DecodeStrict(exact.data(), static_cast<unsigned>(exact.size()), out.data());
    return size
               ? std::optional(QByteArray(reinterpret_cast<const char*>(out.data()), static_cast<int>(*size)))
               : std::nullopt;
}

std::optional<QByteArray> qtStrictly(const QByteArray& text)
{
    const auto result = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    return result ? std::optional(result.decoded) : std::nullopt;
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

void TestBase64::decodesWhatQtEncodes()
{
    QByteArray bytes;
    for (int length = 0; length < 1600; ++length) {
        const auto decoded = decode(bytes.toBase64(), static_cast<unsigned>(length) + 2);
        QCOMPARE(decoded.count, static_cast<unsigned>(length));
        QCOMPARE(decoded.room.left(length), bytes);
        QCOMPARE(decoded.room.mid(length), QByteArray("??"));
        bytes.append(static_cast<char>(length * 37 + 11));
    }
}

void TestBase64::decodeExamples_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray() << QByteArray();
    QTest::newRow("one group") << QByteArray("QUJD") << QByteArray("ABC");
    QTest::newRow("whole alphabet")
        << QByteArray("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
        << QByteArray::fromBase64("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
    QTest::newRow("one padded") << QByteArray("QUI=") << QByteArray("AB");
    QTest::newRow("two padded") << QByteArray("QQ==") << QByteArray("A");
    // Any other character counts as "A", and "=" does so in the first two places of a group.
    QTest::newRow("off the alphabet") << QByteArray("Q*J\n") << QByteArray::fromBase64("QAJA");
    QTest::newRow("high bytes") << QByteArray("\xFF\x80\xC3\xBF") << QByteArray(3, '\0');
    QTest::newRow("URL alphabet") << QByteArray("-_-_") << QByteArray(3, '\0');
    QTest::newRow("equals signs only") << QByteArray("====") << QByteArray(1, '\0');
    // What ends a group is not used up by it: the next group starts there.
    QTest::newRow("padding inside") << QByteArray("QQ==QUJD") << QByteArray("A\0\x04\x14", 4);
    QTest::newRow("one padding inside") << QByteArray("QUI=QUJD") << QByteArray("AB\x01\x05\x09", 5);
    // A group that the text cuts short is filled up with zeros.
    QTest::newRow("one character") << QByteArray("Q") << QByteArray("@\0\0", 3);
    QTest::newRow("two characters") << QByteArray("QQ") << QByteArray("A\0\0", 3);
    QTest::newRow("three characters") << QByteArray("QUI") << QByteArray("AB\0", 3);
    QTest::newRow("six characters") << QByteArray("QUJDRA") << QByteArray("ABCD\0\0", 6);
}

void TestBase64::decodeExamples()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, bytes);
    const auto decoded = decode(text, 100);
    QCOMPARE(decoded.count, static_cast<unsigned>(bytes.size()));
    QCOMPARE(decoded.room.left(bytes.size()), bytes);
    QCOMPARE(decoded.room.mid(bytes.size()), QByteArray(100 - bytes.size(), '?'));
}

void TestBase64::decodeRefusesTooSmallCapacity()
{
    const auto refused = decode(QByteArray(856, 'Q'), 641);
    QCOMPARE(refused.count, 4294967295U);
    QCOMPARE(refused.room, QByteArray(641, '?'));
    QCOMPARE(decode(QByteArray(856, 'Q'), 642).count, 642U);
    // The padding of a text is not looked at for this.
    QCOMPARE(decode("QQ==", 2).count, 4294967295U);
    QCOMPARE(decode("QQ==", 3).count, 1U);
    QCOMPARE(decode("QUJ", 0).count, 0U);
}

void TestBase64::decodeNeverWritesBeyondTheCapacity()
{
    for (int length = 1; length < 40; ++length) {
        const QByteArray text(length, 'Q');
        const auto capacity = static_cast<unsigned>(length) / 4 * 3;
        QCOMPARE(decode(text, capacity).count, capacity); // out is a block of just this size
        QVERIFY(decode(QByteArray(length, '='), capacity).count <= capacity);
    }
}

void TestBase64::strictDecodingOfAllLengths()
{
    QByteArray bytes;
    for (int length = 0; length < 700; ++length) {
        QVERIFY(decodeStrictly(bytes.toBase64()) == bytes);
        QVERIFY(decodeStrictly(bytes.toBase64(QByteArray::OmitTrailingEquals)) == bytes);
        bytes.append(static_cast<char>(length * 151 + 7));
    }
}

void TestBase64::strictDecodingOfAllCharacters()
{
    for (int character = 0; character < 256; ++character) {
        for (int length = 1; length < 9; ++length) {
            for (int place = 0; place < length; ++place) {
                QByteArray text(length, 'Q');
                text[place] = static_cast<char>(character);
                QVERIFY2(decodeStrictly(text) == qtStrictly(text), text.toHex().constData());
            }
        }
    }
}

void TestBase64::strictDecodingRefuses_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("refused");
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("one character") << QByteArray("Q") << false;
    QTest::newRow("bits without a byte") << QByteArray("QR==") << false;
    QTest::newRow("padding alone") << QByteArray("====") << true;
    QTest::newRow("two of padding alone") << QByteArray("==") << true;
    QTest::newRow("too much padding") << QByteArray("Q===") << true;
    QTest::newRow("too little padding") << QByteArray("QQ=") << true;
    QTest::newRow("padding in the middle") << QByteArray("QQ==QQQQ") << true;
    QTest::newRow("padding before the last") << QByteArray("QQ=Q") << true;
    QTest::newRow("line break") << QByteArray("QQQQ\nQQQQ") << true;
    QTest::newRow("space") << QByteArray("QQQ ") << true;
    QTest::newRow("alphabet for URLs") << QByteArray("QQ-_") << true;
    QTest::newRow("zero byte") << QByteArray("QQ\0Q", 4) << true;
    QTest::newRow("high bit") << QByteArray("QQQ\xD1", 4) << true;
}

void TestBase64::strictDecodingRefuses()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, refused);
    QCOMPARE(!decodeStrictly(text), refused);
    QVERIFY2(decodeStrictly(text) == qtStrictly(text), text.toHex().constData());
}

void TestBase64::strictDecodingOfAnyText()
{
    QRandomGenerator random(1);
    const QByteArray alphabet("AZaz09+/====");
    for (int i = 0; i < 20000; ++i) {
        QByteArray text;
        for (int left = random.bounded(12); left > 0; --left) {
            text += alphabet[random.bounded(alphabet.size())];
        }
        QVERIFY2(decodeStrictly(text) == qtStrictly(text), text.toHex().constData());
    }
}

QTEST_APPLESS_MAIN(TestBase64)
#include "tst_base64.moc"
