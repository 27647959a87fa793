#include "platform/portal/ScreenCastStream.h"

#include <algorithm>
#include <optional>
#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>
#include <unistd.h>

namespace keldra {
namespace {

constexpr int bytesPerPixel = 4;
constexpr timespec tickPeriod{0, 16'000'000};
/// Ten seconds: desktops show a picture at once, also of a screen that stands still.
constexpr int ticksUntilFirstPicture = 625;

const spa_pod* formatsWeTake(spa_pod_builder& builder, int framesPerSecond) {
    const spa_rectangle usual{1920, 1080};
    const spa_rectangle smallest{1, 1};
    const spa_rectangle largest{16384, 16384};
    const spa_fraction asItChanges{0, 1};
    const spa_fraction most{std::uint32_t(framesPerSecond), 1};
    return static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
        SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), SPA_FORMAT_VIDEO_format,
        SPA_POD_CHOICE_ENUM_Id(5, SPA_VIDEO_FORMAT_BGRx, SPA_VIDEO_FORMAT_BGRx, SPA_VIDEO_FORMAT_BGRA,
                               SPA_VIDEO_FORMAT_RGBx, SPA_VIDEO_FORMAT_RGBA),
        SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&usual, &smallest, &largest), SPA_FORMAT_VIDEO_framerate,
        SPA_POD_CHOICE_RANGE_Fraction(&asItChanges, &asItChanges, &most), SPA_FORMAT_VIDEO_maxFramerate,
        SPA_POD_CHOICE_RANGE_Fraction(&most, &asItChanges, &most)));
}

} // namespace

struct ScreenCastStream::Loop {
    Loop(int descriptor, std::uint32_t node, int framesPerSecond, Events events) : m_events(std::move(events)) {
        pw_init(nullptr, nullptr);
        m_thread = pw_thread_loop_new("KELDRA.ScreenCast", nullptr);
        pw_loop* loop = pw_thread_loop_get_loop(m_thread);
        m_timer = pw_loop_add_timer(
            loop, [](void* self, std::uint64_t) { static_cast<Loop*>(self)->tick(); }, this);
        m_context = pw_context_new(loop, nullptr, 0);
        pw_thread_loop_start(m_thread);
        pw_thread_loop_lock(m_thread);
        connect(descriptor, node, framesPerSecond);
        pw_thread_loop_unlock(m_thread);
    }

