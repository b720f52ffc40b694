#pragma once

/**
 * @file
 * The log: a gate in front of the closed logging library, and the trace of entry points.
 *
 *   VOICEDESK_LOG_ERROR ---.
 *                           >-- gate: checkLevel(module << 8 | level) == 0 ? --> LogPrintf --> library
 *   TraceScope ------------'
 *
 * Without the library, without its export or with null entries nothing is logged and nothing else changes.
 * The thread safety of the log is the library's.
 */

#include "platform/TrelLogUtl.h"

#include <QtGlobal>

/** The library's log object; null while logging is off. Set once, before any plug-in object exists. */
extern LogObject* g_logObject;

/** The module number that the library gave us; 0 when it gave none. */
extern int g_logModuleId;

/** Severity of a message. */
enum class LogLevel : unsigned
{
    Error = 2, ///< Format "%s, " plus a text, the qualified function name first.
    Trace = 5, ///< Formats "%s, Enter" and "%s, Leave".
};

/** Passes a message to the library, which formats it. */
void LogPrintf(const char* format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(1, 2);

/** Returns whether a message of this level, from this place, is to be printed. */
bool LogGateOpen(LogLevel level, const char* file, int line);

/** Logs an error; the format's first argument is the qualified function name. */
#define VOICEDESK_LOG_ERROR(format, ...)                                                                     \
    do {                                                                                                     \
        if (LogGateOpen(LogLevel::Error, __FILE__, __LINE__)) {                                              \
            LogPrintf(format, __VA_ARGS__);                                                                  \
        }                                                                                                    \
    } while (false)

/** Logs the entry of a function when made and its end when destroyed. */
class TraceScope
{
public:
    /** @param function the qualified function name; not copied, as @p file is not */
    TraceScope(const char* file, const char* function, int line);
    ~TraceScope();
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

private:
    const char* m_file;
    const char* m_function;
};

/** Traces the rest of the block that it is in, under a function's name. */
#define VOICEDESK_TRACE(function) const TraceScope traceScope(__FILE__, function, __LINE__)
