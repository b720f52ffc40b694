#include "client/measure/EchoMeasure.h"

#include "audio/SoundLevel.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double pieceTime = 0.4;   // s
constexpr double speechLevel = -40; // dBFS
constexpr double leastCorrelation = 0.5;
constexpr double searchBack = 0.05; // s
constexpr double searchAhead = 0.6; // s
constexpr double leastGap = 0.003;  // s

struct Match
{
    std::ptrdiff_t offset; ///< Of the piece in the recording, samples.
    double correlation;
};

/** Where a piece of speech is in the recording, between two offsets. */
Match find(const std::int16_t* piece, std::ptrdiff_t length, const std::vector<std::int16_t>& received,
           std::ptrdiff_t from, std::ptrdiff_t to)
{
    Match best{0, 0};
    from = std::max<std::ptrdiff_t>(from, 0);
    to = std::min(to, static_cast<std::ptrdiff_t>(received.size()) - length);
    double pieceEnergy = 0;
    for (std::ptrdiff_t i = 0; i < length; ++i) {
        pieceEnergy += static_cast<double>(piece[i]) * piece[i];
    }
    for (std::ptrdiff_t offset = from; offset <= to; ++offset) {
        const std::int16_t* candidate = received.data() + offset;
        std::int64_t product = 0;
        std::int64_t energy = 0;
        for (std::ptrdiff_t i = 0; i < length; ++i) {
            product += std::int32_t{piece[i]} * candidate[i];
            energy += std::int32_t{candidate[i]} * candidate[i];
        }
        const double norm = std::sqrt(pieceEnergy * static_cast<double>(energy));
        const double correlation = norm > 0 ? static_cast<double>(product) / norm : 0;
        if (correlation > best.correlation) {
            best = {offset, correlation};
        }
    }
    return best;
}

} // namespace

std::optional<EchoMeasure> EchoMeasure::between(const TimedSound& captured, const TimedSound& received,
                                                double maxDelay)
{
    const double rate = captured.sampleRate;
    const auto length = static_cast<std::ptrdiff_t>(pieceTime * rate);
    const auto samplesOf = [rate](double seconds) {
        return static_cast<std::ptrdiff_t>(std::lround(seconds * rate));
    };
    EchoMeasure measure;
    std::vector<double> correlations;
    for (std::ptrdiff_t begin = 0; begin + length <= static_cast<std::ptrdiff_t>(captured.samples.size());
         begin += length) {
        const std::int16_t* piece = captured.samples.data() + begin;
        if (SoundLevel::rmsDbfs(std::vector<std::int16_t>(piece, piece + length)) < speechLevel) {
            continue;
        }
        // Offset in the recording that a delay of nothing would have.
        const std::ptrdiff_t origin = begin + samplesOf(captured.startTime - received.startTime);
        const bool first = measure.pieces == 0;
        const double from = first ? 0 : measure.lastDelay - searchBack;
        const double to = first ? maxDelay : measure.lastDelay + searchAhead;
        const Match match =
            find(piece, length, received.samples, origin + samplesOf(from), origin + samplesOf(to));
        if (match.correlation < leastCorrelation) {
            ++measure.lost;
            continue;
        }
        const double delay = static_cast<double>(match.offset - origin) / rate;
        if (first) {
            measure.firstDelay = delay;
        } else if (delay - measure.lastDelay > leastGap) {
            ++measure.gaps;
            measure.gapTime += delay - measure.lastDelay;
        }
        measure.lastDelay = delay;
        correlations.push_back(match.correlation);
        ++measure.pieces;
    }
    if (measure.pieces == 0) {
        return std::nullopt;
    }
    // The median: a gap inside a piece spoils that piece's value, not the sound of the rest.
    const auto middle = correlations.begin() + static_cast<std::ptrdiff_t>(correlations.size() / 2);
    std::nth_element(correlations.begin(), middle, correlations.end());
    measure.correlation = *middle;
    return measure;
}
