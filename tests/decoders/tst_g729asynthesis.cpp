// From parameters to samples: synthesis, noise, post-filter and high-pass, each against values.

#include "src/decoders/g729a/G729AHighPass.h"
#include "src/decoders/g729a/G729ALsp.h"
#include "src/decoders/g729a/G729AMath.h"
#include "src/decoders/g729a/G729ANoiseExcitation.h"
#include "src/decoders/g729a/G729ANoisePath.h"
#include "src/decoders/g729a/G729APostFilter.h"
#include "src/decoders/g729a/G729ASynthesis.h"
#include "tests/decoders/G729AFrames.h"

#include <QTest>
#include <QtMath>

#include <cmath>
#include <complex>
#include <numeric>

using namespace G729AFrames;

class TestG729ASynthesis : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recursion();
    void clampedAndCutSamples();
    void rescueOfSpeech();
    void rescueOfNoise();
    void noRescueWithoutNeed();
    void noiseGainOfAnEnergy();
    void noiseHasItsGain_data();
    void noiseHasItsGain();
    void weightedFilters();
    void shortestDelays();
    void longTermGains();
    void tilts();
    void gainSteps();
    void postFilterFollowsItsInput();
    void silenceClearsThePastGain();
    void steadyInputIsTakenAway();
    void highPassResponse_data();
    void highPassResponse();
    void outputIsClamped();

private:
    /** The level of a tone behind the high-pass, over that before it. */
    static double highPassGain(double hertz, double level, std::int16_t* highest = nullptr);
};

namespace {

constexpr G729AFilter flat = {4096};

bool near(double actual, double expected, double tolerance)
{
    return std::abs(actual - expected) <= tolerance;
}

constexpr std::int16_t silence[G729AOrder] = {};

/** A filter with a gain of eight. */
constexpr G729AFilter strong = {4096, -3584};

void fillExcitation(G729AState& state, std::int16_t value)
{
    std::fill(std::begin(state.oldExc), std::end(state.oldExc), value);
}

} // namespace

void TestG729ASynthesis::recursion()
{
    const G729AFilter half = {4096, -2048};
    std::int16_t samples[G729ASubframeSamples] = {1000};
    QVERIFY(!G729ASynthesis::filter(half, samples, samples, G729ASubframeSamples, silence));
    const std::int16_t expected[] = {1000, 500, 250, 125, 63, 32, 16, 8, 4, 2, 1, 1};
    QVERIFY(std::equal(std::begin(expected), std::end(expected), samples));
    // The newest of the memory comes last.
    const std::int16_t memory[G729AOrder] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 800};
    std::int16_t input[4] = {};
    std::int16_t output[4];
    G729ASynthesis::filter(half, input, output, 4, memory);
    QCOMPARE(int{output[0]}, 400);
    const G729AFilter tenth = {4096, 0, 0, 0, 0, 0, 0, 0, 0, 0, -4096};
    const std::int16_t oldest[G729AOrder] = {700};
    G729ASynthesis::filter(tenth, input, output, 4, oldest);
    QCOMPARE(int{output[0]}, 700);
    QCOMPARE(int{output[1]}, 0);
}

void TestG729ASynthesis::clampedAndCutSamples()
{
    std::int16_t input[G729ASubframeSamples];
    std::fill_n(input, G729ASubframeSamples, std::int16_t{20000});
    std::int16_t output[G729ASubframeSamples];
    QVERIFY(G729ASynthesis::filter(strong, input, output, G729ASubframeSamples, silence));
    QCOMPARE(int{output[1]}, 32767);
    QVERIFY(!G729ASynthesis::filter(strong, input, output, G729ASubframeSamples, silence,
                                    G729ASynthesis::Overflow::Wrap));
    QCOMPARE(int{output[1]}, 20000 + 17500 - 65536);
}

