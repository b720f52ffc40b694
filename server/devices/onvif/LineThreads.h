#pragma once

#include "server/devices/onvif/LineWork.h"

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

    /** Whether one more line may be started: each has a dozen threads. */
    bool hasRoom();

    /** Whether a video may be started: some room is left to talks, as nobody asks for videos by hand. */
    bool hasRoomForVideo();

    /** Runs a line to its end. */
    void start(const std::shared_ptr<LineWork>& line);

private:
    struct Running
    {
        std::shared_ptr<LineWork> line;
        std::thread thread;
    };

    void joinEnded();

    std::list<Running> m_running;
};
