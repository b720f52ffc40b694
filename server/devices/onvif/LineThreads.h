#pragma once

#include "server/devices/onvif/LineWork.h"

#include <list>
#include <memory>
#include <thread>

/** The threads of all lines of a back end. Used on the server's thread. */
class LineThreads
{
public:
    /** @param maxLines that exist at a time */
    explicit LineThreads(std::size_t maxLines = 200) : m_maxLines(maxLines) {}

    /** Closes all lines and waits for them, but not without limit. */
    ~LineThreads();
    LineThreads(const LineThreads&) = delete;
    LineThreads& operator=(const LineThreads&) = delete;

    /** Returns how many lines may run. @param openFiles that the process may have, see OpenFiles */
    static int maxLines(int openFiles);

    /** Whether one more line may be started: each has a dozen threads. */
    bool hasRoom();

    /** Whether a video may be started: a quarter is left to talks, as nobody asks for videos by hand. */
    bool hasRoomForVideo();

    /** Keeps room for a line, as long as it exists, until it is started. */
    void reserve(const std::shared_ptr<LineWork>& line);

    /** Runs a line to its end, for which there is room; false when the system has no thread for it. */
    bool start(const std::shared_ptr<LineWork>& line);

private:
    struct Running
    {
        std::shared_ptr<LineWork> line;
        std::thread thread;
    };

    void joinEnded();
    std::size_t room() const;

    std::size_t m_maxLines;
    std::list<std::weak_ptr<LineWork>> m_reserved;
    std::list<Running> m_running;
};
