// From the bits of a frame to its parameters, each stage against values computed another way.

#include "src/decoders/g729a/G729AFixedCodebook.h"
#include "src/decoders/g729a/G729AFrameBits.h"
#include "src/decoders/g729a/G729AGains.h"
#include "src/decoders/g729a/G729AMath.h"
#include "src/decoders/g729a/G729APitch.h"
#include "src/decoders/g729a/G729ATables.h"
#include "tests/decoders/G729AFrames.h"

#include <QTest>

#include <cmath>
#include <random>

using namespace G729AFrames;

class TestG729AParameters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void logarithmAndPower();
    void inverseRoot();
    void products();
    void divisions();
    void speechFields();
    void sidFields();
    void parity();
    void firstLags();
    void secondLags();
    void adaptiveCodebook_data();
    void adaptiveCodebook();
    void fixedCodebook();
    void sharpening();
    void gains();
    void attenuatedGains();
    void savedEnergy();
};

namespace {

/** Reads one frame's fields. */
void unpack(G729AState* engine, const QByteArray& frame)
{
    std::uint8_t input[16] = {};
    std::memcpy(input, frame.constData(), static_cast<std::size_t>(frame.size()));
    engine->frameHeader = 1;
    QCOMPARE(GB_SetBuffer(engine->reader, input, static_cast<std::uint32_t>(frame.size())), 0);
    QCOMPARE(GB_Prime(engine->reader), 0);
    QCOMPARE(G729AFrameBits::unpack(*engine), 0);
}

bool near(double actual, double expected, double tolerance)
{
    return std::abs(actual - expected) <= tolerance;
}

} // namespace

void TestG729AParameters::logarithmAndPower()
{
    for (const std::int32_t value : {1, 2, 3, 7, 1000, 12345678, 0x40000000, 0x7FFFFFFF}) {
        const G729AMath::Logarithm log = G729AMath::log2(value);
        QVERIFY2(near(log.exponent + log.fraction / 32768.0, std::log2(value), 0.0003),
                 qPrintable(QString::number(value)));
    }
    for (const std::int32_t value : {0, -1, -2147483647 - 1}) {
        QCOMPARE(G729AMath::log2(value).exponent, 0);
        QCOMPARE(G729AMath::log2(value).fraction, 0);
    }
    for (int fraction = 0; fraction < 32768; fraction += 7) {
        QVERIFY(near(G729AMath::pow2of14(fraction), 16384 * std::exp2(fraction / 32768.0), 3));
    }
}

void TestG729AParameters::inverseRoot()
{
    for (const std::int32_t value : {1, 2, 3, 5, 1000, 65535, 12345678, 0x3FFFFFFF, 0x40000000, 0x7FFFFFFF}) {
        const double expected = std::exp2(30) / std::sqrt(value);
        QVERIFY2(near(G729AMath::inverseSqrt(value), expected, 0.0005 * expected + 1),
                 qPrintable(QString::number(value)));
    }
    QCOMPARE(G729AMath::inverseSqrt(0), 0x3FFFFFFF);
    QCOMPARE(G729AMath::inverseSqrt(-7), 0x3FFFFFFF);
}

void TestG729AParameters::products()
{
    for (const std::int32_t value : {0, 1, 2, 32767, 1 << 24, -(1 << 24), 0x7FFFFFFF}) {
        for (const std::int32_t factor : {1, 410, 32767, -32768}) {
            const std::int32_t product = G729AMath::multiplyLong(value, factor);
            QVERIFY(near(product, static_cast<double>(value) * factor / 32768, 3));
            QCOMPARE(product & 1, 0);
            QCOMPARE(product, G729AMath::multiplyLong(value & ~1, factor)); // the lowest bit does not count
        }
    }
    QCOMPARE(G729AMath::shift(1, 40), 0);
    QCOMPARE(G729AMath::shift(-1, -40), -1);
    QCOMPARE(G729AMath::clamp16(40000), std::int16_t{32767});
    QCOMPARE(G729AMath::clamp16(-40000), std::int16_t{-32768});
    QCOMPARE(int{G729AMath::draw(11111)}, 10260);
}

