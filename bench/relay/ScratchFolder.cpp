#include "bench/relay/ScratchFolder.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int attempts = 50;        // servers that are being killed may still write
constexpr unsigned pause = 100'000; // microseconds

[[noreturn]] void removeWhenAlone(int alive, const std::string& path)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        std::signal(signal, SIG_IGN);
    }
    char nothing = 0;
    while (read(alive, &nothing, 1) > 0) {
    }
    std::error_code error;
    for (int i = 0; i < attempts; ++i) {
        std::filesystem::remove_all(path, error);
        if (!error && !std::filesystem::exists(path)) {
            break;
        }
        usleep(pause);
    }
    _exit(0);
}

} // namespace

ScratchFolder::ScratchFolder() : m_path(std::filesystem::temp_directory_path() / "bench_relay.XXXXXX")
{
    int ends[2] = {-1, -1};
    if (mkdtemp(m_path.data()) == nullptr || pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no folder for temporary files");
    }
    m_remover = fork();
    if (m_remover == 0) {
        close(ends[1]);
        removeWhenAlone(ends[0], m_path);
    }
    close(ends[0]);
    m_alive = ends[1];
}

ScratchFolder::~ScratchFolder()
{
    close(m_alive);
    waitpid(m_remover, nullptr, 0);
}

std::string ScratchFolder::makeFolder(const std::string& name) const
{
    const std::filesystem::path made = std::filesystem::path(m_path) / name;
    std::filesystem::create_directory(made);
    return made;
}
