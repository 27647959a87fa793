#include "base/HostClock.h"

#include <ctime>

namespace keldra {

MediaTime SystemHostClock::now() const {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return MediaTime(std::int64_t(time.tv_sec) * timescale + time.tv_nsec / 1000, timescale);
}

} // namespace keldra
