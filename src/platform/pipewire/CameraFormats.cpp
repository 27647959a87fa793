#include "platform/pipewire/CameraFormats.h"

#include <array>
#include <libyuv.h>
#include <spa/param/video/format-utils.h>

namespace keldra {
namespace {

struct Wish {
    spa_rectangle smallest;
    spa_rectangle largest;
    spa_fraction slowest;
};

// Bubbles are small, but at twice the scale 720 lines are seen.
constexpr spa_rectangle wished{1280, 720};
constexpr spa_fraction wishedRate{30, 1};
constexpr spa_fraction fastest{60, 1};
constexpr std::array<Wish, 3> wishes{{
    {{960, 540}, {1920, 1080}, {20, 1}},
    {{160, 120}, {1920, 1080}, {15, 1}},
    {{1, 1}, {8192, 8192}, {0, 1}},
}};

struct RawName {
    CameraEncoding encoding;
    std::uint32_t name;
};
constexpr std::array<RawName, 8> rawNames{{
    {CameraEncoding::yuy2, SPA_VIDEO_FORMAT_YUY2},
    {CameraEncoding::uyvy, SPA_VIDEO_FORMAT_UYVY},
    {CameraEncoding::nv12, SPA_VIDEO_FORMAT_NV12},
    {CameraEncoding::i420, SPA_VIDEO_FORMAT_I420},
    {CameraEncoding::bgrx, SPA_VIDEO_FORMAT_BGRx},
    {CameraEncoding::bgrx, SPA_VIDEO_FORMAT_BGRA},
    {CameraEncoding::rgbx, SPA_VIDEO_FORMAT_RGBx},
    {CameraEncoding::rgbx, SPA_VIDEO_FORMAT_RGBA},
}};

const spa_pod* wishFor(spa_pod_builder& builder, const Wish& wish, std::uint32_t subtype) {
    spa_pod_frame object{};
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
                        SPA_POD_Id(subtype), 0);
    if (subtype == SPA_MEDIA_SUBTYPE_raw) {
        spa_pod_frame choice{};
        spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
        spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Enum, 0);
        // The first of a choice is what is taken by default, and is named again.
        spa_pod_builder_id(&builder, rawNames.front().name);
        for (const RawName& raw : rawNames)
            spa_pod_builder_id(&builder, raw.name);
        spa_pod_builder_pop(&builder, &choice);
    }
    spa_pod_builder_add(
        &builder, SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&wished, &wish.smallest, &wish.largest),
        SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&wishedRate, &wish.slowest, &fastest), 0);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

/// The planes of a picture that lies in one piece, where they do not come one by one.
struct Layout {
    struct Part {
        int strideBytes = 0;
        int rows = 0;
    };
    std::array<Part, 3> parts;
    std::size_t count = 0;
};

Layout layoutOf(const CameraFormat& format, int stride) {
    const int chromaRows = (format.height + 1) / 2;
    const auto own = [&](int usual) { return stride > 0 ? stride : usual; };
    switch (format.encoding) {
    case CameraEncoding::yuy2:
    case CameraEncoding::uyvy:
        return {{{{own((format.width + 1) / 2 * 4), format.height}}}, 1};
    case CameraEncoding::bgrx:
    case CameraEncoding::rgbx:
        return {{{{own(format.width * 4), format.height}}}, 1};
    case CameraEncoding::nv12: {
        const int width = own((format.width + 1) / 2 * 2);
        return {{{{width, format.height}, {width, chromaRows}}}, 2};
    }
    case CameraEncoding::i420: {
        const int width = own((format.width + 1) / 2 * 2);
        return {{{{width, format.height}, {width / 2, chromaRows}, {width / 2, chromaRows}}}, 3};
    }
    case CameraEncoding::jpeg:
        break;
    }
    return {};
}

/// Where each plane begins; false when memory, or a row, ends before the picture.
bool place(const CameraFormat& format, const std::vector<CameraPlane>& given, std::array<CameraPlane, 3>& found) {
    const Layout least = layoutOf(format, 0);
    const Layout layout = layoutOf(format, given.front().strideBytes);
    const bool isOneByOne = given.size() >= layout.count;
    std::size_t offset = 0;
    for (std::size_t i = 0; i < layout.count; ++i) {
        const CameraPlane& plane = given[isOneByOne ? i : 0];
        const int stride = isOneByOne && plane.strideBytes > 0 ? plane.strideBytes : layout.parts[i].strideBytes;
        const std::size_t size = std::size_t(stride) * std::size_t(layout.parts[i].rows);
        const std::size_t begin = isOneByOne ? 0 : offset;
        if (plane.data == nullptr || stride < least.parts[i].strideBytes || plane.size < begin + size)
            return false;
        found[i] = {plane.data + begin, size, stride};
        offset += size;
    }
    return true;
}

