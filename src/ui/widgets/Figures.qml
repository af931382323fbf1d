// A number in digits of one width, so that what has changed alone moves.
import QtQuick
import Velmora

Row {
    id: figures

    property string text
    property color color: Theme.text
    property font font: Qt.font({ family: Theme.family, pixelSize: Theme.normal })
    // the font's own digits differ: its 1 is narrow
    readonly property real digitWidth: Math.max(...Array.from("0123456789", digit => metrics.advanceWidth(digit)))

    Accessible.role: Accessible.StaticText
    Accessible.name: text

    FontMetrics {
        id: metrics
        font: figures.font
    }
    Repeater {
        model: figures.text.length
        Label {
            required property int index
            text: figures.text.charAt(index)
            width: text >= "0" && text <= "9" ? figures.digitWidth : metrics.advanceWidth(text)
            horizontalAlignment: Text.AlignHCenter
            font: figures.font
            color: figures.color
            Accessible.ignored: true
        }
    }
}
