#include "system/Console.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <csignal>
#include <termios.h>
#include <unistd.h>
#endif

#include <array>

namespace Console {

namespace {

constexpr std::size_t maxPassword = 1024; // bytes, or characters

QString withoutLineEnd(QString line)
{
    while (line.endsWith(QLatin1Char('\n')) || line.endsWith(QLatin1Char('\r'))) {
        line.chop(1);
    }
    return line;
}

} // namespace

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

std::optional<QString> readPassword(const char* prompt)
{
    HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    DWORD before = 0;
    if (GetConsoleMode(input, &before) == 0) {
        return std::nullopt;
    }
    std::fputs(prompt, stderr);
    SetConsoleMode(input, (before | ENABLE_LINE_INPUT) & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
    std::array<wchar_t, maxPassword> typed{};
    DWORD count = 0;
    const bool read =
        ReadConsoleW(input, typed.data(), static_cast<DWORD>(typed.size()), &count, nullptr) != 0 &&
        count > 0;
    SetConsoleMode(input, before);
    std::fputs("\n", stderr);
    return read
               ? std::optional(withoutLineEnd(QString::fromWCharArray(typed.data(), static_cast<int>(count))))
               : std::nullopt;
}

#else

Utf8Output::Utf8Output() = default;
Utf8Output::~Utf8Output() = default;

bool isTerminal(std::FILE* stream)
{
    return isatty(fileno(stream)) != 0;
}

namespace {

volatile std::sig_atomic_t caughtSignal = 0;

extern "C" void catchSignal(int signal)
{
    caughtSignal = signal;
}

} // namespace

std::optional<QString> readPassword(const char* prompt)
{
    termios before{};
    if (tcgetattr(STDIN_FILENO, &before) != 0) {
        return std::nullopt;
    }
    std::fputs(prompt, stderr);
    termios silent = before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    // Ctrl-C must not leave a terminal that shows nothing any more.
    caughtSignal = 0;
    struct sigaction interrupted
    {
    };
    interrupted.sa_handler = catchSignal; // without SA_RESTART: the reading ends
    struct sigaction handlerBefore
    {
    };
    sigaction(SIGINT, &interrupted, &handlerBefore);
    std::array<char, maxPassword> typed{};
    const bool read = std::fgets(typed.data(), static_cast<int>(typed.size()), stdin) != nullptr;
    sigaction(SIGINT, &handlerBefore, nullptr);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
    std::fputs("\n", stderr);
    if (caughtSignal != 0) {
        std::raise(caughtSignal);
    }
    return read ? std::optional(withoutLineEnd(QString::fromLocal8Bit(typed.data()))) : std::nullopt;
}

#endif

} // namespace Console
