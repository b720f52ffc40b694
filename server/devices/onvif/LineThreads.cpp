#include "server/devices/onvif/LineThreads.h"

#include <chrono>

namespace {

constexpr std::chrono::seconds patience{5}; // at the end of the server
constexpr std::chrono::milliseconds step{5};

} // namespace

LineThreads::~LineThreads()
{
    for (const Running& running : m_running) {
        running.line->forgetListener();
        running.line->close();
    }
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!m_running.empty()) {
        joinEnded();
        if (std::chrono::steady_clock::now() >= end) {
            for (Running& running : m_running) {
                running.thread.detach(); // it owns its line
            }
            return;
        }
        std::this_thread::sleep_for(step);
    }
}

bool LineThreads::hasRoom()
{
    joinEnded();
    m_reserved.remove_if([](const auto& each) { return each.expired(); });
    return m_running.size() + m_reserved.size() < m_maxLines;
}

void LineThreads::reserve(const std::shared_ptr<LineWork>& line)
{
    m_reserved.push_back(line);
}

bool LineThreads::hasRoomForVideo()
{
    return hasRoom() && m_running.size() + m_reserved.size() < m_maxLines / 4 * 3;
}

void LineThreads::start(const std::shared_ptr<LineWork>& line)
{
    m_reserved.remove_if([&](const auto& each) { return each.lock() == line; });
    m_running.push_back({line, std::thread([line] { line->run(); })});
}

void LineThreads::joinEnded()
{
    for (auto running = m_running.begin(); running != m_running.end();) {
        if (running->line->hasEnded()) {
            running->thread.join();
            running = m_running.erase(running);
        } else {
            ++running;
        }
    }
}
