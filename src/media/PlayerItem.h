#pragma once

#include "base/Error.h"
#include "media/AudioMix.h"
#include "media/Composition.h"
#include "media/VideoComposition.h"

#include <functional>
#include <memory>
#include <optional>

namespace keldra {

/// What a player plays: a composition, how its pictures are put together and how loud its sounds are. One thread, the
/// player's.
class PlayerItem {
public:
    enum class Status { unknown, readyToPlay, failed };

    PlayerItem(std::shared_ptr<const Composition> composition, std::optional<VideoComposition> videoComposition,
               std::optional<AudioMix> audioMix)
        : m_composition(std::move(composition))
        , m_videoComposition(std::move(videoComposition))
        , m_audioMix(std::move(audioMix)) {}

    const std::shared_ptr<const Composition>& composition() const { return m_composition; }
    const std::optional<VideoComposition>& videoComposition() const { return m_videoComposition; }
    const std::optional<AudioMix>& audioMix() const { return m_audioMix; }
    /// Takes effect on the next frames; playback goes on. An item made without a video composition shows none.
    void setVideoComposition(VideoComposition videoComposition);
    /// Takes effect on what is read next; playback goes on.
    void setAudioMix(std::optional<AudioMix> audioMix);

    Status status() const { return m_status; }
    /// Why it failed, once it has.
    const std::optional<Error>& error() const { return m_error; }

    /// Called after each change of the status.
    void setStatusObserver(std::function<void()> observer) { m_statusChanged = std::move(observer); }
    /// Called when playback breaks off after the item was ready.
    void setFailureObserver(std::function<void(const Error&)> observer) { m_failedToPlayToEnd = std::move(observer); }

private:
    friend class Player;
    void setStatus(Status status, std::optional<Error> error);

    std::shared_ptr<const Composition> m_composition;
    std::optional<VideoComposition> m_videoComposition;
    std::optional<AudioMix> m_audioMix;
    Status m_status = Status::unknown;
    std::optional<Error> m_error;
    std::function<void()> m_statusChanged;
    std::function<void(const Error&)> m_failedToPlayToEnd;
    // The player's, while this is its item.
    std::function<void()> m_videoChanged;
    std::function<void()> m_mixChanged;
};

} // namespace keldra
