// What a camera says, as the payload of an event: as CBOR at once, it is the same as by way of a map.

#include "audio/PacketHeader.h"
#include "protocol/CborReader.h"
#include "protocol/CborWriter.h"
#include "protocol/VariantCbor.h"
#include "protocol/Words.h"
#include "server/devices/VoicePacket.h"

#include <QTest>

class TestVoicePacket : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordedBytes();
    void payloadIsThatOfTheFields_data();
    void payloadIsThatOfTheFields();
};

namespace {

VoicePacket packetOf(const QByteArray& bitstream)
{
    VoicePacket packet;
    packet.bitstream = bitstream;
    packet.streamType = 8192;
    packet.sampleRate = 8000;
    packet.frames = 2;
    packet.position = 0xFFFFFFFF;
    packet.captureTime = 0x123456789ABCDEFU;
    packet.channels = 2;
    return packet;
}

} // namespace

void TestVoicePacket::recordedBytes()
{
    // As the first release sent them.
    const QByteArray bytes = packetOf("sound").toPayload("0123456789abcdef0123456789abcdef");
    QCOMPARE(bytes.toHex(),
             QByteArray("a16d417564696f5265636569766564a86f417564696f4368616e6e656c4e756dda000100000269417564"
                        "696f446174617834566b52425541456941674141494141415142384141502f2f2f2f3841414141413738"
                        "3272695764464977454141484e766457356b71417564696f53616d706c696e6746726571da0001000019"
                        "1f406d42697473747265616d53697a65da00010000056b4672616d654e756d626572da0001000002664f"
                        "6666736574da0001000018226a53747265616d54797065da0001000019200065546f6b656e7820303132"
                        "3334353637383961626364656630313233343536373839616263646566"));
}

void TestVoicePacket::payloadIsThatOfTheFields_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 2, 3, 160, 639, 640, 641, 5000}) {
        QTest::addRow("%d bytes", size) << size;
    }
}

void TestVoicePacket::payloadIsThatOfTheFields()
{
    QFETCH(int, size);
    const QString token = QString::fromUtf8("a tökén");
    QByteArray bitstream(size, '\0');
    for (int i = 0; i < size; ++i) {
        bitstream[i] = static_cast<char>(i * 7);
    }
    const VoicePacket packet = packetOf(bitstream);
    QVariantMap fields = packet.toFields();
    const QByteArray bytes = QByteArray::fromBase64(fields[Words::AudioData].toString().toLatin1());
    const auto offset = fields[Words::Offset].toInt();
    QCOMPARE(bytes.size() % 3, 0);
    QCOMPARE(bytes.mid(offset), bitstream);
    QVERIFY(PacketHeader::fromBytes(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                    static_cast<std::size_t>(bytes.size())));
    fields.insert(Words::Token, token);
    QByteArray expected;
    CborWriter writer(expected);
    VariantCbor::encode(QVariantMap{{Vocabulary::AudioReceived, fields}}, writer);
    QCOMPARE(packet.toPayload(token).toHex(), expected.toHex());
    QVERIFY(isCbor(expected));
}

QTEST_APPLESS_MAIN(TestVoicePacket)
#include "tst_voicepacket.moc"
