#include "server/devices/onvif/LineThreads.h"

#include "system/OpenFiles.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <vector>

namespace {

constexpr int mostLines = 200;
constexpr int filesOfLine = 8;              // six in use, and two while it begins
constexpr int filesOfOthers = 256;          // clients, records, questions
constexpr std::chrono::seconds patience{5}; // at the end of the server
constexpr std::chrono::milliseconds step{5};
constexpr std::chrono::milliseconds maxClosing{1000}; // of a line before the next one to its camera

/** Waits for lines to the same camera that are being closed: it may take one talk at a time. */
void waitFor(const std::vector<std::shared_ptr<LineWork>>& lines)
{
    const auto end = std::chrono::steady_clock::now() + maxClosing;
    const auto hasEnded = [](const std::shared_ptr<LineWork>& line) { return line->hasEnded(); };
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

int LineThreads::maxLines(int openFiles)
{
    return std::clamp((openFiles - filesOfOthers) / filesOfLine, 0, mostLines);
}

/** How many lines may exist now. */
std::size_t LineThreads::room() const
{
    return std::min(m_maxLines, static_cast<std::size_t>(maxLines(OpenFiles::limit())));
}

bool LineThreads::hasRoom()
{
    joinEnded();
    m_reserved.remove_if([](const auto& each) { return each.expired(); });
    return m_running.size() + m_reserved.size() < room();
}

void LineThreads::reserve(const std::shared_ptr<LineWork>& line)
{
    m_reserved.push_back(line);
}

bool LineThreads::hasRoomForVideo()
{
    return hasRoom() && m_running.size() + m_reserved.size() < room() / 4 * 3;
}

bool LineThreads::start(const std::shared_ptr<LineWork>& line)
{
    m_reserved.remove_if([&](const auto& each) { return each.lock() == line; });
    std::vector<std::shared_ptr<LineWork>> before;
    for (const Running& running : m_running) {
        if (!line->talkCamera().isEmpty() && running.line->isClosing() &&
            running.line->talkCamera() == line->talkCamera()) {
            before.push_back(running.line);
        }
    }
    try {
        m_running.push_back({line, std::thread([line, before] {
                                 waitFor(before);
                                 line->run();
                             })});
        return true;
    } catch (const std::system_error&) {
        return false;
    }
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
