import QtQuick
import Keldra.UiKit

/// A line of text that shrinks before it is cut. Give it a width.
Text {
    color: Theme.text
    font.pixelSize: Theme.fontSize
    fontSizeMode: Text.HorizontalFit
    minimumPixelSize: Theme.leastFontSize
    elide: Text.ElideRight
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter
}
