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

void TestTalkEncoder::encoders_data()
{
    QTest::addColumn<unsigned>("streamType");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("samples"); // of a packet
    QTest::addColumn<int>("bytes");   // of a packet; 0 where they vary
    QTest::newRow("pcmu") << 8192U << 8000 << 640 << 640;
    QTest::newRow("pcma") << 16384U << 8000 << 640 << 640;
    QTest::newRow("aac") << 1024U << 16000 << 1024 << 0;
    QTest::newRow("amr") << 4096U << 8000 << 160 << 32;
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
    // Codecs that are added stand behind these.
    const QStringList encoded = CodecNames::encoded();
    const QStringList recorded = CodecNames::recorded();
    QCOMPARE(encoded.mid(0, 4), QStringList({"pcmu", "pcma", "aac", "amr"}));
    QCOMPARE(recorded.mid(0, 3), QStringList({"g726", "g7221", "g729a"}));
    QStringList all;
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
