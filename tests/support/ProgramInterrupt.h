#pragma once

#include <QProcess>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <csignal>
#endif

/** Sends a program what Ctrl-C in its terminal sends. @return whether that was possible */
inline bool interruptProgram(const QProcess& program)
{
#ifdef Q_OS_WIN
    // The event reaches all programs of a console, so this one joins the other's console and stops its own
    // ears.
    FreeConsole();
    return AttachConsole(static_cast<DWORD>(program.processId())) != 0 &&
           SetConsoleCtrlHandler(nullptr, TRUE) != 0 && GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0;
#else
    return ::kill(static_cast<pid_t>(program.processId()), SIGINT) == 0;
#endif
}
