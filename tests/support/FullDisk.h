#pragma once

#ifndef _WIN32
#include <csignal>

#include <sys/resource.h>
#endif

/**
 * As long as it lives, no write() of this process brings a file beyond a size, as on a full disk: the calls
 * fail for real, for every user and on every file system. Of programs that are started meanwhile, too.
 */
class FullDisk
{
public:
#ifdef _WIN32
    static constexpr bool possible = false;
    explicit FullDisk(unsigned long) {}
#else
    static constexpr bool possible = true;
    /** @param largest size of a file, bytes */
    explicit FullDisk(unsigned long largest) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit narrow{largest, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &narrow);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
#endif
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

#ifndef _WIN32
private:
    void (*m_handler)(int);
    rlimit m_before{};
#endif
};