void TestG729ASynthesis::rescueOfSpeech()
{
    const Engine engine = makeEngine();
    fillExcitation(*engine, 8000);
    G729ASynthesis::synthesise(*engine, strong, 0, G729ASynthesis::Rescue::Speech);
    const int words = static_cast<int>(std::size(engine->oldExc));
    for (int i = 0; i < words; ++i) {
        QCOMPARE(int{engine->oldExc[i]}, i < words - 2 ? 2000 : 8000); // deliberate: two are spared
    }
    // Eight times a quarter of it, all within 16 bits; the memory is that of the second pass.
    QVERIFY(near(engine->synth[39], 16000, 100));
    QVERIFY(std::equal(engine->synth + 30, engine->synth + 40, engine->memSyn));
}

void TestG729ASynthesis::rescueOfNoise()
{
    const Engine engine = makeEngine();
    fillExcitation(*engine, 32000);
    G729ASynthesis::synthesise(*engine, strong, 0, G729ASynthesis::Rescue::Noise);
    QVERIFY(std::all_of(std::begin(engine->oldExc), std::end(engine->oldExc),
                        [](std::int16_t sample) { return sample == 8000; }));
    // Still too loud: the second pass is cut to 16 bits, so it comes out negative somewhere.
    QVERIFY(*std::min_element(engine->synth, engine->synth + 40) < 0);
    const Engine other = makeEngine();
    fillExcitation(*other, 32000);
    G729ASynthesis::synthesise(*other, strong, 0, G729ASynthesis::Rescue::Speech);
    QCOMPARE(int{*std::max_element(other->synth, other->synth + 40)}, 32767);
    QVERIFY(*std::min_element(other->synth, other->synth + 40) > 0);
}

void TestG729ASynthesis::noRescueWithoutNeed()
{
    const Engine engine = makeEngine();
    fillExcitation(*engine, 3000);
    G729ASynthesis::synthesise(*engine, strong, 1, G729ASynthesis::Rescue::Speech);
    QCOMPARE(int{engine->oldExc[0]}, 3000);
    QCOMPARE(int{engine->synth[39]}, 0); // the other subframe's
    QCOMPARE(int{engine->synth[40]}, 3000);
}

void TestG729ASynthesis::noiseGainOfAnEnergy()
{
    QCOMPARE(G729ANoisePath::gainIndex(0, 1), 2); // of nothing
    int last = 0;
    for (int exponent = -14; exponent <= 16; ++exponent) {
        const int index = G729ANoisePath::gainIndex(16384, static_cast<std::int16_t>(exponent));
        QVERIFY(index >= last || exponent < -4);
        QVERIFY(index >= 0 && index <= 31);
        last = index;
    }
    QCOMPARE(last, 31);
    // About 2 dB a step where the steps are fine: four times the energy are three of them.
    const int low = G729ANoisePath::gainIndex(20000, 5);
    QCOMPARE(G729ANoisePath::gainIndex(20000, 7) - low, 3);
}

void TestG729ASynthesis::noiseHasItsGain_data()
{
    QTest::addColumn<int>("gain");
    for (const int gain : {80, 500, 2000, 8000, 15962}) {
        QTest::addRow("%d", gain) << gain;
    }
}

void TestG729ASynthesis::noiseHasItsGain()
{
    QFETCH(int, gain);
    const Engine engine = makeEngine();
    double energy = 0;
    constexpr int subframes = 200;
    std::uint16_t seed = 11111;
    for (int subframe = 0; subframe < subframes; ++subframe) {
        std::int16_t random[G729ANoiseExcitation::words];
        for (std::int16_t& word : random) {
            seed = G729AMath::draw(seed);
            word = static_cast<std::int16_t>(seed);
        }
        G729ANoiseExcitation::make(engine->exc, random, static_cast<std::int16_t>(gain));
        energy += std::accumulate(
            engine->exc, engine->exc + G729ASubframeSamples, 0.0,
            [](double sum, std::int16_t sample) { return sum + sample * double{1} * sample; });
        std::copy(engine->oldExc + G729ASubframeSamples,
                  engine->oldExc + G729AExcitationPast + G729ASubframeSamples, engine->oldExc);
    }
    // The gain counts eighths of the samples' root mean square.
    const double level = std::sqrt(energy / (subframes * G729ASubframeSamples));
    QVERIFY2(near(level, gain / 8.0, 0.15 * gain / 8.0 + 1), qPrintable(QString::number(level)));
}