void TestG729AParameters::divisions()
{
    for (const std::int32_t divisor : {1, 3, 1000, 32767, 65536}) {
        for (std::int32_t dividend = 0; dividend < divisor; dividend += divisor / 50 + 1) {
            QCOMPARE(G729AMath::divide15(dividend, divisor),
                     static_cast<std::int32_t>((std::int64_t{dividend} << 15) / divisor));
        }
        QCOMPARE(G729AMath::divide15(divisor, divisor), 32767);
    }
    // Outside of its range it still ends after fifteen steps.
    QCOMPARE(G729AMath::divide15(5, 0), 32767);
    QCOMPARE(G729AMath::divide15(-5, 3), 0);
}

void TestG729AParameters::speechFields()
{
    constexpr int widths[] = {8, 10, 8, 1, 13, 4, 7, 5, 13, 4, 7};
    constexpr int values[] = {0xA5, 0x2C3, 0x96, 1, 0x1234, 0x9, 0x55, 0x13, 0x0F0F, 0x6, 0x2A};
    BitWriter frame(1);
    for (int i = 0; i < G729AParameters; ++i) {
        frame.put(widths[i], values[i]);
    }
    QCOMPARE(frame.bytes().size(), 11);
    const Engine engine = makeEngine();
    unpack(engine.get(), frame.bytes());
    for (int i = 0; i < G729AParameters; ++i) {
        QCOMPARE(int{engine->parm[i]}, values[i]);
    }
}

void TestG729AParameters::sidFields()
{
    const Engine engine = makeEngine();
    unpack(engine.get(), sidFrame(1, 0x15, 0x9, 0x1E));
    constexpr int values[] = {1, 0x15, 0x9, 0x1E};
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(int{engine->parm[i]}, values[i]);
    }
}

void TestG729AParameters::parity()
{
    for (int lag = 0; lag < 256; ++lag) {
        int ones = 0;
        for (int bit = 2; bit < 8; ++bit) {
            ones += (lag >> bit) & 1;
        }
        for (const int bit : {0, 1}) {
            QCOMPARE(int{G729AFrameBits::parityError(static_cast<std::int16_t>(lag),
                                                     static_cast<std::int16_t>(bit))},
                     (ones + bit + 1) % 2);
        }
    }
}

void TestG729AParameters::firstLags()
{
    for (int index = 0; index < 256; ++index) {
        const G729APitch::Lag lag = G729APitch::firstLag(index);
        if (index < 197) {
            QCOMPARE(3 * lag.whole + lag.fraction, index + 58);
            QVERIFY(lag.fraction >= -1 && lag.fraction <= 1);
        } else {
            QCOMPARE(lag.whole, index - 112);
            QCOMPARE(lag.fraction, 0);
        }
    }
    QCOMPARE(G729APitch::firstLag(0).whole, 19);
    QCOMPARE(G729APitch::firstLag(255).whole, 143);
}

void TestG729AParameters::secondLags()
{
    for (int before = 19; before <= 144; ++before) {
        const int lowest = before < 25 ? 20 : before > 139 ? 134 : before - 5;
        for (int index = 0; index < 32; ++index) {
            const G729APitch::Lag lag = G729APitch::secondLag(index, before);
            QCOMPARE(3 * lag.whole + lag.fraction, 3 * lowest + index - 2);
            QVERIFY(lag.fraction >= -1 && lag.fraction <= 1);
        }
    }
}

