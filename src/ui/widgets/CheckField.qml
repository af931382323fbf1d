// A check box with its text.
import QtQuick
import QtQuick.Templates as T

T.CheckBox {
    id: control

    implicitWidth: contentItem.implicitWidth  // which keeps the box's room
    implicitHeight: 24
    spacing: 10
    hoverEnabled: true
    font.family: Theme.family
    font.pixelSize: Theme.normal
    Accessible.name: text
    Keys.onPressed: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }  // held, it is one press
    Keys.onReleased: event => { if (event.key === Qt.Key_Space && event.isAutoRepeat) event.accepted = true; }

    indicator: Rectangle {
        width: 18
        height: 18
        y: (control.height - height) / 2
        radius: 4
        color: control.checked ? (control.enabled ? Theme.accent : Theme.lineStrong) : Theme.background
        border.width: control.visualFocus ? 2 : 1
        border.color: control.visualFocus ? Theme.focus : control.checked ? "transparent"
                                                                         : control.hovered ? Theme.textFaint : Theme.lineStrong
        Icon {
            anchors.centerIn: parent
            width: 14
            height: 14
            visible: control.checked
            name: "check"
            color: "#04110f"
        }
    }
    contentItem: Label {
        leftPadding: control.indicator.width + control.spacing
        text: control.text
        font: control.font
        color: control.enabled ? Theme.textSoft : Theme.textFaint
        verticalAlignment: Text.AlignVCenter
    }
}