void TestG729ASynthesis::weightedFilters()
{
    G729AFilter a;
    std::fill_n(a, G729AOrder + 1, std::int16_t{4096});
    G729AFilter weighted;
    G729APostFilter::weight(a, 22938, weighted);
    for (int i = 0; i <= G729AOrder; ++i) {
        QVERIFY(near(weighted[i], 4096 * std::pow(0.7, i), 1));
    }
}

void TestG729ASynthesis::shortestDelays()
{
    QCOMPARE(G729APostFilter::shortestDelay(20), 17);
    QCOMPARE(G729APostFilter::shortestDelay(139), 136);
    QCOMPARE(G729APostFilter::shortestDelay(140), 137);
    for (const int lag : {141, 142, 143, 144}) {
        QCOMPARE(G729APostFilter::shortestDelay(lag), 137);
    }
}

void TestG729ASynthesis::longTermGains()
{
    const auto gains = [](int correlation, int delayed, int now) {
        const auto result = G729APostFilter::longTermGains(correlation, delayed, now);
        return std::make_pair(result.now, result.delayed);
    };
    using Gains = std::pair<int, int>;
    QCOMPARE(gains(1000000, 2000000, 2000000), gains(1000, 2000, 2000)); // levels do not matter
    QCOMPARE(gains(600, 1000, 1000), Gains(0, 0));                       // below 3 dB of prediction gain
    QCOMPARE(gains(1000000, 900000, 1100000), Gains(21845, 10923));      // more than the delayed energy
    // Between: c / 4 over c / 4 + d / 2.
    const auto between = gains(800000, 1000000, 1000000);
    QVERIFY(near(between.second / 32768.0, 0.2 / 0.7, 0.001));
    QCOMPARE(between.first, 32767 - between.second);
    // Energies that have wrapped leave no denominator: the subframe's own sample alone.
    QCOMPARE(gains(0, -100, -100), Gains(32767, 0));
    QCOMPARE(gains(0, -2000000000, 0), Gains(21845, 10923)); // less than any correlation
}

void TestG729ASynthesis::tilts()
{
    QCOMPARE(G729APostFilter::tilt(flat, flat), 0);
    // 1 / (1 - 0.5 z^-1): the impulse response falls by half, r1 / r0 = 0.5.
    const G729AFilter half = {4096, -2048};
    QVERIFY(near(G729APostFilter::tilt(flat, half) / 32768.0, 0.8 * 0.5, 0.002));
    const G729AFilter rising = {4096, 2048};
    QCOMPARE(G729APostFilter::tilt(flat, rising), 0); // a negative correlation counts as none
}

void TestG729ASynthesis::gainSteps()
{
    const auto gain = [](std::uint32_t input, std::uint32_t output) {
        return G729APostFilter::gainStep(input, output) / 409.5; // a tenth of one in Q12
    };
    QVERIFY(near(gain(100000, 100000), 1, 0.01));
    QVERIFY(near(gain(400000, 100000), 2, 0.02));
    QVERIFY(near(gain(100000, 400000), 0.5, 0.01));
    QVERIFY(near(gain(7, 1), std::sqrt(7), 0.03));
    QCOMPARE(G729APostFilter::gainStep(0, 5), 0);
    // From 2^30 on energies count as that.
    QCOMPARE(G729APostFilter::gainStep(0x40000000, 1 << 20), G729APostFilter::gainStep(0x9FFFFFFF, 1 << 20));
    QCOMPARE(G729APostFilter::gainStep(1 << 20, 0x40000000), G729APostFilter::gainStep(1 << 20, 0x9FFFFFFF));
}

