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

    implicitWidth: 88
    implicitHeight: 34
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    font.family: Theme.family
    font.pixelSize: Theme.small
    font.weight: Font.DemiBold
    Accessible.name: text
    Accessible.description: barred
    Keys.onReturnPressed: event => { if (!event.isAutoRepeat) clicked(); }
    Keys.onEnterPressed: event => { if (!event.isAutoRepeat) clicked(); }
    Keys.onPressed: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }  // held, it is one press
    Keys.onReleased: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }
    onClicked: if (barred === "") pressedOnce()

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
