#include "cli/TalkProgress.h"

#include "audio/SoundLevel.h"
#include "client/measure/TalkMonitor.h"
#include "system/Console.h"

namespace {

constexpr int barWidth = 20;        // characters
constexpr qint64 linePeriod = 1000; // ms between lines where nothing can be renewed
constexpr double millisecondsPerSecond = 1000.0;

} // namespace

TalkProgress::TalkProgress(const TalkMonitor& monitor)
    : m_monitor(monitor), m_terminal(Console::isTerminal(stderr))
{
}

void TalkProgress::start()
{
    m_clock.start();
}

double TalkProgress::elapsed() const
{
    return static_cast<double>(m_clock.elapsed()) / millisecondsPerSecond;
}

QString TalkProgress::line() const
{
    const QString refused =
        m_monitor.refused() > 0 ? QStringLiteral("  not accepted %1").arg(m_monitor.refused()) : QString();
    return QStringLiteral("%1 s  packets %2  sequence %3  level %4 dBFS [%5]  received %6%7")
        .arg(elapsed(), 6, 'f', 1)
        .arg(m_monitor.packets(), 5)
        .arg(m_monitor.sequence(), 5)
        .arg(m_monitor.level(), 6, 'f', 1)
        .arg(SoundLevel::bar(m_monitor.level(), barWidth))
        .arg(m_monitor.received(), 5)
        .arg(refused);
}

QString TalkProgress::refusal(const TalkMonitor& monitor)
{
    return QStringLiteral("%1 of %2 packets of sound were not accepted: %3")
        .arg(monitor.refused())
        .arg(monitor.packets())
        .arg(monitor.refusal());
}

void TalkProgress::update()
{
    if (m_terminal) {
        std::fprintf(stderr, "\r%s", qUtf8Printable(line()));
        std::fflush(stderr);
    } else if (m_clock.elapsed() - m_lastLine >= linePeriod) {
        m_lastLine = m_clock.elapsed();
        std::fprintf(stderr, "%s\n", qUtf8Printable(line()));
    }
}

void TalkProgress::finish()
{
    std::fprintf(stderr, m_terminal ? "\r%s\n" : "%s\n", qUtf8Printable(line()));
}
