#include "system/Console.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
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
volatile std::sig_atomic_t signalPipe = -1; ///< The end that is written to.

extern "C" void catchSignal(int signal)
{
    const int before = errno;
    caughtSignal = signal;
    [[maybe_unused]] const auto written = write(signalPipe, "", 1);
    errno = before;
}

/**
 * Catches the signals that end a program: they must not leave a terminal that shows nothing any more. A
 * thread that waits for input is woken by a pipe, as the signal may come to another thread, or before the
 * wait begins. One at a time.
 */
class SignalCatch
{
public:
    SignalCatch()
    {
        if (pipe(m_pipe.data()) == 0) {
            for (const int end : m_pipe) {
                fcntl(end, F_SETFD, FD_CLOEXEC);
                fcntl(end, F_SETFL, O_NONBLOCK);
            }
        }
        caughtSignal = 0;
        signalPipe = m_pipe[1];
        for (std::size_t i = 0; i < signals.size(); ++i) {
            struct sigaction caught
            {
            };
            caught.sa_handler = catchSignal;
            sigaction(signals[i], nullptr, &m_before[i]);
            if (m_before[i].sa_handler != SIG_IGN) { // as under nohup
                sigaction(signals[i], &caught, nullptr);
            }
        }
    }

    ~SignalCatch()
    {
        for (std::size_t i = 0; i < signals.size(); ++i) {
            sigaction(signals[i], &m_before[i], nullptr);
        }
        for (const int end : m_pipe) {
            close(end);
        }
    }
    SignalCatch(const SignalCatch&) = delete;
    SignalCatch& operator=(const SignalCatch&) = delete;

    /** Waits for a line of standard input. Returns it without its end, unless a signal or its end comes
     * first. */
    std::optional<QString> readLine() const
    {
        QByteArray line;
        while (!line.endsWith('\n') && line.size() < static_cast<int>(maxPassword)) {
            std::array<pollfd, 2> ready{{{STDIN_FILENO, POLLIN, 0}, {m_pipe[0], POLLIN, 0}}};
            const int count = poll(ready.data(), ready.size(), -1);
            if (caughtSignal != 0) {
                return std::nullopt;
            }
            if (count < 0 && errno == EINTR) {
                continue; // a signal that is none of these
            }
            std::array<char, maxPassword> typed{};
            const auto length = read(STDIN_FILENO, typed.data(), typed.size());
            if (length <= 0) {
                return std::nullopt;
            }
            line.append(typed.data(), static_cast<int>(length));
        }
        return withoutLineEnd(QString::fromLocal8Bit(line));
    }

private:
    static constexpr std::array<int, 4> signals{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

    std::array<int, 2> m_pipe{-1, -1};
    std::array<struct sigaction, signals.size()> m_before{};
};

} // namespace

std::optional<QString> readPassword(const char* prompt)
{
    termios before{};
    if (tcgetattr(STDIN_FILENO, &before) != 0) {
        return std::nullopt;
    }
    std::optional<QString> password;
    {
        const SignalCatch signals;
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
        std::fputs(prompt, stderr); // what is typed before is discarded
        password = signals.readLine();
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
        std::fputs("\n", stderr);
    }
    if (caughtSignal != 0) {
        std::raise(caughtSignal); // to whom it is for
    }
    return password;
}

#endif

} // namespace Console
