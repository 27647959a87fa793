#pragma once

#include <QString>

#include <memory>

namespace keldra {

/// Keeps the machine awake. Main thread.
class SleepInhibitor {
public:
    /// Lets the machine sleep again when it is destroyed; it may outlive the inhibitor.
    using Hold = std::shared_ptr<void>;

    virtual ~SleepInhibitor() = default;
    /// While the hold lives the machine neither sleeps nor darkens its screen by itself, where the desktop agrees.
    /// `reason` is for the user's eyes.
    [[nodiscard]] virtual Hold inhibit(const QString& reason) = 0;
};

} // namespace keldra
