#include "doubles/ChildProcess.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace keldra {
namespace {

constexpr int patienceMilliseconds = 10'000;

} // namespace

ChildProcess::ChildProcess(std::vector<std::string> command) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return;
    std::vector<char*> arguments;
    for (std::string& each : command)
        arguments.push_back(each.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    if (posix_spawnp(&m_process, arguments[0], &actions, nullptr, arguments.data(), environ) != 0)
        m_process = 0;
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    m_output = ends[0];
}

ChildProcess::~ChildProcess() {
    close();
    if (m_output >= 0)
        ::close(m_output);
}

std::string ChildProcess::readLine() {
    std::size_t end = 0;
    while ((end = m_read.find('\n')) == std::string::npos) {
        pollfd source{m_output, POLLIN, 0};
        char bytes[4096];
        if (poll(&source, 1, patienceMilliseconds) <= 0)
            return {};
        const ssize_t count = read(m_output, bytes, sizeof bytes);
        if (count <= 0)
            return {};
        m_read.append(bytes, std::size_t(count));
    }
    const std::string line = m_read.substr(0, end);
    m_read.erase(0, end + 1);
    return line;
}

void ChildProcess::close() {
    if (m_process > 0)
        kill(m_process, SIGKILL);
    wait();
}

void ChildProcess::terminate() {
    if (m_process > 0)
        kill(m_process, SIGTERM);
    wait();
}

int ChildProcess::wait() {
    int status = 0;
    if (m_process <= 0 || waitpid(m_process, &status, 0) != m_process)
        return -1;
    m_process = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace keldra
