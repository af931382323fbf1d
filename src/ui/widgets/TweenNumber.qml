// A number that glides to `target`. At rest it costs nothing, and where motion is unwelcome it does not glide.
import QtQuick
import Velmora

Figures {
    id: number

    property alias target: tween.target
    property alias speed: tween.speed
    property var format: value => value.toFixed(2)
    property var colorOf  // a function from the number to its colour; none for `plainColor`
    property color plainColor: Theme.text
    property string nothing: "–"  // what no number looks like
    property bool still: false  // every number is shown at once
    property bool coarse: false  // its text seldom differs: it glides only where it does, in 15 steps a second

    // Shows the target at once.
    function jump() {
        tween.jump();
    }

    color: colorOf ? colorOf(tween.value) : plainColor
    text: textOf(tween.value)

    function textOf(value) {
        return isNaN(value) ? nothing : format(value);
    }

    TweenValue {
        id: tween
        still: Motion.reduced || number.still || !number.visible
        onTargetChanged: {
            if (number.coarse && number.textOf(target) === number.text)
                jump();
        }
    }
    FrameAnimation {
        running: tween.gliding && !number.coarse
        onTriggered: tween.step(frameTime)
    }
    Timer {
        interval: 67
        repeat: true
        running: tween.gliding && number.coarse
        onTriggered: {
            tween.step(interval / 1000);
            if (number.text === number.textOf(tween.target))
                number.jump();
        }
    }
}
