// A whole number between two buttons: it is typed, or stepped by the arrow keys, by the wheel while it has the keyboard,
// or by the buttons.
import QtQuick
import QtQuick.Templates as T
import Velmora

T.SpinBox {
    id: control

    property string name  // for screen readers

    implicitWidth: 96
    implicitHeight: 30
    leftPadding: 26
    rightPadding: 26
    editable: true
    wheelEnabled: activeFocus
    font.family: Theme.family
    font.pixelSize: Theme.normal
    inputMethodHints: Qt.ImhDigitsOnly
    textFromValue: number => String(number)
    valueFromText: text => Number(text) || 0
    validator: IntValidator {
        bottom: control.from
        top: control.to
    }
    Accessible.name: name

    component Step: Item {
        property alias icon: sign.name
        property var half
        implicitWidth: 24
        implicitHeight: control.height
        Rectangle {
            anchors.fill: parent
            anchors.margins: 3
            radius: 4
            color: parent.half.pressed ? Theme.pressed : parent.half.hovered ? Theme.hover : "transparent"
        }
        Icon {
            id: sign
            anchors.centerIn: parent
            width: 12
            height: 12
        }
    }

    contentItem: TextInput {
        text: control.displayText
        font: control.font
        color: control.enabled ? Theme.text : Theme.textFaint
        selectionColor: Theme.accentPressed
        selectedTextColor: "white"
        renderType: Text.NativeRendering
        horizontalAlignment: TextInput.AlignHCenter
        verticalAlignment: TextInput.AlignVCenter
        selectByMouse: true
        readOnly: !control.editable
        validator: control.validator
        inputMethodHints: control.inputMethodHints
        Accessible.name: control.name  // it has the keyboard in the control's place
    }
    down.indicator: Step {
        icon: "minus"
        half: control.down
    }
    up.indicator: Step {
        x: control.width - width
        icon: "plus"
        half: control.up
    }
    background: Rectangle {
        radius: Theme.radius
        color: Theme.background
        border.width: control.activeFocus ? 2 : 1
        border.color: control.activeFocus ? Theme.focus : control.hovered ? Theme.lineStrong : Theme.line
    }
}