int convert(const CameraFormat& format, const std::array<CameraPlane, 3>& planes, std::uint8_t* target, int stride) {
    const auto& [first, second, third] = planes;
    const int width = format.width;
    const int height = format.height;
    switch (format.encoding) {
    case CameraEncoding::yuy2:
        return libyuv::YUY2ToARGB(first.data, first.strideBytes, target, stride, width, height);
    case CameraEncoding::uyvy:
        return libyuv::UYVYToARGB(first.data, first.strideBytes, target, stride, width, height);
    case CameraEncoding::nv12:
        return libyuv::NV12ToARGB(first.data, first.strideBytes, second.data, second.strideBytes, target, stride, width,
                                  height);
    case CameraEncoding::i420:
        return libyuv::I420ToARGB(first.data, first.strideBytes, second.data, second.strideBytes, third.data,
                                  third.strideBytes, target, stride, width, height);
    case CameraEncoding::bgrx:
        return libyuv::ARGBCopy(first.data, first.strideBytes, target, stride, width, height);
    case CameraEncoding::rgbx:
        return libyuv::ABGRToARGB(first.data, first.strideBytes, target, stride, width, height);
    case CameraEncoding::jpeg:
        return libyuv::MJPGToARGB(first.data, first.size, target, stride, width, height, width, height);
    }
    return -1;
}

/// Turns each row round, and makes it opaque where the camera left that byte to chance.
void mirror(PixelBuffer& picture) {
    for (int y = 0; y < picture.height(); ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(picture.mutableRow(0, y));
        for (int left = 0, right = picture.width() - 1; left <= right; ++left, --right) {
            const std::uint32_t pixel = row[left] | 0xff000000U;
            row[left] = row[right] | 0xff000000U;
            row[right] = pixel;
        }
    }
}

} // namespace

std::vector<const spa_pod*> cameraFormats(spa_pod_builder& builder) {
    std::vector<const spa_pod*> formats;
    for (const Wish& wish : wishes)
        for (const std::uint32_t subtype : {SPA_MEDIA_SUBTYPE_raw, SPA_MEDIA_SUBTYPE_mjpg})
            formats.push_back(wishFor(builder, wish, subtype));
    return formats;
}

std::optional<CameraFormat> cameraFormatOf(const spa_pod& pod) {
    spa_video_info video{};
    if (spa_format_parse(&pod, &video.media_type, &video.media_subtype) < 0 || video.media_type != SPA_MEDIA_TYPE_video)
        return std::nullopt;
    CameraFormat format;
    spa_rectangle size{};
    if (video.media_subtype == SPA_MEDIA_SUBTYPE_mjpg) {
        spa_format_video_mjpg_parse(&pod, &video.info.mjpg);
        size = video.info.mjpg.size;
        format.encoding = CameraEncoding::jpeg;
    } else if (video.media_subtype == SPA_MEDIA_SUBTYPE_raw) {
        spa_format_video_raw_parse(&pod, &video.info.raw);
        size = video.info.raw.size;
        const RawName* known = nullptr;
        for (const RawName& raw : rawNames)
            if (raw.name == video.info.raw.format)
                known = &raw;
        if (known == nullptr)
            return std::nullopt;
        format.encoding = known->encoding;
    } else {
        return std::nullopt;
    }
    constexpr std::uint32_t largest = 8192;
    if (size.width == 0 || size.height == 0 || size.width > largest || size.height > largest)
        return std::nullopt;
    format.width = int(size.width);
    format.height = int(size.height);
    return format;
}

bool readCameraPicture(const CameraFormat& format, const std::vector<CameraPlane>& planes, PixelBuffer& target) {
    if (planes.empty() || planes.front().data == nullptr)
        return false;
    std::array<CameraPlane, 3> found{};
    if (format.encoding == CameraEncoding::jpeg)
        found[0] = planes.front();
    else if (!place(format, planes, found))
        return false;
    if (convert(format, found, target.mutableData(), int(target.strideBytes())) != 0)
        return false;
    mirror(target);
    return true;
}

} // namespace keldra