void TestG729ASynthesis::postFilterFollowsItsInput()
{
    // A flat filter and noise path: nothing but the gain control is left, which comes to one.
    const Engine engine = makeEngine();
    alignas(4) std::int16_t output[G729AFrameSamples];
    engine->output = output;
    G729AFrameModel model{};
    std::copy_n(flat, G729AOrder + 1, model.filter[0]);
    std::copy_n(flat, G729AOrder + 1, model.filter[1]);
    model.lag[0] = model.lag[1] = 143;
    engine->ftyp = G729ANoTransmission;
    for (int i = 0; i < G729AFrameSamples; ++i) {
        engine->synth[i] = static_cast<std::int16_t>(i % 7 * 1000 - 3000);
    }
    for (int frame = 0; frame < 20; ++frame) {
        G729APostFilter::filterFrame(*engine, model);
    }
    for (int i = 0; i < G729AFrameSamples; ++i) {
        QVERIFY(near(output[i], engine->synth[i], 40));
    }
}

void TestG729ASynthesis::silenceClearsThePastGain()
{
    const Engine engine = makeEngine();
    alignas(4) std::int16_t output[G729AFrameSamples];
    std::fill_n(output, G729AFrameSamples, std::int16_t{7});
    engine->output = output;
    G729AFrameModel model{};
    std::copy_n(flat, G729AOrder + 1, model.filter[0]);
    std::copy_n(flat, G729AOrder + 1, model.filter[1]);
    model.lag[0] = model.lag[1] = 143;
    engine->ftyp = G729ASpeech;
    G729APostFilter::filterFrame(*engine, model);
    QCOMPARE(int{engine->postFilterState->pastGain}, 0);
    QVERIFY(std::all_of(output, output + G729AFrameSamples, [](std::int16_t sample) { return sample == 0; }));
}

double TestG729ASynthesis::highPassGain(double hertz, double level, std::int16_t* highest)
{
    G729AState state{};
    alignas(4) std::int16_t output[G729AFrameSamples];
    state.output = output;
    double energyIn = 0;
    double energyOut = 0;
    for (int frame = 0; frame < 100; ++frame) {
        double frameEnergy = 0;
        for (int n = 0; n < G729AFrameSamples; ++n) {
            const double phase = 2 * M_PI * hertz * (frame * G729AFrameSamples + n) / 8000;
            output[n] = static_cast<std::int16_t>(level * std::cos(phase));
            frameEnergy += output[n] * double{1} * output[n];
        }
        G729AHighPass::filterFrame(state);
        if (frame >= 50) {
            energyIn += frameEnergy;
            energyOut +=
                std::accumulate(output, output + G729AFrameSamples, 0.0, [](double sum, std::int16_t sample) {
                    return sum + sample * double{1} * sample;
                });
        }
    }
    if (highest != nullptr) {
        *highest = *std::max_element(output, output + G729AFrameSamples);
    }
    return std::sqrt(energyOut / energyIn);
}

void TestG729ASynthesis::steadyInputIsTakenAway()
{
    QVERIFY(highPassGain(0, 5000) < 0.001);
}

void TestG729ASynthesis::highPassResponse_data()
{
    QTest::addColumn<double>("hertz");
    for (const double hertz : {30.0, 60.0, 100.0, 300.0, 1000.0, 3000.0}) {
        QTest::addRow("%.0f Hz", hertz) << hertz;
    }
}

void TestG729ASynthesis::highPassResponse()
{
    QFETCH(double, hertz);
    // The Recommendation's coefficients in Q13; doubled, as the level is.
    const std::complex<double> delay = std::polar(1.0, -2 * M_PI * hertz / 8000);
    const std::complex<double> response = 2.0 * (7699.0 - 15398.0 * delay + 7699.0 * delay * delay) /
                                          (8192.0 - 15836.0 * delay + 7667.0 * delay * delay);
    QVERIFY2(near(highPassGain(hertz, 5000), std::abs(response), 0.02),
             qPrintable(QString::number(std::abs(response))));
}

void TestG729ASynthesis::outputIsClamped()
{
    std::int16_t highest = 0;
    QVERIFY(highPassGain(500, 32000, &highest) < 1.5);
    QCOMPARE(int{highest}, 32767);
}

QTEST_APPLESS_MAIN(TestG729ASynthesis)
#include "tst_g729asynthesis.moc"
