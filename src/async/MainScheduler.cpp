#include "async/MainScheduler.h"

#include <QPointer>
#include <QSocketNotifier>

#include <algorithm>
#include <sys/timerfd.h>
#include <unistd.h>

namespace keldra {
namespace {

/// A timerfd in the main loop.
class KernelTimer : public QObject {
public:
    KernelTimer(Duration first, Duration period, Work work)
        : m_descriptor(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC))
        , m_notifier(m_descriptor, QSocketNotifier::Read)
        , m_work(std::move(work)) {
        // Zero would disarm the timer.
        const itimerspec times{toTimespec(period), toTimespec(std::max(first, Duration(1)))};
        timerfd_settime(m_descriptor, 0, &times, nullptr);
        connect(&m_notifier, &QSocketNotifier::activated, this, &KernelTimer::wake);
    }
    ~KernelTimer() override { ::close(m_descriptor); }

    /// The work does not run again. Deletion waits for the next turn, since the work itself may be what cancels.
    void cancel() {
        m_isCancelled = true;
        m_notifier.setEnabled(false);
        deleteLater();
    }

private:
    static timespec toTimespec(Duration duration) {
        const auto seconds = std::chrono::floor<std::chrono::seconds>(duration);
        return {time_t(seconds.count()), long((duration - seconds).count())};
    }

    void wake() {
        // Reading takes all missed expirations at once, so late runs are left out and due times stay exact.
        std::uint64_t expirations = 0;
        if (m_isCancelled || ::read(m_descriptor, &expirations, sizeof expirations) != sizeof expirations)
            return;
        m_work();
    }

    int m_descriptor;
    QSocketNotifier m_notifier;
    Work m_work;
    bool m_isCancelled = false;
};

Timer ownedBy(KernelTimer* timer) {
    return Timer([guarded = QPointer<KernelTimer>(timer)] {
        if (guarded)
            guarded->cancel();
    });
}

} // namespace

Timer MainScheduler::after(Duration delay, Work work) {
    return ownedBy(new KernelTimer(delay, Duration::zero(), std::move(work)));
}

Timer MainScheduler::every(Duration period, Work work) {
    return ownedBy(new KernelTimer(period, period, std::move(work)));
}

} // namespace keldra
