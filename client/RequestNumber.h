#pragma once

#include <QtGlobal>

/**
 * Returns a number for a request to a server. Numbers rise and are given once in a process; the lower 32 bits
 * are never 0. Any thread.
 */
quint64 nextRequestNumber();
