#include "doubles/VirtualTime.h"

#include <algorithm>
#include <cassert>

namespace keldra {

MediaTime VirtualTime::Clock::now() const {
    return MediaTime(std::chrono::duration_cast<std::chrono::microseconds>(sinceBoot).count(), timescale);
}

Executor& VirtualTime::queue(const std::string& name, std::size_t bound) {
    auto& slot = m_queues[name];
    if (!slot)
        slot = std::make_unique<Queue>(*this, bound);
    return *slot;
}

void VirtualTime::run(Queue* queue, const Work& work) {
    Queue* const before = std::exchange(m_current, queue);
    work();
    m_current = before;
}

void VirtualTime::settle() {
    while (!m_posted.empty()) {
        const Posted next = std::move(m_posted.front());
        m_posted.pop_front();
        run(next.queue, next.work);
    }
}

void VirtualTime::advance(Duration duration) {
    const Duration target = m_clock->sinceBoot + duration;
    settle();
    while (!m_due.empty() && m_due.begin()->first.first <= target) {
        auto node = m_due.extract(m_due.begin());
        const auto [due, number] = node.key();
        m_clock->sinceBoot = std::max(m_clock->sinceBoot, due);
        const Due entry = node.mapped();
        if (entry.period > Duration::zero())
            insert(number, due + entry.period, entry);
        run(entry.queue, entry.work);
        settle();
    }
    m_clock->sinceBoot = target;
}

void VirtualTime::insert(std::uint64_t number, Duration due, Due entry) {
    m_due[{due, number}] = std::move(entry);
}

Timer VirtualTime::arm(Queue* queue, Duration first, Duration period, Work work) {
    const std::uint64_t number = m_nextNumber++;
    insert(number, m_clock->sinceBoot + first, Due{queue, period, std::move(work)});
    return Timer([this, number, isAlive = std::weak_ptr<bool>(m_isAlive)] {
        if (!isAlive.expired())
            std::erase_if(m_due, [number](const auto& entry) { return entry.first.second == number; });
    });
}

void VirtualTime::Queue::post(Work work) {
    m_time.m_posted.push_back({this, std::move(work)});
}

bool VirtualTime::Queue::tryPost(Work work) {
    const auto waiting = std::count_if(m_time.m_posted.begin(), m_time.m_posted.end(),
                                       [this](const Posted& posted) { return posted.queue == this; });
    if (std::size_t(waiting) >= m_bound)
        return false;
    post(std::move(work));
    return true;
}

void VirtualTime::Queue::sync(const Work& work) {
    if (!isCurrent())
        m_time.settle();
    m_time.run(this, work);
}

Timer VirtualTime::Queue::every(Duration period, Work work) {
    return m_time.arm(this, period, period, std::move(work));
}

Timer VirtualTime::VirtualScheduler::after(Duration delay, Work work) {
    return m_time.arm(m_time.mainQueueObject(), delay, Duration::zero(), std::move(work));
}

Timer VirtualTime::VirtualScheduler::every(Duration period, Work work) {
    return m_time.arm(m_time.mainQueueObject(), period, period, std::move(work));
}

} // namespace keldra
