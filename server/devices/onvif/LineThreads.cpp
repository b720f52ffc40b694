#include "server/devices/onvif/LineThreads.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace {

constexpr std::size_t maxLines = 200;
constexpr std::chrono::seconds patience{5}; // at the end of the server
constexpr std::chrono::milliseconds step{5};
constexpr std::chrono::milliseconds maxClosing{1000}; // of a line before the next one to its camera

/** Waits for lines to the same camera that are being closed: it may take one talk at a time. */
void waitFor(const std::vector<std::shared_ptr<OnvifLine>>& lines)
{
    const auto end = std::chrono::steady_clock::now() + maxClosing;
    const auto hasEnded = [](const std::shared_ptr<OnvifLine>& line) { return line->hasEnded(); };
    while (!std::all_of(lines.begin(), lines.end(), hasEnded) && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(step);
    }
}

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

void LineThreads::start(const std::shared_ptr<OnvifLine>& line)
{
    std::vector<std::shared_ptr<OnvifLine>> before;
    for (const Running& running : m_running) {
        if (running.line->isClosingFor(*line)) {
            before.push_back(running.line);
        }
    }
    m_running.push_back({line, std::thread([line, before] {
                             waitFor(before);
                             line->run();
                         })});
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
