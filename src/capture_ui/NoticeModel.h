#pragma once

#include "app/AppModel.h"
#include "platform/Workspace.h"

#include <QObject>
#include <QString>

#include <memory>

namespace keldra {

/// What the notice panel shows and does. The last notice stays readable while its panel leaves. Main thread.
class NoticeModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString kind READ kind NOTIFY changed)
    Q_PROPERTY(QString symbol READ symbol NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)
    Q_PROPERTY(QString actionLabel READ actionLabel NOTIFY changed)

public:
    /// `model` lives longer. Without a workspace no notice offers anything.
    NoticeModel(AppModel& model, std::shared_ptr<const Workspace> workspace);

    /// "success", "error" or "info".
    QString kind() const;
    QString symbol() const;
    /// In the user's language, where the catalogue "Messages" has it.
    QString message() const;
    /// Empty when the notice offers nothing that this desktop can do.
    QString actionLabel() const;

    Q_INVOKABLE void performAction() { m_model.performNoticeAction(); }
    Q_INVOKABLE void dismiss() { m_model.dismissNotice(); }

Q_SIGNALS:
    void changed();

private:
    AppModel& m_model;
    const std::shared_ptr<const Workspace> m_workspace;
    AppNotice m_last;
};

} // namespace keldra
