#pragma once

#include <algorithm>
#include <deque>
#include <iterator>
#include <mutex>
#include <vector>

namespace keldra {

/// First in, first out, for any number of threads. It has no bound.
template <typename Element>
class ConcurrentQueue {
public:
    void append(Element element) {
        const std::lock_guard guard(m_lock);
        m_elements.push_back(std::move(element));
    }

    void append(std::vector<Element> elements) {
        const std::lock_guard guard(m_lock);
        std::move(elements.begin(), elements.end(), std::back_inserter(m_elements));
    }

    /// Removes up to `count` from the front; no element is ever given twice.
    std::vector<Element> take(std::size_t count) {
        const std::lock_guard guard(m_lock);
        const auto end = m_elements.begin() + std::min(count, m_elements.size());
        std::vector<Element> taken(std::make_move_iterator(m_elements.begin()), std::make_move_iterator(end));
        m_elements.erase(m_elements.begin(), end);
        return taken;
    }

private:
    std::mutex m_lock;
    std::deque<Element> m_elements;
};

} // namespace keldra
