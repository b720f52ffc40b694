#pragma once

#include "bench/relay/LoadGenerator.h"
#include "bench/relay/RelayServer.h"

#include <cstdint>
#include <string>
#include <vector>

/** What was measured of a server under a load. */
struct RelayFigures
{
    std::string server;
    unsigned clients = 0;
    std::uint32_t talks = 0;
    double packetsPerSecond = 0;     ///< That came back.
    double packetsPerCoreSecond = 0; ///< Packets to one second of the server's time on a core.
    double cores = 0;                ///< That the server uses.
    double waitingCores = 0;         ///< Threads of it that are ready and wait for a core.
    double echoMedian = 0;           ///< ms, without the delay on purpose.
    double echoP99 = 0;              ///< ms; 99th of 100.
    double answerMedian = 0;         ///< ms; 0 where a server does not answer.
    double answerP99 = 0;            ///< ms; 99th of 100.
    double kibibytesPerClient = 0;   ///< In memory, of a client that has logged in.
    double lost = 0;                 ///< Packets that did not come back.
    double sendingDelayP99 = 0;      ///< ms after its time that a packet was sent; 99th of 100.

    /** Returns the median of each figure; of at least one run. */
    static RelayFigures medianOf(const std::vector<RelayFigures>& runs);

    /** Returns the head of the table that toRow fills. */
    static std::string tableHead();
    /** Returns a line of the table. */
    std::string toRow() const;
    /** Returns a JSON object. */
    std::string toJson() const;
};

/** A server with clients that talk. */
class RelayRun
{
public:
    /** Starts the server, and logs the clients in. Throws std::runtime_error. */
    RelayRun(const RelayServer::Kind& kind, unsigned clients, const ScratchFolder& folder);

    /** Talks, and measures after a while. Throws std::runtime_error. */
    RelayFigures measure(std::uint32_t talks, LoadGenerator::Milliseconds warmUp,
                         LoadGenerator::Milliseconds span);

private:
    RelayServer m_server;
    LoadGenerator m_generator;
    RelayFigures m_figures; ///< Those that do not change.
};
