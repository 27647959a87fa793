#pragma once

#include "platform/CaptureSelection.h"

#include <QCoroTask>

#include <cstdint>
#include <optional>

namespace keldra {

/// Lets the user pick what to record, on the whole desktop. Each call resumes with the selection, or with nothing when
/// it was cancelled or there is no screen; a call while another waits cancels that one, and so does the end of this
/// object. Main thread.
class SelectionCoordinator {
public:
    virtual ~SelectionCoordinator() = default;
    virtual QCoro::Task<std::optional<CaptureSelection>> selectRegion() = 0;
    virtual QCoro::Task<std::optional<CaptureSelection>> selectWindow() = 0;
    /// `preferredDisplayID` is the one marked before the pointer moves, else the first.
    virtual QCoro::Task<std::optional<CaptureSelection>> selectDisplay(std::uint32_t preferredDisplayID) = 0;
};

} // namespace keldra
