// A camera that is a program: it shows up in PipeWire like any other, with a moving picture that bears its number, and
// flashes at known moments and tells when. docs/test-devices.md says how to use it.

#include "devices/Program.h"
#include "scene/SceneLayout.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <spa/param/video/format-utils.h>

namespace keldra::test {
namespace {

constexpr const char* usage =
    "usage: keldra_test_camera [--name NODE] [--description TEXT] [--size WxH] [--rate HZ] [--every SECONDS]\n"
    "                          [--format yuy2|uyvy|nv12|i420|bgrx|rgbx]\n";
constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t flashLength = second / 10;
constexpr std::uint32_t plainRgb = 0xc83c8c;
constexpr std::uint32_t flashRgb = 0xffffff;
constexpr std::uint32_t barRgb = 0x28b428;
constexpr int barWidth = 32;

struct Encoding {
    const char* name;
    std::uint32_t format;
};
constexpr Encoding encodings[] = {{"yuy2", SPA_VIDEO_FORMAT_YUY2}, {"uyvy", SPA_VIDEO_FORMAT_UYVY},
                                  {"nv12", SPA_VIDEO_FORMAT_NV12}, {"i420", SPA_VIDEO_FORMAT_I420},
                                  {"bgrx", SPA_VIDEO_FORMAT_BGRx}, {"rgbx", SPA_VIDEO_FORMAT_RGBx}};

/// ITU-R BT.601, limited range: Y, U, V.
std::array<std::uint8_t, 3> planar(std::uint32_t rgb) {
    const double red = rgb >> 16 & 0xff;
    const double green = rgb >> 8 & 0xff;
    const double blue = rgb & 0xff;
    const double luma = 0.299 * red + 0.587 * green + 0.114 * blue;
    const auto byte = [](double value) { return std::uint8_t(std::lround(value)); };
    return {byte(16 + luma * 219 / 255), byte(128 + (blue - luma) * 112 / (255 * 0.886)),
            byte(128 + (red - luma) * 112 / (255 * 0.701))};
}

/// One picture of the camera.
struct Scene {
    int width;
    int height;
    std::uint32_t number;
    bool isFlash;

    std::uint32_t colourAt(int x, int y) const {
        using namespace keldra::scene;
        const int row = y - frameNumber.y;
        const int column = x - frameNumber.x;
        const int block = column / blockSize;
        if (row >= 0 && row < blockSize && column >= 0 && block <= frameNumber.bits)
            return isWhite(frameNumber, number, block) ? 0xffffff : 0;
        if (y < height / 4)
            return backgroundRgb;
        const int bar = int(number * 8 % std::uint32_t(width));
        return isFlash ? flashRgb : x >= bar && x < bar + barWidth ? barRgb : plainRgb;
    }
};

class Camera {
public:
    explicit Camera(const Words& words)
        : m_period(std::int64_t(double(second) / words.number("rate")))
        , m_rate(std::uint32_t(words.number("rate")))
        , m_flashPeriod(std::int64_t(words.number("every") * double(second)))
        , m_zero(hostNanoseconds())
        , m_node("Camera", properties(words),
                 {.fill = [this](pw_buffer& buffer) { fill(buffer); },
                  .nextCycle = [this](bool isFirst) { return nextCycle(isFirst); },
                  .formatChosen = [this](const spa_pod&) { chooseBuffers(); }}) {
        for (const Encoding& each : encodings)
            if (words.text("format") == each.name)
                m_format = each.format;
        if (m_format == 0 || std::sscanf(words.text("size").c_str(), "%dx%d", &m_width, &m_height) != 2 ||
            m_width < 432 || m_height < 64 || m_width % 2 != 0 || m_height % 2 != 0) {
            std::fputs(usage, stderr);
            std::exit(2);
        }
    }

    int run() {
        std::uint8_t bytes[1024];
        spa_pod_builder builder = SPA_POD_BUILDER_INIT(bytes, sizeof bytes);
        const spa_rectangle size{std::uint32_t(m_width), std::uint32_t(m_height)};
        const spa_fraction rate{m_rate, 1};
        const spa_pod* params[] = {static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
            SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw),
            SPA_FORMAT_VIDEO_format, SPA_POD_Id(m_format), SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size),
            SPA_FORMAT_VIDEO_framerate, SPA_POD_Fraction(&rate)))};
        return m_node.run(params, 1);
    }

