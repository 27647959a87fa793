#include "capture_ui/SettingsValues.h"

#include <QDir>

namespace keldra {

SliderValue percentSlider(double value, Bounds bounds, double step) {
    return {value, bounds.least, bounds.most, step, QStringLiteral("%1%").arg(qRound(value * 100))};
}

SliderValue numberSlider(double value, Bounds bounds, double step) {
    return {value, bounds.least, bounds.most, step, QString::number(qRound(value))};
}

DeviceChoice deviceChoice(const QList<CaptureDeviceOption>& devices, const QString& picked) {
    DeviceChoice choice;
    for (const CaptureDeviceOption& device : devices) {
        choice.ids.append(device.id);
        choice.names.append(device.name);
    }
    choice.index = static_cast<int>(choice.ids.indexOf(picked));
    return choice;
}

QString folderName(const QString& path) {
    const QString name = QDir(path).dirName();
    return name.isEmpty() ? QDir::toNativeSeparators(path) : name;
}

} // namespace keldra
