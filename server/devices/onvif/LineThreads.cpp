#include "server/devices/onvif/LineThreads.h"

#include <chrono>

namespace {

constexpr std::size_t maxLines = 200;
constexpr std::size_t maxLinesForVideo = 150; // with the talks: then there are no further videos
constexpr std::chrono::seconds patience{5};   // at the end of the server
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
    return m_running.size() < maxLines;
}

bool LineThreads::hasRoomForVideo()
{
    joinEnded();
    return m_running.size() < maxLinesForVideo;
}

void LineThreads::start(const std::shared_ptr<LineWork>& line)
{
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
