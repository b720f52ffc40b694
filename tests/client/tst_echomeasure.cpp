#include "client/measure/EchoMeasure.h"
#include "tests/support/WavFiles.h"

#include <QTest>

#include <cmath>

class TestEchoMeasure : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void steadyEcho_data();
    void steadyEcho();
    void gapsAreFound();
    void quieterEcho();
    void nothingCaptured();
    void anotherSound();
    void missingPiece();
};

namespace {

constexpr int rate = 8000;

TimedSound speech()
{
    TimedSound captured;
    captured.samples = WavFiles::resample(WavFiles::read(QStringLiteral(ANNOUNCEMENT_WAV)), 16000, rate);
    captured.sampleRate = rate;
    captured.startTime = 100;
    return captured;
}

/** The speech again, with pauses put in. @param pauses place and length, samples */
TimedSound echoOf(const TimedSound& captured, double delay,
                  const std::vector<std::pair<int, int>>& pauses = {})
{
    TimedSound received;
    received.sampleRate = rate;
    received.startTime = captured.startTime - 1.5; // the recording began before
    received.samples.resize(static_cast<std::size_t>(std::lround((delay + 1.5) * rate)));
    auto rest = captured.samples.begin();
    for (const auto& [place, length] : pauses) {
        received.samples.insert(received.samples.end(), rest, captured.samples.begin() + place);
        received.samples.insert(received.samples.end(), static_cast<std::size_t>(length), 0);
        rest = captured.samples.begin() + place;
    }
    received.samples.insert(received.samples.end(), rest, captured.samples.end());
    return received;
}

} // namespace

void TestEchoMeasure::steadyEcho_data()
{
    QTest::addColumn<double>("delay");
    QTest::newRow("at once") << 0.0;
    QTest::newRow("0.78 s") << 0.78;
    QTest::newRow("3 s") << 3.0;
}

void TestEchoMeasure::steadyEcho()
{
    QFETCH(double, delay);
    const TimedSound captured = speech();
    const auto echo = EchoMeasure::between(captured, echoOf(captured, delay), 4);
    QVERIFY(echo);
    QVERIFY(std::abs(echo->firstDelay - delay) < 0.0002);
    QVERIFY(std::abs(echo->lastDelay - delay) < 0.0002);
    QCOMPARE(echo->gaps, 0);
    QVERIFY(echo->correlation > 0.999);
    QVERIFY(echo->pieces > 10);
    QCOMPARE(echo->lost, 0);
}

void TestEchoMeasure::gapsAreFound()
{
    const TimedSound captured = speech();
    const auto echo = EchoMeasure::between(captured, echoOf(captured, 0.5, {{12800, 400}, {32000, 160}}), 4);
    QVERIFY(echo);
    QCOMPARE(echo->gaps, 2);
    QVERIFY(std::abs(echo->gapTime - 0.07) < 0.0005);
    QVERIFY(std::abs(echo->lastDelay - 0.57) < 0.0005);
}

void TestEchoMeasure::quieterEcho()
{
    const TimedSound captured = speech();
    TimedSound received = echoOf(captured, 0.5);
    for (auto& sample : received.samples) {
        sample = static_cast<std::int16_t>(sample / 8);
    }
    const auto echo = EchoMeasure::between(captured, received, 4);
    QVERIFY(echo);
    QVERIFY(std::abs(echo->firstDelay - 0.5) < 0.0005);
}

void TestEchoMeasure::nothingCaptured()
{
    TimedSound silence;
    silence.sampleRate = rate;
    silence.samples.resize(rate * 3);
    QVERIFY(!EchoMeasure::between(silence, silence, 2));
    silence.samples.clear();
    QVERIFY(!EchoMeasure::between(silence, silence, 2));
    QVERIFY(!EchoMeasure::between(speech(), silence, 2));
}

void TestEchoMeasure::anotherSound()
{
    const TimedSound captured = speech();
    TimedSound tone = echoOf(captured, 0.5);
    tone.samples = WavFiles::sine(2900, 0.5, 8, rate);
    QVERIFY(!EchoMeasure::between(captured, tone, 1));
}

void TestEchoMeasure::missingPiece()
{
    const TimedSound captured = speech();
    TimedSound received = echoOf(captured, 0.5);
    std::fill(received.samples.begin() + 32000, received.samples.begin() + 48000, std::int16_t{0});
    const auto echo = EchoMeasure::between(captured, received, 2);
    QVERIFY(echo);
    QVERIFY(echo->lost >= 3);
    QCOMPARE(echo->gaps, 0);
}

QTEST_APPLESS_MAIN(TestEchoMeasure)
#include "tst_echomeasure.moc"
