#include "app/AppModel.h"
#include "base/Overloaded.h"

#include <QPointer>

namespace keldra {

void AppModel::noteErrorMessage(const QString& message) {
    // Compared before the empty ones are left out, so that one between two equal failures lets the second through.
    if (std::exchange(m_lastErrorMessage, message) == message || message.isEmpty())
        return;
    // A turn later, by when the message may be cleared again; it is told all the same.
    m_parts.mainQueue.post([alive = QPointer<AppModel>(this), message] {
        if (alive)
            alive->showNotice(AppNotice::Kind::error, message, noticeAction(message));
    });
}

void AppModel::showNotice(AppNotice::Kind kind, const QString& message, std::optional<AppNotice::Action> action) {
    const AppNotice shown{QUuid::createUuid(), kind, message, std::move(action)};
    setNotice(shown);
    m_noticeTimer.cancel();
    const auto lifetime = noticeLifetime(shown);
    if (!lifetime)
        return;
    m_noticeTimer = m_parts.scheduler.after(*lifetime, [this, id = shown.id] {
        if (notice() && notice()->id == id)
            dismissNotice();
    });
}

void AppModel::dismissNotice() {
    m_noticeTimer.cancel();
    setNotice(std::nullopt);
}

void AppModel::performNoticeAction() {
    if (notice() && notice()->action)
        std::visit(
            Overloaded{[this](const AppNotice::RevealFile& reveal) { m_parts.platform.workspace->reveal(reveal.file); },
                       [this](SettingsPage page) { m_parts.platform.workspace->openSettings(page); }},
            *notice()->action);
    dismissNotice();
}

} // namespace keldra
