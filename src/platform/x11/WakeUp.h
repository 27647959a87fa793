#pragma once

namespace keldra {

/// Wakes a thread that waits in poll(): the descriptor is readable from wake() to clear(). wake() is for any thread.
class WakeUp {
public:
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    int descriptor() const { return m_descriptor; }
    void wake();
    void clear();

private:
    int m_descriptor;
};

} // namespace keldra
