#pragma once

#include "server/devices/onvif/OnvifLine.h"

#include <list>
#include <memory>
#include <thread>

/** The threads of all lines of a back end. Used on the server's thread. */
class LineThreads
{
public:
    LineThreads() = default;

    /** Closes all lines and waits for them, but not without limit. */
    ~LineThreads();
    LineThreads(const LineThreads&) = delete;
    LineThreads& operator=(const LineThreads&) = delete;

    /** Returns how many lines may run. @param openFiles that the process may have, see OpenFiles */
    static int maxLines(int openFiles);

    /** Whether one more line may be started: each has a dozen threads. */
    bool hasRoom();

    /** Runs a line to its end; false when there is no room, or the system has no thread for it. */
    bool start(const std::shared_ptr<OnvifLine>& line);

private:
    struct Running
    {
        std::shared_ptr<OnvifLine> line;
        std::thread thread;
    };

    void joinEnded();

    std::list<Running> m_running;
};
