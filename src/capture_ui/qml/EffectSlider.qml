import QtQuick
import Keldra.UiKit

/// A slider for one number of the settings.
ContinuousSlider {
    property var number

    width: parent.width
    from: number.least
    to: number.most
    stepSize: number.step
    value: number.value
    valueText: number.text
}
