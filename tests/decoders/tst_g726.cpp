#include "src/decoders/DecoderContext.h"
#include "src/decoders/DecoderFactories.h"
#include "src/decoders/G726.h"
#include "src/decoders/G726Predictor.h"
#include "src/decoders/PcmBlock.h"
#include "tests/decoders/VectorFiles.h"

#include <QDir>
#include <QTest>

#include <cstring>
#include <memory>

using VectorFiles::contents;
using VectorFiles::crc32;
using VectorFiles::Generator;

class TestG726 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void creation();
    void otherRatesAreRefused();
    void callersMemory();
    void recordedStreams_data();
    void recordedStreams();
    void generatedStreams_data();
    void generatedStreams();
    void logarithmicOutput_data();
    void logarithmicOutput();
    void firstSamples();
    void packingsOfAByte();
    void codewordsCrossPackets();
    void unpackedCodewords();
    void emptyPackets();
    void silenceKeepsTheScaleAtItsFloor();
    void historyOfZeros();
    void historyOfSignals();
    void secondPoleIsLimited();
    void declaredRoomIsNotRespected();
    void blockIsNeverOverrun();
    void picturesAreNotItsAffair();
    void sequencesOfTheRecommendation_data();
    void sequencesOfTheRecommendation();
    void linearSequences_data();
    void linearSequences();
};

namespace {

struct Release
{
    void operator()(G726State* state) const { G726_Release(state); }
};
using State = std::unique_ptr<G726State, Release>;

struct ReleaseDecoder
{
    void operator()(DecoderContext* decoder) const { decoder->Release(); }
};
using Decoder = std::unique_ptr<DecoderContext, ReleaseDecoder>;

State make(int rate, int coding = G726Linear, int packing = G726PackingLeft)
{
    return State(G726_Create(nullptr, rate, coding, packing));
}

QByteArray decode(G726State& state, const QByteArray& bytes)
{
    QByteArray samples((state.bitCount + 8 * bytes.size()) / state.codeBits * 2 + 2, '\0');
    const int count = G726_DecodeBytes(
        &state, samples.data(), reinterpret_cast<const std::uint8_t*>(bytes.constData()), bytes.size());
    samples.resize(state.sampleCoding == G726Linear ? 2 * count : count);
    return samples;
}

std::vector<std::int16_t> words(const QByteArray& bytes)
{
    std::vector<std::int16_t> made(static_cast<std::size_t>(bytes.size()) / 2);
    std::memcpy(made.data(), bytes.constData(), made.size() * 2);
    return made;
}

const QString sequences = QStringLiteral(ITU_VECTORS_DIR "/g726/");

} // namespace

void TestG726::creation()
{
    const struct
    {
        int rate;
        int bits;
    } rates[] = {{16000, 2}, {24000, 3}, {32000, 4}, {40000, 5}};
    for (const auto& [rate, bits] : rates) {
        const State state = make(rate, G726MuLaw, G726PackingRight);
        QVERIFY(state);
        QCOMPARE(state->rate, rate);
        QCOMPARE(state->codeBits, bits);
        QCOMPARE(state->sampleCoding, static_cast<int>(G726MuLaw));
        QCOMPARE(state->packing, static_cast<int>(G726PackingRight));
        QCOMPARE(state->yl, 34816);
        QCOMPARE(int{state->yu}, 544);
        QCOMPARE(int{state->ap} + state->dms + state->dml + state->td + state->bitCount, 0);
        for (const std::int16_t word : state->dq) {
            QCOMPARE(int{word}, 32);
        }
        QCOMPARE(int{state->sr[0]} + state->sr[1], 64);
        QVERIFY(state->encode != nullptr && state->decode != nullptr);
    }
}

void TestG726::otherRatesAreRefused()
{
    for (const int rate : {0, -1, 8000, 16001, 48000, 64000}) {
        QVERIFY(!make(rate));
        QCOMPARE(CreateDecoderG726Left(static_cast<std::uint32_t>(rate)), nullptr);
        QCOMPARE(CreateDecoderG726Right(static_cast<std::uint32_t>(rate)), nullptr);
    }
}

void TestG726::callersMemory()
{
    G726State state;
    QCOMPARE(G726_Create(&state, 32000, G726Linear, G726PackingLeft), &state);
    QCOMPARE(state.yl, 34816);
    QCOMPARE(G726_Create(&state, 1, G726Linear, G726PackingLeft), nullptr);
    QCOMPARE(state.rate, 32000); // a refusal leaves it alone
    QCOMPARE(G726_Release(nullptr), 0);
}

