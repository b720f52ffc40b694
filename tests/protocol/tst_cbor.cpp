// Our CBOR against Qt's, of another make: the same bytes, the same refusals in the same words, the same
// values of the same types, for messages of any values and for bytes of any kind.

#include "protocol/CborReader.h"
#include "protocol/CborWriter.h"
#include "protocol/VariantCbor.h"
#include "protocol/WireMessage.h"
#include "src/vocabulary/Vocabulary.h"
#include "tests/support/QtWireMessage.h"

#include <QPoint>
#include <QRandomGenerator>
#include <QTest>

#include <cmath>
#include <limits>

class TestCbor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordedBytes_data();
    void recordedBytes();
    void sameBytes();
    void sameReadingOfRows_data();
    void sameReadingOfRows();
    void leastInteger();
    void sameReadingOfNesting();
    void sameReadingOfAnyItems();
    void sameReadingOfDamagedMessages();
    void wellFormed_data();
    void wellFormed();
    void talkDataAsTexts_data();
    void talkDataAsTexts();
    void talkDataOutlivesItsMessage();
    void encodedPayload();
};

namespace {

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

bool oneIn(QRandomGenerator& random, int many)
{
    return random.bounded(many) == 0;
}

QString anyText(QRandomGenerator& random)
{
    static const QStringList pieces{"a",
                                    "<Dest>",
                                    QString(QChar(0)),
                                    QString::fromUtf8("ö"),
                                    QString::fromUtf8("€"),
                                    QString::fromUtf8("😀"),
                                    QString(QChar(0xD800)),
                                    QString(QChar(0xDC00)),
                                    QString(QChar(0xFEFF)),
                                    QString(QChar(0xFFFF)),
                                    "0123456789abcdef"};
    QString text;
    for (int left = random.bounded(6); left > 0; --left) {
        text += pieces[random.bounded(pieces.size())];
    }
    return oneIn(random, 20) ? text.repeated(100) : text;
}

QByteArray anyBytes(QRandomGenerator& random, int most)
{
    QByteArray bytes(random.bounded(most + 1), '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random.bounded(256));
    }
    return bytes;
}

/** A number near a power of two, where the heads of items change. */
quint64 anyNumber(QRandomGenerator& random)
{
    const quint64 near = quint64{1} << random.bounded(64);
    return oneIn(random, 4) ? random.generate64() : near + static_cast<quint64>(random.bounded(-2, 3));
}

QVariant anyValue(QRandomGenerator& random, int depth)
{
    switch (random.bounded(depth > 0 ? 20 : 16)) {
    case 0:
        return QVariant();
    case 1:
        return oneIn(random, 2);
    case 2:
        return static_cast<int>(anyNumber(random));
    case 3:
        return static_cast<uint>(anyNumber(random));
    case 4:
        return static_cast<qlonglong>(anyNumber(random));
    case 5:
        return static_cast<qulonglong>(anyNumber(random));
    case 6:
        return static_cast<double>(static_cast<qint64>(anyNumber(random))) / 3;
    case 7:
        return QVariant::fromValue(static_cast<float>(random.bounded(1000)) / 7);
    case 8:
        return QVariant::fromValue(static_cast<short>(anyNumber(random)));
    case 9:
        return QVariant::fromValue(static_cast<uchar>(anyNumber(random)));
    case 10:
        return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(random.bounded(4e12)),
                                              oneIn(random, 2) ? Qt::UTC : Qt::LocalTime);
    case 11:
        return QUrl("rtsp://host/" + anyText(random));
    case 12:
        return oneIn(random, 2) ? QVariant(QPoint(1, 2)) : QVariant(QVariant::fromValue(nullptr));
    case 13:
        return anyBytes(random, 300);
    case 14:
        return QStringList{anyText(random), anyText(random)};
    case 16:
    case 17: {
        QVariantList list;
        for (int left = random.bounded(oneIn(random, 20) ? 300 : 5); left > 0; --left) {
            list.append(anyValue(random, depth - 1));
        }
        return list;
    }
    case 18:
    case 19: {
        QVariantMap map;
        for (int left = random.bounded(oneIn(random, 20) ? 300 : 5); left > 0; --left) {
            map.insert(anyText(random), anyValue(random, depth - 1));
        }
        return map;
    }
    default:
        return anyText(random);
    }
}

