// A log library that tells on stdout how it is called, and that lacks what its build leaves out.

#include "platform/TrelLogUtl.h"

#include <cstdio>

#ifdef _WIN32
#define EXPORT extern "C" __declspec(dllexport)
#else
#define EXPORT extern "C" __attribute__((visibility("default")))
#endif

[[maybe_unused]] static int registerModule(void* context, int kind, const char* name, int* idOut)
{
    std::printf("register %s %d %s\n", static_cast<const char*>(context), kind, name);
    *idOut = 77;
    return 0;
}

[[maybe_unused]] static int checkLevel(void* context, unsigned selector, int reserved, const char*, int line)
{
    std::printf("check %s %u %d %d\n", static_cast<const char*>(context), selector, reserved, line);
    return 0;
}

[[maybe_unused]] static void print(void* context, const char* format, va_list args)
{
    std::printf("print %s ", static_cast<const char*>(context));
    std::vprintf(format, args);
    std::printf("\n");
}

#ifdef NO_EXPORT
EXPORT int LogTrace_SomethingElse(int, LogObject**)
#else
EXPORT int LogTrace_GetGlobalObject(int reserved, LogObject** out)
#endif
{
#ifdef NO_EXPORT
    return 0;
#else
    static char context[] = "log";
    static LogObject object{};
    std::printf("get %d\n", reserved);
#ifndef NO_CONTEXT
    object.context = context;
#else
    static_cast<void>(context);
#endif
#if !defined(NO_REGISTER) && !defined(NO_CONTEXT)
    object.registerModule = registerModule;
#endif
#ifndef NO_CHECK
    object.checkLevel = checkLevel;
#endif
#ifndef NO_PRINT
    object.print = print;
#endif
#ifndef NO_OBJECT
    *out = &object;
#else
    static_cast<void>(out);
    static_cast<void>(object);
#endif
    return 0;
#endif
}
