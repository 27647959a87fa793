#pragma once

#include "app/AppModel.h"
#include "capture_ui/SettingsValues.h"

#include <QObject>
#include <QString>

namespace keldra {

/// What the settings panel shows and does. Every write goes through the model, which stores it. Main thread.
class SettingsPanelModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool showClicks READ showClicks NOTIFY changed)
    Q_PROPERTY(keldra::SliderValue clickIntensity READ clickIntensity NOTIFY changed)
    Q_PROPERTY(bool isClickSoundOn READ isClickSoundOn NOTIFY changed)
    Q_PROPERTY(int clickSoundStyle READ clickSoundStyle NOTIFY changed)
    Q_PROPERTY(bool isHighlightOn READ isHighlightOn NOTIFY changed)
    Q_PROPERTY(keldra::SliderValue highlightIntensity READ highlightIntensity NOTIFY changed)
    Q_PROPERTY(keldra::SliderValue highlightSize READ highlightSize NOTIFY changed)
    Q_PROPERTY(keldra::DeviceChoice cameras READ cameras NOTIFY changed)
    Q_PROPERTY(keldra::DeviceChoice microphones READ microphones NOTIFY changed)
    Q_PROPERTY(bool canChange READ canChange NOTIFY changed)
    Q_PROPERTY(int countdown READ countdown NOTIFY changed)
    Q_PROPERTY(int quality READ quality NOTIFY changed)
    Q_PROPERTY(QString folderName READ folderName NOTIFY changed)
    Q_PROPERTY(QString folderPath READ folderPath NOTIFY changed)
    Q_PROPERTY(bool isUsageShared READ isUsageShared NOTIFY changed)

public:
    /// `model` lives longer.
    explicit SettingsPanelModel(AppModel& model);

    bool showClicks() const { return m_model.showClickIndicators(); }
    SliderValue clickIntensity() const;
    bool isClickSoundOn() const { return m_model.clickSoundEnabled(); }
    /// Choices are positions of the enumeration's values, from 0.
    int clickSoundStyle() const { return static_cast<int>(m_model.clickSoundStyle()); }
    bool isHighlightOn() const { return m_model.showCursorHighlight(); }
    SliderValue highlightIntensity() const;
    SliderValue highlightSize() const;
    DeviceChoice cameras() const;
    DeviceChoice microphones() const;
    /// Countdown, quality and folder stand still while something is recorded.
    bool canChange() const { return m_model.canChangeSettings(); }
    int countdown() const;
    int quality() const { return static_cast<int>(m_model.recordingQuality()); }
    QString folderName() const;
    QString folderPath() const;
    bool isUsageShared() const { return m_model.analyticsEnabled(); }

    Q_INVOKABLE void setShowClicks(bool isOn) { m_model.setShowClickIndicators(isOn); }
    Q_INVOKABLE void setClickIntensity(double value) { m_model.setClickIndicatorIntensity(value); }
    Q_INVOKABLE void setClickSoundOn(bool isOn) { m_model.setClickSoundEnabled(isOn); }
    Q_INVOKABLE void setClickSoundStyle(int style);
    Q_INVOKABLE void setHighlightOn(bool isOn) { m_model.setShowCursorHighlight(isOn); }
    Q_INVOKABLE void setHighlightIntensity(double value) { m_model.setCursorHighlightIntensity(value); }
    Q_INVOKABLE void setHighlightSize(double value) { m_model.setCursorHighlightSize(value); }
    Q_INVOKABLE void selectCamera(const QString& id) { m_model.selectCameraDevice(id); }
    Q_INVOKABLE void selectMicrophone(const QString& id) { m_model.selectMicrophoneDevice(id); }
    Q_INVOKABLE void setCountdown(int choice);
    Q_INVOKABLE void setQuality(int choice);
    Q_INVOKABLE void chooseFolder() { m_model.chooseOutputDirectory(); }
    Q_INVOKABLE void openVideo();
    Q_INVOKABLE void setUsageShared(bool isOn) { m_model.setAnalyticsEnabled(isOn); }
    Q_INVOKABLE void close() { m_model.setIsSettingsPresented(false); }

Q_SIGNALS:
    void changed();

private:
    AppModel& m_model;
};

} // namespace keldra
