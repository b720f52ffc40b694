#include "tests/support/SignalMeasure.h"

#include <algorithm>
#include <cmath>

namespace SignalMeasure {

double levelDbfs(const WavFiles::Samples& samples)
{
    double energy = 0;
    for (const std::int16_t sample : samples) {
        energy += static_cast<double>(sample) * sample;
    }
    const double mean = samples.empty() ? 0 : energy / static_cast<double>(samples.size());
    return mean > 0 ? 10.0 * std::log10(mean / (32768.0 * 32768.0)) : -200.0;
}

double toneFrequency(const WavFiles::Samples& samples, int sampleRate)
{
    // From the first to the last rising zero crossing, interpolated between samples.
    double first = -1;
    double last = -1;
    int periods = -1;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        if (samples[i - 1] < 0 && samples[i] >= 0) {
            const double step = static_cast<double>(samples[i]) - samples[i - 1];
            last = static_cast<double>(i) - samples[i] / step;
            first = periods < 0 ? last : first;
            ++periods;
        }
    }
    return periods > 0 ? periods * sampleRate / (last - first) : 0;
}

double medianFrequency(const WavFiles::Samples& samples, int sampleRate)
{
    const std::ptrdiff_t window = sampleRate / 50;
    std::vector<double> steps;
    for (auto begin = samples.begin(); samples.end() - begin >= window; begin += window) {
        steps.push_back(toneFrequency(WavFiles::Samples(begin, begin + window), sampleRate));
    }
    if (steps.empty()) {
        return 0;
    }
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
    std::nth_element(steps.begin(), middle, steps.end());
    return *middle;
}

Alignment align(const WavFiles::Samples& reference, const WavFiles::Samples& recording, int maxLag)
{
    Alignment best{0, -2, 0};
    for (int lag = -maxLag; lag <= maxLag; ++lag) {
        const int begin = std::max(0, -lag);
        const int end =
            std::min(static_cast<int>(reference.size()), static_cast<int>(recording.size()) - lag);
        double product = 0;
        double referenceEnergy = 0;
        double recordingEnergy = 0;
        for (int i = begin; i < end; ++i) {
            const double a = reference[static_cast<std::size_t>(i)];
            const double b = recording[static_cast<std::size_t>(i + lag)];
            product += a * b;
            referenceEnergy += a * a;
            recordingEnergy += b * b;
        }
        if (referenceEnergy <= 0 || recordingEnergy <= 0) {
            continue;
        }
        const double correlation = product / std::sqrt(referenceEnergy * recordingEnergy);
        if (correlation > best.correlation) {
            best = {lag, correlation, 10.0 * std::log10(recordingEnergy / referenceEnergy)};
        }
    }
    return best;
}

} // namespace SignalMeasure
