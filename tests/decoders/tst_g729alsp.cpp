// Line spectral frequencies, their pairs and filters, against floating point.

#include "src/decoders/g729a/G729AFrameBits.h"
#include "src/decoders/g729a/G729ALsp.h"
#include "src/decoders/g729a/G729ATables.h"
#include "tests/decoders/G729AFrames.h"

#include <QTest>

#include <cmath>

using namespace G729AFrames;

class TestG729ALsp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void frequenciesToPairs();
    void pairsToFilter();
    void interpolatedFilters();
    void stableFrequencies();
    void decodedFrequencies();
    void repeatedFrequencies();
};

namespace {

bool near(double actual, double expected, double tolerance)
{
    return std::abs(actual - expected) <= tolerance;
}

} // namespace

void TestG729ALsp::frequenciesToPairs()
{
    for (int start = 0; start < 25000; start += 61) {
        std::int16_t lsf[G729AOrder];
        std::int16_t lsp[G729AOrder];
        for (int j = 0; j < G729AOrder; ++j) {
            lsf[j] = static_cast<std::int16_t>(start + 70 * j);
        }
        G729ALsp::toLsp(lsf, lsp);
        for (int j = 0; j < G729AOrder; ++j) {
            QVERIFY2(near(lsp[j] / 32768.0, std::cos(lsf[j] / 8192.0), 0.0006),
                     qPrintable(QString::number(lsf[j])));
        }
    }
    // What lies below the table counts as 0.
    const std::int16_t broken[G729AOrder] = {-1, -400, -32768, 0, 0, 0, 0, 0, 0, 32767};
    std::int16_t lsp[G729AOrder];
    G729ALsp::toLsp(broken, lsp);
    QCOMPARE(int{lsp[1]}, 0);
    QCOMPARE(int{lsp[2]}, 0);
    QCOMPARE(int{lsp[3]}, 32767);
}

namespace {

/** The filter of LSP by its polynomials, in floating point. */
std::vector<double> exactFilter(const std::int16_t* lsp)
{
    std::vector<double> sum(G729AOrder + 2, 0.0);
    for (const int parity : {0, 1}) {
        std::vector<double> polynomial{1.0};
        const auto multiply = [&polynomial](const std::vector<double>& factor) {
            std::vector<double> product(polynomial.size() + factor.size() - 1, 0.0);
            for (std::size_t i = 0; i < polynomial.size(); ++i) {
                for (std::size_t k = 0; k < factor.size(); ++k) {
                    product[i + k] += polynomial[i] * factor[k];
                }
            }
            polynomial = product;
        };
        for (int j = parity; j < G729AOrder; j += 2) {
            multiply({1.0, -2 * lsp[j] / 32768.0, 1.0});
        }
        multiply({1.0, parity == 0 ? 1.0 : -1.0});
        for (std::size_t i = 0; i < sum.size(); ++i) {
            sum[i] += polynomial[i] / 2;
        }
    }
    return sum;
}

bool isFilterOf(const G729AFilter& filter, const std::int16_t* lsp)
{
    const std::vector<double> exact = exactFilter(lsp);
    for (int i = 0; i <= G729AOrder; ++i) {
        if (!near(filter[i], 4096 * exact[static_cast<std::size_t>(i)], 2)) {
            return false;
        }
    }
    return filter[0] == 4096;
}

constexpr std::int16_t spread[G729AOrder] = {31000, 28000, 22000,  16000,  9000,
                                             500,   -9000, -16500, -22500, -29000};

} // namespace

void TestG729ALsp::pairsToFilter()
{
    G729AFilter filter;
    G729ALsp::toFilter(spread, filter);
    QVERIFY(isFilterOf(filter, spread));
    const std::int16_t close[G729AOrder] = {32600, 32000, 31500,  20000,  19000,
                                            -3000, -4000, -20000, -21000, -32000};
    G729ALsp::toFilter(close, filter);
    QVERIFY(isFilterOf(filter, close));
}

