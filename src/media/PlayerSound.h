#pragma once

#include "base/HostClock.h"
#include "base/SerialQueue.h"
#include "media/AudioSink.h"
#include "media/MixReader.h"
#include "media/SoundStretch.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace keldra {

/// Feeds a composition's sound to where it is heard, and tells what is heard when. Reads on a queue of its own.
/// Threads: any, for what is public.
class PlayerSound {
public:
    /// Of the time line, in seconds, and when it is heard.
    struct Heard {
        double seconds = 0;
        MediaTime hostTime;
    };

    /// `sink` must outlive this object. `failed` runs on the queue.
    PlayerSound(std::shared_ptr<const Composition> composition, std::optional<AudioMix> mix, AudioSink& sink,
                std::shared_ptr<const HostClock> clock, std::function<void(Error)> failed);
    ~PlayerSound();

    bool hasSound() const { return m_hasSound; }
    /// Sounds from there on at a rate above zero, whatever sounded before.
    void start(double seconds, double rate);
    void stop();
    void setMix(std::optional<AudioMix> mix);
    /// The latest word of the device on what was begun last; nothing until it is heard.
    std::optional<Heard> heard() const;

private:
    /// What is begun by one start(): only the queue changes it.
    struct Run {
        std::uint64_t number = 0;
        double startSeconds = 0;
        double rate = 1;
        std::unique_ptr<SoundStretch> stretch;
        bool isAtEnd = false;
    };

    void begin(std::uint64_t number, double seconds, double rate);
    void fill();
    [[nodiscard]] Result<void> readMore();
    void tellPosition();
    void goOnIfLost(MediaTime now);

    AudioSink& m_sink;
    const std::shared_ptr<const HostClock> m_clock;
    const std::function<void(Error)> m_failed;
    bool m_hasSound;

    // The queue's own.
    MixReader m_mix;
    std::optional<Run> m_run;
    std::vector<float> m_waiting;
    std::size_t m_taken = 0;
    std::optional<MediaTime> m_lastWord;

    mutable std::mutex m_lock;
    std::optional<Heard> m_heard;
    /// Of the run that was asked for last; what others are heard is not told.
    std::uint64_t m_runNumber = 0;

    Timer m_filling;
    SerialQueue m_queue;
};

} // namespace keldra
