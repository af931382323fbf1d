// A number that glides to `target`, in digits of one width so that what has changed alone moves. At rest it costs
// nothing, and where motion is unwelcome it does not glide.
import QtQuick
import Velmora

Row {
    id: number

    property alias target: tween.target
    property alias speed: tween.speed
    property var format: value => value.toFixed(2)
    property var colorOf  // a function from the number to its colour; none for `color`
    property color color: Theme.text
    property string nothing: "–"  // what no number looks like
    property bool still: false  // every number is shown at once
    property font font: Qt.font({ family: Theme.family, pixelSize: Theme.normal })
    readonly property string text: isNaN(tween.value) ? nothing : format(tween.value)
    // the font's own digits differ: its 1 is narrow
    readonly property real digitWidth: Math.max(...Array.from("0123456789", digit => metrics.advanceWidth(digit)))

    Accessible.role: Accessible.StaticText
    Accessible.name: text

    FontMetrics {
        id: metrics
        font: number.font
    }
    Repeater {
        model: number.text.length
        Label {
            required property int index
            text: number.text.charAt(index)
            width: text >= "0" && text <= "9" ? number.digitWidth : Math.ceil(metrics.advanceWidth(text))
            horizontalAlignment: Text.AlignHCenter
            font: number.font
            color: number.colorOf ? number.colorOf(tween.value) : number.color
            Accessible.ignored: true
        }
    }
    TweenValue {
        id: tween
        still: Motion.reduced || number.still || !number.visible
    }
    FrameAnimation {
        running: tween.gliding
        onTriggered: tween.step(frameTime)
    }
}