WireMessage anyMessage(QRandomGenerator& random)
{
    WireMessage message;
    message.kind = static_cast<WireMessage::Kind>(random.bounded(1, 7));
    message.id = oneIn(random, 3) ? 0 : static_cast<quint32>(anyNumber(random));
    message.name = anyText(random);
    message.secret = anyText(random);
    message.payload = anyValue(random, 4);
    message.code = anyText(random);
    message.text = anyText(random);
    return message;
}

/** The first byte of an item, and its argument in any of the widths that hold it. */
QByteArray anyHead(QRandomGenerator& random, unsigned type, quint64 argument)
{
    int least = argument < 24 ? -1 : argument < 256 ? 0 : argument < 65536 ? 1 : argument >> 32U == 0 ? 2 : 3;
    const int width = oneIn(random, 4) ? random.bounded(least, 4) : least;
    if (width < 0) {
        return QByteArray(1, static_cast<char>(type << 5U | argument));
    }
    QByteArray head(1, static_cast<char>(type << 5U | (24U + static_cast<unsigned>(width))));
    for (int i = (1 << width) - 1; i >= 0; --i) {
        head.append(static_cast<char>(i < 8 ? argument >> (8 * i) : 0));
    }
    return head;
}

/** Any item of CBOR, mostly well-formed. */
QByteArray anyItem(QRandomGenerator& random, int depth)
{
    static const quint64 tags[] = {0,     1,     2,     32,    35,    37,    55799, 65536,      65536,
                                   65537, 65537, 65538, 65539, 65540, 65541, 65542, ~quint64{0}};
    const auto string = [&](unsigned type) {
        const QByteArray bytes = oneIn(random, 3)    ? QByteArray::number(anyNumber(random))
                                 : oneIn(random, 10) ? anyBytes(random, 4)
                                                     : anyText(random).toUtf8();
        return anyHead(random, type, static_cast<quint64>(bytes.size())) + bytes;
    };
    switch (random.bounded(depth > 0 ? 10 : 6)) {
    case 0:
        return anyHead(random, 0, anyNumber(random));
    case 1:
        return anyHead(random, 1, anyNumber(random) >> 1U); // Qt takes -2^64 for 0
    case 2:
    case 3: {
        const unsigned type = oneIn(random, 2) ? 2 : 3;
        if (!oneIn(random, 6)) {
            return string(type);
        }
        QByteArray pieces(1, static_cast<char>(type << 5U | 31U));
        for (int left = random.bounded(4); left > 0; --left) {
            pieces += oneIn(random, 20) ? anyItem(random, 0) : string(type);
        }
        return pieces + '\xFF';
    }
    case 4: {
        const auto simple = static_cast<unsigned>(random.bounded(256));
        return oneIn(random, 3)
                   ? QByteArray("\xF8") + static_cast<char>(simple)
                   : QByteArray(
                         1, static_cast<char>(0xE0U | (oneIn(random, 2) ? 20 + simple % 4 : simple % 24)));
    }
    case 5: {
        const int width = random.bounded(1, 4);
        QByteArray bits;
        for (int left = 1 << width; left > 0; --left) {
            bits += static_cast<char>(oneIn(random, 3) ? 0x7C : random.bounded(256));
        }
        return static_cast<char>(0xF8 + width) + bits;
    }
    case 6:
        return anyHead(random, 6, tags[random.bounded(static_cast<int>(std::size(tags)))]) +
               anyItem(random, depth - 1);
    default: {
        const bool map = oneIn(random, 2);
        const int count = random.bounded(5);
        QByteArray items;
        for (int i = 0; i < count; ++i) {
            items += map ? (oneIn(random, 8) ? anyItem(random, depth - 1) : string(3)) : QByteArray();
            items += anyItem(random, depth - 1);
        }
        const unsigned type = map ? 5 : 4;
        return oneIn(random, 4) ? QByteArray(1, static_cast<char>(type << 5U | 31U)) + items + '\xFF'
                                : anyHead(random, type, static_cast<quint64>(count)) + items;
    }
    }
}

