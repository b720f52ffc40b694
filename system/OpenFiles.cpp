#include "system/OpenFiles.h"

#include <algorithm>
#include <limits>

#ifndef _WIN32
#include <sys/resource.h>
#endif

void OpenFiles::raiseLimit()
{
#ifndef _WIN32
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur < files.rlim_max) {
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files);
    }
#endif
}

int OpenFiles::limit()
{
    constexpr int most = std::numeric_limits<int>::max();
#ifndef _WIN32
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0) {
        return static_cast<int>(std::min(files.rlim_cur, static_cast<rlim_t>(most)));
    }
#endif
    return most;
}
