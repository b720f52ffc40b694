#include "src/vocabulary/LogGate.h"

#include "src/vocabulary/RuntimeLibrary.h"

#include <cstdlib>

LogObject* g_logObject = nullptr;
int g_logModuleId = 0;

namespace {

constexpr int moduleKind = 19;

void* logLibrary = nullptr;

void closeLogLibrary()
{
    if (logLibrary != nullptr) {
        g_logObject = nullptr;
        RuntimeLibrary::unload(logLibrary);
    }
}

bool openLogLibrary()
{
    logLibrary = RuntimeLibrary::load(RUNTIME_LIBRARY_NAME("TrelLogUtl"));
    if (logLibrary == nullptr) {
        return false;
    }
    std::atexit(closeLogLibrary);
    const auto getGlobalObject = reinterpret_cast<LogTraceGetGlobalObject>(
        RuntimeLibrary::resolve(logLibrary, "LogTrace_GetGlobalObject"));
    if (getGlobalObject == nullptr) {
        return false;
    }
    LogObject* object = nullptr;
    getGlobalObject(0, &object);
    if (object != nullptr && object->registerModule != nullptr) {
        object->registerModule(object->context, moduleKind, "VoiceDesk", &g_logModuleId);
    }
    g_logObject = object;
    return object != nullptr;
}

// Runs when the library is loaded, before anyone can ask it for the plug-in.
[[maybe_unused]] const bool logOpened = openLogLibrary();

} // namespace

bool LogGateOpen(LogLevel level, const char* file, int line)
{
    if (g_logObject == nullptr || g_logObject->context == nullptr || g_logObject->checkLevel == nullptr) {
        return false;
    }
    const unsigned selector = static_cast<unsigned>(g_logModuleId) << 8U | static_cast<unsigned>(level);
    return g_logObject->checkLevel(g_logObject->context, selector, 0, file, line) == 0;
}

void LogPrintf(const char* format, ...)
{
    if (g_logObject == nullptr || g_logObject->context == nullptr || g_logObject->print == nullptr) {
        return;
    }
    va_list args;
    va_start(args, format);
    g_logObject->print(g_logObject->context, format, args);
    va_end(args);
}

TraceScope::TraceScope(const char* file, const char* function, int line) : m_file(file), m_function(function)
{
    if (LogGateOpen(LogLevel::Trace, file, line)) {
        LogPrintf("%s, Enter", function);
    }
}

TraceScope::~TraceScope()
{
    try {
        // Deliberate: the end of a function is logged with line 0, wherever it ended.
        if (LogGateOpen(LogLevel::Trace, m_file, 0)) {
            LogPrintf("%s, Leave", m_function);
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): a failing log must not end the program
    }
}
