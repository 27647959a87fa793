#include "media/PlayerItem.h"

namespace keldra {

void PlayerItem::setVideoComposition(VideoComposition videoComposition) {
    m_videoComposition = std::move(videoComposition);
    if (m_videoChanged)
        m_videoChanged();
}

void PlayerItem::setAudioMix(std::optional<AudioMix> audioMix) {
    m_audioMix = std::move(audioMix);
    if (m_mixChanged)
        m_mixChanged();
}

void PlayerItem::setStatus(Status status, std::optional<Error> error) {
    if (m_status == status)
        return;
    m_status = status;
    m_error = std::move(error);
    if (m_statusChanged)
        m_statusChanged();
}

} // namespace keldra