private:
    static pw_properties* properties(const Words& words) {
        return pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_MEDIA_ROLE, "Camera", PW_KEY_NODE_NAME,
                                 words.text("name").c_str(), PW_KEY_NODE_DESCRIPTION, words.text("description").c_str(),
                                 nullptr);
    }

    bool isPlanar() const { return m_format == SPA_VIDEO_FORMAT_NV12 || m_format == SPA_VIDEO_FORMAT_I420; }
    bool isRgb() const { return m_format == SPA_VIDEO_FORMAT_BGRx || m_format == SPA_VIDEO_FORMAT_RGBx; }
    int stride() const { return isPlanar() ? m_width : isRgb() ? 4 * m_width : 2 * m_width; }
    int size() const { return isPlanar() ? m_width * m_height * 3 / 2 : stride() * m_height; }

    void chooseBuffers() {
        std::uint8_t bytes[1024];
        spa_pod_builder builder = SPA_POD_BUILDER_INIT(bytes, sizeof bytes);
        const spa_pod* params[] = {static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(4, 2, 8), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1), SPA_PARAM_BUFFERS_size,
            SPA_POD_Int(size()), SPA_PARAM_BUFFERS_stride, SPA_POD_Int(stride())))};
        pw_stream_update_params(m_node.stream(), params, 1);
    }

    std::int64_t nextCycle(bool isFirst) {
        if (isFirst)
            m_number = (hostNanoseconds() - m_zero) / m_period;
        ++m_number;
        return m_zero + m_number * m_period;
    }

    void fill(pw_buffer& buffer) {
        spa_data& data = buffer.buffer->datas[0];
        if (data.maxsize < std::uint32_t(size()))
            return;
        const std::int64_t shown = m_number * m_period;
        const bool isFlash = m_flashPeriod > 0 && shown >= m_flashPeriod && shown % m_flashPeriod < flashLength;
        const Scene scene{m_width, m_height, std::uint32_t(m_number) & 0xffffffU, isFlash};
        auto* target = static_cast<std::uint8_t*>(data.data);
        for (int y = 0; y < m_height; ++y)
            for (int x = 0; x < m_width; ++x)
                put(target, x, y, scene.colourAt(x, y));
        data.chunk->offset = 0;
        data.chunk->stride = stride();
        data.chunk->size = std::uint32_t(size());
        if (isFlash && !m_wasFlash) {
            std::printf("flash %lld\n", static_cast<long long>(hostNanoseconds() / 1000));
            std::fflush(stdout);
        }
        m_wasFlash = isFlash;
    }

    void put(std::uint8_t* target, int x, int y, std::uint32_t rgb) const {
        if (isRgb()) {
            const auto red = std::uint8_t(rgb >> 16);
            const auto blue = std::uint8_t(rgb);
            const bool isRedFirst = m_format == SPA_VIDEO_FORMAT_RGBx;
            const std::uint8_t pixel[] = {isRedFirst ? red : blue, std::uint8_t(rgb >> 8), isRedFirst ? blue : red, 0};
            std::copy_n(pixel, 4, target + y * stride() + 4 * x);
            return;
        }
        static std::uint32_t lastRgb = 0;
        static std::array<std::uint8_t, 3> last = planar(0);
        if (rgb != lastRgb)
            last = planar(lastRgb = rgb);
        const auto [luma, u, v] = last;
        const std::uint8_t chroma = x % 2 == 0 ? u : v;
        if (isPlanar()) {
            target[y * m_width + x] = luma;
            std::uint8_t* below = target + m_width * m_height;
            if (m_format == SPA_VIDEO_FORMAT_NV12)
                below[y / 2 * m_width + x] = chroma;
            else
                below[(x % 2 == 0 ? 0 : m_width * m_height / 4) + y / 2 * (m_width / 2) + x / 2] = chroma;
            return;
        }
        std::uint8_t* pair = target + y * stride() + 2 * x;
        const int lumaAt = m_format == SPA_VIDEO_FORMAT_YUY2 ? 0 : 1;
        pair[lumaAt] = luma;
        pair[1 - lumaAt] = chroma;
    }

    int m_width = 0;
    int m_height = 0;
    std::uint32_t m_format = 0;
    /// Nanoseconds.
    std::int64_t m_period;
    std::uint32_t m_rate;
    std::int64_t m_flashPeriod;
    std::int64_t m_zero;
    std::int64_t m_number = 0;
    bool m_wasFlash = false;
    DriverNode m_node;
};

} // namespace
} // namespace keldra::test

int main(int count, char** arguments) {
    using namespace keldra::test;
    const Words words(count, arguments, usage,
                      {{"name", "keldra-test-camera"},
                       {"description", "KELDRA test camera"},
                       {"size", "640x480"},
                       {"rate", "30"},
                       {"every", "1"},
                       {"format", "yuy2"}});
    return Camera(words).run();
}
