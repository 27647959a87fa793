import QtQuick
import Keldra.UiKit

/// Text of several lines that shrinks to the height it is given, if any, before it is cut.
Text {
    color: Theme.text
    font.pixelSize: Theme.fontSize
    fontSizeMode: Text.Fit
    minimumPixelSize: Theme.leastFontSize
    wrapMode: Text.WordWrap
    elide: Text.ElideRight
    textFormat: Text.PlainText
    lineHeight: 1.12
}
