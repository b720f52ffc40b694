#pragma once

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

/** A server in a process of its own, which ends with this object and with this process. */
class ServerProcess
{
public:
    /** Time that threads have had and waited for, in ns. */
    struct Times
    {
        std::uint64_t run = 0;    ///< On a core.
        std::uint64_t waited = 0; ///< Runnable, for a core.
    };

    /**
     * Starts it. Throws std::runtime_error.
     *
     * @param arguments   the program first, with its path
     * @param environment added to that of this process, as NAME=VALUE
     * @param folder      where it works, and where its messages go, to "log"
     */
    ServerProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                  const std::string& folder);
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    /** Returns the first line of its standard output; empty when there is none within ten seconds. */
    std::string firstLine() const;

    /** Returns whether it has not ended by itself. */
    bool isRunning() const;

    /** Gives its threads the priority of this one, as some servers take a higher one. */
    void equalise() const;

    /** Returns the times of all its threads. */
    Times times() const;

    /** Returns the bytes of it that are in memory. */
    std::uint64_t residentBytes() const;

private:
    std::string threads() const;

    pid_t m_pid = -1;
    int m_output = -1; ///< The end of a pipe.
};
