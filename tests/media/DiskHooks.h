#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace keldra::test {

/// Stands between this program and its disk while it lives: the system's calls of these names come here first. One at a
/// time. The functions run on any thread.
class DiskHooks {
public:
    /// Before data is brought to the disk; an error number other than 0 is the call's answer.
    using Sync = std::function<int()>;
    /// What the disk of an open file says is free; nothing for the truth.
    using FreeBytes = std::function<std::optional<std::int64_t>()>;

    explicit DiskHooks(Sync sync, FreeBytes freeBytes = {});
    /// Nothing that calls the disk may be under way.
    ~DiskHooks();
    DiskHooks(const DiskHooks&) = delete;
    DiskHooks& operator=(const DiskHooks&) = delete;

    const Sync sync;
    const FreeBytes freeBytes;
};

} // namespace keldra::test
