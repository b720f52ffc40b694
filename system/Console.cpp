#include "Console.h"

#ifdef _WIN32
#include <cstdlib>

#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace Console {

#ifdef _WIN32

void showUtf8()
{
    static const UINT before = GetConsoleOutputCP(); // 0 without a console
    SetConsoleOutputCP(CP_UTF8);
    std::atexit([] { SetConsoleOutputCP(before); });
}

bool isTerminal(std::FILE* stream)
{
    return _isatty(_fileno(stream)) != 0;
}

#else

void showUtf8() {}

bool isTerminal(std::FILE* stream)
{
    return isatty(fileno(stream)) != 0;
}

#endif

} // namespace Console
