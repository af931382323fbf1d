// A square button that shows an icon; its name is for screen readers and, with its key, for the tip.
import QtQuick
import QtQuick.Templates as T

T.Button {
    id: control

    property string icon24
    property bool active: false  // what it stands for is on
    property string key  // that does the same
    property string barred  // why it cannot be pressed; the tip says so
    property bool tipHeld: false  // while it has something open
    property string hint: barred !== "" ? barred.charAt(0).toUpperCase() + barred.slice(1) : text + (key !== "" ? " (" + key + ")" : "")

    implicitWidth: 30
    implicitHeight: 30
    hoverEnabled: true
    Keys.onReturnPressed: event => { if (!event.isAutoRepeat) clicked(); }
    Keys.onEnterPressed: event => { if (!event.isAutoRepeat) clicked(); }
    Keys.onPressed: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }  // held, it is one press
    Keys.onReleased: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }
    focusPolicy: Qt.TabFocus
    Accessible.name: text
    Accessible.checked: active
    Accessible.description: hint

    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            name: control.icon24
            color: control.barred !== "" ? Theme.lineStrong
                                         : control.active ? Theme.accent : control.hovered || control.down ? Theme.text : Theme.textSoft
        }
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.barred !== "" ? "transparent" : control.down ? Theme.pressed : control.hovered ? Theme.hover : "transparent"
        border.width: control.visualFocus ? 2 : 0
        border.color: Theme.focus
    }
    Tip {
        text: control.hint
        wanted: (control.hovered || control.visualFocus) && !control.down && !control.tipHeld
    }
}