void TestG726::recordedStreams_data()
{
    QTest::addColumn<unsigned>("rate");
    QTest::addColumn<bool>("left");
    for (const int kilobits : {16, 24, 32, 40}) {
        QTest::addRow("random1_%dk_left", kilobits) << kilobits * 1000U << true;
        QTest::addRow("random1_%dk_right", kilobits) << kilobits * 1000U << false;
    }
}

void TestG726::recordedStreams()
{
    QFETCH(unsigned, rate);
    QFETCH(bool, left);
    const QString name = QStringLiteral("g726/") + QString::fromLatin1(QTest::currentDataTag());
    const auto packets = VectorFiles::packets(name + ".rec");
    QVERIFY(!packets.empty());
    const Decoder decoder(left ? CreateDecoderG726Left(rate) : CreateDecoderG726Right(rate));
    std::vector<std::uint8_t> pcm(pcmBlockSize);
    QByteArray decoded;
    for (const QByteArray& packet : packets) {
        std::uint32_t size = pcmBlockSize;
        const EncodedChunk chunk{reinterpret_cast<const std::uint8_t*>(packet.constData()),
                                 static_cast<std::uint32_t>(packet.size()), 1};
        QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &chunk), 0);
        decoded.append(reinterpret_cast<const char*>(pcm.data()), static_cast<int>(size));
    }
    QCOMPARE(decoded, VectorFiles::data(name + ".pcm"));
}

void TestG726::generatedStreams_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("packing");
    QTest::addColumn<unsigned>("seed1");
    QTest::addColumn<unsigned>("seed2");
    QTest::addColumn<unsigned>("zeros");
    QTest::addColumn<unsigned>("ones");
    QTest::newRow("16 left") << 16000 << 1 << 0xEEF78C3DU << 0x2F4D6D45U << 0xE0317B40U << 0x88BF455FU;
    QTest::newRow("16 right") << 16000 << 2 << 0xCD1F925BU << 0x3946F264U << 0xE0317B40U << 0x88BF455FU;
    QTest::newRow("24 left") << 24000 << 1 << 0x5384FA88U << 0x0095DDE1U << 0xAD62511DU << 0xAD62511DU;
    QTest::newRow("24 right") << 24000 << 2 << 0xBC906FD2U << 0x163EAF07U << 0xAD62511DU << 0xAD62511DU;
    QTest::newRow("32 left") << 32000 << 1 << 0xC9131BCEU << 0x2AF40839U << 0x46220D0CU << 0x46220D0CU;
    QTest::newRow("32 right") << 32000 << 2 << 0xDC84E5E2U << 0x5404B7EEU << 0x46220D0CU << 0x46220D0CU;
    QTest::newRow("40 left") << 40000 << 1 << 0xEE2A027BU << 0x841C6B4CU << 0xADC7574DU << 0xADC7574DU;
    QTest::newRow("40 right") << 40000 << 2 << 0x7825DE4AU << 0xDAFCA4F1U << 0xADC7574DU << 0xADC7574DU;
}

void TestG726::generatedStreams()
{
    QFETCH(int, rate);
    QFETCH(int, packing);
    QFETCH(unsigned, seed1);
    QFETCH(unsigned, seed2);
    QFETCH(unsigned, zeros);
    QFETCH(unsigned, ones);
    const auto crcOf = [&](const QByteArray& bytes) {
        const State state = make(rate, G726Linear, packing);
        return crc32(decode(*state, bytes));
    };
    QCOMPARE(crcOf(Generator(1).take(1000)), seed1);
    QCOMPARE(crcOf(Generator(2).take(1000)), seed2);
    QCOMPARE(crcOf(QByteArray(100, '\0')), zeros);
    QCOMPARE(crcOf(QByteArray(100, '\xFF')), ones);
}

void TestG726::logarithmicOutput_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<unsigned>("muLaw");
    QTest::addColumn<unsigned>("aLaw");
    QTest::newRow("16") << 16000 << 0x4FAA9878U << 0x519B43DDU;
    QTest::newRow("24") << 24000 << 0x561096CDU << 0x73FA21C1U;
    QTest::newRow("32") << 32000 << 0x57F79CBBU << 0xA9750542U;
    QTest::newRow("40") << 40000 << 0x54E60C96U << 0xC5924E27U;
}

