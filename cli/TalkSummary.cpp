#include "cli/TalkSummary.h"

#include "audio/PcmConverter.h"
#include "cli/commands/Table.h"
#include "client/measure/TalkMonitor.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr double maxDelay = 6.0; // s
constexpr double msPerSecond = 1000.0;

/** The sound at the rate of the talk. */
TimedSound atTalkRate(const TimedSound& sound)
{
    TimedSound converted;
    converted.sampleRate = TalkPacketDecoder::sampleRate;
    converted.startTime = sound.startTime;
    PcmConverter converter(SampleFormat::S16, sound.sampleRate, 1, converted.sampleRate);
    converter.convert(sound.samples.data(), sound.samples.size(), converted.samples);
    converter.flush(converted.samples);
    return converted;
}

} // namespace

void TalkSummary::print(bool json) const
{
    if (json) {
        printObject();
    } else {
        printLines();
    }
}

void TalkSummary::printObject() const
{
    const auto inMs = [](double seconds) { return seconds * msPerSecond; };
    QVariantMap object{
        {QStringLiteral("seconds"), duration},
        {QStringLiteral("packetsSent"), m_monitor.packets()},
        {QStringLiteral("lastSequence"), m_monitor.sequence()},
        {QStringLiteral("outOfOrder"), m_monitor.sequenceGaps()},
        {QStringLiteral("notAccepted"), m_monitor.refused()},
        {QStringLiteral("packetsReceived"), m_monitor.received()},
        {QStringLiteral("loudestDbfs"), m_monitor.loudest()},
        {QStringLiteral("captureToSendMs"), QVariant()},
        {QStringLiteral("heard"), heardFile.isEmpty() ? QVariant() : heardFile},
        {QStringLiteral("echo"), QVariant()},
        {QStringLiteral("recordings"), recordings},
    };
    auto times = m_monitor.commandTimes();
    if (!times.empty()) {
        std::sort(times.begin(), times.end());
        object[QStringLiteral("captureToSendMs")] =
            QVariantMap{{QStringLiteral("median"), inMs(times[times.size() / 2])},
                        {QStringLiteral("worst"), inMs(times.back())}};
    }
    if (const auto measured = echo()) {
        object[QStringLiteral("echo")] = QVariantMap{
            {QStringLiteral("eventToSoundMs"), inMs(eventToSound(*measured))},
            {QStringLiteral("mouthToEarMs"),
             QVariantList{inMs(measured->firstDelay), inMs(measured->lastDelay)}},
            {QStringLiteral("gaps"), measured->gaps},
            {QStringLiteral("gapsMs"), inMs(measured->gapTime)},
            {QStringLiteral("likeness"), measured->correlation},
            {QStringLiteral("pieces"), measured->pieces},
            {QStringLiteral("piecesNotFound"), measured->lost},
        };
    }
    printJson(object);
}

std::optional<EchoMeasure> TalkSummary::echo() const
{
    return heardFile.isEmpty() || m_monitor.received() == 0
               ? std::nullopt
               : EchoMeasure::between(m_monitor.captured(), atTalkRate(received), maxDelay);
}

/** From the first packet to its sound, seconds. */
double TalkSummary::eventToSound(const EchoMeasure& echo) const
{
    return m_monitor.firstReceivedCapturedAt() + echo.firstDelay - m_monitor.firstReceivedAt();
}

void TalkSummary::printLines() const
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
        std::printf("heard             not recorded: %s\n",
                    whyNotHeard.isEmpty() ? "the sound output has no monitor" : qUtf8Printable(whyNotHeard));
        return;
    }
    std::printf("heard             %s\n", qUtf8Printable(heardFile));
    if (m_monitor.received() == 0) {
        return;
    }
    const auto echo = this->echo();
    if (!echo) {
        std::puts("echo              not found in what was heard");
        return;
    }
    std::printf("event to sound    %.0f ms (first packet to its sound at the sound server's output)\n",
                eventToSound(*echo) * msPerSecond);
    std::printf("mouth to ear      %.0f ms at the start, %.0f ms at the end\n",
                echo->firstDelay * msPerSecond, echo->lastDelay * msPerSecond);
    std::printf("gaps              %d (%.0f ms together)\n", echo->gaps, echo->gapTime * msPerSecond);
    std::printf("likeness          %.3f (correlation of %d pieces of speech; %d not found)\n",
                echo->correlation, echo->pieces, echo->lost);
}
