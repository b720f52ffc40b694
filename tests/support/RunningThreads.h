#pragma once

#include <QDir>

#ifdef Q_OS_WIN
#include <windows.h>

#include <tlhelp32.h>
#endif

/** Returns the number of threads of this process; 0 where the system does not say. */
inline int runningThreads()
{
#ifdef Q_OS_WIN
    int number = 0;
    const HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 each{};
    each.dwSize = sizeof(each);
    for (BOOL more = Thread32First(all, &each); more != FALSE; more = Thread32Next(all, &each)) {
        number += each.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    CloseHandle(all);
    return number;
#else
    return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
#endif
}