void TestG726::logarithmicOutput()
{
    QFETCH(int, rate);
    QFETCH(unsigned, muLaw);
    QFETCH(unsigned, aLaw);
    const State mu = make(rate, G726MuLaw);
    QCOMPARE(crc32(decode(*mu, Generator(1).take(1000))), muLaw);
    const State a = make(rate, G726ALaw);
    QCOMPARE(crc32(decode(*a, Generator(1).take(1000))), aLaw);
}

void TestG726::firstSamples()
{
    const std::vector<std::int16_t> expected[] = {{12, -12, -12, 12, 60, 84, -28, -88},
                                                  {16, 0, 0, -36, 0, 36, 0, 16},
                                                  {24, -24, 48, -8, -92, 20, -60, 60},
                                                  {48, -164, 220, 84, 16, 164, 0, 180}};
    const int ends[][3] = {{317667, 5120, 18}, {308012, 4527, 329}, {305880, 4981, 0}, {317261, 4852, 17}};
    for (int i = 0; i < 4; ++i) {
        const State state = make(16000 + 8000 * i);
        auto samples = words(decode(*state, Generator(1).take(1000)));
        samples.resize(8);
        QVERIFY(samples == expected[i]);
        QCOMPARE(state->yl, ends[i][0]);
        QCOMPARE(int{state->yu}, ends[i][1]);
        QCOMPARE(int{state->ap}, ends[i][2]);
    }
}

void TestG726::packingsOfAByte()
{
    const State left = make(32000);
    QVERIFY(words(decode(*left, "\xAB")) == (std::vector<std::int16_t>{-48, -36}));
    const State right = make(32000, G726Linear, G726PackingRight);
    QVERIFY(words(decode(*right, "\xAB")) == (std::vector<std::int16_t>{-36, -48}));
}

void TestG726::codewordsCrossPackets()
{
    for (const int packing : {1, 2}) {
        for (const int rate : {16000, 24000, 32000, 40000}) {
            const QByteArray bytes = Generator(3).take(150);
            const State whole = make(rate, G726Linear, packing);
            const QByteArray expected = decode(*whole, bytes);
            const State pieces = make(rate, G726Linear, packing);
            QByteArray decoded;
            for (int at = 0, step = 1; at < bytes.size(); at += step, step = step % 7 + 1) {
                decoded += decode(*pieces, bytes.mid(at, step));
            }
            QCOMPARE(decoded, expected);
        }
    }
    const State state = make(40000);
    QCOMPARE(decode(*state, QByteArray(3, 'x')).size(), 8);
    QCOMPARE(state->bitCount, 4);
    QCOMPARE(decode(*state, QByteArray(2, 'x')).size(), 8);
    QCOMPARE(state->bitCount, 0);
}

void TestG726::unpackedCodewords()
{
    const State packed = make(32000);
    const State plain = make(32000, G726Linear, G726PackingNone);
    const QByteArray bytes = Generator(4).take(50);
    QByteArray codes;
    for (const char byte : bytes) {
        codes.append(static_cast<char>(static_cast<std::uint8_t>(byte) >> 4));
        codes.append(byte); // only the low bits of a code count
    }
    QCOMPARE(decode(*plain, codes), decode(*packed, bytes));
}

void TestG726::emptyPackets()
{
    const Decoder decoder(CreateDecoderG726Left(40000));
    std::uint8_t pcm[64];
    std::uint32_t size = 64;
    const EncodedChunk nothing{pcm, 0, 1};
    QCOMPARE(decoder->DecodeAudio(pcm, &size, &nothing), 0);
    QCOMPARE(size, 0U);
}

void TestG726::silenceKeepsTheScaleAtItsFloor()
{
    for (const int rate : {16000, 24000, 32000, 40000}) {
        const State encoder = make(rate);
        const State decoder = make(rate, G726Linear, G726PackingNone);
        for (int i = 0; i < 1000; ++i) {
            const auto code = static_cast<char>(encoder->encode(encoder.get(), 0));
            const auto sample = words(decode(*decoder, QByteArray(1, code)));
            QVERIFY(std::abs(sample[0]) <= (rate == 16000 ? 12 : 0));
        }
        QCOMPARE(int{decoder->yu}, 544);
        QCOMPARE(decoder->yl, 34816);
    }
}

