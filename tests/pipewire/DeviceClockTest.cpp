// The estimate of a device's clock: right in the long run, unmoved by single reports, honest about jumps.

#include "platform/pipewire/DeviceClock.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace keldra::test {
namespace {

constexpr int rate = 48000;
constexpr double begin = 5000;
using Verdict = DeviceClock::Verdict;

/// A clock that hears a device of that rate error, each report up to `jitter` seconds early or late.
struct Hearing {
    Hearing(double ppm, double jitter, int quantum)
        : period(1 / (rate * (1 + ppm * 1e-6))), spread(-jitter, jitter), frameCount(quantum) {}

    Verdict hear(double late = 0) {
        const Verdict verdict = clock.hear({frame, frameCount, begin + double(frame) * period + late + spread(chance)});
        frame += frameCount;
        return verdict;
    }
    void hearUntil(double seconds) {
        while (double(frame) / rate < seconds)
            hear();
    }
    double errorNow() const { return clock.hostTimeOf(clock.frameCount()) - (begin + double(frame) * period); }

    DeviceClock clock{rate};
    double period;
    std::uniform_real_distribution<double> spread;
    std::mt19937 chance{7};
    std::int64_t frame = 0;
    std::int64_t frameCount;
};

TEST(DeviceClock, FindsTheRate) {
    for (const double ppm : {0.0, 200.0, -200.0, 30.0})
        for (const double jitter : {1e-9, 0.001, 0.004})
            for (const int quantum : {256, 1024, 8192}) {
                Hearing hearing(ppm, jitter, quantum);
                hearing.hearUntil(90);
                EXPECT_NEAR(hearing.clock.rateError() * 1e6, -ppm, 25) << ppm << " " << jitter << " " << quantum;
                EXPECT_NEAR(hearing.errorNow(), 0, 0.0006) << ppm << " " << jitter << " " << quantum;
            }
}

TEST(DeviceClock, JumpsWhenLatenessStays) {
    // Time goes on without the device, whose count does not; late for good, or early.
    for (const double step : {0.030, 1.0, -0.5}) {
        Hearing hearing(0, 0.001, 480);
        hearing.hearUntil(10);
        int doubtful = 0;
        Verdict verdict = hearing.hear(step);
        while (verdict == Verdict::doubtful && doubtful < 100) {
            ++doubtful;
            verdict = hearing.hear(step);
        }
        EXPECT_EQ(verdict, Verdict::jumped) << step;
        EXPECT_NEAR(doubtful * 0.010, 0.150, 0.021) << step;
        EXPECT_NEAR(hearing.errorNow(), step, 0.002) << step;
        EXPECT_EQ(hearing.hear(step), Verdict::steady);
    }
}

} // namespace
} // namespace keldra::test
