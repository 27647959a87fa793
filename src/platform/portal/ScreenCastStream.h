#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

namespace keldra {

/// A picture of the screen where PipeWire put it.
struct ScreenCastPicture {
    const std::uint8_t* data = nullptr;
    int strideBytes = 0;
    int width = 0;
    int height = 0;
    /// Red comes before blue; otherwise the other way round.
    bool isRedFirst = false;
};

/// Takes the pictures of one stream of PipeWire's, on a thread of its own.
///
/// Threads: everything is told on that thread; after the destructor nothing is told.
class ScreenCastStream {
public:
    struct Events {
        /// Reads the picture before it returns.
        std::function<void(const ScreenCastPicture&)> picture;
        /// At most once: no picture will come any more, and why.
        std::function<void(const char* reason)> ended;
        /// Some sixty times a second, for what `picture` left to do.
        std::function<void()> tick;
    };

    /// `descriptor` is a connection to PipeWire, and the stream's from now on.
    ScreenCastStream(int descriptor, std::uint32_t node, int framesPerSecond, Events events);
    ~ScreenCastStream();
    ScreenCastStream(const ScreenCastStream&) = delete;
    ScreenCastStream& operator=(const ScreenCastStream&) = delete;

private:
    struct Loop;
    std::unique_ptr<Loop> m_loop;
};

} // namespace keldra
