#pragma once

#include "bench/relay/RelayClient.h"

#include <array>
#include <chrono>
#include <memory>
#include <vector>

/**
 * Talks at their pace: each sends a packet every 80 ms, and no two at the same moment. All on the calling
 * thread. Each function throws std::runtime_error when a connection ends.
 */
class LoadGenerator final : public RelayClient::Listener
{
public:
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::milliseconds;

    /** What became of the packets that were sent in a span. */
    struct Span
    {
        double seconds = 0;
        std::size_t echoed = 0;          ///< Packets that came back within the span, whenever they were sent.
        std::size_t lost = 0;            ///< Packets that did not come back.
        std::vector<double> echoWaits;   ///< ms from sending to coming back.
        std::vector<double> answerWaits; ///< ms from sending to the answer.
        std::vector<double> sendingDelays; ///< ms after its time that a packet was sent.
    };

    LoadGenerator();
    ~LoadGenerator() override;
    LoadGenerator(const LoadGenerator&) = delete;
    LoadGenerator& operator=(const LoadGenerator&) = delete;

    /** Takes a client that has logged in. */
    void add(std::unique_ptr<RelayClient> client);

    /** Says nothing for a time. */
    void listen(Milliseconds time);

    /** Opens talks, of the clients in turn, until there are as many. */
    void openTalks(std::uint32_t count);

    /** Talks for a time. */
    void talk(Milliseconds time);

    /** What is sent from here on counts. */
    void beginSpan();

    /** What is sent from here on does not count; takes @p time more for what comes back. */
    Span endSpan(Milliseconds time);

    void answered(std::uint32_t talk, std::uint32_t packet) override;
    void echoed(std::uint32_t talk, std::uint32_t packet) override;

private:
    static constexpr std::size_t remembered = 512; // packets of a talk: 41 s

    struct Talk
    {
        RelayClient* client = nullptr;
        std::uint32_t nextPacket = 0;
        std::array<Clock::time_point, remembered> sent; ///< By number, modulo.
    };

    Clock::time_point due() const;
    void sendDue(Clock::time_point end);
    void receiveUntil(Clock::time_point end);
    bool counts(Clock::time_point sent) const { return sent >= m_spanBegin && sent < m_spanEnd; }

    int m_epoll = -1;
    std::vector<std::unique_ptr<RelayClient>> m_clients;
    std::vector<std::unique_ptr<Talk>> m_talks;
    Clock::time_point m_start; ///< Of the present number of talks.
    std::uint64_t m_count = 0; ///< Packets since then.
    Clock::time_point m_spanBegin = Clock::time_point::max();
    Clock::time_point m_spanEnd = Clock::time_point::max();
    std::size_t m_sentInSpan = 0;
    Span m_span;
};
