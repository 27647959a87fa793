#pragma once

#include <QString>

#include <cstdint>

namespace keldra {

/// A display as the interface lists it.
struct CaptureDisplay {
    std::uint32_t id = 0;
    QString name;
    /// In points, e.g. "1920 x 1080".
    QString sizeLabel;
    friend bool operator==(const CaptureDisplay&, const CaptureDisplay&) = default;
};

} // namespace keldra
