#pragma once

#include "base/Result.h"
#include "base/SerialQueue.h"
#include "media/OutputFile.h"

#include <atomic>
#include <functional>
#include <mutex>

namespace keldra {

/// Looks after a growing file beside its writer: brings what was written to the disk itself, and sees whether the file
/// still has its name and the disk still has room. All of that may wait for a slow disk, so it runs on a queue of its
/// own; one round is under way, and however often more are asked for meanwhile, one follows.
class TakeKeeper {
public:
    /// Both run on the keeper's queue, each at most once, and must not wait for it.
    struct Listener {
        /// The disk would not take what was written, or the file has lost its name. No round follows.
        std::function<void(const Error&)> failed;
        std::function<void()> diskNearlyFull;
    };

    /// `file` lives longer.
    TakeKeeper(const OutputFile& file, Listener listener);

    /// Asks for a round; `hasNewData` when something was written since the last call. Never waits.
    void look(bool hasNewData);
    /// Waits for the round under way; none begins any more. Errors: what a round met.
    [[nodiscard]] Result<void> finish();

private:
    void round();
    [[nodiscard]] Result<void> check();

    const OutputFile& m_file;
    const Listener m_listener;
    std::atomic<bool> m_hasNewData = false;
    std::atomic<bool> m_isAskedFor = false;
    std::atomic<bool> m_isOver = false;
    // The queue's own, and after finish() its caller's.
    bool m_hasSyncedFolder = false;
    bool m_hasToldOfRoom = false;
    Result<void> m_outcome;
    SerialQueue m_queue{"KELDRA.TakeKeeper", 2};
};

} // namespace keldra
