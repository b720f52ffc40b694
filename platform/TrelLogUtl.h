#pragma once

#include <cstdarg>
#include <cstddef>

/**
 * The closed logging library, loaded by its name at run time.
 *
 * It exports one function, which hands out its log object: a record owned by the library whose entries
 * stand at fixed offsets.
 */
struct LogObject
{
    unsigned char reserved0[24];

    void* context; ///< First argument of every entry below.

    unsigned char reserved32[40];

    /** Registers a module under @p moduleName and writes its number to @p moduleIdOut. */
    int (*registerModule)(void* context, int kind, const char* moduleName, int* moduleIdOut);

    unsigned char reserved80[32];

    /** Returns 0 when a message is to be printed. @p selector is the module number << 8 | level. */
    int (*checkLevel)(void* context, unsigned selector, int reserved, const char* file, int line);

    /** Formats and prints one message. */
    void (*print)(void* context, const char* format, va_list args);
};

static_assert(sizeof(void*) == 8, "the log object's record is that of 64-bit processes");
static_assert(offsetof(LogObject, context) == 24);
static_assert(offsetof(LogObject, registerModule) == 72);
static_assert(offsetof(LogObject, checkLevel) == 112);
static_assert(offsetof(LogObject, print) == 120);

/** The type of the library's one export, LogTrace_GetGlobalObject; @p reserved is 0. */
using LogTraceGetGlobalObject = int (*)(int reserved, LogObject** out);
