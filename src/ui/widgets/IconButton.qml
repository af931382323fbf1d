// A square button that shows an icon; its name is for screen readers and the hint.
import QtQuick
import QtQuick.Templates as T

T.Button {
    id: control

    property string icon24
    property bool active: false  // what it stands for is on

    implicitWidth: 30
    implicitHeight: 30
    hoverEnabled: true
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    focusPolicy: Qt.TabFocus
    Accessible.name: text

    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            name: control.icon24
            color: control.active ? Theme.accent : control.hovered || control.down ? Theme.text : Theme.textSoft
        }
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.down ? Theme.pressed : control.hovered ? Theme.hover : "transparent"
        border.width: control.visualFocus ? 2 : 0
        border.color: Theme.focus
    }
}
