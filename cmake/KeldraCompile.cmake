# How every target is compiled: warnings, sanitizers, ccache.

set(KELDRA_SANITIZE "" CACHE STRING "Sanitizers for -fsanitize=, empty for none")

add_library(keldra_compile INTERFACE)
target_compile_options(keldra_compile INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wimplicit-fallthrough
  -Werror=return-type -Werror=switch -Werror=unused-result)
if(KELDRA_SANITIZE)
  target_compile_options(keldra_compile INTERFACE -fsanitize=${KELDRA_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(keldra_compile INTERFACE -fsanitize=${KELDRA_SANITIZE})
  if(KELDRA_SANITIZE MATCHES "thread")
    # Asio's fences only order its own memory; the sanitizer follows its locks instead.
    target_compile_options(keldra_compile INTERFACE -Wno-tsan)
  endif()
  if(KELDRA_SANITIZE MATCHES "undefined")
    target_compile_options(keldra_compile INTERFACE -fno-sanitize-recover=undefined)
  endif()
endif()

find_program(CCACHE ccache)
if(CCACHE)
  # Without this sloppiness ccache refuses every file that uses a precompiled header.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_NOHASHDIR=1 ${CCACHE})
endif()