/** A message of any items; many of them are read. */
QByteArray anyItems(QRandomGenerator& random)
{
    QByteArray pairs;
    int count = 0;
    const auto add = [&](const QByteArray& key, const QByteArray& value) {
        pairs += key + value;
        ++count;
    };
    const auto number = [&](quint64 value) { return anyHead(random, 0, value); };
    if (!oneIn(random, 20)) {
        add(number(0), number(1));
    }
    if (!oneIn(random, 20)) {
        add(number(1), number(static_cast<quint64>(random.bounded(1, 7))));
    }
    add(number(5), anyItem(random, 5));
    for (int left = random.bounded(4); left > 0; --left) {
        const auto key = static_cast<quint64>(random.bounded(8));
        if (key == 2 && !oneIn(random, 5)) {
            add(number(key), number(anyNumber(random)));
        } else if (key > 2 && key != 5 && !oneIn(random, 5)) {
            add(number(key), anyHead(random, 3, 2) + "ab");
        } else {
            add(oneIn(random, 5) ? anyItem(random, 1) : number(key), anyItem(random, 2));
        }
    }
    return oneIn(random, 5) ? "\xBF" + pairs + '\xFF'
                            : anyHead(random, 5, static_cast<quint64>(count)) + pairs;
}

/** Damages some bytes. */
QByteArray damaged(QRandomGenerator& random, QByteArray bytes)
{
    for (int left = random.bounded(1, 4); left > 0 && !bytes.isEmpty(); --left) {
        const int at = random.bounded(bytes.size());
        switch (random.bounded(5)) {
        case 0:
            bytes[at] = static_cast<char>(random.bounded(256));
            break;
        case 1:
            bytes[at] = static_cast<char>(bytes.at(at) ^ 1 << random.bounded(8));
            break;
        case 2:
            bytes.remove(at, random.bounded(1, 4));
            break;
        case 3:
            bytes.insert(at, anyBytes(random, 3));
            break;
        default:
            bytes.truncate(at);
        }
    }
    return bytes;
}

/** The same value of the same type; a value that is no number is the same as itself. */
bool same(const QVariant& one, const QVariant& other)
{
    if (one.userType() != other.userType()) {
        return false;
    }
    if (one.userType() == QMetaType::QVariantList) {
        const QVariantList list = one.toList();
        const QVariantList others = other.toList();
        return std::equal(list.begin(), list.end(), others.begin(), others.end(), same);
    }
    if (one.userType() == QMetaType::QVariantMap) {
        const QVariantMap map = one.toMap();
        const QVariantMap others = other.toMap();
        return map.keys() == others.keys() &&
               std::equal(map.begin(), map.end(), others.begin(), others.end(), same);
    }
    if (one.userType() == QMetaType::Double) {
        const double a = one.toDouble();
        const double b = other.toDouble();
        return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
    }
    return one == other;
}

/** What differs between our reading and Qt's; empty for nothing. */
QString difference(const QByteArray& bytes)
{
    QString error = "none";
    QString qtError = "none";
    const auto read = WireMessage::fromBytes(bytes, &error);
    const auto qtRead = QtWireMessage::fromBytes(bytes, &qtError);
    const QString about = QString::fromLatin1(bytes.right(300).toHex()) + QString::number(bytes.size());
    if (read.has_value() != qtRead.has_value() || error != qtError) {
        return QStringLiteral("%1: ours %2 (%3), Qt's %4 (%5)")
            .arg(about)
            .arg(read.has_value())
            .arg(error)
            .arg(qtRead.has_value())
            .arg(qtError);
    }
    if (read && !(read->kind == qtRead->kind && read->id == qtRead->id && read->name == qtRead->name &&
                  read->secret == qtRead->secret && read->code == qtRead->code &&
                  read->text == qtRead->text && same(read->payload, qtRead->payload))) {
        QString words;
        QDebug(&words) << read->toBytes().toHex() << qtRead->toBytes().toHex() << about;
        return words;
    }
    return QString();
}

} // namespace

