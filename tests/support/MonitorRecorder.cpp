#include "tests/support/MonitorRecorder.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int startTimeout = 20000;       // ms
constexpr std::int16_t silenceLevel = 60; // about -55 dBFS

bool isSound(std::int16_t sample)
{
    return std::abs(sample) > silenceLevel;
}

} // namespace

MonitorRecorder::MonitorRecorder(const QString& sink)
    : m_parec(QStringLiteral("parec"),
              {QStringLiteral("--device=") + sink + QStringLiteral(".monitor"),
               QStringLiteral("--format=s16le"), QStringLiteral("--rate=%1").arg(sampleRate),
               QStringLiteral("--channels=1"), QStringLiteral("--latency-msec=20")})
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < startTimeout && m_parec.isRunning()) {
        m_parec.waitForOutput(100);
        if (!samples().empty()) {
            m_running = true;
            return;
        }
    }
}

const WavFiles::Samples& MonitorRecorder::samples()
{
    QCoreApplication::processEvents();
    const QByteArray bytes = m_partial + m_parec.takeOutput();
    const auto count = static_cast<std::size_t>(bytes.size()) / 2;
    if (count == 0) {
        m_partial = bytes;
        return m_samples;
    }
    const std::size_t before = m_samples.size();
    m_samples.resize(before + count);
    std::memcpy(m_samples.data() + before, bytes.constData(), count * 2);
    m_partial = bytes.mid(static_cast<int>(count) * 2);
    return m_samples;
}

bool MonitorRecorder::silentFor(double seconds)
{
    samples();
    const auto count = static_cast<std::ptrdiff_t>(seconds * sampleRate);
    const auto size = static_cast<std::ptrdiff_t>(m_samples.size());
    return size > count && std::any_of(m_samples.begin(), m_samples.end() - count, isSound) &&
           std::none_of(m_samples.end() - count, m_samples.end(), isSound);
}

WavFiles::Samples MonitorRecorder::sound()
{
    samples();
    const auto first = std::find_if(m_samples.begin(), m_samples.end(), isSound);
    const auto last = std::find_if(m_samples.rbegin(), m_samples.rend(), isSound).base();
    return first < last ? WavFiles::Samples(first, last) : WavFiles::Samples();
}
