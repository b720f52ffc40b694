#include "server/devices/onvif/LineThreads.h"

#include "system/OpenFiles.h"

#include <algorithm>
#include <chrono>
#include <system_error>

namespace {

constexpr int mostLines = 200;
constexpr int filesOfLine = 8;              // six in use, and two while it begins
constexpr int filesOfOthers = 256;          // clients, records, questions
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

int LineThreads::maxLines(int openFiles)
{
    return std::clamp((openFiles - filesOfOthers) / filesOfLine, 0, mostLines);
}

bool LineThreads::hasRoom()
{
    joinEnded();
    return static_cast<int>(m_running.size()) < maxLines(OpenFiles::limit());
}

bool LineThreads::start(const std::shared_ptr<OnvifLine>& line)
{
    if (!hasRoom()) { // others may have started since it was asked
        return false;
    }
    try {
        m_running.push_back({line, std::thread([line] { line->run(); })});
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
