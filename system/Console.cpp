#include "Console.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace Console {

#ifdef _WIN32

void showUtf8()
{
    SetConsoleOutputCP(CP_UTF8);
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
