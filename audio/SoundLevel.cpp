#include "audio/SoundLevel.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace SoundLevel {

namespace {

constexpr double fullScale = 32768.0;
constexpr double barBottom = -60.0; // dBFS

} // namespace

double rmsDbfs(const std::vector<std::int16_t>& samples)
{
    if (samples.empty()) {
        return silence;
    }
    const double energy = std::accumulate(samples.begin(), samples.end(), 0.0,
                                          [](double sum, double sample) { return sum + sample * sample; });
    const double rms = std::sqrt(energy / static_cast<double>(samples.size())) / fullScale;
    return rms > 0.0 ? std::max(20.0 * std::log10(rms), silence) : silence;
}

QString bar(double dbfs, int width)
{
    const double share = std::clamp((dbfs - barBottom) / -barBottom, 0.0, 1.0);
    const int filled = static_cast<int>(std::lround(share * width));
    return QString(filled, QLatin1Char('#')) + QString(width - filled, QLatin1Char('.'));
}

} // namespace SoundLevel
