// Text in the program's font.
import QtQuick

Text {
    color: Theme.text
    font.family: Theme.family
    font.pixelSize: Theme.normal
    renderType: Text.NativeRendering
    textFormat: Text.PlainText
}
