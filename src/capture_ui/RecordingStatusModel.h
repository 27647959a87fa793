#pragma once

#include "app/AppModel.h"
#include "capture_ui/ElapsedText.h"

#include <QObject>
#include <QString>

namespace keldra {

/// How long the recording is, and what is asked about it: for the timer, the panels that ask something, and the one
/// that offers a finished recording. Main thread.
class RecordingStatusModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString elapsed READ elapsed NOTIFY elapsedChanged)
    Q_PROPERTY(QString elapsedName READ elapsedName NOTIFY elapsedChanged)

public:
    /// `model` lives longer.
    explicit RecordingStatusModel(AppModel& model) : m_model(model) {
        connect(&model, &AppModelFields::elapsedSecondsChanged, this, &RecordingStatusModel::elapsedChanged);
    }

    QString elapsed() const { return elapsedText(m_model.elapsedSeconds()); }
    /// For who hears it.
    QString elapsedName() const { return tr("Recording time %1").arg(elapsed()); }

    Q_INVOKABLE void confirmQuit() { m_model.confirmQuit(); }
    Q_INVOKABLE void cancelQuit() { m_model.setIsCloseConfirmationPresented(false); }
    Q_INVOKABLE void dismissSelectionRequired() { m_model.setIsSelectionRequiredPresented(false); }
    Q_INVOKABLE void editRecording() { m_model.openLastRecordingInEditor(); }
    Q_INVOKABLE void revealRecording() { m_model.revealLastRecording(); }
    Q_INVOKABLE void dismissRecording() { m_model.setLastSavedURL({}); }

Q_SIGNALS:
    void elapsedChanged();

private:
    AppModel& m_model;
};

} // namespace keldra
