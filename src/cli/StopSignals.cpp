#include "cli/StopSignals.h"

#include <QSocketNotifier>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace keldra {
namespace {

constexpr int stopSignals[] = {SIGINT, SIGTERM, SIGHUP};

/// All that a signal handler may touch.
std::atomic<int> wakeDescriptor = -1;

void wake(int) {
    const int savedErrno = errno;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(wakeDescriptor, &byte, 1);
    errno = savedErrno;
}

/// As nohup has it: the program goes on when its terminal closes. Of the others nobody means it: what scripts start in
/// the background finds Ctrl-C ignored, and is to be interrupted all the same.
bool isToBeIgnored(int number) {
    struct sigaction present {};
    sigaction(number, nullptr, &present);
    return number == SIGHUP && present.sa_handler == SIG_IGN;
}

void install(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int number : stopSignals)
        if (!isToBeIgnored(number))
            sigaction(number, &action, nullptr);
}

} // namespace

StopSignals::StopSignals(std::function<void()> onStop) : m_onStop(std::move(onStop)) {
    int ends[2] = {-1, -1};
    // Without a pipe the signals keep their usual effect: they end the program.
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    wakeDescriptor = m_writeEnd;
    m_notifier = new QSocketNotifier(m_readEnd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char bytes[16];
        while (::read(m_readEnd, bytes, sizeof bytes) > 0) {
        }
        m_onStop();
    });
    install(wake);
}

StopSignals::~StopSignals() {
    if (m_readEnd < 0)
        return;
    install(SIG_IGN);
    wakeDescriptor = -1;
    delete m_notifier;
    ::close(m_readEnd);
    ::close(m_writeEnd);
}

} // namespace keldra
