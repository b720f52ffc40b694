#include "system/ProgramEnd.h"

#include <cstdio>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__) && __has_include(<sanitizer/lsan_interface.h>)
#include <sanitizer/lsan_interface.h>
#define CHECK_LEAKS() __lsan_do_leak_check()
#else
#define CHECK_LEAKS() static_cast<void>(0)
#endif

// A static destructor of Qt's PulseAudio plug-in takes its connection down without the lock of the thread
// that reads from it. libpulse aborts the process when a message of the sound server comes in at that moment.
void endProgram(int status)
{
    std::fflush(stdout);
    std::fflush(stderr);
    CHECK_LEAKS(); // what the sanitizer does in a destructor
    std::_Exit(status);
}
