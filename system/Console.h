#pragma once

#include <cstdio>

/** The terminal that a program was started from. */
namespace Console {

/** Makes the terminal show UTF-8, which is what our programs write everywhere, until the program ends. Called
 * once, first. */
void showUtf8();

/** Whether a stream is a terminal, where a line can be renewed, rather than a file or a pipe. */
bool isTerminal(std::FILE* stream);

} // namespace Console
