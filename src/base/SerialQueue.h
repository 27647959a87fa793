#pragma once

#include "base/Executor.h"

#include <cstddef>
#include <memory>
#include <string>

namespace keldra {

/// One named thread that runs what is posted, in order.
///
/// `bound` is how many pieces may wait before tryPost() refuses; post() is for control and always queues.
/// The destructor runs what is already queued, then joins the thread; it must not run on the queue itself.
class SerialQueue final : public Executor {
public:
    explicit SerialQueue(std::string name, std::size_t bound = 64);
    ~SerialQueue() override;
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    void post(Work work) override;
    bool tryPost(Work work) override;
    void sync(const Work& work) override;
    Timer every(Duration period, Work work) override;
    bool isCurrent() const override;

    const std::string& name() const;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace keldra
