#pragma once

#include "base/Result.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct SwrContext;

namespace keldra {

/// 16-bit mono sound at another rate, with a short filter: made for looking at sound, not for listening. Sample n that
/// comes out stands at the time of sample n * from / to that went in. Belongs to one thread at a time.
class MonoResampler {
public:
    /// `subject` is what errors speak of.
    [[nodiscard]] static Result<std::unique_ptr<MonoResampler>> make(int fromRate, int toRate,
                                                                     const std::string& subject);

    /// Appends to `output` what can be given out so far; the filter holds a little back.
    [[nodiscard]] Result<void> resample(const std::int16_t* samples, std::int64_t count,
                                        std::vector<std::int16_t>& output);
    /// Appends what was held back. The next sample begins anew.
    [[nodiscard]] Result<void> drain(std::vector<std::int16_t>& output);

private:
    MonoResampler() = default;

    struct FreeConversion {
        void operator()(SwrContext* context) const;
    };
    std::unique_ptr<SwrContext, FreeConversion> m_conversion;
};

} // namespace keldra
