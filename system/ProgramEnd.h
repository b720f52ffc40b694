#pragma once

/**
 * Ends a program that used sound: flushes the standard streams and runs no static destructors. Call it last,
 * on the main thread, after the program's own objects are destroyed.
 *
 * @param status the exit status, 0 to 255
 */
[[noreturn]] void endProgram(int status);
