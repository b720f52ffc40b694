#pragma once

#include <string>
#include <sys/types.h>

/** A new folder that is removed at the end, by a process that outlives this one: also when this one is
 * killed. */
class ScratchFolder
{
public:
    /** Makes it in the system's folder for temporary files. Throws std::runtime_error. */
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /** Makes a folder inside it. @return its path */
    std::string makeFolder(const std::string& name) const;

private:
    std::string m_path;
    int m_alive = -1; ///< End of a pipe: it closes with this process.
    pid_t m_remover = -1;
};
