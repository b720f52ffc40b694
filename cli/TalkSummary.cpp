#include "cli/TalkSummary.h"

#include "audio/PcmConverter.h"
#include "client/measure/EchoMeasure.h"
#include "client/measure/TalkMonitor.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr double longestDelay = 6.0; // s
constexpr double msPerSecond = 1000.0;

/** The sound at the rate of the talk. */
TimedSound atTalkRate(const TimedSound& sound)
{
    TimedSound converted;
    converted.sampleRate = PacketDecoder::sampleRate;
    converted.startTime = sound.startTime;
    framesmith::PcmConverter converter(framesmith::SampleFormat::S16, sound.sampleRate, 1,
                                       converted.sampleRate);
    converter.convert(sound.samples.data(), sound.samples.size(), converted.samples);
    converter.flush(converted.samples);
    return converted;
}

} // namespace

void TalkSummary::print() const
{
    std::printf("talked            %.1f s\n", duration);
    std::printf("packets sent      %d (last sequence %u, out of order %d, not accepted %d)\n",
                m_monitor.packets(), m_monitor.sequence(), m_monitor.sequenceGaps(), m_monitor.refused());
    std::printf("packets received  %d\n", m_monitor.received());
    std::printf("loudest packet    %.1f dBFS\n", m_monitor.loudest());
    auto times = m_monitor.commandTimes();
    if (!times.empty()) {
        std::sort(times.begin(), times.end());
        std::printf("capture to send   %.2f ms (median), %.2f ms (worst)\n",
                    times[times.size() / 2] * msPerSecond, times.back() * msPerSecond);
    }
    printEcho();
    for (const QString& recording : recordings) {
        std::printf("recording         %s\n", qUtf8Printable(recording));
    }
}

void TalkSummary::printEcho() const
{
    if (heardFile.isEmpty()) {
        std::puts("heard             not recorded: the sound output has no monitor");
        return;
    }
    std::printf("heard             %s\n", qUtf8Printable(heardFile));
    if (m_monitor.received() == 0) {
        return;
    }
    const auto echo = EchoMeasure::between(m_monitor.said(), atTalkRate(heard), longestDelay);
    if (!echo) {
        std::puts("echo              not found in what was heard");
        return;
    }
    const double eventToSound =
        m_monitor.firstReceivedSaidAt() + echo->firstDelay - m_monitor.firstReceivedAt();
    std::printf("event to sound    %.0f ms (first packet to its sound at the sound server's output)\n",
                eventToSound * msPerSecond);
    std::printf("mouth to ear      %.0f ms at the start, %.0f ms at the end\n",
                echo->firstDelay * msPerSecond, echo->lastDelay * msPerSecond);
    std::printf("gaps              %d (%.0f ms together)\n", echo->gaps, echo->gapTime * msPerSecond);
    std::printf("likeness          %.3f (correlation of %d pieces of speech; %d not found)\n",
                echo->correlation, echo->pieces, echo->lost);
}
