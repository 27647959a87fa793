#pragma once

#include <cstddef>
#include <memory_resource>

namespace keldra {

/// For what comes and goes with every picture or block of sound: what was given back is handed out again, so steady
/// work asks the system for nothing. Any thread.
std::pmr::memory_resource& recycledMemory();

/// The allocator of `recycledMemory()`, for containers, std::allocate_shared and posted work.
template <typename T>
struct Recycling {
    using value_type = T;

    Recycling() = default;
    template <typename Other>
    Recycling(const Recycling<Other>&) noexcept {}

    T* allocate(std::size_t count) { return static_cast<T*>(recycledMemory().allocate(count * sizeof(T), alignof(T))); }
    void deallocate(T* memory, std::size_t count) noexcept {
        recycledMemory().deallocate(memory, count * sizeof(T), alignof(T));
    }

    template <typename Other>
    friend bool operator==(const Recycling&, const Recycling<Other>&) {
        return true;
    }
};

} // namespace keldra
