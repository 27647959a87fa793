#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace keldra {

/// A program that the test runs beside itself; it is killed with this object. Not QProcess, after whose way of forking
/// the thread sanitizer is blind.
class ChildProcess {
public:
    /// The program's path or name, then its arguments.
    explicit ChildProcess(std::vector<std::string> command);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool isStarted() const { return m_process > 0; }
    /// The next line of its output, without its end; empty when none comes in time.
    std::string readLine();
    /// Kills it and returns when it is gone.
    void close();
    /// Asks it to end, and returns when it has.
    void terminate();
    /// Waits for its end; the exit status, or -1 when it was killed.
    int wait();

private:
    pid_t m_process = 0;
    int m_output = -1;
    std::string m_read;
};

} // namespace keldra
