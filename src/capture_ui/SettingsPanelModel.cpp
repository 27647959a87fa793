#include "capture_ui/SettingsPanelModel.h"

#include <algorithm>
#include <iterator>

namespace keldra {
namespace {

constexpr CountdownDuration countdowns[] = {CountdownDuration::three, CountdownDuration::five, CountdownDuration::ten};

} // namespace

SettingsPanelModel::SettingsPanelModel(AppModel& model) : m_model(model) {
    const auto notify = [this] { Q_EMIT changed(); };
    connect(&model, &AppModelFields::showClickIndicatorsChanged, this, notify);
    connect(&model, &AppModelFields::clickIndicatorIntensityChanged, this, notify);
    connect(&model, &AppModelFields::clickSoundEnabledChanged, this, notify);
    connect(&model, &AppModelFields::clickSoundStyleChanged, this, notify);
    connect(&model, &AppModelFields::showCursorHighlightChanged, this, notify);
    connect(&model, &AppModelFields::cursorHighlightIntensityChanged, this, notify);
    connect(&model, &AppModelFields::cursorHighlightSizeChanged, this, notify);
    connect(&model, &AppModelFields::cameraDevicesChanged, this, notify);
    connect(&model, &AppModelFields::selectedCameraDeviceIDChanged, this, notify);
    connect(&model, &AppModelFields::microphoneDevicesChanged, this, notify);
    connect(&model, &AppModelFields::selectedMicrophoneDeviceIDChanged, this, notify);
    connect(&model, &AppModelFields::recordingStateChanged, this, notify);
    connect(&model, &AppModelFields::countdownDurationChanged, this, notify);
    connect(&model, &AppModelFields::recordingQualityChanged, this, notify);
    connect(&model, &AppModelFields::outputDirectoryURLChanged, this, notify);
    connect(&model, &AppModelFields::analyticsEnabledChanged, this, notify);
}

SliderValue SettingsPanelModel::clickIntensity() const {
    return percentSlider(m_model.clickIndicatorIntensity(), effectBounds::clickIndicatorIntensity, 0.05);
}

SliderValue SettingsPanelModel::highlightIntensity() const {
    return percentSlider(m_model.cursorHighlightIntensity(), effectBounds::cursorHighlightIntensity, 0.02);
}

SliderValue SettingsPanelModel::highlightSize() const {
    return numberSlider(m_model.cursorHighlightSize(), effectBounds::cursorHighlightSize, 2);
}

DeviceChoice SettingsPanelModel::cameras() const {
    return deviceChoice(m_model.cameraDevices(), m_model.selectedCameraDeviceID());
}

DeviceChoice SettingsPanelModel::microphones() const {
    return deviceChoice(m_model.microphoneDevices(), m_model.selectedMicrophoneDeviceID());
}

int SettingsPanelModel::countdown() const {
    return static_cast<int>(std::find(std::begin(countdowns), std::end(countdowns), m_model.countdownDuration()) -
                            std::begin(countdowns));
}

QString SettingsPanelModel::folderName() const {
    return keldra::folderName(folderPath());
}

QString SettingsPanelModel::folderPath() const {
    return m_model.outputDirectoryURL().toLocalFile();
}

void SettingsPanelModel::setClickSoundStyle(int style) {
    m_model.setClickSoundStyle(static_cast<ClickSoundStyle>(style));
}

void SettingsPanelModel::setCountdown(int choice) {
    if (canChange())
        m_model.setCountdownDuration(countdowns[choice]);
}

void SettingsPanelModel::setQuality(int choice) {
    m_model.setRecordingQuality(static_cast<RecordingQuality>(choice));
}

void SettingsPanelModel::openVideo() {
    if (const auto open = m_model.windows().openVideoPicker)
        open();
}

} // namespace keldra
