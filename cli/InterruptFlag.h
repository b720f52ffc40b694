#pragma once

/** A flag in place of the signals of Ctrl-C (SIGINT, SIGTERM), so that a program can end in order. */
namespace InterruptFlag {

/** Makes the signals raise the flag and no longer end the program. */
void install();

/** Returns whether a signal has come since install. */
bool raised();

/** Lowers the flag, for what a program still does after it. */
void lower();

} // namespace InterruptFlag
