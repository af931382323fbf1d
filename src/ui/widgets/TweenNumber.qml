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
    property bool coarse: false  // it seldom moves far: it glides only then, in 15 steps a second

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
            // a move that one would not follow with the eye costs no frames
            const near = Math.abs(target - value) < 0.1 * Math.abs(target);
            if (number.coarse && (near || number.textOf(target) === number.text))
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
