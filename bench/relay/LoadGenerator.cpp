#include "bench/relay/LoadGenerator.h"

#include <algorithm>
#include <poll.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr std::chrono::nanoseconds packetTime = std::chrono::milliseconds(80);
constexpr int eventsAtATime = 64;
constexpr std::size_t mostUnsent = 1U << 20U; // bytes of a connection; a server may read no further

double millisecondsSince(LoadGenerator::Clock::time_point then)
{
    return std::chrono::duration<double, std::milli>(LoadGenerator::Clock::now() - then).count();
}

} // namespace

LoadGenerator::LoadGenerator() : m_epoll(epoll_create1(EPOLL_CLOEXEC))
{
    prctl(PR_SET_TIMERSLACK, 1); // ns; else the system is up to 50 us late
}

LoadGenerator::~LoadGenerator()
{
    close(m_epoll);
}

void LoadGenerator::add(std::unique_ptr<RelayClient> client)
{
    epoll_event wanted{};
    wanted.events = EPOLLIN;
    wanted.data.ptr = client.get();
    if (epoll_ctl(m_epoll, EPOLL_CTL_ADD, client->socket().descriptor(), &wanted) != 0) {
        throw std::runtime_error("no more sockets");
    }
    m_clients.push_back(std::move(client));
}

void LoadGenerator::openTalks(std::uint32_t count)
{
    while (m_talks.size() < count) {
        const auto number = static_cast<std::uint32_t>(m_talks.size());
        auto made = std::make_unique<Talk>();
        made->client = m_clients[number % m_clients.size()].get();
        made->client->openTalk(number);
        m_talks.push_back(std::move(made));
    }
    m_start = Clock::now();
    m_count = 0;
}

LoadGenerator::Clock::time_point LoadGenerator::due() const
{
    return m_start + m_count * packetTime / m_talks.size();
}

void LoadGenerator::sendDue(Clock::time_point end)
{
    for (auto now = Clock::now(); due() <= now && due() < end; now = Clock::now()) {
        Talk& talk = *m_talks[m_count % m_talks.size()];
        if (counts(now)) {
            m_span.sendingDelays.push_back(millisecondsSince(due()));
        }
        const auto number = static_cast<std::uint32_t>(m_count++ % m_talks.size());
        m_sentInSpan += counts(now) ? 1 : 0;
        if (talk.client->socket().unsent() < mostUnsent) { // else the packet is lost
            talk.sent[talk.nextPacket % remembered] = now;
            talk.client->sendPacket(number, talk.nextPacket++);
        }
    }
}

/** Receives what comes before a time, for one wait at most. */
void LoadGenerator::receiveUntil(Clock::time_point end)
{
    using namespace std::chrono;
    const auto left = std::max(duration_cast<nanoseconds>(end - Clock::now()), nanoseconds(0));
    const timespec time{static_cast<time_t>(left.count() / 1'000'000'000),
                        static_cast<long>(left.count() % 1'000'000'000)};
    pollfd set{m_epoll, POLLIN, 0}; // epoll_wait alone knows milliseconds only
    if (ppoll(&set, 1, &time, nullptr) != 1) {
        return;
    }
    std::array<epoll_event, eventsAtATime> events{};
    const int found = epoll_wait(m_epoll, events.data(), eventsAtATime, 0);
    for (int i = 0; i < found; ++i) {
        static_cast<RelayClient*>(events[static_cast<std::size_t>(i)].data.ptr)->receive();
    }
}

void LoadGenerator::listen(Milliseconds time)
{
    const auto end = Clock::now() + time;
    while (Clock::now() < end) {
        receiveUntil(end);
    }
}

void LoadGenerator::talk(Milliseconds time)
{
    const auto end = Clock::now() + time;
    auto looked = Clock::now();
    while (Clock::now() < end) {
        sendDue(end);
        receiveUntil(std::min(due(), end));
        if (const auto now = Clock::now(); now - looked > Milliseconds(1)) {
            looked = now;
            for (const auto& client : m_clients) {
                client->socket().flush();
            }
        }
    }
}

void LoadGenerator::beginSpan()
{
    m_span = Span();
    m_sentInSpan = 0;
    m_spanBegin = Clock::now();
    m_spanEnd = Clock::time_point::max();
}

LoadGenerator::Span LoadGenerator::endSpan(Milliseconds time)
{
    m_spanEnd = Clock::now();
    m_span.seconds = std::chrono::duration<double>(m_spanEnd - m_spanBegin).count();
    talk(time); // as before, so that what is late meets no emptier server
    m_span.lost = m_sentInSpan - m_span.echoWaits.size();
    m_spanBegin = Clock::time_point::max();
    return std::move(m_span);
}

void LoadGenerator::answered(std::uint32_t talk, std::uint32_t packet)
{
    const auto sent = m_talks.at(talk)->sent[packet % remembered];
    if (counts(sent)) {
        m_span.answerWaits.push_back(millisecondsSince(sent));
    }
}

void LoadGenerator::echoed(std::uint32_t talk, std::uint32_t packet)
{
    const auto sent = m_talks.at(talk)->sent[packet % remembered];
    if (counts(sent)) {
        m_span.echoWaits.push_back(millisecondsSince(sent));
    }
    if (Clock::now() >= m_spanBegin && m_spanEnd == Clock::time_point::max()) {
        ++m_span.echoed;
    }
}