void TestCbor::recordedBytes_data()
{
    QTest::addColumn<QVariant>("payload");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char* name, const QVariant& payload, const char* bytes) {
        QTest::newRow(name) << payload << hex(bytes);
    };
    // As the first release sent them.
    row("invalid", QVariant(), "a6000101050219012c036947657443616d65726106622d3207686772c3b6c39f6572");
    row("true", QVariant(true), "a7000101050219012c05f5036947657443616d65726106622d3207686772c3b6c39f6572");
    row("int", QVariant(-7), "a7000101050219012c0526036947657443616d65726106622d3207686772c3b6c39f6572");
    row("least int", QVariant(std::numeric_limits<int>::min()),
        "a7000101050219012c053a7fffffff036947657443616d65726106622d3207686772c3b6c39f6572");
    row("uint", QVariant(7U),
        "a7000101050219012c05da0001000007036947657443616d65726106622d3207686772c3b6c39f6572");
    row("largest uint", QVariant(0xFFFFFFFFU),
        "a7000101050219012c05da000100001affffffff036947657443616d65726106622d3207686772c3b6c39f6572");
    row("long long", QVariant(qlonglong{-1000000000000}),
        "a7000101050219012c05da000100013b000000e8d4a50fff036947657443616d65726106622d3207686772c3b6c39f6572");
    row("unsigned long long", QVariant(~qulonglong{0}),
        "a7000101050219012c05da00010002543138343436373434303733373039353531363135036947657443616d65726106622d"
        "3207686772c3b6c39f6572");
    row("double", QVariant(0.1),
        "a7000101050219012c05fb3fb999999999999a036947657443616d65726106622d3207686772c3b6c39f6572");
    row("text", QVariant(QString::fromUtf8("Größe €")),
        "a7000101050219012c056b4772c3b6c39f6520e282ac036947657443616d65726106622d3207686772c3b6c39f6572");
    row("empty text", QVariant(QString("")),
        "a7000101050219012c0560036947657443616d65726106622d3207686772c3b6c39f6572");
    row("bytes", QVariant(QByteArray("\0\xFF", 2)),
        "a7000101050219012c054200ff036947657443616d65726106622d3207686772c3b6c39f6572");
    row("texts", QVariant(QStringList{"a", ""}),
        "a7000101050219012c05da0001000382616160036947657443616d65726106622d3207686772c3b6c39f6572");
    row("list", QVariant(QVariantList{1, "a", QVariantList{2U}, QVariant()}),
        "a7000101050219012c058401616181da0001000002f7036947657443616d65726106622d3207686772c3b6c39f6572");
    row("map", QVariant(QVariantMap{{"a", 1}, {"", QVariantMap{{"b", QByteArray("c")}}}}),
        "a7000101050219012c05a260a161624163616101036947657443616d65726106622d3207686772c3b6c39f6572");
    row("time", QVariant(QDateTime(QDate(2026, 3, 1), QTime(8, 30, 1, 250), Qt::UTC)),
        "a7000101050219012c05da000100047818323032362d30332d30315430383a33303a30312e3235305a036947657443616d65"
        "726106622d3207686772c3b6c39f6572");
    row("URL", QVariant(QUrl("https://example.com/a%20b")),
        "a7000101050219012c05da00010005781968747470733a2f2f6578616d706c652e636f6d2f6125323062036947657443616d"
        "65726106622d3207686772c3b6c39f6572");
    row("heads of all widths", QVariant(QVariantList{23, 24, 255, 256, 65535, 65536, -24, -25}),
        "a7000101050219012c058817181818ff19010019ffff1a00010000373818036947657443616d65726106622d3207686772c3"
        "b6c39f6572");
    row("a long text", QVariant(QString(24, 'x')),
        "a7000101050219012c057818787878787878787878787878787878787878787878787878036947657443616d65726106622d"
        "3207686772c3b6c39f6572");
}

void TestCbor::recordedBytes()
{
    QFETCH(QVariant, payload);
    QFETCH(QByteArray, bytes);
    WireMessage message;
    message.kind = WireMessage::Reply;
    message.id = 300;
    message.name = "GetCamera";
    message.payload = payload;
    message.code = "-2";
    message.text = QString::fromUtf8("größer");
    QCOMPARE(message.toBytes().toHex(), bytes.toHex());
    const auto read = WireMessage::fromBytes(bytes);
    QVERIFY(read);
    QVERIFY(same(read->payload, payload));
}

void TestCbor::sameBytes()
{
    QRandomGenerator random(1);
    for (int i = 0; i < 20000; ++i) {
        const WireMessage message = anyMessage(random);
        QCOMPARE(message.toBytes().toHex(), QtWireMessage::toBytes(message).toHex());
    }
}

