#include "audio/FlushThread.h"

#include <system_error>
#include <utility>
#include <vector>

namespace {

constexpr auto delay = std::chrono::milliseconds(800);
constexpr auto together = std::chrono::milliseconds(100); // visits that are due so soon are made at once

} // namespace

std::shared_ptr<FlushThread> FlushThread::shared()
{
    static std::mutex mutex;
    static std::weak_ptr<FlushThread> one;
    const std::lock_guard<std::mutex> lock(mutex);
    auto thread = one.lock();
    if (!thread) {
        try {
            thread = std::make_shared<FlushThread>();
            one = thread;
        } catch (const std::system_error&) {
            return nullptr;
        }
    }
    return thread;
}

FlushThread::FlushThread() : m_thread([this] { loop(); }) {}

FlushThread::~FlushThread()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ends = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

void FlushThread::flushSoon(std::weak_ptr<Flushable> file)
{
    bool sleeps = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        sleeps = m_visits.empty();
        m_visits.push_back({Clock::now() + delay, std::move(file)});
    }
    if (sleeps) {
        m_changed.notify_one();
    }
}

void FlushThread::loop()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_ends) {
        if (m_visits.empty()) {
            m_changed.wait(lock, [this] { return m_ends || !m_visits.empty(); });
            continue;
        }
        if (m_changed.wait_until(lock, m_visits.front().due, [this] { return m_ends; })) {
            return;
        }
        std::vector<std::weak_ptr<Flushable>> files;
        const Clock::time_point last = Clock::now() + together;
        while (!m_visits.empty() && m_visits.front().due <= last) {
            files.push_back(std::move(m_visits.front().file));
            m_visits.pop_front();
        }
        lock.unlock();
        std::vector<std::weak_ptr<Flushable>> failed;
        for (const auto& each : files) {
            const auto file = each.lock();
            if (file && !file->flush()) {
                failed.push_back(each);
            }
        }
        lock.lock();
        for (auto& file : failed) {
            m_visits.push_back({Clock::now() + delay, std::move(file)});
        }
    }
}
