#include "bench/relay/RelayFigures.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

constexpr LoadGenerator::Milliseconds restTime(300); // before the memory is looked at
constexpr LoadGenerator::Milliseconds lateTime(500); // beyond the delay on purpose; what is later is lost

/** A figure: its name in JSON. */
struct Field
{
    double RelayFigures::*value;
    const char* name;
    const char* title;
    const char* format;
};

const Field fields[] = {
    {&RelayFigures::packetsPerSecond, "packetsPerSecond", "packets/s", "%10.0f"},
    {&RelayFigures::cores, "cores", "cores", "%6.2f"},
    {&RelayFigures::waitingCores, "waitingCores", "ready", "%6.2f"},
    {&RelayFigures::packetsPerCoreSecond, "packetsPerCoreSecond", "a core s", "%9.0f"},
    {&RelayFigures::echoMedian, "echoMedian", "echo p50", "%9.2f"},
    {&RelayFigures::echoP99, "echoP99", "p99", "%8.2f"},
    {&RelayFigures::answerMedian, "answerMedian", "reply p50", "%10.2f"},
    {&RelayFigures::answerP99, "answerP99", "p99", "%8.2f"},
    {&RelayFigures::kibibytesPerClient, "kibibytesPerClient", "KiB/client", "%11.1f"},
    {&RelayFigures::lost, "lost", "lost", "%6.0f"},
    {&RelayFigures::sendingDelayP99, "sendingDelayP99", "sent late", "%10.2f"},
};

std::string printed(const char* format, double value)
{
    char text[64];
    std::snprintf(text, sizeof(text), format, value);
    return text;
}

/** The value that a part of all does not exceed; what did not come at all counts as @p missing. */
double quantile(std::vector<double> values, double part, std::size_t lost = 0, double missing = 0)
{
    values.insert(values.end(), lost, missing);
    if (values.empty()) {
        return 0;
    }
    const auto index =
        std::min(static_cast<std::size_t>(part * static_cast<double>(values.size())), values.size() - 1);
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(index), values.end());
    return values[index];
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

} // namespace

RelayFigures RelayFigures::medianOf(const std::vector<RelayFigures>& runs)
{
    RelayFigures made = runs.front();
    for (const Field& field : fields) {
        std::vector<double> values;
        std::transform(runs.begin(), runs.end(), std::back_inserter(values),
                       [&field](const RelayFigures& run) { return run.*field.value; });
        made.*field.value = median(values);
    }
    return made;
}

std::string RelayFigures::tableHead()
{
    std::string line = "server         clients talks";
    for (const Field& field : fields) {
        const std::size_t width = printed(field.format, 0).size();
        const std::string title = field.title;
        line += std::string(width > title.size() ? width - title.size() : 1, ' ') + title;
    }
    return line;
}

std::string RelayFigures::toRow() const
{
    char start[64];
    std::snprintf(start, sizeof(start), "%-14s %7u %5u", server.c_str(), clients, talks);
    std::string line = start;
    for (const Field& field : fields) {
        line += printed(field.format, this->*field.value);
    }
    return line;
}

std::string RelayFigures::toJson() const
{
    std::string object = "{\"server\": \"" + server + "\", \"clients\": " + std::to_string(clients) +
                         ", \"talks\": " + std::to_string(talks);
    for (const Field& field : fields) {
        object += std::string(", \"") + field.name + "\": " + printed("%.3f", this->*field.value);
    }
    return object + "}";
}

RelayRun::RelayRun(const RelayServer::Kind& kind, unsigned clients, const ScratchFolder& folder)
    : m_server(kind, folder)
{
    m_generator.add(m_server.makeClient(m_generator)); // the first one has the server set up what all share
    m_generator.listen(restTime);
    const double before = static_cast<double>(m_server.process().residentBytes());
    for (unsigned i = 1; i < clients; ++i) {
        m_generator.add(m_server.makeClient(m_generator));
    }
    m_generator.listen(restTime);
    const double grown = static_cast<double>(m_server.process().residentBytes()) - before;
    m_figures.server = kind.name;
    m_figures.clients = clients;
    m_figures.kibibytesPerClient = clients > 1 ? grown / 1024 / (clients - 1) : 0;
}

RelayFigures RelayRun::measure(std::uint32_t talks, LoadGenerator::Milliseconds warmUp,
                               LoadGenerator::Milliseconds span)
{
    m_server.process().equalise();
    m_generator.openTalks(talks);
    m_generator.talk(warmUp + m_server.echoDelay());
    const ServerProcess::Times before = m_server.process().times();
    m_generator.beginSpan();
    m_generator.talk(span);
    const ServerProcess::Times after = m_server.process().times();
    const double delay = static_cast<double>(m_server.echoDelay().count());
    const LoadGenerator::Span got = m_generator.endSpan(m_server.echoDelay() + lateTime);
    const double missing = delay + static_cast<double>(lateTime.count());
    const double seconds = static_cast<double>(after.run - before.run) / 1e9;
    RelayFigures made = m_figures;
    made.talks = talks;
    made.packetsPerSecond = static_cast<double>(got.echoed) / got.seconds;
    made.packetsPerCoreSecond = static_cast<double>(got.echoed) / seconds;
    made.cores = seconds / got.seconds;
    made.waitingCores = static_cast<double>(after.waited - before.waited) / 1e9 / got.seconds;
    made.echoMedian = quantile(got.echoWaits, 0.5, got.lost, missing) - delay;
    made.echoP99 = quantile(got.echoWaits, 0.99, got.lost, missing) - delay;
    made.answerMedian = quantile(got.answerWaits, 0.5);
    made.answerP99 = quantile(got.answerWaits, 0.99);
    made.lost = static_cast<double>(got.lost);
    made.sendingDelayP99 = quantile(got.sendingDelays, 0.99);
    return made;
}
