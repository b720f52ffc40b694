#include "bench/relay/ServerProcess.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sched.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int startTime = 10'000; // ms

/** Never returns; between fork and exec no more than system calls. */
[[noreturn]] void become(char* const* arguments, char* const* environment, const char* folder, int output,
                         pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent && chdir(folder) == 0) {
        const int log = open("log", O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(output, STDOUT_FILENO);
        dup2(log, STDERR_FILENO);
        execve(arguments[0], arguments, environment);
    }
    _exit(127);
}

std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> made;
    for (std::string& text : texts) {
        made.push_back(text.data());
    }
    made.push_back(nullptr);
    return made;
}

} // namespace

ServerProcess::ServerProcess(const std::vector<std::string>& arguments,
                             const std::vector<std::string>& environment, const std::string& folder)
{
    std::vector<std::string> words = arguments;
    std::vector<std::string> variables = environment; // first: of two with a name the first one counts
    for (char** variable = environ; *variable != nullptr; ++variable) {
        variables.emplace_back(*variable);
    }
    const std::vector<char*> wordPointers = pointers(words);
    const std::vector<char*> variablePointers = pointers(variables);
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t parent = getpid();
    m_pid = fork();
    if (m_pid == 0) {
        become(wordPointers.data(), variablePointers.data(), folder.c_str(), ends[1], parent);
    }
    close(ends[1]);
    m_output = ends[0];
}

ServerProcess::~ServerProcess()
{
    kill(m_pid, SIGKILL); // its data are removed anyway
    waitpid(m_pid, nullptr, 0);
    close(m_output);
}

std::string ServerProcess::firstLine() const
{
    std::string line;
    pollfd waited{m_output, POLLIN, 0};
    char letter = 0;
    while (poll(&waited, 1, startTime) == 1 && read(m_output, &letter, 1) == 1 && letter != '\n') {
        line += letter;
    }
    return line;
}

bool ServerProcess::isRunning() const
{
    siginfo_t state{};
    return waitid(P_PID, static_cast<id_t>(m_pid), &state, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           state.si_pid == 0;
}

/** The folder with a folder for each thread. */
std::string ServerProcess::threads() const
{
    return "/proc/" + std::to_string(m_pid) + "/task";
}

void ServerProcess::equalise() const
{
    std::error_code gone; // a thread may end meanwhile
    const int policy = sched_getscheduler(0);
    sched_param priority{};
    sched_getparam(0, &priority);
    for (const auto& thread : std::filesystem::directory_iterator(threads(), gone)) {
        sched_setscheduler(std::stoi(thread.path().filename()), policy, &priority);
    }
}

ServerProcess::Times ServerProcess::times() const
{
    Times sum;
    std::error_code gone; // a thread may end meanwhile
    for (const auto& thread : std::filesystem::directory_iterator(threads(), gone)) {
        Times times;
        if (std::ifstream(thread.path() / "schedstat") >> times.run >> times.waited) {
            sum.run += times.run;
            sum.waited += times.waited;
        }
    }
    return sum;
}

std::uint64_t ServerProcess::residentBytes() const
{
    std::ifstream rollup("/proc/" + std::to_string(m_pid) + "/smaps_rollup");
    for (std::string word; rollup >> word;) {
        std::uint64_t kibibytes = 0;
        if (word == "Rss:" && rollup >> kibibytes) {
            return kibibytes << 10U;
        }
    }
    return 0;
}
