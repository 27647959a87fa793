#include "media/FrameWindow.h"

#include "media/MediaError.h"

namespace keldra {

bool FrameWindow::enter() {
    std::unique_lock guard(m_lock);
    m_changed.wait(guard, [this] { return m_stopReason || m_underWay < m_capacity; });
    if (m_stopReason)
        return false;
    m_underWay += 1;
    return true;
}

void FrameWindow::deliver(std::int64_t index, Frame frame) {
    const std::lock_guard guard(m_lock);
    if (m_stopReason)
        return;
    placeOf(index) = std::move(frame);
    m_changed.notify_all();
}

void FrameWindow::deliver(std::int64_t index, FrameRequest::Outcome outcome) {
    if (auto* picture = std::get_if<PixelBuffer>(&outcome); picture != nullptr && *picture)
        deliver(index, Frame(std::move(*picture)));
    else if (auto* error = std::get_if<Error>(&outcome))
        stop(std::move(*error));
    else
        stop(mediaError(MediaError::noPicture, "A frame could not be composed."));
}

std::optional<FrameWindow::Frame> FrameWindow::take(std::int64_t index) {
    std::unique_lock guard(m_lock);
    m_changed.wait(guard, [&] { return m_stopReason || placeOf(index); });
    if (m_stopReason)
        return std::nullopt;
    return std::exchange(placeOf(index), std::nullopt);
}

void FrameWindow::leave() {
    const std::lock_guard guard(m_lock);
    m_underWay -= 1;
    m_changed.notify_all();
}

void FrameWindow::stop(Error reason) {
    std::vector<std::optional<Frame>> dropped(m_arrived.size());
    const std::lock_guard guard(m_lock);
    if (!m_stopReason)
        m_stopReason = std::move(reason);
    dropped.swap(m_arrived);
    m_changed.notify_all();
}

std::optional<Error> FrameWindow::stopReason() const {
    const std::lock_guard guard(m_lock);
    return m_stopReason;
}

} // namespace keldra
