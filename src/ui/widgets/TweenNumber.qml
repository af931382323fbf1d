// A number that glides to `target`. At rest it costs nothing, and where motion is unwelcome it does not glide.
import QtQuick
import Velmora

Label {
    id: number

    property alias target: tween.target
    property alias speed: tween.speed
    property var format: value => value.toFixed(2)
    property var colorOf  // a function from the number to its colour; none for the label's own

    text: isNaN(tween.value) ? "–" : format(tween.value)
    color: colorOf ? colorOf(tween.value) : Theme.text

    TweenValue {
        id: tween
        still: Motion.reduced || !number.visible
    }
    FrameAnimation {
        running: tween.gliding
        onTriggered: tween.step(frameTime)
    }
}
