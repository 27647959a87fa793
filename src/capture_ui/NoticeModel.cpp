#include "capture_ui/NoticeModel.h"

#include "base/Overloaded.h"

#include <QCoreApplication>

namespace keldra {

NoticeModel::NoticeModel(AppModel& model, std::shared_ptr<const Workspace> workspace)
    : m_model(model), m_workspace(std::move(workspace)), m_last(model.notice().value_or(AppNotice{})) {
    connect(&model, &AppModelFields::noticeChanged, this, [this](const std::optional<AppNotice>& notice) {
        if (!notice)
            return;
        m_last = *notice;
        Q_EMIT changed();
    });
}

QString NoticeModel::message() const {
    return QCoreApplication::translate("Messages", m_last.message.toUtf8().constData());
}

QString NoticeModel::kind() const {
    switch (m_last.kind) {
    case AppNotice::Kind::success:
        return QStringLiteral("success");
    case AppNotice::Kind::error:
        return QStringLiteral("error");
    case AppNotice::Kind::info:
        break;
    }
    return QStringLiteral("info");
}

QString NoticeModel::symbol() const {
    switch (m_last.kind) {
    case AppNotice::Kind::success:
        return QStringLiteral("checkmark.circle.fill");
    case AppNotice::Kind::error:
        return QStringLiteral("exclamationmark.triangle.fill");
    case AppNotice::Kind::info:
        break;
    }
    return QStringLiteral("info.circle.fill");
}

QString NoticeModel::actionLabel() const {
    if (!m_last.action || !m_workspace)
        return {};
    return std::visit(Overloaded{[](const AppNotice::RevealFile&) { return tr("Show"); },
                                 [this](SettingsPage page) {
                                     return m_workspace->hasSettings(page) ? tr("Open Settings") : QString();
                                 }},
                      *m_last.action);
}

} // namespace keldra
