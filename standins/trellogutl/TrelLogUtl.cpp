// The log object: messages up to a level, to stderr or to a file.
//
//   TRELLOG_LEVEL  highest level that is printed, 0 (nothing) to 255; 2 (errors) if not set
//   TRELLOG_FILE   file to append to; stderr if not set or not to be opened

#include "platform/TrelLogUtl.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>

#ifdef _WIN32
#define TRELLOG_API extern "C" __declspec(dllexport)
#else
#define TRELLOG_API extern "C" __attribute__((visibility("default")))
#endif

namespace {

constexpr unsigned defaultLevel = 2;
constexpr unsigned levelMask = 0xFF;
constexpr unsigned moduleShift = 8;

class Log
{
public:
    Log()
    {
        if (const char* level = std::getenv("TRELLOG_LEVEL"); level != nullptr && *level != '\0') {
            m_level = static_cast<unsigned>(std::strtoul(level, nullptr, 10));
        }
        if (const char* path = std::getenv("TRELLOG_FILE"); path != nullptr && *path != '\0') {
            if (std::FILE* file = std::fopen(path, "a"); file != nullptr) {
                m_file = file;
            }
        }
    }

    int registerModule(const char* name)
    {
        const std::lock_guard lock(m_mutex);
        if (m_moduleCount == m_modules.size()) {
            return 0;
        }
        std::snprintf(m_modules[m_moduleCount].data(), m_modules[m_moduleCount].size(), "%s",
                      name != nullptr ? name : "");
        return static_cast<int>(++m_moduleCount);
    }

    bool prints(unsigned selector)
    {
        t_selector = selector;
        return (selector & levelMask) <= m_level;
    }

    void print(const char* format, va_list args)
    {
        const auto now = std::chrono::system_clock::now();
        const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
        const auto milliseconds =
            std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;

        const std::lock_guard lock(m_mutex);
        std::tm utc{};
        if (const std::tm* shared = std::gmtime(&seconds); shared != nullptr) {
            utc = *shared;
        }
        char time[32];
        std::strftime(time, sizeof time, "%Y-%m-%dT%H:%M:%S", &utc);
        const unsigned module = t_selector >> moduleShift;
        const char* name = module >= 1 && module <= m_moduleCount ? m_modules[module - 1].data() : "-";
        std::fprintf(m_file, "%s.%03dZ %s %u ", time, static_cast<int>(milliseconds), name,
                     t_selector & levelMask);
        std::vfprintf(m_file, format, args);
        std::fputc('\n', m_file);
        std::fflush(m_file);
    }

private:
    // print does not get the module and level; the check before it, on the same thread, did.
    static thread_local unsigned t_selector;

    std::mutex m_mutex;
    unsigned m_level = defaultLevel;
    std::FILE* m_file = stderr;
    // Plain arrays: other parts of the process may log while it ends, after this library's destructors.
    std::array<std::array<char, 32>, 32> m_modules{};
    std::size_t m_moduleCount = 0;
};

thread_local unsigned Log::t_selector = 0;

LogObject makeLogObject()
{
    LogObject object{};
    static Log log;
    object.context = &log;
    object.registerModule = [](void* context, int, const char* name, int* idOut) {
        if (context == nullptr || idOut == nullptr) {
            return -1;
        }
        *idOut = static_cast<Log*>(context)->registerModule(name);
        return 0;
    };
    object.checkLevel = [](void* context, unsigned selector, int, const char*, int) {
        return context != nullptr && static_cast<Log*>(context)->prints(selector) ? 0 : 1;
    };
    object.print = [](void* context, const char* format, va_list args) {
        if (context != nullptr && format != nullptr) {
            static_cast<Log*>(context)->print(format, args);
        }
    };
    return object;
}

} // namespace

TRELLOG_API int LogTrace_GetGlobalObject(int reserved, LogObject** out)
{
    if (reserved != 0 || out == nullptr) {
        return -1;
    }
    static LogObject object = makeLogObject();
    *out = &object;
    return 0;
}
