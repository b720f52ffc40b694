#pragma once

/** Ends a program that used sound: what it printed is written out, static destructors do not run. Last, on
 * the main thread, when the program's own objects are gone. @param status the exit status, 0 to 255 */
[[noreturn]] void endProgram(int status);