namespace {

/** The adaptive codebook as the filter's definition has it, tap by tap. */
void plainAdaptiveCodebook(std::int16_t* exc, int whole, int fraction, bool guarded)
{
    const int phase = fraction > 0 ? 3 - fraction : -fraction;
    const std::int16_t* x = exc - whole - (fraction > 0 ? 1 : 0);
    for (int n = 0; n < G729ASubframeSamples; ++n) {
        std::int64_t sum = 0;
        for (int i = 0; i < 10; ++i) {
            const std::int64_t left = std::int64_t{x[n - i]} * G729ATables::inter3l[phase + 3 * i];
            const std::int64_t right = std::int64_t{x[n + 1 + i]} * G729ATables::inter3l[3 - phase + 3 * i];
            sum += left;
            if (guarded && i < 4 && sum > 0x3FFFFFFF) {
                sum = 0x3FFFFFFF + std::min<std::int64_t>(right, 0);
            } else if (guarded && i < 4 && sum < -0x40000000LL) {
                sum = -0x40000000LL + std::max<std::int64_t>(right, 0);
            } else {
                sum += right;
            }
        }
        exc[n] = static_cast<std::int16_t>(
            static_cast<std::uint16_t>(static_cast<std::uint64_t>((sum + 16384) >> 15)));
    }
}

} // namespace

void TestG729AParameters::adaptiveCodebook_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("guarded");
    QTest::newRow("quiet") << 2000 << true;
    QTest::newRow("quiet noise") << 2000 << false;
    QTest::newRow("loud") << 32767 << true;
    QTest::newRow("loud noise") << 32767 << false;
}

void TestG729AParameters::adaptiveCodebook()
{
    QFETCH(int, level);
    QFETCH(bool, guarded);
    std::mt19937 random(5); // NOLINT(cert-msc51-cpp): the same each time
    int guardCounted = 0;
    for (int round = 0; round < 200; ++round) {
        for (const int whole : {19, 20, 40, 60, 103, 143, 144}) {
            for (const int fraction : {-1, 0, 1}) {
                std::int16_t past[G729AExcitationPast + G729ASubframeSamples] = {};
                for (int i = 0; i < G729AExcitationPast; ++i) {
                    // Long runs of one sign are what brings sums to their holds.
                    const int sign = (i / (3 + round % 7)) % 2 == 0 ? 1 : -1;
                    past[i] = static_cast<std::int16_t>(sign * level *
                                                        static_cast<int>(random() % 100 + 900) / 1000);
                }
                std::int16_t expected[std::size(past)];
                std::int16_t other[std::size(past)];
                std::copy(std::begin(past), std::end(past), expected);
                std::copy(std::begin(past), std::end(past), other);
                plainAdaptiveCodebook(expected + G729AExcitationPast, whole, fraction, guarded);
                plainAdaptiveCodebook(other + G729AExcitationPast, whole, fraction, !guarded);
                guardCounted += std::equal(std::begin(expected), std::end(expected), other) ? 0 : 1;
                G729APitch::adaptiveCodebook(past + G729AExcitationPast, {whole, fraction},
                                             guarded ? G729APitch::Guard::FirstTaps
                                                     : G729APitch::Guard::None);
                QVERIFY(std::equal(std::begin(past), std::end(past), expected));
            }
        }
    }
    QCOMPARE(guardCounted > 0, level > 20000);
}

void TestG729AParameters::fixedCodebook()
{
    std::int16_t code[G729ASubframeSamples];
    // The fourth pulse is on one of two tracks, by bit 9.
    const int index = 7 | 2 << 3 | 5 << 6 | 1 << 9 | 3 << 10;
    G729AFixedCodebook::decode(index, 0b1010, code);
    std::int16_t expected[G729ASubframeSamples] = {};
    expected[35] = -8192;
    expected[11] = 8191;
    expected[27] = -8192;
    expected[19] = 8191;
    QVERIFY(std::equal(std::begin(code), std::end(code), expected));
    G729AFixedCodebook::decode(0x1FFF & ~(1 << 9), 0b1111, code);
    QCOMPARE(int{code[38]}, 8191);
    QCOMPARE(int{code[39]}, 0);
}

void TestG729AParameters::sharpening()
{
    std::int16_t code[G729ASubframeSamples] = {8191};
    G729AFixedCodebook::sharpen(code, 15, 8192);
    QCOMPARE(int{code[15]}, 4095);
    QCOMPARE(int{code[30]}, 2047);
    QCOMPARE(std::count(std::begin(code), std::end(code), 0), 37);
    std::int16_t unchanged[G729ASubframeSamples] = {8191};
    G729AFixedCodebook::sharpen(unchanged, 40, 8192);
    QCOMPARE(std::count(std::begin(unchanged), std::end(unchanged), 0), 39);
}