void TestG726::historyOfZeros()
{
    // A difference of 0 with a negative code is a negative zero in the history.
    const State state = make(32000, G726Linear, G726PackingNone);
    decode(*state, QByteArray(1, '\x0F'));
    QCOMPARE(static_cast<std::uint16_t>(state->dq[0]), std::uint16_t{0xFC20});
    decode(*state, QByteArray(1, '\0'));
    QCOMPARE(static_cast<std::uint16_t>(state->dq[0]), std::uint16_t{0x20});
}

void TestG726::historyOfSignals()
{
    const std::pair<int, unsigned> signalWords[] = {{0, 0x20},
                                                    {1, (1 << 6) + 32},
                                                    {-1, 64 + 32 - 0x400},
                                                    {32767, (15 << 6) + 63},
                                                    {-32767, (15 << 6) + 63 - 0x400},
                                                    {-32768, 0xFC20}}; // deliberate: as a negative zero
    for (const auto& [signal, word] : signalWords) {
        const State state = make(32000);
        state->sr[0] = 77;
        G726::update(*state, 544, 0, 0, 0, signal, 0, 8);
        QCOMPARE(static_cast<std::uint16_t>(state->sr[0]), static_cast<std::uint16_t>(word));
        QCOMPARE(int{state->sr[1]}, 77);
    }
}

void TestG726::secondPoleIsLimited()
{
    const struct
    {
        std::int16_t before;
        std::int16_t olderSign; // of the partial signal; 0 agrees with the new one
        std::int16_t after;
        bool tone;
    } rows[] = {{-12288, 1, -12288, true},
                {-12288, 0, -12064, true},
                {-11700, 1, -11736, false},
                {12288, 0, 12288, false},
                {12288, 1, 12064, false}};
    for (const auto& row : rows) {
        const State state = make(32000);
        state->a[1] = row.before;
        state->pk[1] = row.olderSign;
        G726::update(*state, 544, 0, 0, 100, 100, 1, 8);
        QCOMPARE(int{state->a[1]}, int{row.after});
        QCOMPARE(state->td, row.tone ? 1 : 0);
    }
}

void TestG726::declaredRoomIsNotRespected()
{
    const Decoder decoder(CreateDecoderG726Left(16000));
    std::vector<std::uint8_t> pcm(pcmBlockSize);
    std::uint32_t size = 4;
    const QByteArray bytes = Generator(1).take(100);
    const EncodedChunk chunk{reinterpret_cast<const std::uint8_t*>(bytes.constData()), 100, 0};
    QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &chunk), 0);
    QCOMPARE(size, 800U);
}

void TestG726::blockIsNeverOverrun()
{
    for (const unsigned rate : {16000U, 24000U, 32000U, 40000U}) {
        const Decoder decoder(CreateDecoderG726Right(rate));
        std::vector<std::uint8_t> pcm(pcmBlockSize); // the address sanitizer watches its end
        const QByteArray bytes(1 << 20, 'x');
        std::uint32_t size = pcmBlockSize;
        const EncodedChunk chunk{reinterpret_cast<const std::uint8_t*>(bytes.constData()), 1U << 20U, 1};
        QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &chunk), 0);
        QVERIFY(size > pcmBlockSize - 100 && size <= pcmBlockSize);
    }
}

void TestG726::picturesAreNotItsAffair()
{
    const Decoder decoder(CreateDecoderG726Left(32000));
    DecodedPicture picture;
    std::uint32_t state = 7;
    const EncodedChunk chunk{};
    QCOMPARE(decoder->DecodeVideo(&picture, &state, &chunk), -1);
    QCOMPARE(state, 7U);
    QCOMPARE(static_cast<std::uint32_t>(decoder->QueryFrame(&picture, 2)), 0x80000004U);
}

namespace {

/** The log-PCM bytes of a file of codes. */
std::vector<std::int16_t> decoded(G726State& state, const QString& file)
{
    std::vector<std::int16_t> bytes;
    for (const std::int16_t word : words(contents(sequences + file))) {
        bytes.push_back(static_cast<std::int16_t>(state.decode(&state, word)));
    }
    return bytes;
}

/** The signal of a G.711 byte in 14 bits (ITU-T G.711, tables 1 and 2). */
int expanded(int byte, bool aLaw)
{
    const int plain = aLaw ? byte ^ 0x55 : byte ^ 0x7F;
    const int segment = plain >> 4 & 7;
    const int step = plain & 15;
    const int magnitude =
        aLaw ? (segment == 0 ? 4 * step + 2 : (2 * step + 33) << segment) : ((2 * step + 33) << segment) - 33;
    return (plain & 0x80) != 0 ? magnitude : -magnitude;
}

std::vector<std::int16_t> encoded(G726State& state, const QString& file, bool aLaw)
{
    std::vector<std::int16_t> codes;
    for (const std::int16_t word : words(contents(sequences + file))) {
        codes.push_back(static_cast<std::int16_t>(state.encode(&state, expanded(word & 0xFF, aLaw))));
    }
    return codes;
}

} // namespace