void TestG729ALsp::interpolatedFilters()
{
    const Engine engine = makeEngine();
    std::int16_t between[G729AOrder];
    for (int j = 0; j < G729AOrder; ++j) {
        between[j] = static_cast<std::int16_t>((engine->lspOld[j] + spread[j]) / 2);
    }
    G729AFrameModel model{};
    G729ALsp::interpolate(*engine, spread, model);
    QVERIFY(isFilterOf(model.filter[0], between));
    QVERIFY(isFilterOf(model.filter[1], spread));
    QVERIFY(std::equal(spread, spread + G729AOrder, engine->lspOld));
}

void TestG729ALsp::stableFrequencies()
{
    std::int16_t lsf[G729AOrder] = {-500, 3000, 2900, 8000, 8100, 12000, 11000, 20000, 25600, 25900};
    G729ALsp::stabilise(lsf);
    const std::int16_t expected[G729AOrder] = {40, 2900, 3221, 8000, 8321, 11000, 12000, 20000, 25600, 25681};
    QVERIFY(std::equal(lsf, lsf + G729AOrder, expected));
    // One pass of sorting and one of spreading, deliberately: a value may rise by one place only.
    std::int16_t reversed[G729AOrder] = {10000, 9000, 1000, 12000, 13000, 14000, 15000, 16000, 17000, 18000};
    G729ALsp::stabilise(reversed);
    QCOMPARE(int{reversed[0]}, 9000);
    QCOMPARE(int{reversed[1]}, 9321);
    QCOMPARE(int{reversed[2]}, 10000);
}

void TestG729ALsp::decodedFrequencies()
{
    const Engine engine = makeEngine();
    constexpr int first = 0x80 | 37; // the second predictor
    constexpr int second = 1 << 5;
    engine->parm[G729AFrameBits::LspFirst] = first;
    engine->parm[G729AFrameBits::LspSecond] = second;
    G729ALsp::decode(*engine);
    QCOMPARE(int{engine->prevMa}, 1);
    for (int j = 0; j < G729AOrder; ++j) {
        // This entry needs no spreading: the sum of the codebooks is what the history gets.
        const int vector = G729ATables::lspcb1[37][j] + G729ATables::lspcb2[j < 5 ? 1 : 0][j];
        QCOMPARE(int{engine->freqPrev[0][j]}, vector);
        double lsf = vector * G729ATables::fgSum[1][j] / 32768.0;
        for (const auto& taps : G729ATables::fg[1]) {
            lsf += G729ATables::freqPrevReset[j] * taps[j] / 32768.0;
        }
        QVERIFY(near(engine->prevLsf[j], lsf, 1));
        QCOMPARE(int{engine->freqPrev[1][j]}, int{G729ATables::freqPrevReset[j]});
    }
}

void TestG729ALsp::repeatedFrequencies()
{
    const Engine engine = makeEngine();
    engine->parm[G729AFrameBits::LspFirst] = 37;
    engine->parm[G729AFrameBits::LspSecond] = 11 << 5 | 22;
    G729ALsp::decode(*engine);
    std::int16_t history[G729APredictors][G729AOrder];
    std::memcpy(history, engine->freqPrev, sizeof history);
    std::int16_t lsf[G729AOrder];
    std::copy_n(engine->prevLsf, G729AOrder, lsf);
    G729ALsp::repeat(*engine);
    QVERIFY(std::equal(lsf, lsf + G729AOrder, engine->prevLsf));
    for (int j = 0; j < G729AOrder; ++j) {
        // The history gets what would have led to these frequencies.
        double led = engine->freqPrev[0][j] * G729ATables::fgSum[0][j] / 32768.0;
        for (int k = 0; k < G729APredictors; ++k) {
            led += history[k][j] * G729ATables::fg[0][k][j] / 32768.0;
        }
        QVERIFY2(near(led, lsf[j], 8), qPrintable(QString("%1 %2").arg(led).arg(lsf[j])));
    }
}

QTEST_APPLESS_MAIN(TestG729ALsp)
#include "tst_g729alsp.moc"
