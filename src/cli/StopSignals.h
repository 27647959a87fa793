#pragma once

#include <QObject>

#include <functional>

class QSocketNotifier;

namespace keldra {

/// Turns Ctrl-C, SIGTERM and the end of the terminal into calls on the main thread while it lives; the end of the
/// terminal only where it was not ignored before. After its life they do nothing: the program is on its way out, and
/// one that comes late must not turn a good end into a bad one. One at a time; main thread.
class StopSignals : public QObject {
public:
    explicit StopSignals(std::function<void()> onStop);
    ~StopSignals() override;

private:
    int m_readEnd = -1;
    int m_writeEnd = -1;
    QSocketNotifier* m_notifier = nullptr;
    std::function<void()> m_onStop;
};

} // namespace keldra