    ~Loop() {
        pw_thread_loop_stop(m_thread);
        // What is taken apart now tells so.
        m_hasEnded = true;
        if (m_stream != nullptr)
            pw_stream_destroy(m_stream);
        if (m_core != nullptr)
            pw_core_disconnect(m_core);
        if (m_context != nullptr)
            pw_context_destroy(m_context);
        pw_loop_destroy_source(pw_thread_loop_get_loop(m_thread), m_timer);
        pw_thread_loop_destroy(m_thread);
    }

private:
    void connect(int descriptor, std::uint32_t node, int framesPerSecond) {
        m_core = m_context != nullptr ? pw_context_connect_fd(m_context, descriptor, nullptr, 0) : nullptr;
        if (m_core == nullptr) {
            ::close(descriptor);
            return end("PipeWire does not answer");
        }
        m_stream = pw_stream_new(m_core, "KELDRA",
                                 pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY, "Capture",
                                                   PW_KEY_MEDIA_ROLE, "Screen", nullptr));
        pw_stream_add_listener(m_stream, &m_hook, &events(), this);
        std::uint8_t bytes[1024];
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, bytes, sizeof bytes);
        const spa_pod* formats[] = {formatsWeTake(builder, framesPerSecond)};
        constexpr auto flags =
            pw_stream_flags(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_DONT_RECONNECT);
        if (pw_stream_connect(m_stream, PW_DIRECTION_INPUT, node, flags, formats, 1) < 0)
            return end("PipeWire does not connect the stream");
        timespec period = tickPeriod;
        pw_loop_update_timer(pw_thread_loop_get_loop(m_thread), m_timer, &period, &period, false);
    }

    void tick() {
        if (!m_hasPicture && ++m_ticksWaited >= ticksUntilFirstPicture)
            end("no picture comes");
        m_events.tick();
    }

    static const pw_stream_events& events() {
        static const pw_stream_events heard = [] {
            pw_stream_events all{};
            all.version = PW_VERSION_STREAM_EVENTS;
            all.process = [](void* self) { static_cast<Loop*>(self)->take(); };
            all.param_changed = [](void* self, std::uint32_t id, const spa_pod* value) {
                if (id == SPA_PARAM_Format && value != nullptr)
                    static_cast<Loop*>(self)->useFormat(*value);
            };
            all.state_changed = [](void* self, pw_stream_state, pw_stream_state now, const char* error) {
                auto* loop = static_cast<Loop*>(self);
                if (now == PW_STREAM_STATE_ERROR)
                    loop->end(error != nullptr ? error : "an error without words");
                else if (now == PW_STREAM_STATE_UNCONNECTED && loop->m_format)
                    loop->end("the desktop ended the stream");
            };
            return all;
        }();
        return heard;
    }

    void useFormat(const spa_pod& value) {
        spa_video_info_raw format{};
        if (spa_format_video_raw_parse(&value, &format) < 0)
            return end("it has no format that we know");
        m_format = format;
        // Only memory that we can read: no handle of a graphics card's.
        std::uint8_t bytes[512];
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, bytes, sizeof bytes);
        const spa_pod* params[] = {static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(4, 2, 16), SPA_PARAM_BUFFERS_dataType,
            SPA_POD_CHOICE_FLAGS_Int(1 << SPA_DATA_MemPtr | 1 << SPA_DATA_MemFd)))};
        pw_stream_update_params(m_stream, params, 1);
    }

    /// Of several that wait only the newest is wanted.
    void take() {
        pw_buffer* newest = nullptr;
        while (pw_buffer* buffer = pw_stream_dequeue_buffer(m_stream)) {
            if (newest != nullptr)
                pw_stream_queue_buffer(m_stream, newest);
            newest = buffer;
        }
        if (newest == nullptr)
            return;
        if (m_format)
            deliver(newest->buffer->datas[0]);
        pw_stream_queue_buffer(m_stream, newest);
    }

    void deliver(const spa_data& data) {
        // A chunk without content only tells that the pointer moved.
        if (data.data == nullptr || data.chunk->size == 0 || data.chunk->offset > data.maxsize)
            return;
        ScreenCastPicture picture;
        picture.width = int(m_format->size.width);
        picture.height = int(m_format->size.height);
        picture.strideBytes = data.chunk->stride != 0 ? data.chunk->stride : picture.width * bytesPerPixel;
        picture.data = static_cast<const std::uint8_t*>(data.data) + data.chunk->offset;
        picture.isRedFirst = m_format->format == SPA_VIDEO_FORMAT_RGBx || m_format->format == SPA_VIDEO_FORMAT_RGBA;
        const std::size_t size = std::min(data.chunk->size, data.maxsize - data.chunk->offset);
        const bool isWhole = picture.strideBytes >= picture.width * bytesPerPixel && picture.height > 0 &&
                             size >= std::size_t(picture.strideBytes) * std::size_t(picture.height - 1) +
                                         std::size_t(picture.width) * bytesPerPixel;
        if (!isWhole)
            return;
        m_hasPicture = true;
        m_events.picture(picture);
    }

    void end(const char* reason) {
        if (!std::exchange(m_hasEnded, true))
            m_events.ended(reason);
    }

    const Events m_events;
    pw_thread_loop* m_thread = nullptr;
    pw_context* m_context = nullptr;
    pw_core* m_core = nullptr;
    pw_stream* m_stream = nullptr;
    spa_source* m_timer = nullptr;
    spa_hook m_hook{};
    std::optional<spa_video_info_raw> m_format;
    bool m_hasPicture = false;
    int m_ticksWaited = 0;
    bool m_hasEnded = false;
};

ScreenCastStream::ScreenCastStream(int descriptor, std::uint32_t node, int framesPerSecond, Events events)
    : m_loop(std::make_unique<Loop>(descriptor, node, framesPerSecond, std::move(events))) {}

ScreenCastStream::~ScreenCastStream() = default;

} // namespace keldra
