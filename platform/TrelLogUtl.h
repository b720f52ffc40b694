#pragma once

#include <cstdarg>
#include <cstddef>

/**
 * The log object of the closed logging library, which is loaded by its name at run time.
 *
 * The library exports one function, which returns this record. The library owns it; its entries are at fixed
 * offsets.
 */
struct LogObject
{
    unsigned char reserved0[24]; ///< Not used.

    void* context; ///< First argument of every entry below.

    unsigned char reserved32[40]; ///< Not used.

    /** Registers a module under @p moduleName and writes its number to @p moduleIdOut. */
    int (*registerModule)(void* context, int kind, const char* moduleName, int* moduleIdOut);

    unsigned char reserved80[32]; ///< Not used.

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