void TestCbor::sameReadingOfRows_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("taken");
    const auto row = [](const char* name, const char* bytes, bool taken) {
        QTest::newRow(name) << hex(bytes) << taken;
    };
    row("a command", "a3000101040301", false);
    row("version twice", "a3000100020104", true);
    row("another version first", "a3000200010104", false);
    row("name twice, the second a number", "a400010104036161 0307", true);
    row("name twice, the first a number", "a4000101040307036161", false);
    row("unknown key", "a300010104 0801", false);
    row("unknown text as key", "a300010104 616101", false);
    row("negative key", "a300010104 2001", false);
    row("key of 64 bits", "a300010104 1bffffffffffffffff01", false);
    row("number with a fraction as key", "a300010104 f9000001", false);
    row("key with a wide head", "a300010104 180301", false);
    row("wide heads", "a3180019000118011b0000000000000004 190003 7800", true);
    row("name undefined", "a30001010403f7", true);
    row("name null", "a30001010403f6", false);
    row("number undefined", "a30001010402f7", true);
    row("number with a fraction", "a30001010402f93c00", false);
    row("name in pieces", "a300010104037f61616162ff", true);
    row("name in no pieces", "a300010104037fff", true);
    row("piece of bytes in a text", "a300010104037f4161ff", false);
    row("pieces in pieces", "a300010104037f7f6161ffff", false);
    row("character cut by a piece", "a300010104037f61c361b6ff", false);
    row("character cut by the end", "a3000101040361c3", false);
    row("half a surrogate pair", "a3000101040363eda080", false);
    row("character written too long", "a3000101040362c080", false);
    row("character beyond Unicode", "a3000101040364f4908080", false);
    row("last character of Unicode", "a3000101040364f48fbfbf", true);
    row("byte order mark", "a3000101040364efbbbf61", true);
    row("open map", "bf00010104ff", true);
    row("open map that ends in a pair", "bf000101ff", false);
    row("open map without its end", "bf00010104", false);
    row("end without a beginning", "a200010104ff", false);
    row("end as a value", "a3000101 0405ff", false);
    row("payload null", "a30001010405f6", false);
    row("payload undefined", "a30001010405f7", true);
    row("payload a simple value", "a30001010405e0", false);
    row("simple value in two bytes that needs one", "a30001010405f817", false);
    row("simple value in two bytes", "a30001010405f820", false);
    row("half, single and double", "a3000101040583f93e00fa3fc00000fb3ff8000000000000", true);
    row("no number", "a30001010405f97e00", true);
    row("tiny half", "a30001010405f90001", true);
    row("integer of 63 bits", "a300010104051b7fffffffffffffff", false);
    row("integer of 64 bits", "a300010104051b8000000000000000", true);
    row("least integer of 64 bits", "a300010104053b7fffffffffffffff", false);
    row("integer below 64 bits", "a300010104053b8000000000000000", true);
    row("payload with a key twice", "a3000101040 5a2616101616102", true);
    row("payload with a value twice, one of them unknown", "a30001010405a26161f6616102", false);
    row("two payloads, the second unknown", "a4000101040501 05f6", true);
    row("tag of a time", "a30001010405c074323032302d30312d30315430303a30303a30305a", false);
    row("tag of a URL", "a30001010405d8206568747470 3a", false);
    row("tag of CBOR", "d9d9f7a200010104", false);
    row("tag in a tag", "a30001010405da00010000c001", false);
    row("uint", "a30001010405da0001000001", true);
    row("negative uint", "a30001010405da0001000020", false);
    row("uint of 33 bits", "a30001010405da000100001b0000000100000000", false);
    row("long long of 64 bits without a sign", "a30001010405da000100011bffffffffffffffff", false);
    row("unsigned long long with a space", "a30001010405da00010002422037", true);
    row("unsigned long long, in pieces", "a30001010405da000100025f41374138ff", true);
    row("unsigned long long that is none", "a30001010405da00010002413a", false);
    row("texts, open", "a30001010405da000100039f6161ff", true);
    row("texts with bytes", "a30001010405da00010003814161", false);
    row("time that is none", "a30001010405da000100046161", true);
    row("URL that is none", "a30001010405da00010005613a", true);
    row("tag without its item", "a30001010405da00010000", false);
    row("reserved head", "a300010104051c", false);
    row("integer of any length", "a300010104051f", false);
    row("tag of any length", "a30001010405df00", false);
    row("map of 2^63 pairs", "bb8000000000000000000101", false);
    row("array of 2^64 - 1 items", "a300010104059bffffffffffffffff", false);
}

