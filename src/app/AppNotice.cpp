#include "app/AppNotice.h"

namespace keldra {

std::optional<Duration> noticeLifetime(const AppNotice& notice) {
    if (notice.action && std::holds_alternative<AppNotice::RevealFile>(*notice.action))
        return std::nullopt;
    return std::chrono::seconds(notice.kind == AppNotice::Kind::error ? 6 : 4);
}

std::optional<AppNotice::Action> noticeAction(const QString& text) {
    const auto mentions = [&](QLatin1String word) { return text.contains(word, Qt::CaseInsensitive); };
    if (!mentions(QLatin1String("access")) && !mentions(QLatin1String("permission")))
        return std::nullopt;
    if (mentions(QLatin1String("camera")))
        return SettingsPage::camera;
    if (mentions(QLatin1String("microphone")))
        return SettingsPage::microphone;
    if (mentions(QLatin1String("screen")))
        return SettingsPage::screenCapture;
    return std::nullopt;
}

} // namespace keldra
