#pragma once

#include "base/Result.h"

#define KELDRA_CO_TRY_LET_(result, declaration, expression)                                                            \
    auto result = (expression);                                                                                        \
    if (!result)                                                                                                       \
        co_return ::keldra::fail(std::move(result.error()));                                                           \
    declaration = std::move(*result)

/// TRY and TRY_LET for coroutines.
#define CO_TRY(expression)                                                                                             \
    do {                                                                                                               \
        if (auto keldraResult = (expression); !keldraResult)                                                           \
            co_return ::keldra::fail(std::move(keldraResult.error()));                                                 \
    } while (false)

#define CO_TRY_LET(declaration, expression)                                                                            \
    KELDRA_CO_TRY_LET_(KELDRA_JOIN(keldraResult, __LINE__), declaration, expression)