void TestCbor::leastInteger()
{
    // -2^64, which Qt's classes take for 0: it is no number of a command, and elsewhere what it says.
    const auto read = WireMessage::fromBytes(hex("a300010104053bffffffffffffffff"));
    QVERIFY(read && same(read->payload, -18446744073709551616.0));
    QVERIFY(!WireMessage::fromBytes(hex("a300010104023bffffffffffffffff")));
}

void TestCbor::sameReadingOfRows()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, taken);
    QVERIFY2(difference(bytes).isEmpty(), qPrintable(difference(bytes)));
    QCOMPARE(WireMessage::fromBytes(bytes).has_value(), taken);
}

void TestCbor::sameReadingOfNesting()
{
    const auto nested = [](const QByteArray& around, int depth, const QByteArray& behind = QByteArray()) {
        return hex("a30001010405") + around.repeated(depth) + '\x01' + behind.repeated(depth);
    };
    for (const int depth : {1, 15, 16, 17, 100, 1021, 1022, 1023, 1024, 1025, 1026, 5000}) {
        QVERIFY2(difference(nested("\x81", depth)).isEmpty(), qPrintable(difference(nested("\x81", depth))));
        QVERIFY2(difference(nested(hex("a161 61"), depth)).isEmpty(),
                 qPrintable(difference(nested(hex("a161 61"), depth))));
        QVERIFY2(difference(nested("\xC6", depth)).isEmpty(), qPrintable(difference(nested("\xC6", depth))));
        QVERIFY2(difference(nested("\x9F", depth, "\xFF")).isEmpty(),
                 qPrintable(difference(nested("\x9F", depth, "\xFF"))));
    }
}

void TestCbor::sameReadingOfAnyItems()
{
    QRandomGenerator random(2);
    int taken = 0;
    for (int i = 0; i < 20000; ++i) {
        const QByteArray bytes = anyItems(random);
        QVERIFY2(difference(bytes).isEmpty(), qPrintable(difference(bytes)));
        taken += WireMessage::fromBytes(bytes) ? 1 : 0;
    }
    QVERIFY2(taken > 2000 && taken < 18000, qPrintable(QString::number(taken)));
}

void TestCbor::sameReadingOfDamagedMessages()
{
    QRandomGenerator random(3);
    for (int i = 0; i < 20000; ++i) {
        const QByteArray bytes = damaged(random, anyMessage(random).toBytes());
        QVERIFY2(difference(bytes).isEmpty(), qPrintable(difference(bytes)));
    }
}

void TestCbor::wellFormed_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("expected");
    const auto row = [](const char* name, const char* bytes, bool expected) {
        QTest::newRow(name) << hex(bytes) << expected;
    };
    row("nothing", "", false);
    row("text", "6161", true);
    row("text, one byte short", "6261", false);
    row("bytes, one byte short", "5802ff", false);
    row("bytes", "5802ffff", true);
    row("number like a length", "1bffffffffffffffff", true);
    row("number cut short", "1bffffffffffffff", false);
    row("open", "9f0102ff", true);
    row("list of as many entries as bytes", "83f6f6", false);
    row("list", "82f6f6", true);
    row("map of more entries than bytes", "a4f6f6", false);
    row("8 bytes of length", "9b7fffffffffffffff", false);
    row("map of 2^63 pairs", "bb8000000000000000", false);
    row("two items", "0101", false);
    row("head cut short", "18", false);
}

void TestCbor::wellFormed()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, expected);
    QCOMPARE(isCbor(bytes), expected);
}

