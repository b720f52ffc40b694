#pragma once

/** Ctrl-C (SIGINT, SIGTERM) as a flag, so that a program can end what it does in good order. */
namespace InterruptFlag {

/** From now on the signals raise the flag instead of ending the program. */
void install();

bool raised();

} // namespace InterruptFlag
