#pragma once

#include "base/Error.h"

#include <functional>
#include <tl/expected.hpp>
#include <utility>

namespace keldra {

/// How a failing operation answers. It must be looked at: every function that gives one is [[nodiscard]].
template <typename T>
using Result = tl::expected<T, Error>;

/// The answer of an operation that takes time. Runs exactly once, on the executor named by the operation, and never
/// before the call that takes it has returned. Whoever passes one from thread to thread moves it on and keeps no copy:
/// it may hold the last handle on an object that belongs to the thread of the answer.
template <typename T>
using Completion = std::function<void(Result<T>)>;

inline tl::unexpected<Error> fail(Error error) {
    return tl::unexpected<Error>(std::move(error));
}

} // namespace keldra

#define KELDRA_JOIN_(a, b) a##b
#define KELDRA_JOIN(a, b) KELDRA_JOIN_(a, b)
#define KELDRA_TRY_LET_(result, declaration, expression)                                                               \
    auto result = (expression);                                                                                        \
    if (!result)                                                                                                       \
        return ::keldra::fail(std::move(result.error()));                                                              \
    declaration = std::move(*result)

/// Leaves the function with the expression's error, if it has one.
#define TRY(expression)                                                                                                \
    do {                                                                                                               \
        if (auto keldraResult = (expression); !keldraResult)                                                           \
            return ::keldra::fail(std::move(keldraResult.error()));                                                    \
    } while (false)

/// The same, and otherwise takes the value: TRY_LET(auto asset, Asset::open(path));
#define TRY_LET(declaration, expression) KELDRA_TRY_LET_(KELDRA_JOIN(keldraResult, __LINE__), declaration, expression)
