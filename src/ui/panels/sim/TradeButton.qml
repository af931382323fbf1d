// A button that buys or sells at one press. It is outlined while the price that one sees is not to be trusted, and does
// nothing where something is in the way.
import QtQuick
import QtQuick.Templates as T
import Velmora

T.Button {
    id: control

    property bool buys: true
    property bool outlined: false
    property bool asking: false  // a second press is waited for
    property string barred  // why it cannot be pressed
    readonly property color tint: buys ? Theme.gain : Theme.loss
    signal pressedOnce

    function presses(key) {
        return key === Qt.Key_Space || key === Qt.Key_Return || key === Qt.Key_Enter;
    }

    implicitWidth: 88
    implicitHeight: 34
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    font.family: Theme.family
    font.pixelSize: Theme.small
    font.weight: Font.DemiBold
    Accessible.name: text
    Accessible.description: barred
    // Held down, a key is one press. Not everything that repeats it is marked so: where the program is busy, a release
    // and a press of their own come, one right behind the other.
    Keys.onPressed: event => {
        if (!presses(event.key))
            return;
        event.accepted = true;
        if (!event.isAutoRepeat && !released.running)
            clicked();
        released.stop();
    }
    Keys.onReleased: event => {
        if (!presses(event.key))
            return;
        event.accepted = true;
        released.restart();
    }
    onClicked: if (barred === "") pressedOnce()

    Timer {
        id: released
        interval: 40  // sooner than a finger is back
    }
    contentItem: Label {
        text: control.text
        font: control.font
        color: control.barred !== "" ? Theme.textFaint : control.outlined ? control.tint : control.buys ? "#04110f" : "#1c0504"
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    background: Rectangle {
        radius: Theme.radius
        color: {
            if (control.barred !== "")
                return Theme.raised;
            if (control.outlined)
                return control.down ? Theme.pressed : control.hovered ? Theme.hover : "transparent";
            return control.down ? Qt.darker(control.tint, 1.25) : control.hovered ? Qt.lighter(control.tint, 1.1) : control.tint;
        }
        border.width: control.asking ? 2 : control.outlined && control.barred === "" ? 1 : 0
        border.color: control.asking ? Theme.warning : control.tint

        Rectangle {  // apart from the button, whose colour is that of the focus
            anchors.fill: parent
            anchors.margins: -3
            visible: control.visualFocus
            radius: Theme.radius + 3
            color: "transparent"
            border.width: 2
            border.color: Theme.text
        }
    }
    Tip {
        text: control.barred
        wanted: (control.hovered || control.visualFocus) && !control.down
    }
}
