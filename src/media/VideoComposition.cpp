#include "media/VideoComposition.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace keldra {
namespace {

std::string rangeText(const MediaTimeRange& range) {
    std::array<char, 96> text{};
    std::snprintf(text.data(), text.size(), "%.6f...%.6f", range.start.seconds(), range.end().seconds());
    return text.data();
}

bool isPositive(MediaTime time) {
    return time.isNumeric() && time > MediaTime::zero();
}

std::string invalidValue(const std::string& key) {
    return "invalid value for key '" + key + "'";
}

/// Takes the instructions in order and keeps where the next one must start.
class InstructionCheck {
public:
    InstructionCheck(const Composition& composition, std::vector<std::string>& faults)
        : m_composition(composition), m_duration(composition.duration()), m_faults(faults) {}

    void check(const VideoInstruction& instruction) {
        const MediaTimeRange& range = instruction.timeRange;
        if (!range.start.isNumeric() || range.isEmpty())
            m_faults.push_back("empty range " + rangeText(range));
        else if (range.start != m_expectedStart || range.end() > m_duration)
            m_faults.push_back("invalid instruction range " + rangeText(range));
        if (range.start.isNumeric() && range.end().isNumeric())
            m_expectedStart = range.end();
        for (const std::int32_t trackID : instruction.requiredSourceTrackIDs) {
            const CompositionTrack* track = m_composition.track(trackID);
            if (track == nullptr || track->kind() != MediaKind::video)
                m_faults.push_back("invalid track ID " + std::to_string(trackID) + " in " + rangeText(range));
        }
    }

    /// After the last.
    void checkEnd() {
        if (m_expectedStart < m_duration)
            m_faults.push_back("invalid instruction range " +
                               rangeText({m_expectedStart, m_duration - m_expectedStart}));
    }

private:
    const Composition& m_composition;
    const MediaTime m_duration;
    std::vector<std::string>& m_faults;
    MediaTime m_expectedStart = MediaTime::zero();
};

} // namespace

std::shared_ptr<const VideoInstruction> VideoComposition::instructionAt(MediaTime time) const {
    const auto later =
        std::upper_bound(instructions.begin(), instructions.end(), time,
                         [](MediaTime wanted, const std::shared_ptr<const VideoInstruction>& instruction) {
                             return wanted < instruction->timeRange.start;
                         });
    if (later == instructions.begin() || !(*std::prev(later))->timeRange.contains(time))
        return nullptr;
    return *std::prev(later);
}

std::int64_t VideoComposition::frameCount(MediaTime duration) const {
    __extension__ using Wide = __int128;
    const Wide numerator = Wide(duration.value()) * frameDuration.timescale();
    const Wide denominator = Wide(duration.timescale()) * frameDuration.value();
    return std::int64_t((numerator + denominator - 1) / denominator);
}

std::vector<std::string> findFaults(const VideoComposition& videoComposition, const Composition& composition) {
    std::vector<std::string> faults;
    if (videoComposition.renderWidth <= 0 || videoComposition.renderHeight <= 0)
        faults.push_back(invalidValue("renderSize"));
    if (!isPositive(videoComposition.frameDuration))
        faults.push_back(invalidValue("frameDuration"));
    InstructionCheck check(composition, faults);
    for (const auto& instruction : videoComposition.instructions)
        check.check(*instruction);
    check.checkEnd();
    return faults;
}

} // namespace keldra
