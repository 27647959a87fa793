#include "imaging/SurplusCount.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

TEST(SurplusCount, FindsWhatABusyMomentLeft) {
    SurplusCount surplus;
    const auto look = [&](int idle, int onceIdle) {
        int answered = 0;
        for (int take = 0; take < SurplusCount::takesLookedAt; ++take)
            answered += surplus.note(take == SurplusCount::takesLookedAt / 2 ? onceIdle : idle);
        return answered;
    };
    EXPECT_EQ(look(5, 5), 5) << "never needed";
    EXPECT_EQ(look(5, 1), 1) << "four of them were needed once";
    EXPECT_EQ(look(2, 0), 0);
    EXPECT_EQ(look(2, 2), 2) << "a need of long ago does not count";
}

} // namespace
} // namespace keldra
