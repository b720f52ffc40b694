// Asks for a password, as a program whose signals are at their defaults, or are survived, or ignored.

#include "system/Console.h"

#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

volatile std::sig_atomic_t survived = 0;

extern "C" void survive(int signal)
{
    survived = signal;
}

} // namespace

int main(int argc, char** argv)
{
    const char* mode = argc > 1 ? argv[1] : "";
    if (std::strcmp(mode, "survives") == 0) {
        std::signal(SIGINT, survive);
        std::signal(SIGTERM, survive);
    } else if (std::strcmp(mode, "ignores") == 0) {
        std::signal(SIGINT, SIG_IGN);
    }
    const auto password = Console::readPassword("Password: ");
    std::printf("%s %d\n", password ? qPrintable(*password) : "none", static_cast<int>(survived));
    return 0;
}