void TestG726::sequencesOfTheRecommendation_data()
{
    QTest::addColumn<int>("kilobits");
    QTest::addColumn<bool>("homing");
    for (const int kilobits : {16, 24, 32, 40}) {
        QTest::addRow("%d kbit/s, from reset", kilobits) << kilobits << false;
        QTest::addRow("%d kbit/s, after homing", kilobits) << kilobits << true;
    }
}

void TestG726::sequencesOfTheRecommendation()
{
    if (!QDir(sequences).exists()) {
        QSKIP(
            "The Recommendation's sequences are not here (ITU_VECTORS_DIR): nothing was compared with them.");
    }
    QFETCH(int, kilobits);
    QFETCH(bool, homing);
    const QString folder = homing ? "homing/" : "reset/";
    int compared = 0;
    for (const char* signal : {"nrm", "ovr"}) {
        for (const bool fromALaw : {true, false}) {
            const QString law = fromALaw ? "a" : "m";
            const QString codesFile = folder + signal + QString::number(kilobits) + law + ".codes";
            const State encoder = make(1000 * kilobits);
            if (homing) {
                encoded(*encoder, "pcm/init." + law, fromALaw);
            }
            if (QFile::exists(sequences + codesFile)) {
                QVERIFY2(encoded(*encoder, "pcm/" + QString(signal) + "." + law, fromALaw) ==
                             words(contents(sequences + codesFile)),
                         qPrintable(codesFile));
                ++compared;
            }
        }
    }
    // Decode every stream of codes to both laws.
    const QStringList codeFiles =
        QDir(sequences + folder).entryList({QString("*%1*.codes").arg(kilobits)}, QDir::Files);
    for (const QString& codesFile : codeFiles) {
        const QString base = codesFile.chopped(6);
        for (const bool toALaw : {true, false}) {
            const QString output = base + (toALaw ? "_out.a" : "_out.m");
            if (!QFile::exists(sequences + folder + output)) {
                continue;
            }
            const State decoder = make(1000 * kilobits, toALaw ? G726ALaw : G726MuLaw);
            // One file of the original set is what a decoder without the homing sequence gives.
            if (homing && output != "nrm16m_out.a") {
                decoded(*decoder, QString("homing/init%1%2.codes").arg(kilobits).arg(toALaw ? "a" : "m"));
            }
            QVERIFY2(decoded(*decoder, folder + codesFile) == words(contents(sequences + folder + output)),
                     qPrintable(folder + output));
            ++compared;
        }
    }
    QVERIFY2(compared >= 8, qPrintable(QString::number(compared)));
}

void TestG726::linearSequences_data()
{
    QTest::addColumn<bool>("left");
    QTest::newRow("left") << true;
    QTest::newRow("right") << false;
}

void TestG726::linearSequences()
{
    if (!QDir(sequences).exists()) {
        QSKIP(
            "The Recommendation's sequences are not here (ITU_VECTORS_DIR): nothing was compared with them.");
    }
    QFETCH(bool, left);
    const QDir folder(sequences + "linear");
    const QStringList streams = folder.entryList({left ? "*.left" : "*.right"}, QDir::Files);
    QVERIFY(streams.size() >= 15);
    for (const QString& stream : streams) {
        const QString base = stream.section('.', 0, 0);
        int rate = 0;
        for (const int kilobits : {16, 24, 32, 40}) {
            rate = base.contains(QString::number(kilobits)) ? 1000 * kilobits : rate;
        }
        const State state = make(rate, G726Linear, left ? G726PackingLeft : G726PackingRight);
        QVERIFY2(decode(*state, contents(folder.filePath(stream))) ==
                     contents(folder.filePath(base + ".pcm")),
                 qPrintable(stream));
    }
}

QTEST_APPLESS_MAIN(TestG726)
#include "tst_g726.moc"
