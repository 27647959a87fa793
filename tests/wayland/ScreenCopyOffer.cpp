// Loaded into xdg-desktop-portal-wlr 0.7, which takes no pictures from a compositor that offers it memory of a graphics
// card's nowhere, although it goes on to use ordinary memory. A compositor that draws without such a card is made to
// offer it.

#include <array>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>

struct wl_proxy;

namespace {

using Handler = void (*)();
/// The events of zwlr_screencopy_frame_v1, version 3.
enum Event { buffer, flags, ready, failed, damage, linuxDmabuf, bufferDone, eventCount };

/// "XR24": what is in ordinary memory too.
constexpr std::uint32_t opaqueFormat = 0x34325258;

const Handler* listener = nullptr;
std::uint32_t width = 0;
std::uint32_t height = 0;

void heardBuffer(void* data, wl_proxy* frame, std::uint32_t format, std::uint32_t w, std::uint32_t h,
                 std::uint32_t stride) {
    width = w;
    height = h;
    using Told = void (*)(void*, wl_proxy*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t);
    reinterpret_cast<Told>(listener[buffer])(data, frame, format, w, h, stride);
}

void heardBufferDone(void* data, wl_proxy* frame) {
    using Told = void (*)(void*, wl_proxy*, std::uint32_t, std::uint32_t, std::uint32_t);
    reinterpret_cast<Told>(listener[linuxDmabuf])(data, frame, opaqueFormat, width, height);
    reinterpret_cast<void (*)(void*, wl_proxy*)>(listener[bufferDone])(data, frame);
}

} // namespace

extern "C" int wl_proxy_add_listener(wl_proxy* proxy, Handler* handlers, void* data) {
    static const auto classOf = reinterpret_cast<const char* (*)(wl_proxy*)>(dlsym(RTLD_NEXT, "wl_proxy_get_class"));
    static const auto addListener =
        reinterpret_cast<int (*)(wl_proxy*, Handler*, void*)>(dlsym(RTLD_NEXT, "wl_proxy_add_listener"));
    if (std::strcmp(classOf(proxy), "zwlr_screencopy_frame_v1") != 0)
        return addListener(proxy, handlers, data);
    static std::array<Handler, eventCount> heard;
    listener = handlers;
    std::memcpy(heard.data(), handlers, sizeof heard);
    heard[buffer] = reinterpret_cast<Handler>(&heardBuffer);
    heard[bufferDone] = reinterpret_cast<Handler>(&heardBufferDone);
    return addListener(proxy, heard.data(), data);
}
