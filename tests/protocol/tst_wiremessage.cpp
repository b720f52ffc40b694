#include "protocol/CborReader.h"
#include "protocol/CborWriter.h"
#include "protocol/Limits.h"
#include "protocol/VariantCbor.h"
#include "protocol/WireMessage.h"

#include <QCborArray>
#include <QCborMap>
#include <QDateTime>
#include <QTest>
#include <QUrl>

#include <limits>

namespace {

/** What is read of a value after it was written. */
std::optional<QVariant> again(const QVariant& value)
{
    QByteArray bytes;
    CborWriter writer(bytes);
    VariantCbor::encode(value, writer);
    CborReader reader(bytes);
    return isCbor(bytes) ? VariantCbor::decode(reader) : std::nullopt;
}

} // namespace

class TestWireMessage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void typesSurvive_data();
    void typesSurvive();
    void otherTypesBecomeInvalid();
    void nestingIsLimited();
    void messagesSurvive();
    void brokenMessages_data();
    void brokenMessages();
};

void TestWireMessage::typesSurvive_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("invalid") << QVariant();
    QTest::newRow("true") << QVariant(true);
    QTest::newRow("false") << QVariant(false);
    QTest::newRow("int") << QVariant(-7);
    QTest::newRow("least int") << QVariant(std::numeric_limits<int>::min());
    QTest::newRow("uint") << QVariant(7U);
    QTest::newRow("largest uint") << QVariant(0xFFFFFFFFU);
    QTest::newRow("long long") << QVariant(qlonglong{-1000000000000});
    QTest::newRow("unsigned long long") << QVariant(~qulonglong{0});
    QTest::newRow("double") << QVariant(0.1);
    QTest::newRow("whole double") << QVariant(3.0);
    QTest::newRow("text") << QVariant(QString::fromUtf8("Größe €"));
    QTest::newRow("empty text") << QVariant(QString(""));
    QTest::newRow("bytes") << QVariant(QByteArray("\0\xFF", 2));
    QTest::newRow("texts") << QVariant(QStringList{"a", ""});
    QTest::newRow("no texts") << QVariant(QStringList());
    QTest::newRow("list") << QVariant(QVariantList{1, "a", QVariantList{2U}, QVariant()});
    QTest::newRow("map") << QVariant(QVariantMap{{"a", 1}, {"", QVariantMap{{"b", QByteArray("c")}}}});
    QTest::newRow("time") << QVariant(QDateTime(QDate(2026, 3, 1), QTime(8, 30, 1, 250), Qt::UTC));
    QTest::newRow("URL") << QVariant(QUrl("https://example.com/a%20b"));
}

void TestWireMessage::typesSurvive()
{
    QFETCH(QVariant, value);
    const auto decoded = again(value);
    QVERIFY(decoded);
    QCOMPARE(decoded->userType(), value.userType());
    QCOMPARE(*decoded, value);
}

void TestWireMessage::otherTypesBecomeInvalid()
{
    QCOMPARE(again(QPoint(1, 2)).value(), QVariant());
}

void TestWireMessage::nestingIsLimited()
{
    const auto nested = [](int depth) {
        QVariant value = 1;
        for (int i = 0; i < depth; ++i) {
            value = QVariantList{value};
        }
        return again(value).has_value();
    };
    QVERIFY(nested(Limits::maxNesting));
    QVERIFY(!nested(Limits::maxNesting + 1));
}

void TestWireMessage::messagesSurvive()
{
    WireMessage message;
    message.kind = WireMessage::Reply;
    message.id = 0xFFFFFFFF;
    message.name = "GetAudioFile";
    message.secret = "s";
    message.payload = QVariantList{1};
    message.code = "-2";
    message.text = "why";
    const auto read = WireMessage::fromBytes(message.toBytes());
    QVERIFY(read);
    QCOMPARE(read->kind, message.kind);
    QCOMPARE(read->id, message.id);
    QCOMPARE(read->name, message.name);
    QCOMPARE(read->secret, message.secret);
    QCOMPARE(read->payload, message.payload);
    QCOMPARE(read->code, message.code);
    QCOMPARE(read->text, message.text);
}

void TestWireMessage::brokenMessages_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const auto map = [](const QCborMap& entries) { return QCborValue(entries).toCbor(); };
    WireMessage good;
    good.payload = QVariantMap{{"key", "a longer value"}};
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no CBOR") << QByteArray("\xFF\xFF", 2);
    QTest::newRow("cut short") << good.toBytes().chopped(3);
    QTest::newRow("more behind") << good.toBytes() + '\x01'; // an integer, whole
    QTest::newRow("no map") << QCborValue(7).toCbor();
    QTest::newRow("no version") << map({{1, 1}});
    QTest::newRow("another version") << map({{0, 2}, {1, 1}});
    QTest::newRow("version that is no integer") << map({{0, 1.0}, {1, 4}});
    QTest::newRow("kind that no integer can hold") << map({{0, 1}, {1, -1.7e38}});
    QTest::newRow("no kind") << map({{0, 1}});
    QTest::newRow("unknown kind") << map({{0, 1}, {1, 7}});
    QTest::newRow("negative number") << map({{0, 1}, {1, 4}, {2, -1}});
    QTest::newRow("number too large") << map({{0, 1}, {1, 4}, {2, 0x100000000LL}});
    QTest::newRow("payload of another kind")
        << map({{0, 1}, {1, 4}, {5, QCborValue(static_cast<QCborTag>(2), QCborValue(1))}});
    QTest::newRow("int out of range") << map({{0, 1}, {1, 4}, {5, 0x100000000LL}});
    QTest::newRow("map with a number as key") << map({{0, 1}, {1, 4}, {5, QCborMap{{1, 2}}}});
    QTest::newRow("list of texts with a number")
        << map({{0, 1}, {1, 4}, {5, QCborValue(static_cast<QCborTag>(65539), QCborArray{1})}});
    QTest::newRow("text longer than the message") << QByteArray("\xA1\x01\x7A\x7F\xFF\xFF\xFFx", 8);
    QTest::newRow("list longer than the message") << QByteArray("\xA1\x05\x9A\x04\x00\x00\x00", 7);
    QTest::newRow("length of 2^64 - 1") << QByteArray("\xA1\x05\x9B\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 11);
    QTest::newRow("length cut short") << QByteArray("\xA1\x05\x9B\xFF", 4);
    QTest::newRow("reserved length") << QByteArray("\xA1\x05\x9C", 3);
    QTest::newRow("nested far too deep") << QByteArray(100000, '\x81');
}

void TestWireMessage::brokenMessages()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!WireMessage::fromBytes(bytes));
    QString error;
    QVERIFY(!WireMessage::fromBytes(bytes, &error));
    QVERIFY(!error.isEmpty());
}

QTEST_APPLESS_MAIN(TestWireMessage)
#include "tst_wiremessage.moc"
