#include "server/access/LoginChecker.h"

#include <algorithm>

namespace {

constexpr int threadCount = 2;

} // namespace

LoginChecker::LoginChecker(const UserStore& users) : m_users(users)
{
    for (int i = 0; i < threadCount; ++i) {
        m_threads.emplace_back([this] { work(); });
    }
}

LoginChecker::~LoginChecker()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
        m_requests.clear();
    }
    m_condition.notify_all();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
}

quint64 LoginChecker::check(const QString& name, const QString& secret)
{
    {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back({++m_lastNumber, name, secret});
    }
    m_condition.notify_one();
    return m_lastNumber;
}

void LoginChecker::withdraw(quint64 number)
{
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_requests.begin(), m_requests.end(),
                                    [number](const Request& request) { return request.number == number; });
    if (found != m_requests.end()) {
        m_requests.erase(found);
    }
}

std::size_t LoginChecker::waiting()
{
    const std::lock_guard lock(m_mutex);
    return m_requests.size();
}

void LoginChecker::work()
{
    for (;;) {
        std::unique_lock lock(m_mutex);
        m_condition.wait(lock, [this] { return m_ending || !m_requests.empty(); });
        if (m_ending) {
            return;
        }
        const Request request = std::move(m_requests.front());
        m_requests.pop_front();
        lock.unlock();
        const bool admitted = m_users.admits(request.name, request.secret);
        lock.lock();
        m_verdicts.push_back({request.number, admitted});
        lock.unlock();
        QMetaObject::invokeMethod(this, "collect", Qt::QueuedConnection);
    }
}

void LoginChecker::collect()
{
    std::vector<Verdict> verdicts;
    {
        const std::lock_guard lock(m_mutex);
        verdicts.swap(m_verdicts);
    }
    for (const Verdict& verdict : verdicts) {
        Q_EMIT checked(verdict.number, verdict.admitted);
    }
}