void TestCbor::talkDataAsTexts_data()
{
    QTest::addColumn<QVariant>("payload");
    QTest::addColumn<bool>("regular");
    namespace V = Vocabulary;
    const QVariantMap packet{{V::targets, "<Dest>t</Dest>"}, {V::talkData, "VkRBUA=="}, {V::sequence, 7U}};
    const auto with = [&](const QString& key, const QVariant& value) {
        QVariantMap changed = packet;
        changed.insert(key, value);
        return QVariant(changed);
    };
    const auto without = [&](const QString& key) {
        QVariantMap changed = packet;
        changed.remove(key);
        return QVariant(changed);
    };
    QTest::newRow("packet") << QVariant(packet) << true;
    QTest::newRow("int as sequence") << with(V::sequence, 7) << true;
    QTest::newRow("no sequence") << without(V::sequence) << true;
    QTest::newRow("not Base64") << with(V::talkData, "!") << true;
    QTest::newRow("nothing in it") << with(V::talkData, "") << true;
    QTest::newRow("long") << with(V::talkData, QString(Limits::maxTalkDataLength, 'a')) << true;
    QTest::newRow("too long") << with(V::talkData, QString(Limits::maxTalkDataLength + 1, 'a')) << false;
    QTest::newRow("targets too long")
        << with(V::targets, QString(Limits::maxTargetsLength + 1, 'a')) << false;
    QTest::newRow("not ASCII") << with(V::talkData, QString::fromUtf8("VkRBUä==")) << false;
    QTest::newRow("targets not ASCII")
        << with(V::targets, QString(QChar(0xFEFF)) + "<Dest>t</Dest>") << false;
    QTest::newRow("bytes") << with(V::talkData, QByteArray("VkRBUA==")) << false;
    QTest::newRow("text as sequence") << with(V::sequence, "7") << false;
    QTest::newRow("fraction as sequence") << with(V::sequence, 7.5) << false;
    QTest::newRow("unknown key") << with("more", 1) << false;
    QTest::newRow("no targets") << without(V::targets) << false;
    QTest::newRow("no data") << without(V::talkData) << false;
    QTest::newRow("list") << QVariant(QVariantList{QVariant(packet)}) << false;
    QTest::newRow("nothing") << QVariant() << false;
}

void TestCbor::talkDataAsTexts()
{
    QFETCH(QVariant, payload);
    QFETCH(bool, regular);
    WireMessage message;
    message.kind = WireMessage::Command;
    message.id = 9;
    message.name = Vocabulary::TalkData;
    message.payload = payload;
    const auto read = WireMessage::fromBytes(message.toBytes(), nullptr, WireMessage::Texts);
    QVERIFY(read);
    QCOMPARE(read->talkData.has_value(), regular);
    const auto other = WireMessage::fromBytes(message.toBytes());
    QVERIFY(other && !other->talkData);
    QVERIFY(same(regular ? QVariant(read->talkData->toMap()) : read->payload, other->payload));
    QCOMPARE(read->payload.isValid(), !regular && payload.isValid());
    // No other message has it.
    message.name = "TalkDatum";
    QVERIFY(!WireMessage::fromBytes(message.toBytes(), nullptr, WireMessage::Texts)->talkData);
    message.name = Vocabulary::TalkData;
    message.kind = WireMessage::Event;
    QVERIFY(!WireMessage::fromBytes(message.toBytes(), nullptr, WireMessage::Texts)->talkData);
}

void TestCbor::talkDataOutlivesItsMessage()
{
    WireMessage message;
    message.kind = WireMessage::Command;
    message.name = Vocabulary::TalkData;
    message.payload = QVariantMap{{Vocabulary::targets, "t"}, {Vocabulary::talkData, "VkRB"}};
    QByteArray bytes = message.toBytes();
    const auto read = WireMessage::fromBytes(bytes, nullptr, WireMessage::Texts);
    bytes.fill('x');
    bytes.clear();
    QCOMPARE(read->talkData->toMap(), message.payload.toMap());
    // A key twice is for those who look more closely.
    const QByteArray twice = hex("a400010104 0368") + "TalkData" + hex("05a368") + "talkData" +
                             hex("6161 67") + "targets" + hex("6162 68") + "talkData" + hex("6163");
    const auto general = WireMessage::fromBytes(twice, nullptr, WireMessage::Texts);
    QVERIFY(general && !general->talkData);
    QCOMPARE(general->payload, QVariant(QVariantMap{{"talkData", "c"}, {"targets", "b"}}));
}

void TestCbor::encodedPayload()
{
    WireMessage message;
    message.kind = WireMessage::Event;
    message.name = "AudioReceived";
    message.payload = QVariantMap{{"a", 1U}, {"b", QString::fromUtf8("ö")}};
    const QByteArray bytes = message.toBytes();
    QByteArray payload;
    CborWriter writer(payload);
    VariantCbor::encode(message.payload, writer);
    message.payload = QVariant();
    message.encodedPayload = payload;
    QCOMPARE(message.toBytes().toHex(), bytes.toHex());
}

QTEST_APPLESS_MAIN(TestCbor)
#include "tst_cbor.moc"
