#include "platform/x11/FramePool.h"

#include "imaging/SurplusCount.h"
#include "platform/x11/X11Error.h"

#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>
#include <xcb/shm.h>

namespace keldra {
namespace {

constexpr int depthWithAlpha = 32;

/// A mapping of anonymous memory that can be handed to another process.
class SharedMemory {
public:
    static Result<SharedMemory> make(std::size_t size) {
        SharedMemory memory;
        memory.m_size = size;
        memory.m_descriptor = memfd_create("keldra-frame", MFD_CLOEXEC);
        if (memory.m_descriptor < 0 || ftruncate(memory.m_descriptor, off_t(size)) != 0)
            return fail(systemError(errno, "shared memory"));
        memory.m_data = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, memory.m_descriptor, 0);
        if (memory.m_data == MAP_FAILED)
            return fail(systemError(errno, "shared memory"));
        return memory;
    }
    SharedMemory(SharedMemory&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
        , m_data(std::exchange(other.m_data, MAP_FAILED))
        , m_size(other.m_size) {}
    ~SharedMemory() {
        if (m_data != MAP_FAILED)
            munmap(m_data, m_size);
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    SharedMemory(const SharedMemory&) = delete;

    std::uint8_t* data() const { return static_cast<std::uint8_t*>(m_data); }
    /// The system takes the memory back, from the other process too, until it is written to again. It reads as zeros.
    void giveBack() const { (void)madvise(m_data, m_size, MADV_REMOVE); }
    /// For libxcb, which closes what it sends.
    int takeDescriptor() { return std::exchange(m_descriptor, -1); }

private:
    SharedMemory() = default;
    int m_descriptor = -1;
    void* m_data = MAP_FAILED;
    std::size_t m_size = 0;
};

} // namespace

struct FramePool::Segments {
    struct Segment {
        SharedMemory memory;
        xcb_shm_seg_t id;
        xcb_render_picture_t picture;
    };
    std::shared_ptr<WakeUp> wakeUp;
    std::vector<Segment> all;
    mutable std::mutex lock;
    /// The one that came back last is taken first, so that the others' memory can go.
    std::vector<std::size_t> free;
    SurplusCount surplus;
};

Result<std::unique_ptr<FramePool>> FramePool::make(std::shared_ptr<X11Connection> connection,
                                                   xcb_render_pictformat_t argb32, int width, int height, int limit,
                                                   std::shared_ptr<WakeUp> wakeUp) {
    std::unique_ptr<FramePool> pool(new FramePool);
    pool->m_connection = std::move(connection);
    pool->m_width = width;
    pool->m_height = height;
    pool->m_segments = std::make_shared<Segments>();
    pool->m_segments->wakeUp = std::move(wakeUp);
    const X11Connection& x = *pool->m_connection;
    if (!x.extensions().sharedPixmaps) {
        pool->m_serverPixmap = x.newID();
        pool->m_serverPicture = x.newID();
        TRY(x.check(xcb_create_pixmap_checked(x.raw(), depthWithAlpha, pool->m_serverPixmap, x.root(),
                                              std::uint16_t(width), std::uint16_t(height)),
                    "The X server has no memory for a frame"));
        xcb_render_create_picture(x.raw(), pool->m_serverPicture, pool->m_serverPixmap, argb32, 0, nullptr);
    }
    for (int i = 0; i < limit; ++i)
        TRY(pool->addSegment(argb32));
    return pool;
}

FramePool::~FramePool() {
    const X11Connection& x = *m_connection;
    for (const Segments::Segment& segment : m_segments->all) {
        if (m_serverPicture == 0)
            xcb_render_free_picture(x.raw(), segment.picture);
        xcb_shm_detach(x.raw(), segment.id);
    }
    if (m_serverPicture != 0) {
        xcb_render_free_picture(x.raw(), m_serverPicture);
        xcb_free_pixmap(x.raw(), m_serverPixmap);
    }
}

Result<void> FramePool::addSegment(xcb_render_pictformat_t argb32) {
    const X11Connection& x = *m_connection;
    TRY_LET(SharedMemory memory, SharedMemory::make(std::size_t(m_width) * std::size_t(m_height) * 4));
    const xcb_shm_seg_t id = x.newID();
    TRY(x.check(xcb_shm_attach_fd_checked(x.raw(), id, memory.takeDescriptor(), 0),
                "The X server cannot share memory"));
    xcb_render_picture_t picture = m_serverPicture;
    if (picture == 0) {
        const xcb_pixmap_t pixmap = x.newID();
        picture = x.newID();
        xcb_shm_create_pixmap(x.raw(), pixmap, x.root(), std::uint16_t(m_width), std::uint16_t(m_height),
                              depthWithAlpha, id, 0);
        TRY(x.check(xcb_render_create_picture_checked(x.raw(), picture, pixmap, argb32, 0, nullptr),
                    "The X server cannot paint into shared memory"));
        xcb_free_pixmap(x.raw(), pixmap);
    }
    m_segments->free.push_back(m_segments->all.size());
    m_segments->all.push_back({std::move(memory), id, picture});
    return {};
}

bool FramePool::hasFree() const {
    const std::lock_guard guard(m_segments->lock);
    return !m_segments->free.empty();
}

PooledFrame FramePool::take() {
    std::size_t index = 0;
    {
        const std::lock_guard guard(m_segments->lock);
        index = m_segments->free.back();
        m_segments->free.pop_back();
        const int unneeded = m_segments->surplus.note(int(m_segments->free.size()));
        for (int i = 0; i < unneeded; ++i)
            m_segments->all[m_segments->free[std::size_t(i)]].memory.giveBack();
    }
    const Segments::Segment& segment = m_segments->all[index];
    PixelBuffer::Planes planes;
    planes[0] = {segment.memory.data(), std::ptrdiff_t(m_width) * 4};
    std::shared_ptr<const void> loan(segment.memory.data(), [segments = m_segments, index](const void*) {
        {
            const std::lock_guard guard(segments->lock);
            segments->free.push_back(index);
        }
        segments->wakeUp->wake();
    });
    return {PixelBuffer::wrap(PixelFormat::bgra, m_width, m_height, planes, std::move(loan)), segment.picture,
            segment.id};
}

Result<void> FramePool::finish(const PooledFrame& frame) {
    const X11Connection& x = *m_connection;
    if (m_serverPicture == 0) {
        x.roundTrip();
    } else {
        const auto request =
            xcb_shm_get_image(x.raw(), m_serverPixmap, 0, 0, std::uint16_t(m_width), std::uint16_t(m_height), ~0u,
                              XCB_IMAGE_FORMAT_Z_PIXMAP, frame.segment, 0);
        if (!x.reply(xcb_shm_get_image_reply, request) && !x.isBroken())
            return fail(x11Error(X11ErrorCode::requestFailed, "The X server cannot hand over a frame."));
    }
    if (x.isBroken())
        return fail(x11Error(X11ErrorCode::connectionLost, "The X display went away."));
    return {};
}

} // namespace keldra
