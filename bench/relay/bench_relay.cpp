// Talk packets through a server in a process of its own: how many it relays in a second of a core, how long
// they and the answers take, and what a client costs in memory. `voicedesk serve`, with TLS and without, and
// beside it mumble-server, which has less to do: it neither decodes, keeps nor answers a packet.

#include "bench/relay/RelayFigures.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <stdexcept>
#include <unistd.h>

namespace {

using Milliseconds = LoadGenerator::Milliseconds;

constexpr Milliseconds warmUp(2000);
constexpr Milliseconds stepWarmUp(500);
constexpr Milliseconds stepSpan(2000);
constexpr std::uint32_t talkStep = 500;
constexpr std::uint32_t mostTalks = 3000;
constexpr double goodWait = 20; // ms, of 99 of 100 packets

constexpr char usage[] =
    "usage: bench_relay [OPTION...]\n"
    "  --program PATH    the voicedesk to measure\n"
    "  --before PATH     another voicedesk to measure beside it, as of the commit before\n"
    "  --only NAME       measure the server of this name alone, as in the table\n"
    "  --clients N,...   numbers of clients (10,200)\n"
    "  --talks N         talks of all clients together (200)\n"
    "  --seconds N       of each measurement (6)\n"
    "  --rounds N        measurements of each kind, of which the medians are taken (2)\n"
    "  --no-limit        do not look for the largest number of talks\n"
    "  --json            print JSON\n";

struct Options
{
    std::string program = VOICEDESK_PROGRAM;
    std::string before;
    std::string only;
    std::vector<unsigned> clients{10, 200};
    std::uint32_t talks = 200;
    int seconds = 6;
    int rounds = 2;
    bool limit = true;
    bool json = false;
};

/** Throws std::exception where they are wrong. */
Options parse(const std::vector<std::string>& words)
{
    Options made;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const auto value = [&]() -> const std::string& { return words.at(++i); };
        const auto number = [&] { return std::clamp(std::stoi(value()), 1, 4000); };
        if (words[i] == "--program") {
            made.program = value();
        } else if (words[i] == "--before") {
            made.before = value();
        } else if (words[i] == "--only") {
            made.only = value();
        } else if (words[i] == "--clients") {
            made.clients.clear();
            const std::string list = value();
            for (std::size_t at = 0; at < list.size();) {
                std::size_t used = 0;
                made.clients.push_back(
                    static_cast<unsigned>(std::clamp(std::stoi(list.substr(at), &used), 1, 250)));
                at += used + 1;
            }
        } else if (words[i] == "--talks") {
            made.talks = static_cast<std::uint32_t>(number());
        } else if (words[i] == "--seconds") {
            made.seconds = number();
        } else if (words[i] == "--rounds") {
            made.rounds = number();
        } else if (words[i] == "--no-limit") {
            made.limit = false;
        } else if (words[i] == "--json") {
            made.json = true;
        } else {
            throw std::invalid_argument(words[i]);
        }
    }
    return made;
}

std::vector<RelayServer::Kind> kindsOf(const Options& options)
{
    using Kind = RelayServer::Kind;
    std::vector<Kind> kinds{{Kind::Desk, false, options.program, "voicedesk"},
                            {Kind::Desk, true, options.program, "voicedesk TLS"}};
    if (!options.before.empty()) {
        kinds.push_back({Kind::Desk, false, options.before, "before"});
        kinds.push_back({Kind::Desk, true, options.before, "before TLS"});
    }
    const std::string mumble = RelayServer::findMumble();
    if (mumble.empty()) {
        std::fprintf(stderr, "mumble-server is not installed: nothing to compare with\n");
    } else {
        kinds.push_back({Kind::Mumble, true, mumble, "mumble TLS"});
    }
    if (!options.only.empty()) {
        kinds.erase(std::remove_if(kinds.begin(), kinds.end(),
                                   [&options](const Kind& kind) { return kind.name != options.only; }),
                    kinds.end());
    }
    return kinds;
}

/** Prints results as they come. */
class Report
{
public:
    explicit Report(bool json) : m_json(json) {}

