#include "AllocationCounter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <link.h>
#include <new>
#include <string_view>
#include <utility>

extern "C" {
// The C library's own, under the names that stay when the usual ones are taken.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

/// The code of one library.
struct Range {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
};

/// Whose memory is not counted; known once all libraries are loaded.
std::array<Range, 128> apart;
std::atomic<std::size_t> apartCount = 0;
std::atomic<std::int64_t> count = 0;

bool isApart(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    constexpr std::string_view beginnings[] = {"libav", "libsw", "libx26", "libc.", "libm.", "ld-", "linux-vdso"};
    return std::any_of(std::begin(beginnings), std::end(beginnings),
                       [&](std::string_view beginning) { return name.substr(0, beginning.size()) == beginning; });
}

int noteLibrary(dl_phdr_info* info, std::size_t, void*) {
    if (!isApart(info->dlpi_name))
        return 0;
    for (int at = 0; at < info->dlpi_phnum; ++at) {
        const ElfW(Phdr)& part = info->dlpi_phdr[at];
        if (part.p_type == PT_LOAD && (part.p_flags & PF_X) != 0 && apartCount < apart.size()) {
            const std::uintptr_t begin = info->dlpi_addr + part.p_vaddr;
            apart[apartCount++] = {begin, begin + part.p_memsz};
        }
    }
    return 0;
}

const int librariesNoted = dl_iterate_phdr(noteLibrary, nullptr);

void noteCall(const void* caller) {
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    const auto* end = apart.data() + apartCount;
    const bool isLibrary = std::any_of(std::as_const(apart).data(), end, [&](const Range& range) {
        return range.begin <= address && address < range.end;
    });
    if (!isLibrary)
        count.fetch_add(1, std::memory_order_relaxed);
}

void* newMemory(std::size_t size, std::size_t alignment, const void* caller) {
    noteCall(caller);
    void* memory = alignment <= alignof(std::max_align_t) ? __libc_malloc(size) : __libc_memalign(alignment, size);
    if (memory == nullptr)
        std::abort();
    return memory;
}

} // namespace

std::int64_t keldra::test::allocationCount() {
    return count;
}

#define CALLER __builtin_return_address(0)

extern "C" {
void* malloc(std::size_t size) {
    noteCall(CALLER);
    return __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) {
    noteCall(CALLER);
    return __libc_calloc(number, size);
}
void* realloc(void* memory, std::size_t size) {
    noteCall(CALLER);
    return __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    noteCall(CALLER);
    return __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    noteCall(CALLER);
    *memory = __libc_memalign(alignment, size);
    return *memory != nullptr ? 0 : ENOMEM;
}
}

void* operator new(std::size_t size) {
    return newMemory(size, 0, CALLER);
}
void* operator new[](std::size_t size) {
    return newMemory(size, 0, CALLER);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return newMemory(size, std::size_t(alignment), CALLER);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return newMemory(size, std::size_t(alignment), CALLER);
}
void operator delete(void* memory) noexcept {
    __libc_free(memory);
}
void operator delete[](void* memory) noexcept {
    __libc_free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    __libc_free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    __libc_free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    __libc_free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    __libc_free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    __libc_free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    __libc_free(memory);
}
