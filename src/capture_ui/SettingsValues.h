#pragma once

#include "app/EffectBounds.h"
#include "platform/CaptureDevices.h"

#include <QMetaType>
#include <QString>
#include <QStringList>

namespace keldra {

/// A number as a slider shows it.
struct SliderValue {
    Q_GADGET
    Q_PROPERTY(double value MEMBER value)
    Q_PROPERTY(double least MEMBER least)
    Q_PROPERTY(double most MEMBER most)
    Q_PROPERTY(double step MEMBER step)
    Q_PROPERTY(QString text MEMBER text)

public:
    double value = 0;
    double least = 0;
    double most = 1;
    double step = 0;
    QString text;
    friend bool operator==(const SliderValue&, const SliderValue&) = default;
};

/// Shown as a percentage, or as a whole number.
SliderValue percentSlider(double value, Bounds bounds, double step);
SliderValue numberSlider(double value, Bounds bounds, double step);

/// The devices that can be picked.
struct DeviceChoice {
    Q_GADGET
    Q_PROPERTY(QStringList ids MEMBER ids)
    Q_PROPERTY(QStringList names MEMBER names)
    Q_PROPERTY(int index MEMBER index)

public:
    QStringList ids;
    QStringList names;
    /// Of the picked one; -1 for none.
    int index = -1;
    friend bool operator==(const DeviceChoice&, const DeviceChoice&) = default;
};

DeviceChoice deviceChoice(const QList<CaptureDeviceOption>& devices, const QString& picked);

/// What a folder is called where there is room for one word.
QString folderName(const QString& path);

} // namespace keldra