    void title(const std::string& text)
    {
        if (!m_json) {
            std::printf("\n%s\n%s\n", text.c_str(), RelayFigures::tableHead().c_str());
        }
    }

    void add(const RelayFigures& figures, const char* list)
    {
        if (!m_json) {
            std::printf("%s\n", figures.toRow().c_str());
            std::fflush(stdout);
        }
        m_lists[list].push_back(figures.toJson());
    }

    void line(const std::string& text)
    {
        if (!m_json) {
            std::printf("%s\n", text.c_str());
        }
    }

    void addLimit(const std::string& server, std::uint32_t talks)
    {
        line(server + ": " + std::to_string(talks) + " talks with 99 of 100 packets within " +
             std::to_string(static_cast<int>(goodWait)) + " ms");
        m_lists["limits"].push_back("{\"server\": \"" + server + "\", \"talks\": " + std::to_string(talks) +
                                    "}");
    }

    void end() const
    {
        if (!m_json) {
            return;
        }
        const char* listMark = "{";
        for (const auto& [name, objects] : m_lists) {
            std::printf("%s\n  \"%s\": [", listMark, name.c_str());
            const char* mark = "\n    ";
            for (const std::string& object : objects) {
                std::printf("%s%s", mark, object.c_str());
                mark = ",\n    ";
            }
            std::printf("\n  ]");
            listMark = ",";
        }
        std::printf("\n}\n");
    }

private:
    const bool m_json;
    std::map<std::string, std::vector<std::string>> m_lists; ///< JSON objects.
};

/** All servers at a number of clients: one after the other, several times, since machines have other work. */
void compare(const std::vector<RelayServer::Kind>& kinds, unsigned clients, const Options& options,
             const ScratchFolder& folder, Report& report)
{
    std::vector<std::vector<RelayFigures>> runs(kinds.size());
    for (int round = 0; round < options.rounds; ++round) {
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            RelayRun run(kinds[i], clients, folder);
            runs[i].push_back(run.measure(options.talks, warmUp, Milliseconds(options.seconds * 1000)));
        }
    }
    report.title(std::to_string(clients) + " clients, " + std::to_string(options.talks) +
                 " talks, medians of " + std::to_string(options.rounds) +
                 " runs; waits in ms, those of echoes without the camera's delay");
    for (const auto& same : runs) {
        report.add(RelayFigures::medianOf(same), "servers");
    }
    const double last = RelayFigures::medianOf(runs.back()).packetsPerCoreSecond;
    for (std::size_t i = 0; i + 1 < kinds.size(); ++i) {
        char text[128];
        std::snprintf(text, sizeof(text), "%s / %s: %.2f packets a core second", kinds[i].name.c_str(),
                      kinds.back().name.c_str(), RelayFigures::medianOf(runs[i]).packetsPerCoreSecond / last);
        report.line(text);
    }
}

/** Raises the number of talks until the waits are too long. */
void findLimit(const RelayServer::Kind& kind, const ScratchFolder& folder, const Options& options,
               Report& report)
{
    RelayRun run(kind, options.clients.back(), folder);
    std::uint32_t most = 0;
    for (std::uint32_t talks = talkStep; talks <= mostTalks; talks += talkStep) {
        const RelayFigures figures = run.measure(talks, stepWarmUp, stepSpan);
        report.add(figures, "steps");
        if (figures.echoP99 > goodWait) {
            break;
        }
        most = talks;
    }
    report.addLimit(kind.name, most);
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    try {
        options = parse({argv + 1, argv + argc});
    } catch (const std::exception&) {
        std::fputs(usage, stderr);
        return 64;
    }
    try {
        const ScratchFolder folder;
        const std::vector<RelayServer::Kind> kinds = kindsOf(options);
        if (kinds.empty()) {
            throw std::runtime_error("there is no server " + options.only);
        }
        Report report(options.json);
        for (const unsigned clients : options.clients) {
            compare(kinds, clients, options, folder, report);
        }
        if (options.limit) {
            report.title("more talks, each server once");
            for (const RelayServer::Kind& kind : kinds) {
                findLimit(kind, folder, options, report);
            }
        }
        report.end();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_relay: %s\n", error.what());
        return 1;
    }
}
