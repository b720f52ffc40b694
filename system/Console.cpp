#include "system/Console.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace Console {

#ifdef _WIN32

Utf8Output::Utf8Output() : m_before(GetConsoleOutputCP())
{
    SetConsoleOutputCP(CP_UTF8);
}

Utf8Output::~Utf8Output()
{
    SetConsoleOutputCP(m_before);
}

bool isTerminal(std::FILE* stream)
{
    return _isatty(_fileno(stream)) != 0;
}

#else

Utf8Output::Utf8Output() = default;
Utf8Output::~Utf8Output() = default;

bool isTerminal(std::FILE* stream)
{
    return isatty(fileno(stream)) != 0;
}

#endif

} // namespace Console
