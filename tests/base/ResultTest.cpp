#include "base/Result.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace keldra {
namespace {

const Error lost{"test", 7, "It is lost.", {{"where", "here"}}};

Result<int> half(int value) {
    if (value % 2 != 0)
        return fail(lost);
    return value / 2;
}

Result<int> quarter(int value) {
    TRY_LET(const int once, half(value));
    TRY(half(once));
    return half(once);
}

TEST(Result, PassesErrorsOnWhole) {
    EXPECT_EQ(quarter(8), 2);
    for (const int value : {7, 6}) {
        const Result<int> result = quarter(value);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error(), lost);
        EXPECT_EQ(result.error().message, "It is lost.");
        EXPECT_EQ(result.error().info.at("where"), "here");
    }
}

TEST(Error, CarriesTheSystemsOwnWords) {
    const Error error = systemError(ENOSPC, "take.mov");
    EXPECT_EQ(error.code, ENOSPC);
    EXPECT_EQ(error.message, "take.mov: No space left on device");
}

} // namespace
} // namespace keldra
