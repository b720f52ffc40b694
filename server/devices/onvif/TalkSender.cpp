#include "server/devices/onvif/TalkSender.h"

#include <algorithm>

namespace {

constexpr std::size_t maxQueued = 256; // packets; half a second of the shortest ones

std::int64_t microseconds(TalkSender::Clock::time_point time)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
}

} // namespace

TalkSender::TalkSender(std::unique_ptr<RtpEncoder> encoder, bool evenPace, Send send)
    : m_encoder(std::move(encoder)), m_evenPace(evenPace), m_send(std::move(send)),
      m_thread([this] { run(); })
{
}

TalkSender::~TalkSender()
{
    stop();
    m_thread.join();
}

void TalkSender::say(std::uint32_t position, const QByteArray& muLaw)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stopped) {
        return;
    }
    if (m_queue.size() == maxQueued) {
        m_queue.pop_front();
    }
    m_queue.push_back({position, muLaw, Clock::now()});
    m_changed.notify_all();
}

void TalkSender::hold(bool held)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_held = held;
    m_changed.notify_all();
}

void TalkSender::stop()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stopped = true;
    m_changed.notify_all();
}

/** Waits for sound that is not too old; false at the end. */
bool TalkSender::takeNext(Said& said)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopped || (!m_held && !m_queue.empty()); });
        if (m_stopped) {
            return false;
        }
        said = m_queue.front();
        m_queue.pop_front();
        if (Clock::now() - said.time <= maxAge) {
            return true;
        }
    }
}

/** Waits until a packet may leave; false when it must not any more. */
bool TalkSender::waitForTurn(std::chrono::milliseconds duration, Clock::time_point said)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_evenPace) {
        m_changed.wait_until(lock, m_pace.due(said, duration), [this] { return m_stopped; });
    }
    m_changed.wait(lock, [this] { return m_stopped || !m_held; });
    m_pace.left(Clock::now());
    return !m_stopped && Clock::now() - said <= maxAge;
}

void TalkSender::run()
{
    Said said;
    std::vector<RtpPayload> payloads;
    while (takeNext(said)) {
        payloads.clear();
        m_encoder->encode(said.position, microseconds(said.time), said.muLaw, payloads);
        for (const RtpPayload& payload : payloads) {
            if (waitForTurn(std::chrono::milliseconds(payload.duration), said.time)) {
                m_send(payload);
            }
        }
    }
}