void TestG729AParameters::gains()
{
    using namespace G729ATables;
    for (int index = 0; index < 128; ++index) {
        const Engine engine = makeEngine();
        const std::int16_t energies[] = {2000, -3000, 5000, -9000};
        std::copy(std::begin(energies), std::end(energies), engine->pastQuaEn);
        std::int16_t code[G729ASubframeSamples];
        G729AFixedCodebook::decode(index, index & 15, code);
        G729AGains::decode(*engine, index, code);
        const std::int16_t* first = gbk1[imap1[index >> 4]];
        const std::int16_t* second = gbk2[imap2[index & 15]];
        QCOMPARE(int{engine->gainPitch}, first[0] + second[0]);
        const double correction = (first[1] + second[1]) / 8192.0;
        const double energy = 10 * std::log10(4.0 / 40); // dB: four pulses of one in forty samples
        double predicted = 30 - energy;
        for (int k = 0; k < G729APredictors; ++k) {
            predicted += gainPrediction[k] / 8192.0 * energies[k] / 1024.0;
        }
        const double gain = correction * std::pow(10, predicted / 20);
        QVERIFY2(near(engine->gainCode / 2.0, gain, 0.005 * gain + 0.5), qPrintable(QString::number(index)));
        QVERIFY(near(engine->pastQuaEn[0] / 1024.0, 20 * std::log10(correction), 0.02));
        QVERIFY(std::equal(engine->pastQuaEn + 1, engine->pastQuaEn + 4, energies));
    }
}

void TestG729AParameters::attenuatedGains()
{
    const Engine engine = makeEngine();
    engine->gainPitch = 32767;
    engine->gainCode = 10000;
    const std::int16_t energies[] = {1000, 2000, 3000, 4003};
    std::copy(std::begin(energies), std::end(energies), engine->pastQuaEn);
    G729AGains::attenuate(*engine);
    QCOMPARE(int{engine->gainPitch}, (32767 * 29491) >> 15);
    QCOMPARE(int{engine->gainCode}, (10000 * 32111) >> 15);
    QCOMPARE(int{engine->pastQuaEn[0]}, 2500 - 4096);
    QCOMPARE(int{engine->pastQuaEn[3]}, 3000);
    for (int i = 0; i < 40; ++i) {
        G729AGains::attenuate(*engine);
    }
    QCOMPARE(int{engine->pastQuaEn[0]}, -14336);
}

void TestG729AParameters::savedEnergy()
{
    const Engine engine = makeEngine();
    for (const int level : {1, 30, 1000, 3600}) {
        std::fill_n(engine->exc, G729AFrameSamples, static_cast<std::int16_t>(level));
        G729AGains::saveEnergy(*engine);
        const double energy = 80.0 * level * level;
        QVERIFY(engine->sidSav >= 16384);
        QVERIFY(near(engine->sidSav * std::exp2(engine->shSidSav - 1), energy, 0.0001 * energy));
    }
    const std::int16_t exponent = engine->shSidSav;
    std::fill_n(engine->exc, G729AFrameSamples, std::int16_t{0});
    G729AGains::saveEnergy(*engine);
    QCOMPARE(int{engine->sidSav}, 0);
    QCOMPARE(engine->shSidSav, exponent); // deliberate: it stays
    // A sum that wraps to 2^31 becomes 0 when it is doubled; that ends it.
    engine->exc[0] = -32768;
    engine->exc[1] = -32768;
    G729AGains::saveEnergy(*engine);
    QCOMPARE(int{engine->sidSav}, 0);
    QCOMPARE(int{engine->shSidSav}, 15);
}

QTEST_APPLESS_MAIN(TestG729AParameters)
#include "tst_g729aparameters.moc"
