# The libraries that we stand on, each under one name; docs/dependencies.md says why each is here.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core DBus Gui LinguistTools Network Qml Quick QuickControls2 Svg Widgets)
find_package(QCoro6 0.8 REQUIRED COMPONENTS Core)
find_package(tl-expected REQUIRED)

pkg_check_modules(LIBAV REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil libswresample libswscale libavfilter)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb xcb-shm xcb-damage xcb-composite xcb-render xcb-renderutil xcb-xfixes
  xcb-randr xcb-xinput xcb-res xcb-shape)

pkg_check_modules(PIPEWIRE REQUIRED IMPORTED_TARGET libpipewire-0.3)
# It names a macro of old C libraries, for which no precompiled header would fit any more.
get_target_property(options PkgConfig::PIPEWIRE INTERFACE_COMPILE_OPTIONS)
list(REMOVE_ITEM options -D_REENTRANT)
set_target_properties(PkgConfig::PIPEWIRE PROPERTIES INTERFACE_COMPILE_OPTIONS "${options}")

find_path(ASIO_INCLUDE asio.hpp REQUIRED)
add_library(keldra_asio INTERFACE)
target_include_directories(keldra_asio SYSTEM INTERFACE ${ASIO_INCLUDE})
target_compile_definitions(keldra_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED)
target_link_libraries(keldra_asio INTERFACE Threads::Threads)

find_path(YUV_INCLUDE libyuv.h REQUIRED)
find_library(YUV_LIBRARY yuv REQUIRED)
add_library(keldra_yuv INTERFACE)
target_include_directories(keldra_yuv SYSTEM INTERFACE ${YUV_INCLUDE})
target_link_libraries(keldra_yuv INTERFACE ${YUV_LIBRARY})
