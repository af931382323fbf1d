// A track with a handle, and the number beside it, which can be typed.
import QtQuick
import Velmora

SteppedControl {
    id: slider

    readonly property real share: logarithmic ? Math.log(Math.max(value, part.least) / part.least) / Math.log(part.most / part.least)
                                              : (value - part.least) / (part.most - part.least)
    readonly property bool logarithmic: part.logarithmic

    function moveTo(x) {
        const at = Math.max(0, Math.min(1, (x - handle.width / 2) / (track.width - handle.width)));
        settings.set(part.name, logarithmic ? part.least * Math.pow(part.most / part.least, at)
                                            : part.least + at * (part.most - part.least));
    }

    implicitWidth: Math.max(136, Math.min(240, room))
    field: number
    Accessible.role: Accessible.Slider

    Item {
        id: track
        objectName: "track"
        width: parent.width - number.width - 8
        height: parent.height

        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width
            height: 4
            radius: 2
            color: Theme.lineStrong
            Rectangle {
                width: handle.x + handle.width / 2
                height: parent.height
                radius: 2
                color: Theme.accent
            }
        }
        Rectangle {
            id: handle
            x: Math.round(Math.max(0, Math.min(1, slider.share)) * (track.width - width))
            anchors.verticalCenter: parent.verticalCenter
            width: 12
            height: 12
            radius: 6
            color: drag.pressed ? Theme.accentHover : Theme.text
            Rectangle {
                anchors.centerIn: parent
                width: 20
                height: 20
                radius: 10
                visible: slider.marked
                color: "transparent"
                border.width: 2
                border.color: Theme.focus
            }
        }
        MouseArea {
            id: drag
            anchors.fill: parent
            preventStealing: true
            onPressed: mouse => {
                slider.take();
                slider.settings.beginGesture();
                slider.moveTo(mouse.x);
            }
            onPositionChanged: mouse => slider.moveTo(mouse.x)
            onReleased: slider.settings.endGesture()
            onCanceled: slider.settings.endGesture()
        }
    }
    ValueField {
        id: number
        anchors.right: parent.right
        width: 52
        activeFocusOnTab: false
        settings: slider.settings
        part: slider.part
        onEnded: slider.forceActiveFocus(Qt.TabFocusReason)
    }
}
