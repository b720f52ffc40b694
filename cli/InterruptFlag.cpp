#include "cli/InterruptFlag.h"

#include <csignal>

namespace InterruptFlag {

namespace {

volatile std::sig_atomic_t flag = 0;

extern "C" void raiseFlag(int /*signal*/)
{
    flag = 1;
}

} // namespace

void install()
{
    std::signal(SIGINT, raiseFlag);
    std::signal(SIGTERM, raiseFlag);
#ifdef SIGBREAK
    std::signal(SIGBREAK, raiseFlag); // Ctrl-Break, Windows' own
#endif
}

bool raised()
{
    return flag != 0;
}

void lower()
{
    flag = 0;
}

} // namespace InterruptFlag
