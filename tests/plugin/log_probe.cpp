// Tells what the log gate found when it was loaded, and logs once.

#include "src/vocabulary/LogGate.h"

#include <cstdio>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

bool logLibraryIsLoaded()
{
#ifdef _WIN32
    return GetModuleHandleA("TrelLogUtl.dll") != nullptr;
#else
    void* library = dlopen("libTrelLogUtl.so", RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) {
        dlclose(library);
    }
    return library != nullptr;
#endif
}

/** Of an object that is made before the gate opens its library, and so destroyed after it has closed it. */
struct End
{
    ~End()
    {
        VOICEDESK_LOG_ERROR("%s, too late", "Probe::end");
        std::printf("end object %d library %d\n", g_logObject != nullptr ? 1 : 0,
                    logLibraryIsLoaded() ? 1 : 0);
    }
};

const End end;

} // namespace

// Here, since the order of objects of different sources is the linker's: MinGW's is the reverse of Linux's.
#include "src/vocabulary/LogGate.cpp"

static void traced()
{
    VOICEDESK_TRACE("traced");
    std::printf("inside\n");
}

int main()
{
    std::printf("object %d id %d\n", g_logObject != nullptr ? 1 : 0, g_logModuleId);
    VOICEDESK_LOG_ERROR("%s, went wrong", "Probe::main");
    traced();
    return 0;
}
