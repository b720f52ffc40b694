#include "src/vocabulary/RuntimeLibrary.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace RuntimeLibrary {

#ifdef _WIN32

void* load(const char* name)
{
    return LoadLibraryA(name);
}

void* resolve(void* library, const char* symbol)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), symbol));
}

void unload(void* library)
{
    FreeLibrary(static_cast<HMODULE>(library));
}

#else

void* load(const char* name)
{
    return dlopen(name, RTLD_NOW | RTLD_LOCAL);
}

void* resolve(void* library, const char* symbol)
{
    return dlsym(library, symbol);
}

void unload(void* library)
{
    dlclose(library);
}

#endif

} // namespace RuntimeLibrary
