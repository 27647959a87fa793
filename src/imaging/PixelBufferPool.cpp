#include "imaging/PixelBufferPool.h"

#include "base/Recycling.h"
#include "imaging/SurplusCount.h"

#include <mutex>
#include <vector>

namespace keldra {

struct PixelBufferPool::State {
    PixelFormat format;
    int width;
    int height;
    int limit;
    std::mutex lock;
    int made = 0;
    /// The one that came back last is taken first, so that the others can go.
    std::vector<PixelBuffer> idle;
    SurplusCount surplus;
};

PixelBufferPool::PixelBufferPool(PixelFormat format, int width, int height, int limit)
    : m_state(std::make_shared<State>()) {
    m_state->format = format;
    m_state->width = width;
    m_state->height = height;
    m_state->limit = limit;
    m_state->idle.reserve(std::size_t(limit));
}

PixelBuffer PixelBufferPool::take() {
    PixelBuffer buffer;
    // Let go after the lock.
    std::vector<PixelBuffer> unneeded;
    {
        const std::lock_guard guard(m_state->lock);
        if (!m_state->idle.empty()) {
            buffer = std::move(m_state->idle.back());
            m_state->idle.pop_back();
        } else if (m_state->made < m_state->limit) {
            m_state->made += 1;
            buffer = PixelBuffer::allocate(m_state->format, m_state->width, m_state->height);
        } else {
            return {};
        }
        const int count = m_state->surplus.note(int(m_state->idle.size()));
        const auto end = m_state->idle.begin() + count;
        unneeded.assign(m_state->idle.begin(), end);
        m_state->idle.erase(m_state->idle.begin(), end);
        m_state->made -= count;
    }
    PixelBuffer::Planes planes;
    for (int plane = 0; plane < PixelBuffer::planeCount(m_state->format); ++plane)
        planes[plane] = {buffer.mutableData(plane), buffer.strideBytes(plane)};
    // The handle given out returns the memory, not the last copy of `buffer`.
    const auto takeBack = [state = m_state, buffer](const void*) {
        const std::lock_guard guard(state->lock);
        state->idle.push_back(buffer);
    };
    std::shared_ptr<const void> loan(static_cast<const void*>(planes[0].data), takeBack, Recycling<std::byte>());
    return PixelBuffer::wrap(m_state->format, m_state->width, m_state->height, planes, std::move(loan));
}

PixelFormat PixelBufferPool::format() const {
    return m_state->format;
}
int PixelBufferPool::width() const {
    return m_state->width;
}
int PixelBufferPool::height() const {
    return m_state->height;
}

} // namespace keldra
