#pragma once

#include "base/MediaTime.h"

namespace keldra {

/// The one clock of frames, samples and clicks: monotonic, at timescale 1,000,000. Any thread.
class HostClock {
public:
    static constexpr std::int32_t timescale = 1'000'000;

    virtual ~HostClock() = default;
    virtual MediaTime now() const = 0;
};

/// CLOCK_MONOTONIC.
class SystemHostClock final : public HostClock {
public:
    MediaTime now() const override;
};

} // namespace keldra
