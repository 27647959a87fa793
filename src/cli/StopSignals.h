#pragma once

#include <QObject>

#include <functional>

class QSocketNotifier;

namespace keldra {

/// Turns Ctrl-C and SIGTERM into calls on the main thread while it lives. One at a time; main thread.
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
