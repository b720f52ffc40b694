// Which codecs have an encoder, how their packets are described, and how the codecs are named to users.

#include "audio/CodecNames.h"
#include "audio/TalkEncoder.h"
#include "src/decoders/CodecTable.h"

#include <QTest>

#include <vector>

class TestTalkEncoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void encoders_data();
    void encoders();
    void codecsWithoutEncoder_data();
    void codecsWithoutEncoder();
    void namesForUsers();
};

namespace {

/** A codec with an encoder. */
struct Encoded
{
    const char* name;
    unsigned streamType;
    int rate;
    int samples; ///< Of a packet.
    int bytes;   ///< Of a packet; 0 where they vary.
};

constexpr Encoded allEncoded[] = {
    {"pcmu", 8192, 8000, 640, 640},
    {"pcma", 16384, 8000, 640, 640},
    {"aac", 1024, 16000, 1024, 0},
    {"amr", 4096, 8000, 160, 32},
};

} // namespace

void TestTalkEncoder::encoders_data()
{
    QTest::addColumn<unsigned>("streamType");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("samples");
    QTest::addColumn<int>("bytes");
    for (const Encoded& row : allEncoded) {
        QTest::newRow(row.name) << row.streamType << row.rate << row.samples << row.bytes;
    }
}

void TestTalkEncoder::encoders()
{
    QFETCH(unsigned, streamType);
    QFETCH(int, rate);
    QFETCH(int, samples);
    QFETCH(int, bytes);
    const Codec* codec = Codec::byName(QTest::currentDataTag());
    QVERIFY(codec != nullptr);
    QVERIFY(TalkEncoder::existsFor(*codec));
    const auto encoder = TalkEncoder::create(*codec);
    QVERIFY(encoder);
    QCOMPARE(encoder->format().streamType, streamType);
    QCOMPARE(encoder->format().sampleRate, rate);
    QCOMPARE(encoder->format().frameSamples, samples);
    const std::vector<std::int16_t> silence(static_cast<std::size_t>(samples));
    QByteArray packet;
    for (int i = 0; i < 4 && packet.isEmpty(); ++i) {
        packet = encoder->encode(silence.data()); // the first of AAC are held back
    }
    QVERIFY(!packet.isEmpty());
    QVERIFY2(bytes == 0 || packet.size() == bytes, qPrintable(QString::number(packet.size())));
}

void TestTalkEncoder::codecsWithoutEncoder_data()
{
    QTest::addColumn<unsigned>("streamType");
    for (const unsigned type : {256U, 512U, 2048U, 32768U}) {
        QTest::addRow("%u", type) << type;
    }
}

void TestTalkEncoder::codecsWithoutEncoder()
{
    QFETCH(unsigned, streamType);
    const Codec* codec = Codec::byType(streamType);
    QVERIFY(codec != nullptr);
    QVERIFY(!TalkEncoder::existsFor(*codec));
    QVERIFY(!TalkEncoder::create(*codec));
}

void TestTalkEncoder::namesForUsers()
{
    const QStringList encoded = CodecNames::encoded();
    const QStringList recorded = CodecNames::recorded();
    QStringList all;
    for (const Encoded& row : allEncoded) {
        all.append(row.name);
    }
    QCOMPARE(encoded, all);
    QCOMPARE(recorded.mid(0, 3), QStringList({"g726", "g7221", "g729a"})); // and what is added
    all.clear();
    for (const Codec& codec : codecTable) {
        if (codec.name != nullptr) {
            QCOMPARE(encoded.count(codec.name), TalkEncoder::existsFor(codec) ? 1 : 0);
            QCOMPARE(recorded.count(codec.name), TalkEncoder::existsFor(codec) ? 0 : 1);
            all.append(codec.name);
        }
    }
    QCOMPARE(encoded.size() + recorded.size(), all.size());
    const QString last = all.takeLast();
    QCOMPARE(CodecNames::anyOf(), all.join(", ") + " or " + last);
}

QTEST_GUILESS_MAIN(TestTalkEncoder)
#include "tst_talkencoder.moc"
