#pragma once

#include <QString>

#include <cstdio>
#include <optional>

/** The terminal that a program was started from. */
namespace Console {

/** Makes the terminal show UTF-8, which our programs write on every system, during its lifetime. */
class Utf8Output
{
public:
    Utf8Output();
    ~Utf8Output();
    Utf8Output(const Utf8Output&) = delete;
    Utf8Output& operator=(const Utf8Output&) = delete;

private:
    [[maybe_unused]] unsigned m_before = 0; ///< The code page before, on Windows; 0 without a console.
};

/** Returns whether a stream is a terminal, where a line can be overwritten, and not a file or a pipe. */
bool isTerminal(std::FILE* stream);

/**
 * Asks for a password at the terminal, which does not show what is typed. A signal that ends programs
 * (Ctrl-C, SIGTERM, a terminal that is closed) ends the question: the terminal is as it was before when the
 * program gets the signal.
 *
 * @param prompt written to stderr first
 * @return empty when standard input is no terminal, or ends, and after a signal that the program survives
 */
std::optional<QString> readPassword(const char* prompt);

} // namespace Console
